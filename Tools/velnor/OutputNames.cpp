#include "Tools/velnor/OutputNames.h"

#include "Proc/Host/PictureFile.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/Suggestions.h"

#include <algorithm>
#include <map>
#include <set>
#include <system_error>

namespace Velnor::Tool {
namespace {

namespace fs = std::filesystem;

/// With zeros before it, so that its like up to the largest sort as texts.
std::string Pad(std::size_t number, std::size_t largest) {
    std::string digits = std::to_string(number);
    digits.insert(0, std::to_string(largest).size() - digits.size(), '0');
    return digits;
}

std::string GetExtension(fs::path const& photo) {
    std::string const extension = photo.extension().string();
    return extension.empty() ? extension : extension.substr(1);
}

/// What is typed with its placeholders replaced, for a piece of the photograph. No piece is farther off than `last`.
std::string FillPattern(OutputPlan const& plan, Place const& place, Place const& last) {
    fs::path const& input = plan.inputs.front();
    std::map<std::string, std::string> const values{{"name", input.stem().string()},
                                                    {"index", Pad(plan.index, plan.count)},
                                                    {"ext", GetExtension(input)},
                                                    {"x", Pad(place.x, last.x)},
                                                    {"y", Pad(place.y, last.y)}};
    std::string const& pattern = plan.given;
    std::string filled;
    for (std::size_t at = 0; at < pattern.size();) {
        std::size_t const open = std::min(pattern.find('{', at), pattern.size());
        filled += pattern.substr(at, open - at);
        if (open == pattern.size()) break;
        std::size_t const close = pattern.find('}', open);
        std::string const key = close == std::string::npos ? "" : pattern.substr(open + 1, close - open - 1);
        auto const value = values.find(key);
        if (value == values.end())
            throw WrongCall("-o " + pattern + ": \"" + pattern.substr(open, close - open + (close < pattern.size())) +
                            "\" means nothing; {name}, {index}, {ext}, {x} and {y} are known" +
                            (FindNearest(key, {"name", "index", "ext"}).empty()
                                 ? std::string()
                                 : SuggestNearest(key, {"name", "index", "ext"})));
        filled += value->second;
        at = close + 1;
    }
    return filled;
}

bool IsFolder(std::string const& output) {
    std::error_code ignored;
    return output.ends_with('/') || fs::is_directory(output, ignored);
}

/// The file as it is known to the system, however it was written.
fs::path Identify(fs::path const& file) {
    std::error_code error;
    fs::path const known = fs::weakly_canonical(fs::absolute(file, error), error);
    return error ? file.lexically_normal() : known;
}

bool IsPattern(std::string const& output) { return output.find('{') != std::string::npos; }

void RequireApart(std::vector<OutputPlan> const& plans) {
    std::map<fs::path, fs::path> inputOf;
    for (OutputPlan const& plan : plans) {
        auto const [other, isNew] = inputOf.emplace(Identify(plan.output), plan.inputs.front());
        if (!isNew)
            throw WrongCall(other->second.string() + " and " + plan.inputs.front().string() + " would both become " +
                            plan.output.string() + "; a pattern with {index} tells them apart");
    }
    for (OutputPlan const& plan : plans) {
        fs::path const photo = Identify(plan.inputs.front());
        auto const written = inputOf.find(photo);
        if (written != inputOf.end() && Identify(written->second) != photo)
            throw WrongCall("the output of " + written->second.string() + " would replace " +
                            plan.inputs.front().string() + ", which is a photograph of this call itself");
    }
}

} // namespace

std::vector<OutputPlan> PlanOutputs(std::vector<std::string> const& photos, std::string const& output, bool areJoined) {
    std::vector<OutputPlan> plans;
    if (areJoined)
        plans.push_back({{photos.begin(), photos.end()}, {}, output, 1, 1});
    else
        for (std::string const& photo : photos) plans.push_back({{photo}, {}, output, plans.size() + 1, photos.size()});
    if (output.empty()) return plans;
    bool const isPattern = IsPattern(output);
    bool const isFolder = !isPattern && IsFolder(output);
    if (plans.size() > 1 && !isPattern && !isFolder)
        throw WrongCall("-o " + output + " is one file for " + std::to_string(photos.size()) +
                        " photographs; say a folder, such as -o out/, or a pattern, such as -o 'out/{name}.{ext}'");
    for (OutputPlan& plan : plans) {
        plan.output = isPattern ? fs::path(FillPattern(plan, {}, {}))
                                : (isFolder ? fs::path(output) / plan.inputs.front().filename() : fs::path(output));
        if (isPattern && !plan.output.has_filename())
            throw WrongCall("-o " + output + " gives a folder, not the name of a file");
    }
    RequireApart(plans);
    return plans;
}

std::vector<fs::path> NamePieces(OutputPlan const& plan, std::vector<Place> const& places) {
    Place last;
    for (Place const& place : places) last = {std::max(last.x, place.x), std::max(last.y, place.y)};
    std::vector<fs::path> names;
    for (Place const& place : places)
        names.push_back(IsPattern(plan.given) ? fs::path(FillPattern(plan, place, last)) : plan.output);
    if (std::set<fs::path>(names.begin(), names.end()).size() < names.size())
        throw WrongCall(plan.inputs.front().string() + " becomes " + std::to_string(places.size()) +
                        " pictures, and -o " + plan.given +
                        " gives several of them one name; say a pattern with {x} and {y}, such as -o '" +
                        "out/{name}-{y}-{x}.{ext}'");
    return names;
}

void CheckOutputs(std::vector<fs::path> const& outputs, bool replace) {
    std::size_t existing = 0;
    fs::path first;
    for (fs::path const& output : outputs) {
        Proc::GetWritableFormats(output);
        std::error_code ignored;
        fs::file_status const status = fs::symlink_status(output, ignored);
        if (fs::is_directory(fs::status(output, ignored)))
            throw Failure(ExitCode::OutputFailed, output.string() + " is a folder");
        if (!replace && fs::exists(status) && existing++ == 0) first = output;
    }
    if (existing == 0) return;
    std::string const others = existing == 1 ? "" : " (and " + std::to_string(existing - 1) + " more)";
    throw Failure(ExitCode::OutputFailed, first.string() + others + " exists already; --force replaces it");
}

} // namespace Velnor::Tool
