#pragma once

#include "Tools/velnor/EffectArgument.h"
#include "Tools/velnor/EffectCatalogue.h"

#include <string>
#include <vector>

namespace Velnor::Tool {

/// A call that shows what the effect does: with the parameters whose examples show something, or with the first one.
/// `fields` are its parameters as DescribeParameters gives them.
std::string MakeExample(CatalogueEntry const& entry, Proc::SettingsType const& type,
                        std::vector<Proc::SettingsField> const& fields);

/// NAME:PARAMETER=VALUE,... of that call.
std::string MakeExampleEffect(CatalogueEntry const& entry, std::vector<Proc::SettingsField> const& fields);

} // namespace Velnor::Tool
