#pragma once

#include "Proc/Interfaces/IEffectFactory.h"
#include "Proc/Interfaces/Settings.h"
#include "Tools/velnor/EffectArgument.h"

#include <string>
#include <vector>

namespace Velnor::Tool {

/// The parameter that names the place in the photograph where an effect's reference colour is read, and that reference.
inline constexpr char const* PLACE_PARAMETER = "at";
inline constexpr char const* REFERENCE_FIELD = "reference";

/// Whether the effect has a colour of the photograph for its reference, and so PLACE_PARAMETER.
bool TakesPlace(Proc::SettingsType const& type);

/// What can be typed for an effect, and its results: the fields of its settings, then what the command adds for every
/// effect of the kind. The parameter INPUT_PARAMETER has no `parse`: it is no part of the settings.
std::vector<Proc::SettingsField> DescribeParameters(Proc::SettingsType const& type, Proc::EffectKind kind);

/// Sets a field from text. Throws Failure (wrong call), naming effect, parameter and what is accepted.
void SetParameter(Proc::Settings& settings, std::string const& effectName,
                  std::vector<Proc::SettingsField> const& fields, EffectArgument::Parameter const& parameter);

/// "0 to 100", empty for a field without a range.
std::string GetRangeText(Proc::SettingsField const& field);

} // namespace Velnor::Tool
