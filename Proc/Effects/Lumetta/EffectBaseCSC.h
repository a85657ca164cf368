#pragma once

#include "Proc/Effects/Kit/EffectBaseCSC.h" // IWYU pragma: export
