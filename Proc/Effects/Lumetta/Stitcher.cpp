// Stitcher: joins photographs, or puts the patches of a picture together again.
//
// Photographs are the business of the host's panorama. Patches:
//
//     sample = sum of weight * sample of each patch there / sum of weights
//     weight = distance to the patch's nearer side * distance to its top or bottom
//
// So one patch fades into the next over their whole overlap, and where they agree the result is exactly what they show.
// Patches that are views on one picture know their places; others are laid out as a grid.
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectPanorama.h"
#include "Proc/Settings/SettingsEffectStitcher.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace Velnor::Proc {
namespace {

using Pictures = std::vector<DataHandle>;

/// One plane of a patch, at its place in the result's plane, in sample groups.
struct PlacedPlane {
    ConstPlane samples;
    std::uint64_t x, y, columns, rows;
};

struct Size {
    std::uint64_t width, height;
};

std::uint64_t Distance(std::uint64_t at, std::uint64_t count) { return std::min(at + 1, count - at); }

/// One row of the result: weighted means or, of what has none such as indices into a palette, the heaviest sample.
class Blend {
public:
    Blend(std::uint64_t columns, std::uint64_t groupBytes, bool takesHeaviest)
        : bytes(groupBytes), isHeaviest(takesHeaviest), weights(columns), sums(columns * groupBytes) {}

    void Clear() {
        std::ranges::fill(weights, 0U);
        std::ranges::fill(sums, 0U);
    }

    void Add(PlacedPlane const& patch, std::uint64_t y) {
        if (patch.x >= weights.size()) return;
        std::uint64_t const down = Distance(y - patch.y, patch.rows);
        unsigned char const* from = patch.samples.GetRow(y - patch.y);
        std::uint64_t const end = std::min<std::uint64_t>(patch.columns, weights.size() - patch.x);
        for (std::uint64_t i = 0; i < end; ++i, from += bytes) {
            std::uint64_t const weight = down * Distance(i, patch.columns);
            std::uint64_t& total = weights[patch.x + i];
            std::uint64_t* const sum = sums.data() + (patch.x + i) * bytes;
            if (isHeaviest) {
                if (weight <= total) continue;
                total = weight;
                for (std::uint64_t k = 0; k < bytes; ++k) sum[k] = weight * from[k];
                continue;
            }
            total += weight;
            for (std::uint64_t k = 0; k < bytes; ++k) sum[k] += weight * from[k];
        }
    }

    /// Leaves what no patch covers.
    void Write(unsigned char* to) const {
        for (std::uint64_t i = 0; i < weights.size(); ++i) {
            if (weights[i] == 0) continue;
            for (std::uint64_t k = i * bytes; k < (i + 1) * bytes; ++k)
                to[k] = static_cast<unsigned char>((sums[k] + weights[i] / 2) / weights[i]);
        }
    }

private:
    std::uint64_t bytes;
    bool isHeaviest;
    std::vector<std::uint64_t> weights;
    std::vector<std::uint64_t> sums;
};

/// Patches go in from top to bottom, so that a row looks only at those that have begun and not yet ended.
void BlendPlane(std::vector<PlacedPlane> patches, MutablePlane const& target, std::uint64_t groupBytes,
                bool takesHeaviest) {
    std::ranges::stable_sort(patches, {}, &PlacedPlane::y);
    Blend blend(target.GetWidth() / groupBytes, groupBytes, takesHeaviest);
    std::vector<PlacedPlane const*> active;
    std::size_t next = 0;
    for (std::uint64_t y = 0; y < target.GetHeight(); ++y) {
        std::erase_if(active, [y](PlacedPlane const* patch) { return patch->y + patch->rows <= y; });
        for (; next < patches.size() && patches[next].y <= y; ++next) active.push_back(&patches[next]);
        blend.Clear();
        for (PlacedPlane const* patch : active) blend.Add(*patch, y);
        blend.Write(target.GetRow(y));
    }
}

bool HaveOnePalette(Pictures const& patches) {
    unsigned char const* const first = AsVideo(patches.front()).GetPlane(1).GetRow(0);
    return std::ranges::all_of(patches, [first](auto const& patch) {
        ConstPlane const palette = AsVideo(patch).GetPlane(1);
        return std::equal(first, first + palette.GetWidth(), palette.GetRow(0));
    });
}

/// Distance from one cell of the grid to the next.
std::int64_t GridStep(std::string const& axis, std::uint32_t size, int overlap) {
    if (overlap >= static_cast<std::int64_t>(size))
        VELNOR_THROW(EffectException, "The setting overlap-" + axis + " is " + std::to_string(overlap) +
                                          "; it must be below the size of the first patch, which is " +
                                          std::to_string(size) + ".");
    return static_cast<std::int64_t>(size) - overlap;
}

/// How much of one side is made. Throws EffectException when more is wanted than there is.
std::uint64_t WantedSize(std::string const& side, int wanted, std::uint64_t covered) {
    if (static_cast<std::uint64_t>(wanted) > covered)
        VELNOR_THROW(EffectException, "The setting " + side + " is " + std::to_string(wanted) + "; the patches cover " +
                                          std::to_string(covered) + " pixels, so it must be 0 (all of them) to that.");
    return wanted == 0 ? covered : static_cast<std::uint64_t>(wanted);
}

void RequireOneFormat(Pictures const& patches) {
    std::string_view const first = patches.front()->GetDescription().name;
    for (std::size_t i = 1; i < patches.size(); ++i)
        if (patches[i]->GetDescription().name != first)
            VELNOR_THROW(EffectException, "Patch " + std::to_string(i + 1) + " is in the format " +
                                              std::string(patches[i]->GetDescription().name) + ", the first in " +
                                              std::string(first) + ": they must be in one format.");
}

} // namespace

