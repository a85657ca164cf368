#include "Tools/velnor/ApplyCommand.h"

#include "Tools/velnor/Console.h"
#include "Tools/velnor/PhotoReport.h"
#include "Tools/velnor/PictureOutput.h"
#include "Tools/velnor/StandardStreams.h"
#include "Tools/velnor/StopSignals.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <memory>
#include <optional>
#include <system_error>

namespace Velnor::Tool {
namespace {

namespace fs = std::filesystem;

/// Whether a shell would have put the names of files in the place of this one.
bool IsGlob(std::string const& name) { return name.find_first_of("*?[") != std::string::npos; }

/// Why the photograph cannot be one, as far as its name tells.
std::optional<Failure> FindProblem(std::string const& photo) {
    if (photo == STANDARD_STREAM) return std::nullopt;
    std::error_code error;
    fs::file_status const status = fs::status(photo, error);
    if (fs::is_directory(status))
        return Failure(ExitCode::InputFailed,
                       photo + " is a folder; its photographs are named one by one, as the shell does for " +
                           (fs::path(photo) / "*.jpg").string());
    if (fs::exists(status)) return std::nullopt;
    return Failure(ExitCode::InputFailed, IsGlob(photo)
                                              ? "no file has a name like " + photo
                                              : photo + " cannot be read: " + std::generic_category().message(ENOENT));
}

/// An effect's name among the photographs is a call gone wrong, not a photograph that is missing.
void RequireNoEffects(std::vector<std::string> const& photos, EffectCatalogue const& catalogue) {
    for (std::string const& photo : photos) {
        std::string const name = photo.substr(0, photo.find_first_of(":/"));
        if (std::ranges::count(catalogue.GetEntries(), name, &CatalogueEntry::name) == 0 || !FindProblem(photo))
            continue;
        throw WrongCall("there is no photograph " + photo + "; an effect is given by -e, as in -e " + photo);
    }
}

/// The chain of effects at work on one photograph after the other.
class Work {
public:
    Work(ApplyOptions const& applyOptions, EffectCatalogue const& effects,
         intrusive_ptr<Core::IProgressController> const& progress)
        : options(applyOptions), catalogue(effects), controller(progress), reading(options.files.ForReading()) {
        for (std::string const& effect : options.effects)
            steps.emplace_back(ParseEffectArgument(effect), catalogue, reading, controller);
        if (!options.format.empty() && options.output != STANDARD_STREAM)
            throw WrongCall("--to names the format of standard output, which is -o -");
        joint = FindJoint();
        plans = PlanOutputs(options.photos, options.output, joint < steps.size());
        if (options.output.empty()) {
            RequireResults();
            return;
        }
        std::vector<fs::path> outputs;
        for (OutputPlan const& plan : plans) outputs.push_back(plan.output);
        RequireWritable(outputs);
    }

    std::vector<OutputPlan> const& GetPlans() const { return plans; }

    /// Never throws for what is wrong with the photograph.
    PhotoReport Process(OutputPlan const& plan) {
        PhotoReport photo;
        photo.inputs = plan.inputs;
        try {
            ProcessThrowing(plan, photo);
        } catch (...) {
            photo.report = ReportCurrentException();
            photo.report.text.insert(0, place);
            photo.found.clear();
            // An effect that is told to stop may say so in its own way.
            if (controller->IsStopRequested()) photo.report = {ExitCode::Stopped, "stopped"};
        }
        place.clear();
        line.Clear();
        ++finished;
        return photo;
    }

    std::string GetStatistics() const {
        std::string text;
        for (EffectStep const& step : steps) text += step.GetStatistic().ToText();
        return text;
    }

private:
    /// What the photographs of one output have become on the way to it.
    struct Way {
        std::vector<Piece> pieces;
        bool hadAlpha = false;
        std::shared_ptr<Proc::PictureMetadata const> metadata; ///< The first photograph's.
    };

    /// The photograph that an effect works on, the first of several.
    struct Source {
        fs::path const& path;
        Proc::PictureMetadata const* metadata;
    };

    /// The effect that joins the photographs, the end of the chain when there is none. After one that cuts them up, the
    /// pieces of each are joined, not the photographs.
    std::size_t FindJoint() const {
        for (std::size_t i = 0; i < steps.size() && !steps[i].Cuts(); ++i)
            if (steps[i].Joins()) return i;
        return steps.size();
    }

