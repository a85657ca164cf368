#include "Proc/Effects/Lumetta/Kernels/Subject/SubjectStrokes.h"

#include "Proc/Effects/Lumetta/Kernels/Color/OkLab.h"
#include "Proc/Effects/Lumetta/Kernels/Subject/ColorOdds.h"
#include "Proc/Effects/Lumetta/Kernels/Subject/Saliency.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Velnor::Proc::Kernels {
namespace {

ColorPlanes ToPlanes(ConstPlane const& rgb) {
    std::size_t const width = rgb.GetWidth() / 3;
    FloatPlane const none(width, rgb.GetHeight());
    ColorPlanes planes{none, none, none};
    for (std::size_t y = 0; y < rgb.GetHeight(); ++y)
        for (std::size_t x = 0; x < width; ++x) {
            unsigned char const* const pixel = rgb.GetRow(y) + 3 * x;
            Lab const lab =
                ToOkLab({static_cast<float>(pixel[0]), static_cast<float>(pixel[1]), static_cast<float>(pixel[2])});
            // Lightness counts half: light and shade are often of one thing.
            planes[0].GetRow(y)[x] = lab.l / 2;
            planes[1].GetRow(y)[x] = lab.a * 2;
            planes[2].GetRow(y)[x] = lab.b * 2;
        }
    return planes;
}

/// The level that parts the values best in two (N. Otsu, 1979).
float FindThreshold(std::vector<float> const& values) {
    constexpr std::size_t BINS = 128;
    float const most = *std::ranges::max_element(values);
    std::array<double, BINS> counts{};
    for (float const value : values) ++counts[std::min(BINS - 1, static_cast<std::size_t>(value / most * BINS))];
    double total = 0;
    for (std::size_t i = 0; i < BINS; ++i) total += static_cast<double>(i) * counts[i];
    double below = 0, sum = 0, best = -1;
    std::size_t threshold = 0;
    for (std::size_t i = 0; i + 1 < BINS; ++i) {
        below += counts[i];
        sum += static_cast<double>(i) * counts[i];
        double const above = static_cast<double>(values.size()) - below;
        if (below == 0 || above == 0) continue;
        double const parting = below * above * std::pow(sum / below - (total - sum) / above, 2);
        if (parting <= best) continue;
        best = parting;
        threshold = i + 1;
    }
    return most * static_cast<float>(threshold) / BINS;
}

/// Head and shoulders below each face: 1 inside, falling to 0 around.
FloatPlane DrawPersons(std::size_t width, std::size_t height, std::span<FaceBox const> faces) {
    FloatPlane persons(width, height);
    for (FaceBox const& face : faces)
        for (std::size_t y = 0; y < height; ++y)
            for (std::size_t x = 0; x < width; ++x) {
                float const across = std::abs((static_cast<float>(x) + 0.5F - face.left) / face.width - 0.5F);
                float const down = (static_cast<float>(y) + 0.5F - face.top) / face.height;
                // Distances in faces: from the middle of the head, and from the line that widens to the shoulders.
                float const head = std::hypot(across / 0.8F, (down - 0.2F) / 1.0F);
                float const half = 0.52F + 0.88F * std::clamp((down - 0.8F) / 0.8F, 0.0F, 1.0F);
                float const body = down < 0.8F ? 9.0F : across / half;
                float& person = persons.GetRow(y)[x];
                // What is held in the hands may be part of it.
                float const hands = down > 1.8F && across < 3 ? 0.35F : 0.0F;
                person = std::max({person, hands, std::clamp(2.5F - 2 * std::min(head, body), 0.0F, 1.0F)});
            }
    return persons;
}

/// Runs of neighbours with the same stroke.
class Islands {
public:
    Islands(std::vector<Stroke> const& marks, std::size_t planeWidth)
        : strokes(marks), width(planeWidth), isSeen(marks.size(), 0) {}

    /// All of one kind, each as the places of its pixels.
    std::vector<std::vector<std::size_t>> Find(Stroke kind) {
        std::vector<std::vector<std::size_t>> islands;
        for (std::size_t first = 0; first < strokes.size(); ++first) {
            std::vector<std::size_t> island;
            Add(first, kind, island);
            for (std::size_t next = 0; next < island.size(); ++next) AddNeighbours(island[next], kind, island);
            if (!island.empty()) islands.push_back(std::move(island));
        }
        return islands;
    }

