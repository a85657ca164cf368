#include "Tools/velnor/OptionGroups.h"

#include "Tools/velnor/Failure.h"
#include "Tools/velnor/Logging.h"

#include <algorithm>

namespace Velnor::Tool {
namespace {

bool ParseSwitch(std::string const& choice) {
    if (choice == "on" || choice == "off") return choice == "on";
    throw WrongCall("--subsample: there is no \"" + choice + "\"; it takes on or off");
}

Proc::Strip ParseStrip(std::string const& what) {
    if (what == "all") return Proc::Strip::All;
    if (what == "gps") return Proc::Strip::Gps;
    if (what == "thumbnail") return Proc::Strip::Thumbnail;
    throw WrongCall("--strip: there is no \"" + what + "\"; it takes all, gps or thumbnail");
}

} // namespace

bool LogOptions::Start() const {
    constexpr int LEVEL_OF_EFFECTS = 30;
    int const highest = std::max(LEVEL_OF_EFFECTS * verbosity, level);
    SetVerboseLevel(highest);
    return highest > 0;
}

void AddEffectOption(CLI::App& command, std::vector<std::string>& effects) {
    command.add_option("-e,--effect", effects, "Effect to run; may be repeated")
        ->type_name("EFFECT")
        ->allow_extra_args(false);
}

void AddRecipeOptions(CLI::App& command, RecipeUse& use) {
    command
        .add_option("--recipe", use.recipes,
                    "Recipe to run, by its name or file, before the effects of -e; may be repeated")
        ->type_name("RECIPE")
        ->allow_extra_args(false);
    command.add_option("--set", use.values, "Value for a variable of the recipes; may be repeated")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false);
}

void AddPluginOption(CLI::App& command, std::vector<std::string>& plugins) {
    command
        .add_option("--plugin", plugins,
                    "Load this plug-in too; may be repeated. Those that are installed, in a folder of "
                    "VELNOR_PLUGIN_PATH or in ~/.local/share/velnor/plugins are loaded anyway")
        ->type_name("FILE")
        ->allow_extra_args(false);
    command.allow_extras(); // Collected, so that the message about them is our own.
}

void AddJsonOption(CLI::App& command, bool& asJson) { command.add_flag("--json", asJson, "Print results as JSON"); }

void AddLogOptions(CLI::App& command, LogOptions& log) {
    command.add_flag("-v,--verbose", log.verbosity,
                     "Log what the effects do to standard error: raises the verbose log level by 30 each time");
    command.add_option("--log-level", log.level, "Verbose log level")->check(Within(0, 1000))->type_name("N");
}

void AddReadingOptions(CLI::App& command, FileOptions& files) {
    command.add_option("--max-megapixels", files.maxMegapixels, "Refuse larger photographs")
        ->check(Within(0.000001, 1e6))
        ->type_name("N")
        ->capture_default_str();
    command
        .add_option(
            "--max-memory", files.maxMemory,
            "Refuse photographs that take more megabytes to read, and work on as many at once as fit; half of what "
            "there is unless it is given")
        ->check(Within(0.000001, 1e9))
        ->type_name("N");
    command
        .add_option("--max-expansion", files.maxExpansion,
                    "Refuse photographs of 64 megapixels and more that take more than N times their file; unless it is "
                    "given 80 for JPEG, 16 for PNM, else 400")
        ->check(Within(1.0, 1e9))
        ->type_name("N");
    command.add_flag(
        "--to-srgb", files.toSrgb,
        "Convert photographs with another colour profile to sRGB by it; they then have the profile of sRGB, grey ones "
        "none. Else profiles stay as they are");
    command.add_flag(
        "--accept-damaged", files.acceptDamaged,
        "Keep the readable part of a damaged photograph, with a warning: of JPEG, PNG, WebP, GIF, JPEG XL, "
        "PNM and raw files, and of TIFF whose directory stands before the damage; the rest is black, or "
        "grey. HEIC and AVIF are read as a whole or not at all");
}

void AddWritingOptions(CLI::App& command, FileOptions& files) {
    command.add_flag("-f,--force", files.writing.overwrite, "Replace outputs that exist already");
    Proc::WriteOptions& writing = files.writing;
    command
        .add_option(
            "--quality", writing.quality,
            "Quality of lossy formats, 1 to 100; else a JPEG file keeps that of its photograph, and others have "
            "90, AVIF and HEIC 70")
        ->check(Within(1, 100))
        ->type_name("N");
    command
        .add_option_function<std::string>(
            "--subsample", [&writing](std::string const& choice) { writing.halvesChroma = ParseSwitch(choice); },
            "Whether JPEG, AVIF and HEIC hold chroma at half the resolution: on or off; else a JPEG file does as its "
            "photograph, and others below a quality of 95")
        ->type_name("on|off");
    command.add_flag("--lossless", writing.isLossless, "Write WebP or JPEG XL without loss");
    command.add_option("--compression", writing.compression, "Of PNG 0 to 9; of TIFF none, lzw or deflate")
        ->type_name("HOW");
    command
        .add_option_function<std::string>(
            "--strip", [&files](std::string const& what) { files.writing.strip = ParseStrip(what); },
            "Metadata to leave out: all (but colour profile and resolution), gps, or thumbnail: previews in "
            "maker notes and XMP too, besides the thumbnails that are never kept")
        ->type_name("WHAT");
    command.add_flag("--keep-times", files.writing.keepTimes,
                     "Give outputs the photograph's times of access and change");
}

} // namespace Velnor::Tool
