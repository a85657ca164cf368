#pragma once

#include "Proc/Interfaces/IEffectRegistry.h"

namespace Velnor::Proc {

/// What a module of photo effects exports under PHOTO_MODULE_ENTRY: the factory function of the effect with settings of
/// that class, or null.
using PhotoModuleFunction = EffectFactoryFunction (*)(char const* classId);
inline constexpr char const* PHOTO_MODULE_ENTRY = "FindVelnorEffect";

} // namespace Velnor::Proc

extern "C" VELNOR_API Velnor::Proc::EffectFactoryFunction FindVelnorEffect(char const* classId);
