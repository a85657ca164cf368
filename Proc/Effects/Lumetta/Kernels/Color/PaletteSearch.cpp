#include "Proc/Effects/Lumetta/Kernels/Color/PaletteSearch.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Velnor::Proc::Kernels {
namespace {

using Colors = std::vector<WeightedColor>;

/// A small spot of its own colour, an eye or a badge, matters more than its area says.
constexpr float AREA_POWER = 0.6F;

/// Later passes move nothing that could be seen.
constexpr int MOST_REFINEMENTS = 50;

constexpr std::array<float Lab::*, 3> AXES{&Lab::l, &Lab::a, &Lab::b};

/// A lost hue is missed more than a step of lightness, which error diffusion hides well.
constexpr float CHROMA_WEIGHT = 2.0F;

/// Where distances are taken.
Lab Weighted(Lab const& lab) { return {lab.l, lab.a * CHROMA_WEIGHT, lab.b * CHROMA_WEIGHT}; }
Lab Unweighted(Lab const& lab) { return {lab.l, lab.a / CHROMA_WEIGHT, lab.b / CHROMA_WEIGHT}; }

float Distance(Lab const& p, Lab const& q) {
    float const l = p.l - q.l;
    float const a = p.a - q.a;
    float const b = p.b - q.b;
    return l * l + a * a + b * b;
}

std::size_t FindNearest(std::vector<Lab> const& palette, Lab const& color) {
    std::size_t best = 0;
    float least = std::numeric_limits<float>::max();
    for (std::size_t i = 0; i < palette.size(); ++i) {
        float const distance = Distance(palette[i], color);
        if (distance >= least) continue;
        least = distance;
        best = i;
    }
    return best;
}

/// A run of colours [first, last).
struct Box {
    std::size_t first, last;
    Lab mean;
    double error = 0;             ///< Sum of squared distances to the mean.
    float Lab::*widest = nullptr; ///< Axis with the largest part of it.
};

Box Measure(Colors const& colors, std::size_t first, std::size_t last) {
    Box box{first, last, {}};
    double weight = 0;
    for (std::size_t i = first; i < last; ++i) weight += colors[i].weight;
    double largest = -1;
    for (auto const axis : AXES) {
        double sum = 0;
        for (std::size_t i = first; i < last; ++i) sum += double{colors[i].weight} * colors[i].lab.*axis;
        double const mean = sum / weight;
        double error = 0;
        for (std::size_t i = first; i < last; ++i) {
            double const away = colors[i].lab.*axis - mean;
            error += colors[i].weight * away * away;
        }
        box.mean.*axis = static_cast<float>(mean);
        box.error += error;
        if (error <= largest) continue;
        largest = error;
        box.widest = axis;
    }
    return box;
}

/// Where the sorted colours of a box part into halves of about equal weight; neither is empty.
std::size_t FindMedian(Colors const& colors, Box const& box) {
    double weight = 0;
    for (std::size_t i = box.first; i < box.last; ++i) weight += colors[i].weight;
    double below = 0;
    std::size_t at = box.first;
    while (at + 1 < box.last && below + colors[at].weight / 2.0 < weight / 2) below += colors[at++].weight;
    return std::max(at, box.first + 1);
}

std::vector<Lab> CutByMedians(Colors& colors, std::size_t count) {
    std::vector<Box> boxes{Measure(colors, 0, colors.size())};
    while (boxes.size() < count) {
        auto const worst = std::ranges::max_element(
            boxes, {}, [](Box const& box) { return box.last - box.first > 1 ? box.error : -1.0; });
        if (worst->last - worst->first < 2) break;
        Box const box = *worst;
        auto const begin = colors.begin();
        std::sort(begin + static_cast<std::ptrdiff_t>(box.first), begin + static_cast<std::ptrdiff_t>(box.last),
                  [axis = box.widest](WeightedColor const& p, WeightedColor const& q) {
                      return p.lab.*axis != q.lab.*axis ? p.lab.*axis < q.lab.*axis : p.bin < q.bin;
                  });
        std::size_t const middle = FindMedian(colors, box);
        *worst = Measure(colors, box.first, middle);
        boxes.push_back(Measure(colors, middle, box.last));
    }
    std::vector<Lab> palette;
    for (Box const& box : boxes) palette.push_back(box.mean);
    return palette;
}

/// One pass of k-means. Returns whether a colour changed its entry; an entry without colours stays.
bool Refine(Colors const& colors, std::vector<Lab>& palette, std::vector<std::uint16_t>& owner) {
    struct Sum {
        double l = 0, a = 0, b = 0, weight = 0;
    };
    std::vector<Sum> sums(palette.size());
    bool changed = false;
    for (std::size_t i = 0; i < colors.size(); ++i) {
        Lab const& lab = colors[i].lab;
        auto const entry = static_cast<std::uint16_t>(FindNearest(palette, lab));
        changed = changed || owner[i] != entry;
        owner[i] = entry;
        double const weight = colors[i].weight;
        sums[entry].l += weight * lab.l;
        sums[entry].a += weight * lab.a;
        sums[entry].b += weight * lab.b;
        sums[entry].weight += weight;
    }
    for (std::size_t k = 0; k < palette.size(); ++k) {
        Sum const& sum = sums[k];
        if (sum.weight == 0) continue;
        palette[k] = {static_cast<float>(sum.l / sum.weight), static_cast<float>(sum.a / sum.weight),
                      static_cast<float>(sum.b / sum.weight)};
    }
    return changed;
}

} // namespace

std::vector<Lab> FindPalette(Colors colors, std::size_t count, int refinements) {
    if (colors.empty()) return {};
    for (WeightedColor& color : colors) {
        color.weight = std::pow(color.weight, AREA_POWER);
        color.lab = Weighted(color.lab);
    }
    std::vector<Lab> palette = CutByMedians(colors, count);
    std::vector<std::uint16_t> owner(colors.size(), 0xffff);
    for (int pass = 0; pass < std::min(refinements, MOST_REFINEMENTS); ++pass)
        if (!Refine(colors, palette, owner)) break;
    std::ranges::transform(palette, palette.begin(), Unweighted);
    return palette;
}

PaletteMap::PaletteMap(std::vector<Lab> const& entries) : palette(entries), nearest(COLOR_BINS, UNKNOWN) {
    for (Lab& entry : palette) {
        std::array<unsigned char, 3> rounded{};
        RgbLevels const rgb = FromOkLab(entry);
        for (std::size_t k = 0; k < 3; ++k)
            rounded[k] = static_cast<unsigned char>(std::lround(std::clamp(rgb[k], 0.0F, 255.0F)));
        levels.push_back(rounded);
        entry = Weighted(entry);
    }
}

std::uint16_t PaletteMap::Search(std::uint32_t red, std::uint32_t green, std::uint32_t blue) const {
    auto const middle = [](std::uint32_t level) { return static_cast<float>(level & ~3U) + 1.5F; };
    return static_cast<std::uint16_t>(
        FindNearest(palette, Weighted(ToOkLab({middle(red), middle(green), middle(blue)}))));
}

} // namespace Velnor::Proc::Kernels
