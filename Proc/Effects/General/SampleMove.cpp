#include "Proc/Effects/General/SampleMove.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace Velnor::Proc {
namespace {

constexpr unsigned char NO_CHROMA = 128;
constexpr unsigned char OPAQUE = 255;
using Table = std::array<unsigned char, 256>;

/// The samples of one component. Sample x of a row lies at offsets[x % 4] + x / 4 * group; the offsets are regular
/// (step bytes apart) but for the luma of the formats that keep four of them between two chroma samples.
template <class Byte>
struct Samples {
    Byte* data = nullptr;
    std::int64_t stride = 0;
    std::size_t count = 0; ///< Of a row.
    std::size_t rows = 0;
    std::size_t step = 1; ///< 0 when the offsets are not regular.
    std::array<std::size_t, 4> offsets{};
    std::size_t group = 4;

    Byte* Row(std::size_t y) const { return data + static_cast<std::int64_t>(y) * stride; }

    void SetStep(std::size_t bytes) {
        step = bytes;
        offsets = {0, bytes, 2 * bytes, 3 * bytes};
        group = 4 * bytes;
    }
};

ConstPlane ReadPlane(IDataVideo const& picture, unsigned char plane) { return picture.GetPlane(plane); }
MutablePlane ReadPlane(IDataVideo& picture, unsigned char plane) { return picture.GetMutablePlane(plane); }

template <class Picture>
auto View(Picture& picture, ComponentPlace place, bool isLuma) {
    PixFmtDescription const& format = picture.GetDescription();
    auto const plane = ReadPlane(picture, place.plane);
    PlaneLayout const layout = format.planes[place.plane];
    Samples<std::remove_pointer_t<decltype(plane.GetData())>> view;
    view.data = plane.GetData() + place.offset;
    view.stride = plane.GetStride();
    view.rows = plane.GetHeight();
    view.SetStep(layout.bytes);
    view.count = plane.GetWidth() / layout.bytes;
    if (!isLuma || layout.shiftX == 0) return view;

    // Several lumas share a group with one pair of chroma samples: the last group may be in part outside the picture.
    view.count <<= layout.shiftX;
    if (layout.shiftX == 1)
        view.SetStep(2);
    else { // Chroma, two lumas, chroma, two lumas.
        view.step = 0;
        view.offsets = {0, 1, 3, 4};
        view.group = layout.bytes;
    }
    return view;
}

template <class Picture>
auto Component(Picture& picture, std::size_t index) {
    return View(picture, picture.GetDescription().components[index], index == 0);
}

using MoveRow = void (*)(unsigned char const* source, unsigned char* target, std::size_t count);

template <std::size_t From, std::size_t To>
void MoveSteps(unsigned char const* source, unsigned char* target, std::size_t count) {
    if constexpr (From == 1 && To == 1)
        std::memmove(target, source, count);
    else
        for (std::size_t i = 0; i < count; ++i) target[i * To] = source[i * From];
}

/// The loop with both steps known to the compiler; null for steps beyond four bytes.
MoveRow FindMoveRow(std::size_t from, std::size_t to) {
    static constexpr auto LOOPS = []<std::size_t... I>(std::index_sequence<I...>) {
        return std::array<MoveRow, 16>{&MoveSteps<I / 4 + 1, I % 4 + 1>...};
    }
    (std::make_index_sequence<16>());
    if (from < 1 || from > 4 || to < 1 || to > 4) return nullptr;
    return LOOPS[(from - 1) * 4 + to - 1];
}

void MoveSlowly(Samples<unsigned char const> const& source, Samples<unsigned char> const& target, std::size_t y,
                std::size_t count) {
    unsigned char const* const from = source.Row(y);
    unsigned char* const to = target.Row(y);
    for (std::size_t phase = 0; phase < 4; ++phase)
        for (std::size_t x = phase; x < count; x += 4)
            to[target.offsets[phase] + x / 4 * target.group] = from[source.offsets[phase] + x / 4 * source.group];
}

void Move(Samples<unsigned char const> const& source, Samples<unsigned char> const& target) {
    std::size_t const count = std::min(source.count, target.count);
    std::size_t const rows = std::min(source.rows, target.rows);
    MoveRow const moveRow = FindMoveRow(source.step, target.step);
    for (std::size_t y = 0; y < rows; ++y) {
        if (moveRow != nullptr)
            moveRow(source.Row(y), target.Row(y), count);
        else
            MoveSlowly(source, target, y, count);
        // Lumas of a last group that stand outside the picture repeat its edge.
        unsigned char* const row = target.Row(y);
        for (std::size_t x = count; x > 0 && x < target.count; ++x)
            row[target.offsets[x % 4] + x / 4 * target.group] =
                row[target.offsets[(x - 1) % 4] + (x - 1) / 4 * target.group];
    }
}

/// For components at regular steps: chroma, alpha.
void Fill(Samples<unsigned char> const& target, unsigned char value) {
    for (std::size_t y = 0; y < target.rows; ++y) {
        unsigned char* const row = target.Row(y);
        if (target.step == 1)
            std::memset(row, value, target.count);
        else
            for (std::size_t x = 0; x < target.count; ++x) row[x * target.step] = value;
    }
}

/// One component of each pixel's palette entry.
void LookUp(IDataVideo const& source, std::size_t offset, Samples<unsigned char> const& target) {
    unsigned char const* const palette = source.GetPlane(1).GetRow(0);
    Table table{};
    for (std::size_t i = 0; i < table.size(); ++i) table[i] = palette[i * 4 + offset];
    ConstPlane const indices = source.GetPlane(0);
    for (std::size_t y = 0; y < target.rows; ++y) {
        unsigned char const* const from = indices.GetRow(y);
        unsigned char* const to = target.Row(y);
        for (std::size_t x = 0; x < target.count; ++x) to[x * target.step] = table[from[x]];
    }
}

/// The byte of a four-byte pixel that no component uses.
void FillUnusedByte(IDataVideo& target) {
    PixFmtDescription const& format = target.GetDescription();
    if (format.model != ColorModel::Rgb || format.hasAlpha || format.planes[0].bytes != 4) return;
    int unused = 0 + 1 + 2 + 3;
    for (ComponentPlace const place : format.components) unused -= place.offset;
    Fill(View(target, {0, static_cast<std::uint8_t>(unused)}, false), OPAQUE);
}

} // namespace