    /// Effects that only tell something need no output.
    void RequireResults() const {
        if (std::ranges::none_of(steps, &EffectStep::HasResults))
            throw WrongCall("apply: -o is missing; it names the file, the folder (out/) or the pattern to write");
    }

    void ProcessThrowing(OutputPlan const& plan, PhotoReport& photo) {
        std::size_t const alone = joint < steps.size() ? joint : 0;
        Way way;
        for (fs::path const& input : plan.inputs) Read(input, alone, way, photo);
        for (std::size_t i = alone; i < steps.size(); ++i)
            way.pieces = RunStep(steps[i], {plan.inputs.front(), way.metadata.get()}, std::move(way.pieces), photo);
        if (plan.output.empty()) return;
        Announce(plan.inputs.front(), "writing");
        std::vector<fs::path> const files = NameFiles(plan, way.pieces);
        for (std::size_t i = 0; i < files.size(); ++i) {
            RequireGoing();
            if (options.output == STANDARD_STREAM) {
                StandardOutput const output(options.format);
                Write(std::move(way.pieces[i].picture), output.GetFile(), way, photo, output.GetDescriptor());
                output.Print();
            } else
                Write(std::move(way.pieces[i].picture), files[i], way, photo);
            photo.outputs.push_back(files[i]);
        }
    }

    /// Adds a photograph, after the first of the effects have run on it.
    void Read(fs::path const& input, std::size_t effects, Way& way, PhotoReport& photo) {
        Announce(input, "reading");
        if (std::optional<Failure> const problem = FindProblem(input)) throw *problem;
        Proc::LoadedPicture loaded = ReadPhoto(input, *catalogue.GetHost().GetContext(), reading);
        photo.Warn(input, loaded.warnings);
        if (way.pieces.empty()) way.metadata = loaded.metadata;
        way.hadAlpha = way.hadAlpha || loaded.picture->GetDescription().hasAlpha;
        std::vector<Piece> pieces;
        pieces.push_back({std::move(loaded.picture), {}});
        for (std::size_t i = 0; i < effects; ++i)
            pieces = RunStep(steps[i], {input, loaded.metadata.get()}, std::move(pieces), photo);
        std::ranges::move(pieces, std::back_inserter(way.pieces));
    }

    std::vector<Piece> RunStep(EffectStep& step, Source const& source, std::vector<Piece> pieces, PhotoReport& photo) {
        bool const areSeveral = pieces.size() > 1;
        std::vector<StepOutcome> outcomes;
        if (areSeveral && step.Joins())
            outcomes.push_back(RunOnce(step, source, std::nullopt, std::move(pieces), photo));
        else
            for (Piece& piece : pieces) {
                auto const at = areSeveral ? std::optional(piece.place) : std::nullopt;
                std::vector<Piece> one;
                one.push_back(std::move(piece));
                outcomes.push_back(RunOnce(step, source, at, std::move(one), photo));
            }
        Warn(step, source.path, outcomes, photo);
        std::vector<Piece> made;
        for (StepOutcome& outcome : outcomes) std::ranges::move(outcome.pieces, std::back_inserter(made));
        return made;
    }

    StepOutcome RunOnce(EffectStep& step, Source const& source, std::optional<Place> const& at,
                        std::vector<Piece> pieces, PhotoReport& photo) {
        fs::path const& input = source.path;
        Announce(input, step.GetName());
        place = NamePhoto(input) + ": " + step.GetName() + ": ";
        StepOutcome outcome = step.Run(std::move(pieces), source.metadata);
        if (!outcome.warning.empty()) photo.warnings.push_back(place + outcome.warning);
        place.clear();
        if (!outcome.results.empty()) photo.found.push_back({input, step.GetName(), at, std::move(outcome.results)});
        return outcome;
    }

    /// What a person may not expect of the effect, once for a photograph in pieces.
    static void Warn(EffectStep const& step, fs::path const& input, std::vector<StepOutcome> const& outcomes,
                     PhotoReport& photo) {
        std::string const begin = NamePhoto(input) + ": " + step.GetName() + ": ";
        if (std::ranges::any_of(outcomes, &StepOutcome::isMadeOpaque))
            photo.warnings.push_back(begin + "the photograph's transparency is lost");
        if (std::ranges::all_of(outcomes, &StepOutcome::isUnchanged) && step.ChangesNothing())
            photo.warnings.push_back(begin + "changes nothing with these parameters; `velnor describe " +
                                     step.GetName() + "` shows others");
    }

