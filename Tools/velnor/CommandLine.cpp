#include "Tools/velnor/CommandLine.h"

#include "Proc/Interfaces/SettingsText.h"
#include "Tools/velnor/ApplyCommand.h"
#include "Tools/velnor/Console.h"
#include "Tools/velnor/CutoutCommand.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/LastWords.h"
#include "Tools/velnor/ListCommands.h"
#include "Tools/velnor/Logging.h"
#include "Tools/velnor/Suggestions.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <CLI/Validators.hpp>

#include <algorithm>

namespace Velnor::Tool {
namespace {

constexpr char const* EXIT_CODES = R"(Exit codes:
  0    done
  1    of several photographs some failed, the others are done
  2    wrong call: unknown effect or parameter, value of the wrong type or outside its range
  3    an input is missing, damaged or no picture
  4    an output exists already, could not be made or could not be written
  5    over a limit, such as --max-megapixels or --max-memory, or out of memory
  130  stopped, by Ctrl-C or a signal
When several photographs are given and none could be done, the code is that of the first failure.)";

constexpr char const* EFFECT_SYNTAX =
    R"(An effect is written NAME[/IMPLEMENTATION][:PARAMETER=VALUE,PARAMETER=VALUE...]:
  -e pixelate                     with its default parameters
  -e pixelate:strength=40,method-upscale=bilinear
  -e white-balance:reference=#c8b496
Effects run left to right. `velnor effects` lists them, `velnor describe EFFECT` shows the parameters of one.
An effect on two pictures reads the second from its parameter input=FILE. One on any number of pictures joins all
photographs, and every input=FILE, which may be repeated; -o then names one output. Effects after one that cuts
the photograph into pieces run on each piece, until one joins them. A file name with a comma and an equals sign
is quoted: input="a,b=c.jpg". What effects find out is printed, "photograph: effect: name=value" a line;
with --json each photograph is one line, an object. Colours mean sRGB: for a photograph with another colour profile
they are converted to it.)";

std::vector<std::string> const COMMANDS{"apply", "cutout", "effects", "describe"};

struct Arguments {
    ApplyOptions apply; ///< What other commands share with it too.
    CutoutOptions cutout;
    std::string effect; ///< To describe.
    int verbosity = 0;
    int logLevel = 0;
};

/// A number's own check, in the words that the parameters of effects have. The parser puts the option's name before it.
template <class Number>
CLI::Validator Within(Number low, Number high) {
    using Form = Proc::TextForm<Number>;
    return {[=](std::string& text) -> std::string {
                try {
                    Number const value = Form::Parse(text);
                    if (value >= low && value <= high) return {};
                    return text + " is outside the range " + Form::Print(low) + " to " + Form::Print(high);
                } catch (Proc::SettingsTextException const& error) {
                    return DescribeException(error);
                }
            },
            std::string()};
}

void AddPluginOption(CLI::App& command, std::vector<std::string>& plugins) {
    command.add_option("--plugin", plugins, "Load this plug-in too; may be repeated")
        ->type_name("FILE")
        ->allow_extra_args(false);
    command.allow_extras(); // Collected, so that the message about them is our own.
}

void AddCommonOptions(CLI::App& command, ApplyOptions& options) {
    command.add_flag("--json", options.asJson, "Print results as JSON");
    AddPluginOption(command, options.plugins);
}

bool ParseSwitch(std::string const& choice) {
    if (choice == "on" || choice == "off") return choice == "on";
    throw WrongCall("--subsample: there is no \"" + choice + "\"; it takes on or off");
}

Proc::Color ParseColor(std::string const& text) {
    try {
        return Proc::TextForm<Proc::Color>::Parse(text);
    } catch (Proc::SettingsTextException const& error) {
        throw WrongCall("--background: " + DescribeException(error));
    }
}

Proc::Strip ParseStrip(std::string const& what) {
    if (what == "all") return Proc::Strip::All;
    if (what == "gps") return Proc::Strip::Gps;
    if (what == "thumbnail") return Proc::Strip::Thumbnail;
    throw WrongCall("--strip: there is no \"" + what + "\"; it takes all, gps or thumbnail");
}

