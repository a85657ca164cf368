#pragma once

#include "Tools/velnor/ApplyCommand.h"
#include "Tools/velnor/BatchProgress.h"
#include "Tools/velnor/Chain.h"
#include "Tools/velnor/Journal.h"
#include "Tools/velnor/MemoryBudget.h"
#include "Tools/velnor/OutputPolicy.h"
#include "Tools/velnor/PhotoReport.h"

namespace Velnor::Tool {

/// What the photographs of a call have in common.
struct Workshop {
    ApplyOptions const& options;
    EffectCatalogue const& catalogue;
    Chain const& chain;
    OutputPolicy const& policy;
    MemoryBudget& budget;
    BatchProgress& progress;
    Journal* journal; ///< Null for none.
    intrusive_ptr<Core::IProgressController> controller;

    void RequireGoing() const; ///< Throws Failure (stopped) when a stop is requested.
};

/// One photograph, or several that are joined, on the way through the effects to its outputs.
class PhotoRun {
public:
    PhotoRun(Workshop const& shop, OutputPlan const& plan);

    /// Never throws for what is wrong with the photograph.
    PhotoReport Run();

private:
    /// What the photographs have become.
    struct Way {
        std::vector<Piece> pieces;
        bool hadAlpha = false;
        std::shared_ptr<Proc::PictureMetadata const> metadata; ///< The first photograph's.
    };

    /// The photograph that an effect works on, the first of several.
    struct Source {
        std::filesystem::path const& path;
        Proc::PictureMetadata const* metadata;
    };

    /// An output and what it is written for.
    struct Target {
        std::filesystem::path file = {};
        bool replaces = false;
        bool keepsReplaced = false;
        int descriptor = -1; ///< Of a file that is open already.
    };

    void RunThrowing();
    bool IsLeftOut();
    void Read(std::filesystem::path const& input, Way& way);
    Proc::LoadedPicture ReadWithinBudget(std::filesystem::path const& input);
    void RunStep(std::size_t index, Source const& source, Way& way, std::size_t first);
    StepOutcome RunOnce(EffectStep const& step, Source const& source, std::optional<Place> const& at,
                        std::vector<Piece> pieces, std::uint64_t units);
    void Warn(EffectStep const& step, std::filesystem::path const& input, std::vector<StepOutcome> const& outcomes);
    void CountMemory(std::size_t nextStep, std::vector<Piece> const& pieces);
    std::vector<Target> ChooseTargets(std::vector<std::filesystem::path> const& files) const;
    void WriteAll(Way& way);
    void WriteToStandardOutput(Way& way);
    void Write(Proc::DataHandle picture, std::filesystem::path const& file, Way const& way, Target const& target);
    void Announce(std::filesystem::path const& photo, std::string const& step);

    Workshop const& shop;
    OutputPlan const& plan;
    intrusive_ptr<Core::IProgressController> const controller;
    PhotoProgress progress;
    MemoryBudget::Share share;
    Journal::Past past;
    PhotoReport report;
    std::string place; ///< Where an effect's failure is, which does not know itself.
};

/// Why the photograph cannot be one, as far as its name tells.
std::optional<Failure> FindProblem(std::string const& photo);

} // namespace Velnor::Tool