bool IsSampleMove(PixFmtDescription const& source, PixFmtDescription const& target) {
    if (target.model == ColorModel::Palette) return false;
    if (source.model == ColorModel::Grey) return true;
    if (source.model == ColorModel::Palette) return target.model == ColorModel::Rgb;
    if (source.model == ColorModel::Luma && target.model == ColorModel::Grey) return true;
    return source.model == target.model && source.chromaShiftX == target.chromaShiftX &&
           source.chromaShiftY == target.chromaShiftY;
}

void MoveColour(IDataVideo const& source, IDataVideo& target) {
    PixFmtDescription const& from = source.GetDescription();
    PixFmtDescription const& to = target.GetDescription();
    bool const greyToLuma = from.model == ColorModel::Grey && to.model == ColorModel::Luma;
    for (std::size_t i = 0; i < to.componentsCount; ++i) {
        auto const place = Component(target, i);
        if (from.model == ColorModel::Palette)
            LookUp(source, from.components[i].offset, place);
        else if (greyToLuma && i > 0)
            Fill(place, NO_CHROMA);
        else
            Move(Component(source, from.model == ColorModel::Grey ? 0 : i), place);
    }
    FillUnusedByte(target);
}

void MoveAlpha(IDataVideo const& source, IDataVideo& target) {
    PixFmtDescription const& from = source.GetDescription();
    if (!target.GetDescription().hasAlpha) return;
    auto const place = View(target, target.GetDescription().alpha, false);
    if (!from.hasAlpha)
        Fill(place, OPAQUE);
    else if (from.model == ColorModel::Palette)
        LookUp(source, from.alpha.offset, place);
    else
        Move(View(source, from.alpha, false), place);
}

} // namespace Velnor::Proc