/// Of the commands that read photographs and write others.
void AddFileOptions(CLI::App& command, FileOptions& files) {
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
    command.add_option("--max-megapixels", files.maxMegapixels, "Refuse larger photographs")
        ->check(Within(0.000001, 1e6))
        ->type_name("N")
        ->capture_default_str();
    command
        .add_option("--max-memory", files.maxMemory,
                    "Refuse photographs that take more megabytes to read; half of what there is unless it is given")
        ->check(Within(0.000001, 1e9))
        ->type_name("N");
    command
        .add_option("--max-expansion", files.maxExpansion,
                    "Refuse photographs of 64 megapixels and more that take more than N times their file; unless it is "
                    "given 80 for JPEG, 16 for PNM, else 400")
        ->check(Within(1.0, 1e9))
        ->type_name("N");
    command
        .add_option_function<std::string>(
            "--strip", [&files](std::string const& what) { files.writing.strip = ParseStrip(what); },
            "Metadata to leave out: all (but colour profile and resolution), gps, or thumbnail, which is never kept")
        ->type_name("WHAT");
    command.add_flag("--keep-times", files.writing.keepTimes,
                     "Give outputs the photograph's times of access and change");
    command.add_flag(
        "--to-srgb", files.toSrgb,
        "Convert photographs with another colour profile to sRGB by it; they then have the profile of sRGB, grey ones "
        "none. Else profiles stay as they are");
    command.add_flag("--accept-damaged", files.acceptDamaged,
                     "Keep the readable part of a damaged photograph: of JPEG, PNG, WebP and GIF, and of TIFF whose "
                     "directory stands before the damage; the rest is black, or grey");
}

void AddLogOptions(CLI::App& command, Arguments& arguments) {
    command.add_flag("-v,--verbose", arguments.verbosity,
                     "Log what the effects do to standard error: raises the verbose log level by 30 each time");
    command.add_option("--log-level", arguments.logLevel, "Verbose log level")->check(Within(0, 1000))->type_name("N");
}

void AddApply(CLI::App& app, Arguments& arguments) {
    ApplyOptions& options = arguments.apply;
    CLI::App* const apply = app.add_subcommand("apply", "Run effects on photographs and write the results");
    apply
        ->add_option("photos", options.photos,
                     "Photographs to read; - is standard input, and after -- names may begin with a dash")
        ->type_name("PHOTO");
    apply->add_option("-e,--effect", options.effects, "Effect to run; may be repeated")
        ->type_name("EFFECT")
        ->allow_extra_args(false);
    apply
        ->add_option("-o,--output", options.output,
                     "File to write; a folder (out/) for several photographs, or a pattern with {name}, {index} and "
                     "{ext}, and {x} and {y} of the pieces that an effect cuts a photograph into. Folders that are "
                     "missing are made. - is standard output. Not needed with effects that only find something out")
        ->type_name("OUT");
    apply->add_option("--to", options.format, "Format of the picture on standard output, by extension: png, jpg, ...")
        ->type_name("FORMAT");
    AddFileOptions(*apply, options.files);
    apply
        ->add_option_function<std::string>(
            "--background",
            [&options](std::string const& color) { options.files.writing.background = ParseColor(color); },
            "What transparency is laid on where the format has none; else white")
        ->type_name("COLOR");
    apply->add_flag("--stats", options.showStatistics, "Print each effect's statistics to standard error at the end");
    AddLogOptions(*apply, arguments);
    AddCommonOptions(*apply, options);
    apply->footer(std::string(EFFECT_SYNTAX) + "\n\n" + EXIT_CODES);
}

void AddCutout(CLI::App& app, Arguments& arguments) {
    CutoutOptions& options = arguments.cutout;
    CLI::App* const cutout = app.add_subcommand("cutout", "Cut an object out by strokes on it and on its background");
    cutout->add_option("photo", options.photo, "Photograph to read")->type_name("PHOTO");
    cutout
        ->add_option("--strokes", options.strokes,
                     "Picture of the photograph's size with a few strokes: of one grey on the object, of another on "
                     "the background, black elsewhere")
        ->type_name("STROKES");
    cutout->add_option("-o,--output", options.output, "File to write, of a format with transparency")->type_name("OUT");
    for (CutoutOptions::Setting& setting : options.settings)
        cutout->add_option("--" + setting.name, setting.value, DescribeCutoutSetting(setting.name))
            ->type_name("VALUE")
            ->capture_default_str();
    cutout->add_option("--feather", options.feather, "Softness of the edge, in pixels: 0 is hard")
        ->check(Within(0.0, 100.0))
        ->type_name("N")
        ->capture_default_str();
    AddFileOptions(*cutout, options.files);
    AddLogOptions(*cutout, arguments);
    AddPluginOption(*cutout, options.plugins);
    cutout->footer("  velnor cutout photo.jpg --strokes strokes.png -o object.png\n\n" + std::string(EXIT_CODES));
}

/// The options of a command as they are typed.
std::vector<std::string> GetOptionNames(CLI::App const& command) {
    std::vector<std::string> names;
    for (CLI::Option const* option : command.get_options())
        for (std::string const& name : option->get_lnames()) names.push_back("--" + name);
    return names;
}

