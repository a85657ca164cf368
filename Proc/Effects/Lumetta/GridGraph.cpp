// GridGraph: a segmentation from strokes, as the minimum cut of the grid of pixels.
//
//     marked pixel    - its terminal      1024
//     pixel           - its neighbours    1 to 1025, by likeness of colour
//     result          = background value where the cut leaves the sink's side, foreground value elsewhere
//
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Effects/Kit/RequirePictures.h"
#include "Proc/Effects/Lumetta/GridCut/GridCapacities.h"
#include "Proc/Effects/Lumetta/GridCut/GridGraphSolver.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"

#include <string>

namespace Velnor::Proc {
namespace {

/// Memory that the solver is going to ask for, reckoned without its padding.
std::uint64_t EstimateBytes(std::uint64_t width, std::uint64_t height) {
    std::uint64_t const side = GridGraphSolver::REGION_SIDE;
    std::uint64_t const across = (width + side - 1) / side;
    std::uint64_t const down = (height + side - 1) / side;
    return ((across * side - side) * down + (down * side - side) * across + width * height * 9) * 4 + 1984;
}

void CheckStrokes(IDataVideo const& strokes, FrameFormat const& frame) {
    RequireOneByteAPixel("The strokes are", strokes);
    RequireOneSize("The strokes are", strokes.GetFrameFormat(), frame);
}

} // namespace

class GridGraph : public EffectBaseTwoInput<ITwoInputEffectVideo, SettingsEffectGrabCutSegmentation> {
public:
    using EffectBaseTwoInput::EffectBaseTwoInput;

    void ProcessInternal(DataHandle& first, ConstDataHandle const& second) override {
        auto const total = GetProgress().controller;
        total->SetRange(100);
        total->SetPosition(0);
        FrameFormat const frame = first->GetFrameFormat();
        IDataVideo const& strokes = AsVideo(second);
        CheckStrokes(strokes, frame);

        VLOG(VERBOSE_LEVEL) << "Allocate memory for GridGraph:" << EstimateBytes(frame.width, frame.height);
        GridGraphSolver solver(frame.width, frame.height, GridGraphSolver::WORKERS, GridGraphSolver::REGION_SIDE,
                               total->CreateChild(SOLVER_UNITS));
        VLOG(VERBOSE_LEVEL) << "Prepare GridGraph graph";
        SetCapacities(solver, first, strokes);
        if (total->IsStopRequested()) return;
        VLOG(VERBOSE_LEVEL) << "Compute GridGraph graph";
        solver.Compute();
        if (total->IsStopRequested()) return;
        VLOG(VERBOSE_LEVEL) << "Prepare GridGraph result";
        first = MakeResult(solver, second->GetFrameFormat());
        VLOG(VERBOSE_LEVEL) << "GridGraph done";
    }

private:
    static constexpr std::uint64_t SOLVER_UNITS = 34;
    static constexpr std::uint64_t CAPACITY_UNITS = 66;

    /// Sets nothing when a stop is requested meanwhile.
    void SetCapacities(GridGraphSolver& solver, DataHandle const& picture, IDataVideo const& strokes) {
        Kernels::ColourBytes const bytes = ReadImage(picture);
        Kernels::SimilarityTable const table(bytes.count);
        ConstPlane const pixels = AsVideo(image).GetPlane(0);
        ConstPlane const marks = strokes.GetPlane(0);
        auto const foreground = static_cast<std::uint8_t>(settings.GetForeground());
        auto const background = static_cast<std::uint8_t>(settings.GetBackground());
        FrameFormat const frame = image->GetFrameFormat();

        auto const rows = GetProgress().controller->CreateChild(CAPACITY_UNITS);
        rows->SetRange(frame.height);
        Kernels::GridCapacities capacities(frame.width, frame.height);
        solver.GetTeam().RunRows(frame.height, [&](std::uint32_t y) {
            if (rows->IsStopRequested()) return; // a row takes microseconds: no need to ask at each pixel
            capacities.MarkRow(y, marks.GetRow(y), foreground, background);
            capacities.LinkRow(y, pixels.GetRow(y), y + 1 < frame.height ? pixels.GetRow(y + 1) : nullptr, bytes,
                               table);
            rows->Advance(1);
        });
        if (rows->IsStopRequested()) return;
        solver.SetCapacities({capacities.GetSource(), capacities.GetSink(), capacities.GetLeft(), capacities.GetRight(),
                              capacities.GetUp(), capacities.GetDown()});
    }

    /// Refers to the picture, or to a grey copy of it when its format is not one that is read as it is.
    Kernels::ColourBytes ReadImage(DataHandle const& picture) {
        if (auto const bytes = Kernels::ColourBytes::Find(picture->GetPixFmt())) {
            image = picture;
            return *bytes;
        }
        if (!converter) converter = MakeOneInput(SettingsColorspaceConverter(PixFmt::GRAY8, true));
        DataHandle grey = AsVideo(picture).MakeCopy(CopyMode::Share);
        converter->ProcessData(grey);
        image = grey;
        return {};
    }

    DataHandle MakeResult(GridGraphSolver& solver, FrameFormat const& frame) const {
        auto const foreground = static_cast<std::uint8_t>(settings.GetForeground());
        auto const background = static_cast<std::uint8_t>(settings.GetBackground());
        VideoHandle const result = context->CreateImage(PixFmt::GRAY8, frame);
        MutablePlane const plane = result->GetMutablePlane(0);
        solver.GetTeam().RunRows(frame.height,
                                 [&](std::uint32_t y) { solver.WriteRow(y, background, foreground, plane.GetRow(y)); });
        return result;
    }

    ConstDataHandle image; ///< What the capacities were last read from.
    intrusive_ptr<IOneInputEffectVideo> converter;
};

VELNOR_EFFECT(SettingsEffectGrabCutSegmentation, TwoInput, GridGraph)

} // namespace Velnor::Proc
