#include "Proc/Interfaces/IEffectRegistry.h"

// A library, but no plug-in.
extern "C" VELNOR_API int Answer();
int Answer() { return 42; }
