// What the plug-in hands to a host, and what stands once for each of its settings classes.
#include "SettingsEffectInversion.h"

#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Interfaces/DefineSettings.h"
#include "Proc/Interfaces/ImplNames.h"

namespace Velnor::Proc {

VELNOR_DEFINE_SETTINGS(SettingsEffectInversion)
VELNOR_DECLARE_EFFECT(Inversion)

} // namespace Velnor::Proc

void Registrator(Velnor::Proc::IEffectRegistry* registry) {
    using namespace Velnor::Proc;
    RegisterEffects(*registry, ImplNames::VELNOR, {InversionEntry()});
}
