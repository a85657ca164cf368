#include "Tools/velnor/ApplyCommand.h"

#include "Core/Processors.h"
#include "Proc/Host/MemoryRoom.h"
#include "Tools/velnor/Batch.h"
#include "Tools/velnor/Console.h"
#include "Tools/velnor/DryRun.h"
#include "Tools/velnor/PhotoSearch.h"
#include "Tools/velnor/PictureOutput.h"
#include "Tools/velnor/StandardStreams.h"
#include "Tools/velnor/StopSignals.h"

#include <algorithm>
#include <memory>
#include <optional>

namespace Velnor::Tool {
namespace {

constexpr std::uint64_t MEGA = 1'000'000;

/// An effect's name among the photographs is a call gone wrong, not a photograph that is missing.
void RequireNoEffects(std::vector<std::string> const& photos, EffectCatalogue const& catalogue) {
    for (std::string const& photo : photos) {
        std::string const name = photo.substr(0, photo.find_first_of(":/"));
        if (std::ranges::count(catalogue.GetEntries(), name, &CatalogueEntry::name) == 0 || !FindProblem(photo))
            continue;
        throw WrongCall("there is no photograph " + photo + "; an effect is given by -e, as in -e " + photo);
    }
}

void RequireOutput(ApplyOptions const& options, Chain const& chain) {
    if (!options.format.empty() && options.output != STANDARD_STREAM)
        throw WrongCall("--to names the format of standard output, which is -o -");
    if (options.output.empty() && !chain.HasResults()) // Effects that only tell something need none.
        throw WrongCall("apply: -o is missing; it names the file, the folder (out/) or the pattern to write");
    if (options.output != STANDARD_STREAM) return;
    RequireStandardOutput(options.format);
    RequireOptions("picture." + options.format, options.files.ForWriting());
}

/// What all photographs together may take.
std::uint64_t GetMemoryLimit(FileOptions const& files) {
    return files.maxMemory > 0 ? static_cast<std::uint64_t>(files.maxMemory * static_cast<double>(MEGA))
                               : Proc::GetMemorySize() / 2;
}

/// Of memory that is free again, no more than a quarter is kept for pictures to come.
Proc::MemoryLimits GetPoolLimits(FileOptions const& files) {
    Proc::MemoryLimits limits;
    limits.pooledBytes = std::min(limits.pooledBytes, GetMemoryLimit(files) / 4);
    return limits;
}

/// What is left for photographs beside the libraries, and the buffers and the heap of each job.
std::uint64_t GetRoomForPhotos(FileOptions const& files, unsigned jobs) {
    constexpr std::uint64_t LIBRARIES = 96 * MEGA;
    constexpr std::uint64_t OF_A_JOB = 24 * MEGA;
    std::uint64_t const limit = GetMemoryLimit(files);
    return limit - std::min(limit, LIBRARIES + jobs * OF_A_JOB);
}

unsigned CountJobs(BatchOptions const& options, std::size_t outputs) {
    unsigned const wanted = options.jobs > 0 ? static_cast<unsigned>(options.jobs) : Core::CountProcessors();
    return static_cast<unsigned>(std::clamp<std::size_t>(outputs, 1, wanted));
}

/// Of the effects and of the options that outputs depend on.
std::string HashCall(ApplyOptions const& options, Chain const& chain) {
    Proc::WriteOptions const& writing = options.files.writing;
    std::vector<std::string> texts{VELNOR_VERSION,
                                   options.output,
                                   options.batch.fallbackFormat,
                                   std::to_string(writing.quality.value_or(0)),
                                   std::to_string(writing.halvesChroma ? 1 + *writing.halvesChroma : 0),
                                   std::to_string(writing.isLossless),
                                   writing.compression,
                                   std::to_string(static_cast<int>(writing.strip)),
                                   std::to_string(writing.keepTimes),
                                   std::to_string(writing.background.rgba()),
                                   std::to_string(options.files.toSrgb),
                                   std::to_string(options.files.acceptDamaged)};
    texts.insert(texts.end(), options.effects.begin(), options.effects.end());
    for (std::string const& file : chain.GetFiles()) texts.push_back(DescribeFile(file));
    for (std::string const& file : options.plugins) texts.push_back(DescribeFile(file));
    return HashTexts(texts);
}

/// The call, understood.
class Apply {
public:
    Apply(ApplyOptions const& applyOptions, EffectCatalogue const& effects,
          intrusive_ptr<Core::IProgressController> const& progressController)
        : options(applyOptions),
          catalogue(effects),
          controller(progressController),
          photos(FindPhotos(options.photos, options.batch, options.output)),
          jobs(CountJobs(options.batch, photos.GetCount())) {
        Core::SetThreadsPerPicture(Core::CountProcessors() / jobs);
        try {
            Prepare();
        } catch (...) {
            RequirePhotos();
            throw;
        }
    }

