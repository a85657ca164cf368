#pragma once

#include "Tools/velnor/EffectCatalogue.h"
#include "Tools/velnor/Json.h"

namespace Velnor::Tool {

/// The version of JSON Schema that all schemas are in.
inline constexpr char const* SCHEMA_DIALECT = "https://json-schema.org/draft/2020-12/schema";

/// Whether values of a schema may also be texts with the variables of a recipe in braces.
enum class Variables : bool { No, Yes };

/// The schema of a step of a chain: an object with the effect's name, its implementation and its parameters, as
/// numbers, switches and texts. It refers to "#/$defs", where the parameters of each effect are added under its name.
Json MakeStepSchema(EffectCatalogue const& catalogue, std::vector<CatalogueEntry> const& entries, Variables variables,
                    Json& definitions);

} // namespace Velnor::Tool
