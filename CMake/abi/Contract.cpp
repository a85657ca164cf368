// Every type by which host and plug-in meet, so that a library holds the descriptions of those too that are declared in
// headers alone. It is never run: Scripts/abi compares it with what it was.

#include "Proc/Interfaces/IEffectContext.h"
#include "Proc/Interfaces/IEffectFactory.h"
#include "Proc/Interfaces/IEffectRegistry.h"
#include "Proc/Interfaces/IResize.h"

namespace Velnor::Proc {

VELNOR_API void MeetAtRegistration(IEffectRegistry*, RegistratorFunction);
void MeetAtRegistration(IEffectRegistry*, RegistratorFunction) {}

VELNOR_API void MeetAtCreation(IEffectFactory&, IEffectContext&, EffectFactoryFunction);
void MeetAtCreation(IEffectFactory&, IEffectContext&, EffectFactoryFunction) {}

VELNOR_API void MeetAtWork(IEffect&, IOneInputEffectVideo&, ITwoInputEffectVideo&, IVarInputEffectVideo&);
void MeetAtWork(IEffect&, IOneInputEffectVideo&, ITwoInputEffectVideo&, IVarInputEffectVideo&) {}

VELNOR_API void MeetInPictures(IDataVideo&, ConstPlane const&, MutablePlane const&, PixFmtDescription const&);
void MeetInPictures(IDataVideo&, ConstPlane const&, MutablePlane const&, PixFmtDescription const&) {}

VELNOR_API void MeetInSettings(Settings&, SettingsType&, TimeToProgress&, Core::Property&);
void MeetInSettings(Settings&, SettingsType&, TimeToProgress&, Core::Property&) {}

} // namespace Velnor::Proc
