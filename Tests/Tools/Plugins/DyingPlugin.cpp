#include "Proc/Interfaces/IEffectRegistry.h"

#include <cstdlib>

// Ends the process when it is asked for its effects.
extern "C" VELNOR_API void Registrator(Velnor::Proc::IEffectRegistry* registry);
void Registrator(Velnor::Proc::IEffectRegistry*) { std::abort(); }
