#pragma once

#include "Proc/Interfaces/IData.h"
#include "Proc/Interfaces/SettingsFields.h"

#include <functional>

namespace Velnor::Proc {

/// Settings of Custom: a function, which cannot be compared, so these settings have no equality.
class VELNOR_API SettingsEffectCustom final : public SettingsOf<SettingsEffectCustom> {
public:
    using Function = std::function<void(VideoHandle&)>;

    VELNOR_SETTINGS(SettingsEffectCustom, "Runs a function of the caller's on the picture (from C++ only).")
    VELNOR_FIELD(Function, Functor, nullptr, "changes the picture or replaces the handle")
    VELNOR_SETTINGS_END

    explicit SettingsEffectCustom(Function function) : valueFunctor(std::move(function)) {}

    bool IsEmpty() const override { return Settings::IsEmpty() || !valueFunctor; }
};

} // namespace Velnor::Proc
