#include "Tools/velnor/Conversion.h"

#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"

namespace Velnor::Tool {

void Convert(Proc::DataHandle& picture, std::vector<PixFmt> const& formats, Proc::IEffectFactory& factory) {
    auto const converter =
        factory.CreateOneInputEffect(Proc::SettingsColorspaceConverter::CLASS_ID, Proc::ImplNames::DEFAULT);
    converter->SetSettings(Proc::SettingsColorspaceConverter(formats, true));
    converter->ProcessData(picture);
}

} // namespace Velnor::Tool
