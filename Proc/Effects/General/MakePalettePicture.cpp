#include "Proc/Effects/General/FormatConverter.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <optional>
#include <span>
#include <unordered_map>

namespace Velnor::Proc {
namespace {

constexpr std::size_t ENTRIES = 256;
constexpr std::size_t COMPONENTS = 4;
using Entry = std::array<unsigned char, COMPONENTS>; ///< Red, green, blue, opacity.

struct Palette {
    std::vector<Entry> entries;
    std::vector<unsigned char> indices; ///< Of each cell of the histogram, for a palette by median cut.
};

Entry ReadPixel(unsigned char const* pixel) {
    Entry entry;
    std::memcpy(entry.data(), pixel, COMPONENTS);
    return entry;
}

std::uint32_t Pack(Entry const& entry) {
    std::uint32_t word = 0;
    std::memcpy(&word, entry.data(), COMPONENTS);
    return word;
}

/// What is clear counts as one colour, whatever is hidden there: it must not take entries from what is seen.
Entry WithoutHidden(Entry const& colour) { return colour[3] == 0 ? Entry{} : colour; }
Entry AsItIs(Entry const& colour) { return colour; }

/// Calls `visit(pixel, index place)` along all rows, until it returns false.
template <class Visitor>
bool ForEachPixel(ConstPlane const& rgba, MutablePlane const& indices, Visitor const& visit) {
    for (std::uint64_t y = 0; y < indices.GetHeight(); ++y) {
        unsigned char const* const from = rgba.GetRow(y);
        unsigned char* const to = indices.GetRow(y);
        for (std::uint64_t x = 0; x < indices.GetWidth(); ++x)
            if (!visit(ReadPixel(from + x * COMPONENTS), to[x])) return false;
    }
    return true;
}

/// Writes the indices too. Nothing when there are more than 256 colours.
std::optional<std::vector<Entry>> IndexExactly(ConstPlane const& rgba, MutablePlane const& indices,
                                               Entry (*count)(Entry const&)) {
    std::vector<Entry> entries;
    std::unordered_map<std::uint32_t, unsigned char> known;
    std::uint32_t last = 0;
    unsigned char lastIndex = 0;
    bool const fits = ForEachPixel(rgba, indices, [&](Entry const& pixel, unsigned char& place) {
        Entry const colour = count(pixel);
        std::uint32_t const word = Pack(colour);
        if (entries.empty() || word != last) { // Neighbours are often alike.
            auto const [found, isNew] = known.try_emplace(word, static_cast<unsigned char>(entries.size()));
            if (isNew && entries.size() == ENTRIES) return false;
            if (isNew) entries.push_back(colour);
            last = word;
            lastIndex = found->second;
        }
        place = lastIndex;
        return true;
    });
    if (!fits) return std::nullopt;
    return entries;
}

constexpr std::array<int, COMPONENTS> CELL_BITS{5, 5, 5, 3};

std::size_t CellOf(Entry const& colour) {
    std::size_t cell = 0;
    for (std::size_t i = 0; i < COMPONENTS; ++i)
        cell = (cell << CELL_BITS[i]) | static_cast<std::size_t>(colour[i] >> (8 - CELL_BITS[i]));
    return cell;
}

struct Cell {
    std::size_t place = 0;
    std::uint64_t pixels = 0;
    std::array<std::uint64_t, COMPONENTS> sums{};

    unsigned char Mean(std::size_t component) const {
        return static_cast<unsigned char>((sums[component] + pixels / 2) / pixels);
    }
};

/// A group of cells, and the component along which they spread most.
struct Group {
    std::span<Cell> cells;
    std::size_t component = 0;
    std::uint64_t weight = 0; ///< Spread times pixels: the heaviest group is divided next.

