#include "Proc/Interfaces/IEffectRegistry.h"

using namespace Velnor::Proc;

// Registers two effects that are never made.
extern "C" VELNOR_API void Registrator(IEffectRegistry* registry);
void Registrator(IEffectRegistry* registry) {
    EffectFactoryFunction const none = [](auto const&, auto const&) { return Velnor::intrusive_ptr<IEffect>(); };
    registry->RegisterTwoInputEffect("SettingsTestSecond", "Test", none, nullptr);
    registry->RegisterOneInputEffect("SettingsTestFirst", "Test", none, nullptr);
}