void RequireNoExtras(CLI::App const& command) {
    for (std::string const& extra : command.remaining()) {
        if (extra == "--") continue; // The mark that options end here, which the parser leaves among the extras.
        std::string const typed = extra.substr(0, extra.find('='));
        if (typed.starts_with('-'))
            throw WrongCall(command.get_name() + " has no option " + typed +
                            SuggestNearest(typed, GetOptionNames(command),
                                           "`velnor " + command.get_name() + " --help` lists them"));
        throw WrongCall(command.get_name() + " takes no further argument \"" + extra + "\"");
    }
}

/// Whether there is something to log.
bool StartLogging(Arguments const& arguments) {
    constexpr int LEVEL_OF_EFFECTS = 30;
    int const level = std::max(LEVEL_OF_EFFECTS * arguments.verbosity, arguments.logLevel);
    SetVerboseLevel(level);
    return level > 0;
}

/// What stands before the command is no part of it, and must not be dropped.
void RequireCommandFirst(CLI::App const& app) {
    std::vector<std::string> const extras = app.remaining();
    if (extras.empty()) return;
    std::string const& first = extras.front();
    if (first.starts_with('-'))
        throw WrongCall("there is no option " + first + " before a command" +
                        SuggestNearest(first, GetOptionNames(app), "`velnor --help` lists them"));
    throw WrongCall("there is no command \"" + first + "\"" + SuggestNearest(first, COMMANDS));
}

ExitCode RunApplyCommand(Arguments const& arguments) {
    ApplyOptions options = arguments.apply;
    if (options.photos.empty()) throw WrongCall("apply: no photograph is given");
    options.isVerbose = StartLogging(arguments);
    return RunApply(options);
}

/// The parser's own complaints, in the words of this command.
std::string Explain(CLI::ParseError const& error, CLI::App const& app) {
    if (app.get_subcommands().empty()) return error.what();
    return app.get_subcommands().front()->get_name() + ": " + error.what();
}

ExitCode RunParsed(CLI::App const& app, Arguments const& arguments) {
    std::vector<CLI::App*> const commands = app.get_subcommands();
    RequireCommandFirst(app);
    if (commands.empty())
        throw WrongCall("no command is given; there is " + JoinAlternatives(COMMANDS, "and") +
                        " (`velnor --help` tells more)");
    CLI::App const& command = *commands.front();
    RequireNoExtras(command);
    ApplyOptions const& options = arguments.apply;
    if (command.get_name() == "apply") return RunApplyCommand(arguments);
    if (command.get_name() == "cutout") {
        StartLogging(arguments);
        return RunCutout(arguments.cutout);
    }
    if (command.get_name() == "describe" && arguments.effect.empty())
        throw WrongCall("describe: no effect is given; `velnor effects` lists what there is");
    Print(command.get_name() == "effects" ? ListEffects(options.plugins, options.asJson)
                                          : DescribeEffect(arguments.effect, options.plugins, options.asJson));
    return ExitCode::Done;
}

ExitCode Run(int argumentsCount, char const* const* given) {
    Arguments arguments;
    CLI::App app("Photo effects: runs the effects of the host and its plug-ins on photographs.", "velnor");
    app.set_version_flag("--version", "velnor " VELNOR_VERSION, "Print the version");
    app.footer(EXIT_CODES);
    app.allow_extras();
    app.require_subcommand(0, 1); // After the first, a word that is a command's name too is a photograph's.
    AddApply(app, arguments);
    AddCutout(app, arguments);
    CLI::App* const effects = app.add_subcommand("effects", "List the effects that there are");
    AddCommonOptions(*effects, arguments.apply);
    CLI::App* const describe = app.add_subcommand("describe", "Show the parameters of an effect");
    describe->add_option("effect", arguments.effect, "Name of the effect")->type_name("EFFECT");
    AddCommonOptions(*describe, arguments.apply);
    try {
        app.parse(argumentsCount, given);
    } catch (CLI::CallForHelp const&) {
        Print(app.help());
        return ExitCode::Done;
    } catch (CLI::CallForVersion const& version) {
        Print(version.what() + std::string("\n"));
        return ExitCode::Done;
    } catch (CLI::ParseError const& error) {
        RequireCommandFirst(app);
        for (CLI::App const* command : app.get_subcommands()) RequireNoExtras(*command);
        throw WrongCall(Explain(error, app));
    }
    return RunParsed(app, arguments);
}

} // namespace

int RunCommandLine(int argumentsCount, char const* const* arguments) {
    try {
        PrepareConsole();
        PrepareLastWords();
        PrepareLogging();
        return static_cast<int>(Run(argumentsCount, arguments));
    } catch (...) {
        Report const report = ReportCurrentException();
        PrintError(report.text);
        return static_cast<int>(report.code);
    }
}

} // namespace Velnor::Tool
