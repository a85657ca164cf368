#include "Proc/Interfaces/IEffectRegistry.h"

char const Velnor::Proc::Details::CONTRACT_MARK = 0;
