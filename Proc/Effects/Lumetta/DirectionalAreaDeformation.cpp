// DirectionalAreaDeformation: a push brush. Strokes add up in a field of displacements, and what they touch is read
// anew from the first picture, so that it is sampled once however many strokes there are:
//
//     result(x, y) = source((x, y) - displacement(x, y))        within the box of each stroke; the rest stays
//
// The field and its source are kept until a picture of another size comes; strokes of a picture that failed are taken
// back. The host's remapping runs on a part of the source, the box and as much around it as the displacements reach. A
// palette picture that a stroke touches becomes an RGBA picture.
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Effects/Lumetta/Kernels/Geometry/DisplacementField.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectDirectionalAreaDeformation.h"
#include "Proc/Settings/SettingsEffectRemapping.h"

#include <algorithm>
#include <cstring>

namespace Velnor::Proc {
namespace {

using Kernels::Box;
using Kernels::DisplacementField;

/// Grown to whole chroma samples, which are at most 4 pixels wide or high.
Box AlignOut(Box const& box, FrameFormat const& frame) {
    constexpr int STEP = 4;
    auto const up = [](int end, std::uint32_t size) {
        return std::min((end + STEP - 1) / STEP * STEP, static_cast<int>(size));
    };
    return {box.x0 / STEP * STEP, box.y0 / STEP * STEP, up(box.x1, frame.width), up(box.y1, frame.height)};
}

/// The box of all places that the pixels of a box are read from, and of the box itself.
Box FindReach(DisplacementField const& field, Box const& box, FrameFormat const& frame) {
    float left = 0, right = 0, up = 0, down = 0; // farthest readings beyond a pixel's own place
    for (int y = box.y0; y < box.y1; ++y)
        for (int x = box.x0; x < box.x1; ++x) {
            DisplacementField::Pair const& pair = field.At(x, y);
            left = std::max(left, pair.x);
            right = std::max(right, -pair.x);
            up = std::max(up, pair.y);
            down = std::max(down, -pair.y);
        }
    auto const grow = [](int from, float by, std::uint32_t size) {
        double const place = from + static_cast<double>(by);
        return static_cast<int>(std::clamp(place, 0.0, static_cast<double>(size)));
    };
    return AlignOut({grow(box.x0, -left - 1, frame.width), grow(box.y0, -up - 1, frame.height),
                     grow(box.x1, right + 2, frame.width), grow(box.y1, down + 2, frame.height)},
                    frame);
}

/// What a box is written from: a picture of the target's format, and where in the target its first pixel is.
struct Patch {
    ConstDataHandle picture;
    int x, y;
};

/// Writes a box of the target. Samples of several pixels are written where any of these is in the box.
void CopyBox(Patch const& patch, IDataVideo& target, Box const& box) {
    PixFmtDescription const& format = target.GetDescription();
    for (unsigned char i = 0; i < format.planesCount; ++i) {
        PlaneLayout const& layout = format.planes[i];
        ConstPlane const from = AsVideo(patch.picture).GetPlane(i);
        MutablePlane const to = target.GetMutablePlane(i);
        auto const groups = [](int end, int shift) { return (end + (1 << shift) - 1) >> shift; };
        int const first = box.x0 >> layout.shiftX;
        auto const bytes = static_cast<std::size_t>(groups(box.x1, layout.shiftX) - first) * layout.bytes;
        for (int row = box.y0 >> layout.shiftY; row < groups(box.y1, layout.shiftY); ++row)
            std::memcpy(to.GetRow(static_cast<std::uint64_t>(row)) + first * layout.bytes,
                        from.GetRow(static_cast<std::uint64_t>(row - (patch.y >> layout.shiftY))) +
                            (first - (patch.x >> layout.shiftX)) * layout.bytes,
                        bytes);
    }
}

} // namespace

class DirectionalAreaDeformation
    : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectDirectionalAreaDeformation> {
public:
    DirectionalAreaDeformation(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext),
          remapper(MakeOneInput(SettingsEffectRemapping())),
          converter(MakeOneInput(SettingsColorspaceConverter())) {}

    void ProcessInternal(DataHandle& data) override {
        FrameFormat const& frame = data->GetFrameFormat();
        if (canvas.source && canvas.field.HasSize(frame.width, frame.height)) return Paint(canvas, data);
        Canvas fresh{DisplacementField(frame.width, frame.height), AsVideo(data).MakeCopy(CopyMode::Independent)};
        Paint(fresh, data);
        canvas = std::move(fresh);
    }

private:
    struct Canvas {
        DisplacementField field;
        VideoHandle source; ///< The first picture of the field's size, as it came.
    };

    /// What a stroke overwrites of the field.
    struct Overwritten {
        Box box;
        std::vector<DisplacementField::Pair> pairs;
    };

    void Paint(Canvas& on, DataHandle& data) {
        std::vector<Overwritten> before;
        try {
            AddStroke(on, {settings.GetFromX(), settings.GetFromY(), settings.GetToX(), settings.GetToY()}, before);
            for (PushStroke const& stroke : settings.GetStrokes()) AddStroke(on, stroke, before);
            if (before.empty()) return;
            if (data->GetPixFmt() == PixFmt::PAL8) Convert(data, PixFmt::RGBA);
            Warp(on, before, data);
        } catch (...) {
            for (auto each = before.rbegin(); each != before.rend(); ++each) on.field.Write(each->box, each->pairs);
            throw;
        }
    }

    void AddStroke(Canvas& on, PushStroke const& stroke, std::vector<Overwritten>& before) const {
        Box const box = on.field.FindBox(stroke, settings.GetSize());
        if (box.IsEmpty()) return;
        before.push_back({box, on.field.Read(box)});
        on.field.AddStroke(stroke, settings.GetSize(), settings.GetStrength());
    }

    /// The picture is written in place when all patches are there; when they would take more memory than it, one by one
    /// into a copy, which is dropped when a later one fails.
    void Warp(Canvas const& on, std::vector<Overwritten> const& touched, DataHandle& data) {
        std::size_t pixels = 0;
        for (Overwritten const& each : touched) pixels += each.pairs.size();
        FrameFormat const& frame = data->GetFrameFormat();
        bool const isLater = pixels <= std::size_t{frame.width} * frame.height;
        if (!isLater) data = AsVideo(data).MakeCopy(CopyMode::Value);
        std::vector<Patch> patches;
        for (Overwritten const& each : touched) {
            Patch patch = MakePatch(on, AsVideo(data), each.box);
            if (isLater)
                patches.push_back(std::move(patch));
            else
                CopyBox(patch, AsVideo(data), each.box);
        }
        AsVideo(data).Detach();
        for (std::size_t i = 0; i < patches.size(); ++i) CopyBox(patches[i], AsVideo(data), touched[i].box);
    }

    Patch MakePatch(Canvas const& on, IDataVideo const& target, Box const& box) {
        FrameFormat const& frame = target.GetFrameFormat();
        DisplacementField const& field = on.field;
        Box const reach = FindReach(field, AlignOut(box, frame), frame);
        auto const place = [](int value) { return static_cast<std::uint32_t>(value); };
        DataHandle patch = on.source->MakePart(
            {place(reach.x0), place(reach.y0), place(reach.x1 - reach.x0), place(reach.y1 - reach.y0)});
        remapper->SetSettings(SettingsEffectRemapping([&field, reach](int x, int y) {
            DisplacementField::Pair const& pair = field.At(x + reach.x0, y + reach.y0);
            return std::pair(static_cast<float>(x) - pair.x, static_cast<float>(y) - pair.y);
        }));
        remapper->ProcessData(patch);
        remapper->SetSettings(SettingsEffectRemapping()); // whose function must not outlive the field
        Convert(patch, target.GetPixFmt());
        return {patch, reach.x0, reach.y0};
    }

    void Convert(DataHandle& data, PixFmt format) {
        if (data->GetPixFmt() == format) return;
        RunWith(*converter, SettingsColorspaceConverter(format, true), data);
    }

    intrusive_ptr<IOneInputEffectVideo> remapper;
    intrusive_ptr<IOneInputEffectVideo> converter;
    Canvas canvas;
};

VELNOR_EFFECT(SettingsEffectDirectionalAreaDeformation, OneInput, DirectionalAreaDeformation)

} // namespace Velnor::Proc
