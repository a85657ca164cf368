#include "Tools/velnor/CheckCommand.h"

#include "Tools/check/Promises.h"
#include "Tools/velnor/Console.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/Json.h"
#include "Tools/velnor/Suggestions.h"

#include <algorithm>

namespace Velnor::Tool {
namespace {

using namespace Proc::Check;

std::string FormatFinding(std::string const& effect, Finding const& finding) {
    std::string line = effect + ": " + finding.promise + ": ";
    if (!finding.where.empty()) line += finding.where + ": ";
    line += finding.what;
    if (finding.cases > 1) line += " (and " + std::to_string(finding.cases - 1) + " more)";
    return ToOneLine(line) + "\n";
}

std::string FormatEffect(EffectReport const& report) {
    std::string text;
    for (Finding const& finding : report.broken)
        text += FormatFinding(report.name + "/" + ToLower(report.effect.implName), finding);
    return text;
}

std::string Count(std::size_t number, std::string const& what) {
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

bool IsBroken(EffectReport const& report) { return !report.broken.empty(); }

std::string FormatEnd(PluginReport const& report, CheckOptions const& options) {
    auto const broken = static_cast<std::size_t>(std::ranges::count_if(report.effects, IsBroken));
    std::string const checked = options.plugin.filename().string() + ": " + Count(report.effects.size(), "effect") +
                                " checked at level " + std::to_string(options.level);
    return checked + (broken == 0 ? ", no promise is broken\n"
                                  : ", " + std::to_string(broken) + " of them " + (broken == 1 ? "breaks" : "break") +
                                        " a promise\n");
}

Json ToJson(EffectReport const& report) {
    Json broken = Json::array();
    for (Finding const& finding : report.broken)
        broken.push_back(
            {{"promise", finding.promise}, {"where", finding.where}, {"what", finding.what}, {"cases", finding.cases}});
    Json waived = Json::array();
    for (Waived const& one : report.waived) waived.push_back({{"promise", one.promise}, {"reason", one.reason}});
    return {{"name", report.name},
            {"class", report.effect.classId},
            {"implementation", report.effect.implName},
            {"broken", broken},
            {"waived", waived}};
}

std::string FormatAsJson(PluginReport const& report, CheckOptions const& options) {
    Json document{{"plugin", options.plugin.string()}, {"level", options.level}};
    if (!report.failure.empty()) document["error"] = report.failure;
    document["effects"] = Json::array();
    for (EffectReport const& effect : report.effects) document["effects"].push_back(ToJson(effect));
    return Write(document);
}

void RequirePromises(std::vector<std::string> const& names) {
    std::vector<std::string> known;
    for (Promise const& promise : GetPromises()) known.emplace_back(promise.name);
    for (std::string const& name : names)
        if (std::ranges::find(known, name) == known.end())
            throw WrongCall("check: there is no promise \"" + name + "\"" + SuggestNearest(name, known));
}

CheckOptions MakeOptions(CheckArguments const& arguments) {
    if (arguments.plugin.empty()) throw WrongCall("check: no plug-in is given");
    CheckOptions options = arguments.check;
    options.plugin = std::filesystem::absolute(arguments.plugin);
    options.timeLimit = std::chrono::seconds(arguments.timeLimit);
    RequirePromises(options.skipped);
    if (!std::filesystem::exists(options.plugin))
        throw Failure(ExitCode::InputFailed, "check: there is no plug-in " + arguments.plugin);
    return options;
}

} // namespace

ExitCode RunCheck(CheckArguments const& arguments) {
    CheckOptions const options = MakeOptions(arguments);
    PluginReport const report = CheckPlugin(options, [&](EffectReport const& effect) {
        if (!arguments.asJson) Print(FormatEffect(effect));
    });
    if (report.failure.empty() && report.effects.empty())
        throw WrongCall("check: " + arguments.plugin + " has no effect \"" + options.effect + "\"" +
                        SuggestNearest(options.effect, report.names));
    if (arguments.asJson)
        Print(FormatAsJson(report, options));
    else
        Print(report.failure.empty() ? FormatEnd(report, options)
                                     : "registration: " + ToOneLine(report.failure) + "\n");
    bool const isClean = report.failure.empty() && std::ranges::none_of(report.effects, IsBroken);
    return isClean ? ExitCode::Done : ExitCode::PromiseBroken;
}

} // namespace Velnor::Tool