    /// Of several, all are found free to write before the first is written.
    std::vector<fs::path> NameFiles(OutputPlan const& plan, std::vector<Piece> const& pieces) const {
        std::vector<Place> places;
        for (Piece const& piece : pieces) places.push_back(piece.place);
        std::vector<fs::path> const files = NamePieces(plan, places);
        RequireWritable(files);
        return files;
    }

    void RequireWritable(std::vector<fs::path> const& files) const {
        if (options.output == STANDARD_STREAM) {
            RequireStandardOutput(options.format);
            return RequireOptions("picture." + options.format, options.files.ForWriting());
        }
        for (fs::path const& file : files) RequireOptions(file, options.files.ForWriting());
        CheckOutputs(files, options.files.writing.overwrite);
    }

    void Write(Proc::DataHandle picture, fs::path const& file, Way const& way, PhotoReport& photo,
               int descriptor = -1) const {
        Proc::WriteOptions writing = options.files.ForWriting();
        writing.descriptor = descriptor;
        writing.background = Proc::ToPhotosColor(writing.background, way.metadata.get());
        photo.Warn(photo.inputs.front(), SavePicture(std::move(picture), file, way.hadAlpha, way.metadata.get(),
                                                     writing, *catalogue.GetHost().GetFactory()));
    }

    void Announce(fs::path const& photo, std::string const& step) {
        RequireGoing();
        line.Show(finished, photo.string(), step);
    }

    void RequireGoing() const {
        if (controller->IsStopRequested()) throw Failure(ExitCode::Stopped, "stopped");
    }

    ApplyOptions const& options;
    EffectCatalogue const& catalogue;
    intrusive_ptr<Core::IProgressController> const controller;
    Proc::ReadOptions const reading;
    std::vector<EffectStep> steps;
    std::size_t joint = 0;
    std::vector<OutputPlan> plans;
    ProgressLine line{!options.isVerbose, options.photos.size()};
    std::size_t finished = 0;
    std::string place; ///< Where an effect's failure is, which does not know itself.
};

/// Throws what is wrong with the call. Of several things the first is said, and photographs stand before effects and
/// output.
std::unique_ptr<Work> PrepareWork(ApplyOptions const& options, EffectCatalogue const& catalogue,
                                  intrusive_ptr<Core::IProgressController> const& controller) {
    RequireNoEffects(options.photos, catalogue);
    try {
        return std::make_unique<Work>(options, catalogue, controller);
    } catch (...) {
        for (std::string const& photo : options.photos)
            if (std::optional<Failure> const problem = FindProblem(photo)) throw *problem;
        throw;
    }
}

ExitCode Summarise(std::vector<PhotoReport> const& photos) {
    auto const codeOf = [](PhotoReport const& photo) { return photo.report.code; };
    if (std::ranges::count(photos, ExitCode::Stopped, codeOf) > 0) return ExitCode::Stopped;
    auto const failed = std::ranges::find_if(
        photos, [](ExitCode code) { return code != ExitCode::Done; }, codeOf);
    if (failed == photos.end()) return ExitCode::Done;
    return std::ranges::count(photos, ExitCode::Done, codeOf) > 0 ? ExitCode::SomeFailed : failed->report.code;
}

} // namespace

ExitCode RunApply(ApplyOptions const& options) {
    auto const controller = Core::ProgressController::Create();
    StopSignals const signals(controller);
    EffectCatalogue const catalogue(options.plugins);
    std::unique_ptr<Work> const work = PrepareWork(options, catalogue, controller);

    std::vector<PhotoReport> photos;
    for (OutputPlan const& plan : work->GetPlans()) {
        photos.push_back(work->Process(plan));
        PhotoReport const& photo = photos.back();
        if (!photo.report.text.empty()) PrintError(photo.report.text);
        for (std::string const& warning : photo.warnings) PrintError(warning);
        std::string const told = options.asJson ? FormatJson(photo) : FormatResults(photo);
        if (options.output == STANDARD_STREAM)
            PrintAside(told); // Standard output is the picture's.
        else
            Print(told);
        if (photo.report.code == ExitCode::Stopped) break;
    }
    if (options.showStatistics) PrintAside(work->GetStatistics());
    return Summarise(photos);
}

} // namespace Velnor::Tool
