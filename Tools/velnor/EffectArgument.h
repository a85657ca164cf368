#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Velnor::Tool {

/// The parameter that names a further picture for an effect on several. The only one that may be given more than once.
inline constexpr char const* INPUT_PARAMETER = "input";

/// One `-e`, taken apart: NAME[/IMPLEMENTATION][:KEY=VALUE[,KEY=VALUE]...]. What the names mean is not known here.
struct EffectArgument {
    struct Parameter {
        std::string key; ///< With dots for nested settings: "shape-mask.feather".
        std::string value;
        friend bool operator==(Parameter const&, Parameter const&) = default;
    };
    std::string name;
    std::string implementation; ///< Empty for the default one.
    std::vector<Parameter> parameters;
};

/// A part between commas that has no '=' goes on with the value before it, comma included, so that lists need no
/// quoting: `stops=0:#102040,128:#c08040`. A value that holds a comma and an '=' is put in quotes of either kind, as
/// `input="a,b=c.jpg"`; a quote within them is written twice. Throws Failure (wrong call) for text without an effect's
/// name, for an empty part and for a key other than INPUT_PARAMETER given twice.
EffectArgument ParseEffectArgument(std::string_view text);

} // namespace Velnor::Tool
