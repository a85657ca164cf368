#include "Tools/velnor/ApplyCommand.h"

#include "Tools/velnor/Console.h"
#include "Tools/velnor/PhotoReport.h"
#include "Tools/velnor/PictureOutput.h"
#include "Tools/velnor/StopSignals.h"

#include <algorithm>
#include <iterator>

namespace Velnor::Tool {
namespace {

namespace fs = std::filesystem;

/// The chain of effects at work on one photograph after the other.
class Work {
public:
    Work(ApplyOptions const& applyOptions, EffectCatalogue const& effects, std::vector<OutputPlan> const& plans,
         intrusive_ptr<Core::IProgressController> const& progress)
        : options(applyOptions),
          catalogue(effects),
          controller(progress),
          reading(options.files.ForReading()),
          line(!applyOptions.isVerbose, plans.size()) {
        for (std::string const& effect : options.effects)
            steps.emplace_back(ParseEffectArgument(effect), catalogue, reading, controller);
        if (options.output.empty()) {
            RequireResults();
            return;
        }
        std::vector<fs::path> outputs;
        for (OutputPlan const& plan : plans) outputs.push_back(plan.output);
        for (fs::path const& output : outputs) RequireOptions(output, options.files.ForWriting());
        CheckOutputs(outputs, options.files.writing.overwrite);
    }

    /// Never throws for what is wrong with the photograph.
    PhotoReport Process(OutputPlan const& plan) {
        PhotoReport photo{plan.input, {}, {}, {}, {}};
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
    /// Effects that only tell something need no output.
    void RequireResults() const {
        if (std::ranges::none_of(steps, &EffectStep::HasResults))
            throw WrongCall("apply: -o is missing; it names the file, the folder (out/) or the pattern to write");
    }

    void ProcessThrowing(OutputPlan const& plan, PhotoReport& photo) {
        Announce(photo, "reading");
        Proc::LoadedPicture loaded = Proc::ReadPicture(plan.input, *catalogue.GetHost().GetContext(), reading);
        photo.Warn(loaded.warnings);
        bool const hadAlpha = loaded.picture->GetDescription().hasAlpha;
        std::vector<Piece> pieces;
        pieces.push_back({std::move(loaded.picture), {}});
        for (EffectStep& step : steps) pieces = RunStep(step, std::move(pieces), photo);
        if (plan.output.empty()) return;
        Announce(photo, "writing");
        std::vector<fs::path> const files = NameFiles(plan, pieces);
        for (std::size_t i = 0; i < pieces.size(); ++i) {
            RequireGoing();
            photo.Warn(SavePicture(std::move(pieces[i].picture), files[i], hadAlpha, loaded.metadata.get(),
                                   options.files.ForWriting(), *catalogue.GetHost().GetFactory()));
            photo.outputs.push_back(files[i]);
        }
    }

    std::vector<Piece> RunStep(EffectStep& step, std::vector<Piece> pieces, PhotoReport& photo) {
        bool const areSeveral = pieces.size() > 1;
        std::vector<Piece> made;
        for (Piece& piece : pieces) {
            Announce(photo, step.GetName());
            Place const at = piece.place;
            place = photo.input.string() + ": " + step.GetName() + ": ";
            StepOutcome outcome = step.Run(std::move(piece));
            std::ranges::move(outcome.pieces, std::back_inserter(made));
            if (!outcome.warning.empty()) photo.warnings.push_back(place + outcome.warning);
            place.clear();
            if (!outcome.results.empty())
                photo.found.push_back(
                    {step.GetName(), areSeveral ? std::optional(at) : std::nullopt, std::move(outcome.results)});
        }
        return made;
    }

    /// Of several, all are found free to write before the first is written.
    std::vector<fs::path> NameFiles(OutputPlan const& plan, std::vector<Piece> const& pieces) const {
        std::vector<Place> places;
        for (Piece const& piece : pieces) places.push_back(piece.place);
        std::vector<fs::path> const files = NamePieces(plan, places);
        CheckOutputs(files, options.files.writing.overwrite);
        return files;
    }

    void Announce(PhotoReport const& photo, std::string const& step) {
        RequireGoing();
        line.Show(finished, photo.input.string(), step);
    }

    void RequireGoing() const {
        if (controller->IsStopRequested()) throw Failure(ExitCode::Stopped, "stopped");
    }

    ApplyOptions const& options;
    EffectCatalogue const& catalogue;
    intrusive_ptr<Core::IProgressController> const controller;
    Proc::ReadOptions const reading;
    std::vector<EffectStep> steps;
    ProgressLine line;
    std::size_t finished = 0;
    std::string place; ///< Where an effect's failure is, which does not know itself.
};

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
    std::vector<OutputPlan> const plans = PlanOutputs(options.photos, options.output);
    Work work(options, catalogue, plans, controller);

    std::vector<PhotoReport> photos;
    for (OutputPlan const& plan : plans) {
        photos.push_back(work.Process(plan));
        PhotoReport const& photo = photos.back();
        if (!photo.report.text.empty()) PrintError(photo.report.text);
        for (std::string const& warning : photo.warnings) PrintError(warning);
        Print(options.asJson ? FormatJson(photo) : FormatResults(photo));
        if (photo.report.code == ExitCode::Stopped) break;
    }
    if (options.showStatistics) PrintAside(work.GetStatistics());
    return Summarise(photos);
}

} // namespace Velnor::Tool
