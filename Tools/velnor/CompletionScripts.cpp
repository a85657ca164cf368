#include "Tools/velnor/Completion.h"

#include "Tools/velnor/Failure.h"
#include "Tools/velnor/Suggestions.h"

#include <array>
#include <string_view>

namespace Velnor::Tool {
namespace {

struct Script {
    std::string_view shell;
    std::string_view text;
};

// bash breaks words at ':' and '=' too: it is handed what follows the last of them.
constexpr std::string_view BASH = R"(# Completion of velnor for bash. Source it, or put it where bash-completion looks.
_velnor() {
    local line=${COMP_LINE:0:COMP_POINT} candidate word cut
    local -a words
    read -ra words <<<"$line"
    [[ $line == *[[:space:]] ]] && words+=("")
    word=${words[${#words[@]} - 1]}
    cut=${word%"${word##*[:=]}"}
    COMPREPLY=()
    while IFS=$'\t' read -r candidate _; do
        COMPREPLY+=("${candidate#"$cut"}")
        [[ $candidate == *[/:=] ]] && compopt -o nospace 2>/dev/null
    done < <("${words[0]}" complete -- "${words[@]:1}" 2>/dev/null)
}
complete -F _velnor velnor
)";

constexpr std::string_view ZSH = R"(#compdef velnor
# Completion of velnor for zsh. Put it as _velnor into a folder of $fpath.
_velnor() {
    local line text
    local -a plain plainShown open openShown
    for line in "${(@f)$(${words[1]} complete -- "${(@Q)words[2,CURRENT]}" 2>/dev/null)}"; do
        text=${line%%$'\t'*}
        [[ -n $text ]] || continue
        if [[ $text == *[/:=] ]]; then
            open+=("$text") openShown+=("${line/$'\t'/  -- }")
        else
            plain+=("$text") plainShown+=("${line/$'\t'/  -- }")
        fi
    done
    (( $#open )) && compadd -S '' -l -d openShown -a open
    (( $#plain )) && compadd -l -d plainShown -a plain
    return 0
}
if [[ $funcstack[1] == _velnor ]]; then _velnor "$@"; else compdef _velnor velnor; fi
)";

constexpr std::string_view FISH =
    R"(# Completion of velnor for fish. Put it as velnor.fish into a folder of completions.
function __velnor_complete
    set -l words (commandline -opc)
    $words[1] complete -- $words[2..-1] (commandline -ct) 2>/dev/null
end
complete -c velnor -f -a '(__velnor_complete)'
)";

constexpr std::array SCRIPTS{Script{"bash", BASH}, Script{"zsh", ZSH}, Script{"fish", FISH}};

} // namespace

std::string FormatCompletionScript(std::string const& shell) {
    std::vector<std::string> known;
    for (Script const& script : SCRIPTS) {
        if (script.shell == shell) return std::string(script.text);
        known.emplace_back(script.shell);
    }
    throw WrongCall("completion: there is none for \"" + shell + "\"" + SuggestNearest(shell, known));
}

} // namespace Velnor::Tool
