#include "Tools/velnor/OutputNames.h"

#include "Proc/Host/PictureFile.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/Suggestions.h"

#include <map>
#include <system_error>

namespace Velnor::Tool {
namespace {

namespace fs = std::filesystem;

std::string Pad(std::size_t index, std::size_t count) {
    std::string digits = std::to_string(index);
    digits.insert(0, std::to_string(count).size() - digits.size(), '0');
    return digits;
}

std::string GetExtension(fs::path const& photo) {
    std::string const extension = photo.extension().string();
    return extension.empty() ? extension : extension.substr(1);
}

/// The pattern with its placeholders replaced, for photograph `index` (from 1) of `count`.
std::string FillPattern(std::string const& pattern, fs::path const& photo, std::size_t index, std::size_t count) {
    std::map<std::string, std::string> const values{
        {"name", photo.stem().string()}, {"index", Pad(index, count)}, {"ext", GetExtension(photo)}};
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
                            "\" means nothing; {name}, {index} and {ext} are known" +
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

void RequireApart(std::vector<OutputPlan> const& plans) {
    std::map<fs::path, fs::path> inputOf;
    for (OutputPlan const& plan : plans) {
        auto const [other, isNew] = inputOf.emplace(Identify(plan.output), plan.input);
        if (!isNew)
            throw WrongCall(other->second.string() + " and " + plan.input.string() + " would both become " +
                            plan.output.string() + "; a pattern with {index} tells them apart");
    }
    for (OutputPlan const& plan : plans) {
        fs::path const photo = Identify(plan.input);
        auto const written = inputOf.find(photo);
        if (written != inputOf.end() && Identify(written->second) != photo)
            throw WrongCall("the output of " + written->second.string() + " would replace " + plan.input.string() +
                            ", which is a photograph of this call itself");
    }
}

} // namespace

std::vector<OutputPlan> PlanOutputs(std::vector<std::string> const& photos, std::string const& output) {
    if (output.empty()) throw WrongCall("-o names no file");
    bool const isPattern = output.find('{') != std::string::npos;
    bool const isFolder = !isPattern && IsFolder(output);
    if (photos.size() > 1 && !isPattern && !isFolder)
        throw WrongCall("-o " + output + " is one file for " + std::to_string(photos.size()) +
                        " photographs; say a folder, such as -o out/, or a pattern, such as -o 'out/{name}.{ext}'");
    std::vector<OutputPlan> plans;
    for (fs::path const photo : photos) {
        if (isPattern) {
            fs::path const file = FillPattern(output, photo, plans.size() + 1, photos.size());
            if (!file.has_filename()) throw WrongCall("-o " + output + " gives a folder, not the name of a file");
            plans.push_back({photo, file});
        } else {
            plans.push_back({photo, isFolder ? fs::path(output) / photo.filename() : fs::path(output)});
        }
    }
    RequireApart(plans);
    return plans;
}

void CheckOutputs(std::vector<OutputPlan> const& plans, bool replace) {
    std::size_t existing = 0;
    fs::path first;
    for (OutputPlan const& plan : plans) {
        Proc::GetWritableFormats(plan.output);
        std::error_code ignored;
        fs::file_status const status = fs::symlink_status(plan.output, ignored);
        if (fs::is_directory(fs::status(plan.output, ignored)))
            throw Failure(ExitCode::OutputFailed, plan.output.string() + " is a folder");
        if (!replace && fs::exists(status) && existing++ == 0) first = plan.output;
    }
    if (existing == 0) return;
    std::string const others = existing == 1 ? "" : " (and " + std::to_string(existing - 1) + " more)";
    throw Failure(ExitCode::OutputFailed, first.string() + others + " exists already; --force replaces it");
}

} // namespace Velnor::Tool
