#pragma once

#include "Proc/Effects/Kit/EffectBase.h" // IWYU pragma: export