    explicit Group(std::span<Cell> some) : cells(some) {
        int widest = 0;
        std::uint64_t pixels = 0;
        for (Cell const& cell : cells) pixels += cell.pixels;
        for (std::size_t i = 0; i < COMPONENTS; ++i) {
            auto const [low, high] = std::ranges::minmax(cells, {}, [i](Cell const& cell) { return cell.Mean(i); });
            int const spread = high.Mean(i) - low.Mean(i);
            if (spread <= widest) continue;
            widest = spread;
            component = i;
        }
        weight = static_cast<std::uint64_t>(widest) * pixels;
    }

    /// Two groups of about as many pixels each; never an empty one.
    std::pair<Group, Group> Divide() const {
        std::ranges::sort(cells, {}, [this](Cell const& cell) { return cell.Mean(component); });
        std::uint64_t const all =
            std::accumulate(cells.begin(), cells.end(), std::uint64_t{0},
                            [](std::uint64_t sum, Cell const& cell) { return sum + cell.pixels; });
        std::size_t middle = 0;
        for (std::uint64_t sum = 0; middle < cells.size() - 1 && sum * 2 < all; ++middle) sum += cells[middle].pixels;
        middle = std::max<std::size_t>(middle, 1);
        return {Group(cells.first(middle)), Group(cells.subspan(middle))};
    }

    Entry MeanColour() const {
        Cell total;
        for (Cell const& cell : cells) {
            total.pixels += cell.pixels;
            for (std::size_t i = 0; i < COMPONENTS; ++i) total.sums[i] += cell.sums[i];
        }
        return {total.Mean(0), total.Mean(1), total.Mean(2), total.Mean(3)};
    }
};

std::vector<Cell> CountCells(ConstPlane const& rgba, MutablePlane const& indices) {
    std::vector<Cell> cells(std::size_t{1} << (CELL_BITS[0] + CELL_BITS[1] + CELL_BITS[2] + CELL_BITS[3]));
    ForEachPixel(rgba, indices, [&](Entry const& pixel, unsigned char&) {
        Entry const colour = WithoutHidden(pixel);
        Cell& cell = cells[CellOf(colour)];
        ++cell.pixels;
        for (std::size_t i = 0; i < COMPONENTS; ++i) cell.sums[i] += colour[i];
        return true;
    });
    for (std::size_t i = 0; i < cells.size(); ++i) cells[i].place = i;
    return cells;
}

Palette CutMedians(std::vector<Cell> cells) {
    Palette palette;
    palette.indices.resize(cells.size());
    std::erase_if(cells, [](Cell const& cell) { return cell.pixels == 0; });
    std::vector<Group> groups{Group(cells)};
    while (groups.size() < ENTRIES) {
        auto const heaviest = std::ranges::max_element(groups, {}, &Group::weight);
        if (heaviest->cells.size() < 2 || heaviest->weight == 0) break;
        auto const [low, high] = heaviest->Divide();
        *heaviest = low;
        groups.push_back(high);
    }
    for (Group const& group : groups) {
        for (Cell const& cell : group.cells)
            palette.indices[cell.place] = static_cast<unsigned char>(palette.entries.size());
        palette.entries.push_back(group.MeanColour());
    }
    return palette;
}

} // namespace

VideoHandle MakePalettePicture(IEffectContext& context, IDataVideo const& rgba) {
    VideoHandle const result = context.CreateImage(PixFmt::PAL8, rgba.GetFrameFormat());
    ConstPlane const pixels = rgba.GetPlane(0);
    MutablePlane const indices = result->GetMutablePlane(0);
    Palette palette;
    auto exact = IndexExactly(pixels, indices, &AsItIs);
    if (!exact) exact = IndexExactly(pixels, indices, &WithoutHidden);
    if (exact)
        palette.entries = std::move(*exact);
    else {
        palette = CutMedians(CountCells(pixels, indices));
        ForEachPixel(pixels, indices, [&](Entry const& colour, unsigned char& place) {
            place = palette.indices[CellOf(WithoutHidden(colour))];
            return true;
        });
    }
    palette.entries.resize(ENTRIES, Entry{0, 0, 0, 255});
    std::memcpy(result->GetMutablePlane(1).GetRow(0), palette.entries.data(), ENTRIES * COMPONENTS);
    return result;
}

} // namespace Velnor::Proc
