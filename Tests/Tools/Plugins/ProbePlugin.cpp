// Effects of each kind, of classes that the library of settings does not know, for the tests of the command line.

#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Interfaces/DefineSettings.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Interfaces/IEffectRegistry.h"
#include "Proc/Interfaces/WarningNode.h"

#include <chrono>
#include <fstream>
#include <thread>

namespace Velnor::Proc {

class VELNOR_API SettingsEffectProbe final : public SettingsOf<SettingsEffectProbe> {
    VELNOR_SETTINGS(SettingsEffectProbe, "Finds the first sample; waits, fails, grows or warns when asked to.")
    VELNOR_FIELD(std::string, WaitMarker, "", "file to make before waiting for a stop")
    VELNOR_FIELD(int, FailAbove, 255, "a first sample above this is an error", Range(0, 255))
    VELNOR_FIELD(int, Grow, 0, "columns and rows to add to the picture", Range(0, 9))
    VELNOR_FIELD(std::string, Warn, "", "warning to give")
    VELNOR_FIELD(int, FirstSample, -1, "the first sample of the picture", Output())
    VELNOR_SETTINGS_END
};
class VELNOR_API SettingsEffectSecond final : public SettingsOf<SettingsEffectSecond> {
    VELNOR_SETTINGS(SettingsEffectSecond, "Takes the second picture.")
    VELNOR_SETTINGS_END
};
class VELNOR_API SettingsEffectMany final : public SettingsOf<SettingsEffectMany> {
    VELNOR_SETTINGS(SettingsEffectMany, "Paints a translucent red, greener with each further picture.")
    VELNOR_SETTINGS_END
};
VELNOR_DEFINE_SETTINGS(SettingsEffectProbe)
VELNOR_DEFINE_SETTINGS(SettingsEffectSecond)
VELNOR_DEFINE_SETTINGS(SettingsEffectMany)

class Probe : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectProbe> {
public:
    using EffectBaseOneInput::EffectBaseOneInput;
    void ProcessInternal(DataHandle& data) override {
        int const first = *AsVideo(data).GetPlane(0).GetRow(0);
        if (first > settings.GetFailAbove()) VELNOR_THROW(EffectException, "The first sample is too large.");
        settings.SetFirstSample(first);
        if (settings.GetGrow() > 0) Grow(data);
        if (settings.GetWaitMarker().empty()) return;
        std::ofstream(settings.GetWaitMarker()) << "waiting";
        while (!GetProgress().controller->IsStopRequested()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    void AddStatistic(Core::Property& statistics) override {
        if (!settings.GetWarn().empty()) statistics.SetChild(WARNING_NODE, settings.GetWarn());
    }

private:
    void Grow(DataHandle& data) const {
        auto const added = static_cast<std::uint32_t>(settings.GetGrow());
        FrameFormat frame = data->GetFrameFormat();
        frame.width += added;
        frame.height += added;
        VideoHandle const larger = context->CreateImage(data->GetPixFmt(), frame);
        larger->Fill(Color(1, 2, 3, 255));
        CopyDataVideo(ConstVideoHandle(&AsVideo(data)), larger, 0, 0);
        data = larger;
    }
};

class Second : public EffectBaseTwoInput<ITwoInputEffectVideo, SettingsEffectSecond> {
public:
    using EffectBaseTwoInput::EffectBaseTwoInput;
    void ProcessInternal(DataHandle& first, ConstDataHandle const& second) override {
        first = AsVideo(second).MakeCopy(CopyMode::Value);
    }
};

class Many : public EffectBaseVarInput<IVarInputEffectVideo, SettingsEffectMany> {
public:
    using EffectBaseVarInput::EffectBaseVarInput;
    DataHandle ProcessInternal(std::vector<DataHandle> const& inputs) override {
        auto const result = context->CreateImage(PixFmt::RGBA, inputs.at(0)->GetFrameFormat());
        result->Fill(Color(0, static_cast<unsigned char>(inputs.size() - 1), 255, 128));
        return result;
    }
};

} // namespace Velnor::Proc

using namespace Velnor::Proc;

extern "C" VELNOR_API void Registrator(IEffectRegistry* registry);
void Registrator(IEffectRegistry* registry) {
    registry->RegisterOneInputEffect(SettingsEffectProbe::CLASS_ID, ImplNames::VELNOR, MakeEffect<Probe>, nullptr);
    registry->RegisterTwoInputEffect(SettingsEffectSecond::CLASS_ID, ImplNames::VELNOR, MakeEffect<Second>, nullptr);
    registry->RegisterVarInputEffect(SettingsEffectMany::CLASS_ID, ImplNames::VELNOR, MakeEffect<Many>, nullptr);
}
