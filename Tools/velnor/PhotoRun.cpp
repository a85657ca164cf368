#include "Tools/velnor/PhotoRun.h"

#include "Tools/velnor/Console.h"
#include "Tools/velnor/EffectMemory.h"
#include "Tools/velnor/PhotoSearch.h"
#include "Tools/velnor/PictureOutput.h"
#include "Tools/velnor/StandardStreams.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <system_error>

namespace Velnor::Tool {
namespace {

namespace fs = std::filesystem;

/// Of progress: what reading, writing and an effect count. Large, since an effect's are shared by the pieces.
constexpr std::uint64_t UNITS = 1 << 20;
constexpr std::uint64_t UNITS_OF_EFFECT = 2 * UNITS;

} // namespace

void Workshop::RequireGoing() const {
    if (controller->IsStopRequested()) throw Failure(ExitCode::Stopped, "stopped");
}

std::optional<Failure> FindProblem(std::string const& photo) {
    if (photo == STANDARD_STREAM) return std::nullopt;
    std::error_code error;
    fs::file_status const status = fs::status(photo, error);
    if (fs::is_directory(status))
        return Failure(ExitCode::InputFailed, photo + " is a folder; --recursive takes the photographs in it");
    if (fs::exists(status)) return std::nullopt;
    return Failure(ExitCode::InputFailed, IsGlob(photo)
                                              ? "no file has a name like " + photo
                                              : photo + " cannot be read: " + std::generic_category().message(ENOENT));
}

PhotoRun::PhotoRun(Workshop const& workshop, OutputPlan const& outputPlan)
    : shop(workshop),
      plan(outputPlan),
      controller(shop.controller->CreateChild(1)),
      progress(shop.progress, plan.inputs.front().string(), controller),
      share(shop.budget) {
    std::size_t const steps = shop.chain.GetSteps().size();
    std::size_t const joint = shop.chain.JoinsPhotos() ? shop.chain.GetJoint() : 0;
    controller->SetRange(plan.inputs.size() * (UNITS + joint * UNITS_OF_EFFECT) + (steps - joint) * UNITS_OF_EFFECT +
                         UNITS);
}

PhotoReport PhotoRun::Run() {
    report.inputs = plan.inputs;
    try {
        RunThrowing();
    } catch (...) {
        report.report = ReportCurrentException();
        report.report.text.insert(0, place);
        report.found.clear();
        // An effect that is told to stop may say so in its own way.
        if (shop.controller->IsStopRequested()) report.report = {ExitCode::Stopped, "stopped"};
    }
    bool const isNoted = shop.journal != nullptr && past.photo.is_object() && report.skipped.empty();
    if (isNoted && report.report.code != ExitCode::Stopped)
        shop.journal->NoteEnd(plan, past, report.outputs, report.report.code);
    shop.progress.Finish(plan.inputs.front().string(), report.report.code, !report.skipped.empty());
    return std::move(report);
}

void PhotoRun::RunThrowing() {
    shop.RequireGoing();
    if (IsLeftOut()) return;
    std::size_t const alone = shop.chain.JoinsPhotos() ? shop.chain.GetJoint() : 0;
    Way way;
    for (fs::path const& input : plan.inputs) Read(input, way);
    for (std::size_t i = alone; i < shop.chain.GetSteps().size(); ++i)
        RunStep(i, {plan.inputs.front(), way.metadata.get()}, way, 0);
    if (!plan.output.empty()) WriteAll(way);
}

/// What can be said before the photograph is read. Throws what is wrong with its name or its output's.
bool PhotoRun::IsLeftOut() {
    for (fs::path const& input : plan.inputs)
        if (std::optional<Failure> const problem = FindProblem(input)) throw *problem;
    if (shop.journal != nullptr) {
        past = shop.journal->Recall(plan);
        if (past.isDone) report.skipped = past.reason;
        if (past.isDone) return true;
    }
    if (plan.output.empty() || plan.given == STANDARD_STREAM) return false;
    RequireOptions(plan.output, shop.options.files.ForWriting());
    if (shop.chain.Cuts() || !ChooseTargets({plan.output}).empty()) return false;
    report.skipped = "its output, " + plan.output.string() + ", is there";
    return true;
}

/// Adds a photograph, after the first of the effects have run on it.
void PhotoRun::Read(fs::path const& input, Way& way) {
    Announce(input, "reading");
    Proc::LoadedPicture loaded = ReadWithinBudget(input);
    controller->Advance(UNITS);
    report.Warn(input, loaded.warnings);
    if (way.pieces.empty()) way.metadata = loaded.metadata;
    way.hadAlpha = way.hadAlpha || loaded.picture->GetDescription().hasAlpha;
    std::size_t const first = way.pieces.size();
    way.pieces.push_back({std::move(loaded.picture), {}});
    std::size_t const alone = shop.chain.JoinsPhotos() ? shop.chain.GetJoint() : 0;
    for (std::size_t i = 0; i < alone; ++i) RunStep(i, {input, loaded.metadata.get()}, way, first);
}

Proc::LoadedPicture PhotoRun::ReadWithinBudget(fs::path const& input) {
    Proc::ReadOptions reading = shop.options.files.ForReading();
    // Photographs that are joined are all there at once, and alone.
    if (plan.inputs.size() == 1)
        reading.onHeader = [this](Proc::PictureHeader const& header) {
            share.Take(std::max(header.memory, header.pixels * shop.chain.GetBytesPerPixel()), *shop.controller);
            shop.RequireGoing();
        };
    return ReadPhoto(input, *shop.catalogue.GetHost().GetContext(), reading);
}

/// Runs an effect on the pieces from the first on.
void PhotoRun::RunStep(std::size_t index, Source const& source, Way& way, std::size_t first) {
    EffectStep const& step = shop.chain.GetSteps()[index];
    std::vector<Piece> pieces(std::make_move_iterator(way.pieces.begin() + static_cast<std::ptrdiff_t>(first)),
                              std::make_move_iterator(way.pieces.end()));
    way.pieces.resize(first);
    std::size_t const count = pieces.size();
    std::vector<StepOutcome> outcomes;
    if (count > 1 && step.Joins())
        outcomes.push_back(RunOnce(step, source, std::nullopt, std::move(pieces), UNITS_OF_EFFECT));
    else
        for (Piece& piece : pieces) {
            auto const at = count > 1 ? std::optional(piece.place) : std::nullopt;
            std::vector<Piece> one;
            one.push_back(std::move(piece));
            outcomes.push_back(RunOnce(step, source, at, std::move(one), UNITS_OF_EFFECT / count));
        }
    Warn(step, source.path, outcomes);
    for (StepOutcome& outcome : outcomes) std::ranges::move(outcome.pieces, std::back_inserter(way.pieces));
    CountMemory(index + 1, way.pieces);
}

StepOutcome PhotoRun::RunOnce(EffectStep const& step, Source const& source, std::optional<Place> const& at,
                              std::vector<Piece> pieces, std::uint64_t units) {
    fs::path const& input = source.path;
    Announce(input, step.GetName());
    place = NamePhoto(input) + ": " + step.GetName() + ": ";
    auto const ofStep = controller->CreateChild(units);
    StepOutcome outcome = step.Run(std::move(pieces), source.metadata, ofStep);
    shop.RequireGoing(); // What an effect gives that was told to stop is nothing to go by.
    ofStep->SetRange(0); // It is done, whatever it has told.
    if (!outcome.warning.empty()) report.warnings.push_back(place + outcome.warning);
    place.clear();
    if (!outcome.results.empty()) report.found.push_back({input, step.GetName(), at, std::move(outcome.results)});
    return outcome;
}

/// What a person may not expect of the effect, once for a photograph in pieces.
void PhotoRun::Warn(EffectStep const& step, fs::path const& input, std::vector<StepOutcome> const& outcomes) {
    std::string const begin = NamePhoto(input) + ": " + step.GetName() + ": ";
    if (std::ranges::any_of(outcomes, &StepOutcome::isMadeOpaque))
        report.warnings.push_back(begin + "the photograph's transparency is lost");
    if (std::ranges::all_of(outcomes, &StepOutcome::isUnchanged) && step.ChangesNothing())
        report.warnings.push_back(begin + "changes nothing with these parameters; `velnor describe " + step.GetName() +
                                  "` shows others");
}

/// An effect may have made the photograph larger.
void PhotoRun::CountMemory(std::size_t nextStep, std::vector<Piece> const& pieces) {
    std::uint64_t pixels = 0;
    for (Piece const& piece : pieces) {
        Proc::FrameFormat const& frame = piece.picture->GetFrameFormat();
        pixels += std::uint64_t{frame.width} * frame.height;
    }
    share.Raise(pixels * shop.chain.GetBytesPerPixel(nextStep));
}

/// Those of the files that are to be written; all are found writable. Throws for any that cannot be or may not.
std::vector<PhotoRun::Target> PhotoRun::ChooseTargets(std::vector<fs::path> const& files) const {
    CheckOutputs(files, true);
    std::vector<Target> targets;
    for (fs::path const& file : files) {
        RequireOptions(file, shop.options.files.ForWriting());
        bool const isOurs = std::ranges::count(past.ours, file) > 0;
        Verdict const verdict = shop.policy.Judge(file, plan.inputs).verdict;
        if (verdict == Verdict::Refuse && !isOurs) CheckOutputs({file}, false);
        if (verdict == Verdict::Leave && !isOurs) continue;
        bool const replaces = verdict != Verdict::Write;
        targets.push_back({file, replaces, replaces && !isOurs && shop.options.batch.keepsReplaced});
    }
    return targets;
}

void PhotoRun::WriteAll(Way& way) {
    Announce(plan.inputs.front(), "writing");
    std::vector<Place> places;
    for (Piece const& piece : way.pieces) places.push_back(piece.place);
    std::vector<fs::path> const files = NamePieces(plan, places);
    if (plan.given == STANDARD_STREAM) return WriteToStandardOutput(way);
    std::vector<Target> const targets = ChooseTargets(files);
    if (shop.journal != nullptr) shop.journal->NoteBegin(past, files);
    auto target = targets.begin();
    for (std::size_t i = 0; i < files.size() && target != targets.end(); ++i) {
        if (files[i] != target->file) continue;
        shop.RequireGoing();
        Write(std::move(way.pieces[i].picture), files[i], way, *target++);
        report.outputs.push_back(files[i]);
        controller->Advance(UNITS / files.size());
    }
    if (targets.empty()) report.skipped = "its outputs are there";
}

void PhotoRun::WriteToStandardOutput(Way& way) {
    StandardOutput const output(shop.options.format);
    Write(std::move(way.pieces.front().picture), output.GetFile(), way, {.descriptor = output.GetDescriptor()});
    output.Print();
    report.outputs.push_back(plan.output);
}

void PhotoRun::Write(Proc::DataHandle picture, fs::path const& file, Way const& way, Target const& target) {
    Proc::WriteOptions writing = shop.options.files.ForWriting();
    writing.descriptor = target.descriptor;
    writing.overwrite = target.replaces;
    writing.backup = target.keepsReplaced;
    writing.background = Proc::ToPhotosColor(writing.background, way.metadata.get());
    report.Warn(plan.inputs.front(), SavePicture(std::move(picture), file, way.hadAlpha, way.metadata.get(), writing,
                                                 *shop.catalogue.GetHost().GetFactory()));
}

void PhotoRun::Announce(fs::path const& photo, std::string const& step) {
    shop.RequireGoing();
    progress.Announce(photo.string(), step);
}

} // namespace Velnor::Tool
