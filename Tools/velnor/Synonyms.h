#pragma once

#include <span>
#include <string_view>

namespace Velnor::Tool {

/// Words by which other programs, and photographers, call what an effect does.
struct Synonym {
    std::string_view words;  ///< In lower case, with a space between two.
    std::string_view effect; ///< As it is typed, parameters included where it needs them.
    bool isNear = false;     ///< The effect does something like it, not the thing itself.
};

std::span<Synonym const> GetSynonyms();

/// Null for a word that is none. Letters match in either case.
Synonym const* FindSynonym(std::string_view typed);

} // namespace Velnor::Tool
