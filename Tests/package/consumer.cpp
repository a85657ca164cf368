#include "Proc/Interfaces/ImplNames.h"
#include "Proc/StandardHost/StandardHost.h"

#include <iostream>

using namespace Velnor;
using namespace Velnor::Proc;

// Lists the effects of the installed host and of the plug-in that is named, and runs that one's on a pixel.
int main(int, char** arguments) {
    StandardHost host;
    host.LoadInstalledPlugins();
    host.LoadPlugin(arguments[1]);
    for (RegisteredEffect const& effect : host.GetEffects())
        std::cout << effect.classId << " " << effect.implName << " from " << effect.origin << "\n";

    DataHandle picture = host.GetContext()->CreateImage(PixFmt::RGB24, FrameFormat::Square(1, 1));
    AsVideo(picture).Fill(Color(30, 20, 10, 255));
    host.GetFactory()->CreateOneInputEffect("SettingsEffectInversion", ImplNames::DEFAULT)->ProcessData(picture);
    unsigned char const* const pixel = AsVideo(picture).GetPlane(0).GetRow(0);
    std::cout << "inverted " << int{pixel[0]} << " " << int{pixel[1]} << " " << int{pixel[2]} << "\n";
}