    bool TouchesBorder(std::vector<std::size_t> const& island) const {
        return std::ranges::any_of(island, [this](std::size_t at) {
            return at % width == 0 || at % width + 1 == width || at < width || at + width >= strokes.size();
        });
    }

private:
    void Add(std::size_t at, Stroke kind, std::vector<std::size_t>& island) {
        if (isSeen[at] != 0 || strokes[at] != kind) return;
        isSeen[at] = 1;
        island.push_back(at);
    }
    void AddNeighbours(std::size_t at, Stroke kind, std::vector<std::size_t>& island) {
        if (at % width != 0) Add(at - 1, kind, island);
        if (at % width + 1 != width) Add(at + 1, kind, island);
        if (at >= width) Add(at - width, kind, island);
        if (at + width < strokes.size()) Add(at + width, kind, island);
    }

    std::vector<Stroke> const& strokes;
    std::size_t width;
    std::vector<char> isSeen;
};

/// What is small beside the largest part of the subject is background; what the subject encloses is left to the cut.
void DropIslands(std::vector<Stroke>& strokes, std::size_t width) {
    constexpr std::size_t LEAST_SHARE = 5;
    constexpr std::size_t LEAST_HOLE_SHARE = 3;
    auto const subjects = Islands(strokes, width).Find(Stroke::Subject);
    std::size_t largest = 0;
    for (auto const& island : subjects) largest = std::max(largest, island.size());
    for (auto const& island : subjects)
        if (island.size() * LEAST_SHARE < largest)
            for (std::size_t const at : island) strokes[at] = Stroke::Background;
    Islands islands(strokes, width);
    for (auto const& hole : islands.Find(Stroke::Background))
        if (hole.size() * LEAST_HOLE_SHARE < largest && !islands.TouchesBorder(hole))
            for (std::size_t const at : hole) strokes[at] = Stroke::None;
}

/// What speaks for the subject at each pixel by its place alone, as a logarithm of odds.
std::vector<float> WeighPlaces(ColorPlanes const& lab, std::span<FaceBox const> faces) {
    FloatPlane places = FindSaliency(lab);
    if (*std::ranges::max_element(places.values) <= 0) return {};
    float const threshold = FindThreshold(places.values);
    for (float& value : places.values) value = std::clamp(2.5F * (value / threshold - 1), -2.5F, 2.5F);
    if (!faces.empty()) {
        FloatPlane const persons = DrawPersons(places.width, places.height, faces);
        for (std::size_t i = 0; i < places.values.size(); ++i)
            places.values[i] = 0.4F * places.values[i] + 5 * persons.values[i] - 2.5F;
    }
    return places.values;
}

} // namespace

std::vector<Stroke> FindSubjectStrokes(ConstPlane const& rgb, std::span<FaceBox const> faces) {
    constexpr int TURNS = 6;
    constexpr float MOST_ODDS = 4; // Of a colour: a place may still outweigh it.
    constexpr float SURE = 0.7F;
    constexpr float CLEAR_PLACE = 2, CLEAR_COLOR = 1; // With faces one of them must be, and agree.
    ColorPlanes const lab = ToPlanes(rgb);
    std::vector<float> const places = WeighPlaces(lab, faces);
    std::vector<Stroke> strokes(lab[0].values.size(), Stroke::None);
    if (places.empty()) return strokes;
    FloatPlane odds(lab[0].width, lab[0].height), scratch = odds;
    odds.values = places;
    std::vector<float> colors;
    for (int turn = 0; turn < TURNS; ++turn) {
        std::vector<float> shares;
        for (float const value : odds.values) shares.push_back(1 / (1 + std::exp(-2 * value)));
        colors = FindColorOdds(lab, shares);
        for (std::size_t i = 0; i < places.size(); ++i)
            odds.values[i] = places[i] + std::clamp(colors[i], -MOST_ODDS, MOST_ODDS);
        BoxMean(odds, std::max(odds.width, odds.height) / 100, scratch);
    }
    for (std::size_t i = 0; i < strokes.size(); ++i) {
        float const side = odds.values[i] > 0 ? 1.0F : -1.0F;
        bool const isClear = faces.empty() || side * places[i] > CLEAR_PLACE || side * colors[i] > CLEAR_COLOR;
        if (isClear && side * odds.values[i] > SURE) strokes[i] = side > 0 ? Stroke::Subject : Stroke::Background;
    }
    DropIslands(strokes, odds.width);
    return strokes;
}

} // namespace Velnor::Proc::Kernels
