#include "Tools/velnor/EffectArgument.h"

#include "Tools/velnor/Failure.h"

#include <algorithm>

namespace Velnor::Tool {
namespace {

void AddPart(EffectArgument& argument, std::string_view part) {
    auto& parameters = argument.parameters;
    std::size_t const equals = part.find('=');
    if (equals == std::string_view::npos && !parameters.empty()) {
        parameters.back().value.append(",").append(part);
        return;
    }
    if (equals == std::string_view::npos || equals == 0)
        throw WrongCall(argument.name + ": \"" + std::string(part) + "\" is no parameter=value; `velnor describe " +
                        argument.name + "` shows the parameters");
    std::string const key(part.substr(0, equals));
    if (key != INPUT_PARAMETER && std::ranges::count(parameters, key, &EffectArgument::Parameter::key) > 0)
        throw WrongCall(argument.name + ": " + key + " is given twice");
    parameters.push_back({key, std::string(part.substr(equals + 1))});
}

} // namespace

EffectArgument ParseEffectArgument(std::string_view text) {
    std::size_t const colon = std::min(text.find(':'), text.size());
    std::string_view const effect = text.substr(0, colon);
    std::size_t const slash = std::min(effect.find('/'), effect.size());

    EffectArgument argument;
    argument.name = effect.substr(0, slash);
    if (argument.name.empty())
        throw WrongCall("-e \"" + std::string(text) +
                        "\" names no effect; an effect is written name:parameter=value,parameter=value");
    if (slash < effect.size()) {
        argument.implementation = effect.substr(slash + 1);
        if (argument.implementation.empty())
            throw WrongCall(argument.name + ": the name of an implementation is missing after the /");
    }
    if (colon == text.size()) return argument;

    std::string_view rest = text.substr(colon + 1);
    for (bool more = true; more;) {
        std::size_t const comma = rest.find(',');
        AddPart(argument, rest.substr(0, comma));
        more = comma != std::string_view::npos;
        if (more) rest.remove_prefix(comma + 1);
    }
    return argument;
}

} // namespace Velnor::Tool
