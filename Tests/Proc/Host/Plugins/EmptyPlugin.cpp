#include "Proc/Interfaces/IEffectRegistry.h"

// Registers nothing.
extern "C" VELNOR_API void Registrator(Velnor::Proc::IEffectRegistry* registry);
void Registrator(Velnor::Proc::IEffectRegistry*) {}