class Stitcher : public EffectBaseVarInput<IVarInputEffectVideo, SettingsEffectStitcher> {
public:
    Stitcher(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseVarInput(effectFactory, effectContext),
          toRgba(MakeOneInput(SettingsColorspaceConverter(PixFmt::RGBA, true))) {}

    DataHandle ProcessInternal(Pictures const& inputs) override {
        if (inputs.empty()) VELNOR_THROW(EffectException, "Pictures to put together are needed, none is given.");
        for (auto const& input : inputs) RequirePicture(input.get());
        return ArePatches(inputs) ? StitchPatches(inputs) : JoinPhotographs(inputs);
    }

private:
    /// A lone picture is one patch: there is nothing to join it with.
    bool ArePatches(Pictures const& inputs) const {
        if (settings.GetMode() != SettingsEffectStitcher::AUTO)
            return settings.GetMode() == SettingsEffectStitcher::PATCHES;
        bool const isGridSet = settings.GetColumns() != 0 || settings.GetOverlapX() != 0 || settings.GetOverlapY() != 0;
        return isGridSet || inputs.size() == 1 || std::ranges::any_of(inputs, HasPlace);
    }

    static bool HasPlace(DataHandle const& patch) {
        Rectangle const place = AsVideo(patch).GetRectangle();
        return place.x != 0 || place.y != 0;
    }

    DataHandle JoinPhotographs(Pictures const& inputs) {
        if (!panorama) panorama = MakeVarInput(SettingsEffectPanorama());
        return panorama->Process(inputs);
    }

    DataHandle StitchPatches(Pictures const& inputs) const {
        RequireOneFormat(inputs);
        // The places are read first: a converted patch is a picture of its own.
        std::vector<Rectangle> const places = FindPlaces(inputs);
        Pictures patches = inputs;
        if (inputs.front()->GetPixFmt() == PixFmt::PAL8 && !HaveOnePalette(inputs))
            for (auto& patch : patches) {
                patch = AsVideo(patch).MakeCopy(CopyMode::Value);
                toRgba->ProcessData(patch);
            }
        Size const size = FindSize(places);
        FrameFormat frame = patches.front()->GetFrameFormat();
        frame.width = static_cast<std::uint32_t>(size.width);
        frame.height = static_cast<std::uint32_t>(size.height);
        VideoHandle const result = context->CreateImage(patches.front()->GetPixFmt(), frame);
        result->Fill(Color::Black(Color::Opacity::Transparent));
        BlendPicture(patches, places, *result);
        BlendExtraAlpha(patches, places, *result);
        result->CopyAttributes(*patches.front());
        return result;
    }

    /// From the upper left of all.
    std::vector<Rectangle> FindPlaces(Pictures const& patches) const {
        std::vector<Rectangle> places;
        for (auto const& patch : patches) places.push_back(AsVideo(patch).GetRectangle());
        if (places.size() > 1 && std::ranges::none_of(patches, HasPlace)) PlaceOnGrid(patches, places);
        std::uint32_t const left = std::ranges::min_element(places, {}, &Rectangle::x)->x;
        std::uint32_t const top = std::ranges::min_element(places, {}, &Rectangle::y)->y;
        for (Rectangle& place : places) {
            place.x -= left;
            place.y -= top;
        }
        return places;
    }

    void PlaceOnGrid(Pictures const& patches, std::vector<Rectangle>& places) const {
        std::size_t columns = static_cast<std::size_t>(settings.GetColumns());
        if (columns == 0) columns = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(places.size()))));
        columns = std::min(columns, places.size());
        std::int64_t const stepX = GridStep("x", places.front().width, settings.GetOverlapX());
        std::int64_t const stepY = GridStep("y", places.front().height, settings.GetOverlapY());
        for (std::size_t i = 0; i < places.size(); ++i) {
            std::int64_t const x = static_cast<std::int64_t>(i % columns) * stepX;
            std::int64_t const y = static_cast<std::int64_t>(i / columns) * stepY;
            if (std::max(x, y) > LARGEST_PICTURE_SIDE)
                VELNOR_THROW(EffectException, "Patch " + std::to_string(i + 1) + " would begin at " +
                                                  std::to_string(x) + ", " + std::to_string(y) + "; at most " +
                                                  std::to_string(LARGEST_PICTURE_SIDE) + " is possible.");
            places[i].x = static_cast<std::uint32_t>(x);
            places[i].y = static_cast<std::uint32_t>(y);
            if (!patches[i]->GetDescription().IsAligned(places[i].x, places[i].y))
                VELNOR_THROW(EffectException,
                             "Patch " + std::to_string(i + 1) + " would begin at " + std::to_string(x) + ", " +
                                 std::to_string(y) + ", in the middle of a colour sample of the format " +
                                 std::string(patches[i]->GetDescription().name) + "; other overlaps are needed.");
        }
    }

    Size FindSize(std::vector<Rectangle> const& places) const {
        Size covered{0, 0};
        for (Rectangle const& place : places) {
            covered.width = std::max(covered.width, std::uint64_t{place.x} + place.width);
            covered.height = std::max(covered.height, std::uint64_t{place.y} + place.height);
        }
        return {WantedSize("width", settings.GetWidth(), covered.width),
                WantedSize("height", settings.GetHeight(), covered.height)};
    }

    static void BlendPicture(Pictures const& patches, std::vector<Rectangle> const& places, IDataVideo& result) {
        PixFmtDescription const& format = result.GetDescription();
        bool const isPalette = format.model == ColorModel::Palette;
        unsigned char const count = isPalette ? 1 : GetPlanesCount(result);
        for (unsigned char plane = 0; plane < count; ++plane) {
            PlaneLayout const& layout = format.planes[plane];
            BlendPlane(
                Place(patches, places, layout, [plane](IDataVideo const& patch) { return patch.GetPlane(plane); }),
                result.GetMutablePlane(plane), layout.bytes, isPalette);
        }
        if (isPalette) CopyPlane(AsVideo(patches.front()).GetPlane(1), result.GetMutablePlane(1));
    }

    /// When each patch has one.
    static void BlendExtraAlpha(Pictures const& patches, std::vector<Rectangle> const& places, IDataVideo& result) {
        PixFmtDescription const& format = result.GetDescription();
        PlaneLayout const layouts[] = {{1, 0, 0}, {1, format.chromaShiftX, format.chromaShiftY}};
        for (unsigned char index = 0; index < 2; ++index) {
            auto const get = [index](IDataVideo const& patch) { return patch.GetExtraAlpha(index); };
            if (std::ranges::any_of(patches, [&](auto const& patch) { return get(AsVideo(patch)).IsEmpty(); }))
                continue;
            PlaneLayout const& layout = layouts[index];
            FrameFormat const frame = result.GetFrameFormat();
            std::uint64_t const width = ((frame.width - 1) >> layout.shiftX) + 1;
            std::uint64_t const height = ((frame.height - 1) >> layout.shiftY) + 1;
            std::vector<unsigned char> alpha(width * height);
            MutablePlane const target(alpha.data(), static_cast<std::int64_t>(width), width, height);
            BlendPlane(Place(patches, places, layout, get), target, 1, false);
            result.SetPlane(index, target);
        }
    }

    template <class Get>
    static std::vector<PlacedPlane> Place(Pictures const& patches, std::vector<Rectangle> const& places,
                                          PlaneLayout const& layout, Get const& get) {
        std::vector<PlacedPlane> planes;
        for (std::size_t i = 0; i < patches.size(); ++i) {
            ConstPlane const samples = get(std::as_const(AsVideo(patches[i])));
            planes.push_back({samples, places[i].x >> layout.shiftX, places[i].y >> layout.shiftY,
                              samples.GetWidth() / layout.bytes, samples.GetHeight()});
        }
        return planes;
    }

    intrusive_ptr<IOneInputEffectVideo> toRgba;
    intrusive_ptr<IVarInputEffectVideo> panorama; ///< Made for the first photographs.
};

VELNOR_EFFECT(SettingsEffectStitcher, VarInput, Stitcher)

} // namespace Velnor::Proc
