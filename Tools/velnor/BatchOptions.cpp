#include "Tools/velnor/BatchOptions.h"

#include "Proc/Host/PictureFile.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/OptionGroups.h"
#include "Tools/velnor/StandardStreams.h"

#include <algorithm>

namespace Velnor::Tool {
namespace {

ProgressKind ParseProgress(std::string const& kind) {
    if (kind == "auto") return ProgressKind::Auto;
    if (kind == "json") return ProgressKind::Json;
    if (kind == "none") return ProgressKind::None;
    throw WrongCall("--progress: there is no \"" + kind + "\"; it takes auto, json or none");
}

/// As it is typed, "jpg" or ".jpg".
std::string ParseFormat(std::string format) {
    if (format.starts_with('.')) format.erase(0, 1);
    try {
        Proc::GetWritableFormats("picture." + format);
    } catch (Proc::FileOutputException const&) {
        std::string const text = ReportCurrentException().text;
        throw WrongCall("--format " + format + text.substr(std::min(text.find(": "), text.size())));
    }
    return format;
}

void AddInputOptions(CLI::App& command, BatchOptions& options) {
    command.add_flag("-r,--recursive", options.isRecursive,
                     "Take the photographs in folders that are given, and in those below; an output folder gets their "
                     "tree");
    command
        .add_option("--include", options.include,
                    "Only photographs with such a name, as in '*.jpg'; with a slash, with such a path. May be repeated")
        ->type_name("GLOB")
        ->allow_extra_args(false);
    command
        .add_option("--exclude", options.exclude,
                    "No photographs, and no folders below one that is given, with such a name or path")
        ->type_name("GLOB")
        ->allow_extra_args(false);
}

void AddOutputOptions(CLI::App& command, BatchOptions& options) {
    command
        .add_option_function<std::string>(
            "--format", [&options](std::string const& format) { options.fallbackFormat = ParseFormat(format); },
            "Extension of outputs where that of the photograph cannot be written, as with GIF, BMP and raw files")
        ->type_name("EXT");
    command.add_flag("--skip-existing", options.skipsExisting, "Leave out photographs of which the output is there");
    command.add_flag("--update", options.updates,
                     "Leave out photographs of which the output is newer than they, every input=FILE and every "
                     "recipe; replace older outputs");
    command.add_flag("--backup", options.keepsReplaced,
                     "Keep what --force or --update replaces, as FILE.~1~ or with the next number that is free");
    command
        .add_option("--journal", options.journal,
                    "File to note each photograph in that is done; the same call with it goes on where it was stopped")
        ->type_name("FILE");
    command.add_flag("-n,--dry-run", options.isDryRun, "Only say what would be done with each photograph, and why");
}

} // namespace

void AddBatchOptions(CLI::App& command, BatchOptions& options) {
    command.add_option("-j,--jobs", options.jobs, "Photographs to work on at once; as many as there are processors")
        ->check(Within(1, 1024))
        ->type_name("N");
    AddInputOptions(command, options);
    AddOutputOptions(command, options);
    command
        .add_option_function<std::string>(
            "--progress", [&options](std::string const& kind) { options.progress = ParseProgress(kind); },
            "How far it is: auto, a line where standard error is a terminal; json, lines of JSON there; none")
        ->type_name("KIND");
}

void RequireBatchOptions(BatchOptions const& options, bool overwrite, std::string const& output) {
    auto const contradict = [](std::string const& one, std::string const& other) {
        throw WrongCall(one + " and " + other + " contradict each other");
    };
    if (options.skipsExisting && options.updates) contradict("--skip-existing", "--update");
    if (overwrite && options.skipsExisting) contradict("--force", "--skip-existing");
    if (overwrite && options.updates) contradict("--force", "--update");
    if (options.keepsReplaced && !overwrite && !options.updates)
        throw WrongCall("--backup keeps what --force or --update replaces, and neither is given");
    if (output == STANDARD_STREAM && options.HandlesExisting())
        throw WrongCall("--skip-existing, --update and --journal are about files; -o - is standard output");
    if (output.empty() && (options.skipsExisting || options.updates))
        throw WrongCall("--skip-existing and --update are about outputs; -o is missing");
}

} // namespace Velnor::Tool
