#pragma once

#include "Proc/Interfaces/EffectExceptions.h" // IWYU pragma: export
