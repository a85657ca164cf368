#include "Proc/Interfaces/IEffectRegistry.h"
#include "Proc/Interfaces/ProcException.h"

using namespace Velnor::Proc;

namespace {
/// A type that is in this library alone, and gone once that is closed.
class OwnException : public ProcException {};
} // namespace

// Fails when one effect is registered.
extern "C" VELNOR_API void Registrator(IEffectRegistry* registry);
void Registrator(IEffectRegistry* registry) {
    EffectFactoryFunction const none = [](auto const&, auto const&) { return Velnor::intrusive_ptr<IEffect>(); };
    registry->RegisterOneInputEffect("SettingsTestFirst", "Test", none, nullptr);
    VELNOR_THROW(OwnException, "the second effect\nhas no table");
}
