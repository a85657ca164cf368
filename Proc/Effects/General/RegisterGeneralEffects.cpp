#include "Proc/Effects/General/RegisterGeneralEffects.h"

#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsResizer.h"

namespace Velnor::Proc {

void RegisterGeneralEffects(IEffectRegistry& registry) {
    std::string const& name = ImplNames::DEFAULT;
    registry.RegisterOneInputEffect(SettingsColorspaceConverter::CLASS_ID, name, &CreateColorspaceConverter, nullptr);
    registry.RegisterOneInputEffect(SettingsResizer::CLASS_ID, name, &CreateResizer, nullptr);
}

} // namespace Velnor::Proc
