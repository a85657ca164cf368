#include "Tools/velnor/EffectArgument.h"

#include "Tools/velnor/Failure.h"

#include <algorithm>

namespace Velnor::Tool {
namespace {

bool IsQuote(char c) { return c == '"' || c == '\''; }

/// Where the part of the text between two commas ends. A comma in a quoted value is none.
std::size_t FindEndOfPart(std::string const& effect, std::string_view text) {
    std::size_t const comma = std::min(text.find(','), text.size());
    std::size_t const value = std::min(text.find('='), comma) + 1;
    if (value >= text.size() || value > comma || !IsQuote(text[value])) return comma;
    for (std::size_t at = value + 1; (at = text.find(text[value], at)) != std::string_view::npos; at += 2) {
        if (at + 1 == text.size() || text[at + 1] == ',') return at + 1;
        if (text[at + 1] != text[value]) break;
    }
    throw WrongCall(effect + ": " + std::string(text) + ": a value that begins with " + text[value] +
                    " ends with another, before a comma or the end; twice in a row it stands for itself");
}

/// A quoted value as it is meant, any other as it is.
std::string Unquote(std::string_view value) {
    if (value.size() < 2 || !IsQuote(value.front()) || value.back() != value.front()) return std::string(value);
    std::string text;
    for (std::size_t i = 1; i + 1 < value.size(); ++i) {
        text += value[i];
        if (value[i] == value.front()) ++i;
    }
    return text;
}

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
    parameters.push_back({key, Unquote(part.substr(equals + 1))});
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
        std::size_t const end = FindEndOfPart(argument.name, rest);
        AddPart(argument, rest.substr(0, end));
        more = end < rest.size();
        if (more) rest.remove_prefix(end + 1);
    }
    return argument;
}

} // namespace Velnor::Tool
