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

bool IsWritable(std::string const& extension) {
    try {
        return !Proc::GetWritableFormats("picture" + extension).empty();
    } catch (Proc::FileOutputException const&) {
        return false;
    }
}

/// Of the output, with its dot: the photograph's, unless that cannot be written and there is another.
std::string ChooseExtension(OutputPlan const& plan) {
    std::string const own = plan.inputs.front().extension().string();
    return plan.fallbackExtension.empty() || IsWritable(own) ? own : plan.fallbackExtension;
}

/// What is typed with its placeholders replaced, for a piece of the photograph. No piece is farther off than `last`.
std::string FillPattern(OutputPlan const& plan, Place const& place, Place const& last) {
    fs::path const& input = plan.inputs.front();
    std::string const extension = ChooseExtension(plan);
    std::map<std::string, std::string> const values{{"name", input.stem().string()},
                                                    {"index", Pad(plan.index, plan.count)},
                                                    {"ext", extension.empty() ? extension : extension.substr(1)},
                                                    {"folder", plan.folder.string()},
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
                            "\" means nothing; {name}, {index}, {ext}, {folder}, {x} and {y} are known" +
                            (FindNearest(key, {"name", "index", "ext", "folder"}).empty()
                                 ? std::string()
                                 : SuggestNearest(key, {"name", "index", "ext", "folder"})));
        filled += value->second;
        at = close + 1;
    }
    return filled;
}

bool IsFolder(std::string const& output) {
    std::error_code ignored;
    return output.ends_with('/') || fs::is_directory(output, ignored);
}

bool IsThere(fs::path const& file) {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(file, ignored));
}

bool IsPattern(std::string const& output) { return output.find('{') != std::string::npos; }

std::string NameInFolder(OutputPlan const& plan) {
    fs::path name = plan.inputs.front().filename();
    name.replace_extension(ChooseExtension(plan));
    return name.string();
}

} // namespace

OutputNaming::OutputNaming(std::string const& given, std::size_t outputsCount, std::string const& fallbackFormat)
    : output(given),
      count(outputsCount),
      fallbackExtension(fallbackFormat.empty() ? fallbackFormat : "." + fallbackFormat),
      isPattern(IsPattern(output)),
      isFolder(!isPattern && IsFolder(output)) {
    if (count > 1 && !output.empty() && !isPattern && !isFolder)
        throw WrongCall("-o " + output + " is one file for " + std::to_string(count) +
                        " photographs; say a folder, such as -o out/, or a pattern, such as -o 'out/{name}.{ext}'");
}

OutputPlan OutputNaming::Plan(std::vector<PhotoName> const& photos, std::size_t index) const {
    OutputPlan plan{{}, {}, output, index, count, photos.front().folder, fallbackExtension};
    for (PhotoName const& photo : photos) plan.inputs.emplace_back(photo.path);
    if (output.empty()) return plan;
    if (isPattern)
        plan.output = FillPattern(plan, {}, {});
    else
        plan.output = isFolder ? fs::path(output) / plan.folder / NameInFolder(plan) : fs::path(output);
    if (isPattern && !plan.output.has_filename())
        throw WrongCall("-o " + output + " gives a folder, not the name of a file");
    return plan;
}

std::optional<OutputPlan> PlanReader::Next() {
    std::vector<PhotoName> photos;
    while (photos.empty() || isOne) {
        std::optional<PhotoName> photo = reader.Next();
        if (!photo) break;
        photos.push_back(std::move(*photo));
    }
    if (photos.empty()) return std::nullopt;
    return naming.Plan(photos, ++index);
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
    for (fs::path const& output : outputs) {
        Proc::GetWritableFormats(output);
        std::error_code ignored;
        if (fs::is_directory(fs::status(output, ignored)))
            throw Failure(ExitCode::OutputFailed, output.string() + " is a folder");
        if (!replace && IsThere(output))
            throw Failure(ExitCode::OutputFailed, output.string() + " exists already; --force replaces it");
    }
}

void RequireFree(std::function<PlanReader()> const& makeReader) {
    std::size_t existing = 0;
    fs::path first;
    PlanReader plans = makeReader();
    for (std::optional<OutputPlan> plan = plans.Next(); plan; plan = plans.Next())
        if (IsThere(plan->output) && existing++ == 0) first = plan->output;
    if (existing == 0) return;
    std::string const others = existing == 1 ? "" : " (and " + std::to_string(existing - 1) + " more)";
    throw Failure(ExitCode::OutputFailed, first.string() + others + " exists already; --force replaces it");
}

} // namespace Velnor::Tool
