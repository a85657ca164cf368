#include "Tools/velnor/ApplyCommand.h"

#include "Tools/velnor/Console.h"
#include "Tools/velnor/PhotoReport.h"
#include "Tools/velnor/PictureOutput.h"
#include "Tools/velnor/StopSignals.h"

#include <algorithm>
#include <system_error>

namespace Velnor::Tool {
namespace {

namespace fs = std::filesystem;

/// The chain of effects at work on one photograph after the other.
class Work {
public:
    Work(ApplyOptions const& applyOptions, EffectCatalogue const& effects, std::vector<OutputPlan> const& plans,
         intrusive_ptr<Core::IProgressController> const& progress)
        : options(applyOptions), catalogue(effects), controller(progress), line(!applyOptions.isVerbose, plans.size()) {
        reading.maxPixels = static_cast<std::uint64_t>(options.maxMegapixels * 1e6);
        reading.acceptDamaged = options.acceptDamaged;
        for (std::string const& effect : options.effects)
            steps.emplace_back(ParseEffectArgument(effect), catalogue, reading, controller);
        CheckOutputs(plans, options.replace);
    }

    /// Never throws for what is wrong with the photograph.
    PhotoReport Process(OutputPlan const& plan) {
        PhotoReport photo{plan, {}, {}};
        try {
            ProcessThrowing(photo);
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

    std::string GetStatistics() {
        std::string text;
        for (EffectStep& step : steps) text += step.GetStatistic().ToText();
        return text;
    }

private:
    void ProcessThrowing(PhotoReport& photo) {
        Announce(photo, "reading");
        Proc::LoadedPicture loaded = Proc::ReadPicture(photo.plan.input, *catalogue.GetHost().GetContext(), reading);
        Proc::DataHandle picture = std::move(loaded.picture);
        bool const hadAlpha = picture->GetDescription().hasAlpha;
        for (EffectStep& step : steps) {
            Announce(photo, step.GetName());
            place = photo.plan.input.string() + ": " + step.GetName() + ": ";
            step.Run(picture);
            place.clear();
            std::vector<EffectResult> results = step.GetResults();
            if (!results.empty()) photo.found.push_back({step.GetName(), std::move(results)});
        }
        Announce(photo, "writing");
        picture = PrepareForFile(std::move(picture), photo.plan.output, hadAlpha, *catalogue.GetHost().GetFactory());
        MakeFolder(photo.plan.output.parent_path());
        RequireGoing();
        Proc::WritePicture(photo.plan.output, Proc::AsVideo(picture), loaded.metadata.get(),
                           {options.quality, options.replace});
    }

    void Announce(PhotoReport const& photo, std::string const& step) {
        RequireGoing();
        line.Show(finished, photo.plan.input.string(), step);
    }

    void RequireGoing() const {
        if (controller->IsStopRequested()) throw Failure(ExitCode::Stopped, "stopped");
    }

    static void MakeFolder(fs::path const& folder) {
        std::error_code error;
        if (!folder.empty()) fs::create_directories(folder, error);
        if (error)
            throw Failure(ExitCode::OutputFailed, "folder " + folder.string() + " cannot be made: " + error.message());
    }

    ApplyOptions const& options;
    EffectCatalogue const& catalogue;
    intrusive_ptr<Core::IProgressController> const controller;
    Proc::ReadOptions reading;
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
        if (photo.report.code == ExitCode::Stopped) break;
        if (!options.asJson) Print(FormatResults(photo, plans.size() > 1));
    }
    if (options.asJson) Print(FormatJson(photos));
    if (options.showStatistics) PrintAside(work.GetStatistics());
    return Summarise(photos);
}

} // namespace Velnor::Tool
