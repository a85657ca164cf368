#include "Proc/StandardHost/StandardHost.h"

#include "Proc/Effects/General/RegisterGeneralEffects.h"
#include "Proc/Effects/Photo/RegisterPhotoEffects.h"

namespace Velnor::Proc {

void RegisterStandardEffects(IEffectRegistry& registry) {
    RegisterGeneralEffects(registry);
    RegisterPhotoEffects(registry);
}

} // namespace Velnor::Proc
