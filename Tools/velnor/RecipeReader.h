#pragma once

#include "Tools/velnor/Recipe.h"

namespace Velnor::Tool {

/// The recipe in a document. `place` is the file's name, for messages; what its `input` parameters name is beside it.
/// Throws Failure (input), as ReadRecipe does.
Recipe ReadRecipeDocument(Json const& document, std::filesystem::path const& place);

} // namespace Velnor::Tool