    ExitCode Run() {
        if (!options.batch.journal.empty())
            journal.emplace(options.batch.journal, HashCall(options, *chain),
                            options.batch.isDryRun ? JournalFile::Use::Read : JournalFile::Use::Write);
        ExitCode const code = RunBatch();
        if (journal && !options.batch.isDryRun && code == ExitCode::Done) journal->End();
        if (options.showStatistics) PrintAside(chain->GetStatistics());
        return code;
    }

private:
    /// Throws what is wrong with the call.
    void Prepare() {
        RequireBatchOptions(options.batch, options.files.writing.overwrite, options.output);
        chain.emplace(options.effects, catalogue, options.files.ForReading());
        RequireOutput(options, *chain);
        naming.emplace(options.output, CountOutputs(), options.batch.fallbackFormat);
        if (options.output.empty() || options.output == STANDARD_STREAM) return;
        if (CountOutputs() > 1) RequireApart([this] { return MakeReader(); });
        bool const mayBeThere =
            options.files.writing.overwrite || options.batch.HandlesExisting() || options.batch.isDryRun;
        if (!mayBeThere) RequireFree([this] { return MakeReader(); });
    }

    /// Of several things that are wrong, what is wrong with a photograph is said first.
    void RequirePhotos() const {
        PhotoNames::Reader reader(photos);
        for (std::optional<PhotoName> photo = reader.Next(); photo; photo = reader.Next())
            if (std::optional<Failure> const problem = FindProblem(photo->path)) throw *problem;
    }

    ExitCode RunBatch() {
        std::vector<std::string> sources = chain->GetFiles();
        sources.insert(sources.end(), options.recipes.begin(), options.recipes.end());
        OutputPolicy const policy(options.batch, options.files.writing.overwrite, sources);
        Proc::ContextHandle const context = catalogue.GetHost().GetContext();
        MemoryBudget budget(
            GetRoomForPhotos(options.files, jobs), [context] { return context->GetMemoryPooled(); },
            [context] { context->ReleaseMemory(); });
        BatchProgress progress(options.batch.isDryRun ? ProgressKind::None : options.batch.progress, !options.isVerbose,
                               CountOutputs());
        Workshop const shop{options,   catalogue, *chain, policy, budget, progress, journal ? &*journal : nullptr,
                            controller};
        return options.batch.isDryRun ? RunDry(shop, MakeReader()) : Batch(shop, MakeReader(), jobs).Run();
    }

    std::size_t CountOutputs() const { return chain->JoinsPhotos() ? 1 : photos.GetCount(); }
    PlanReader MakeReader() const { return {photos, *naming, chain->JoinsPhotos()}; }

    ApplyOptions const& options;
    EffectCatalogue const& catalogue;
    intrusive_ptr<Core::IProgressController> const controller;
    PhotoNames const photos;
    unsigned const jobs;
    std::optional<Chain> chain;
    std::optional<OutputNaming> naming;
    std::optional<Journal> journal;
};

} // namespace

ExitCode RunApply(ApplyOptions const& options) {
    auto const controller = Core::ProgressController::Create();
    StopSignals const signals(controller);
    EffectCatalogue const catalogue(options.plugins, GetPoolLimits(options.files));
    RequireNoEffects(options.photos, catalogue);
    return Apply(options, catalogue, controller).Run();
}

} // namespace Velnor::Tool
