#include "Proc/Effects/Lumetta/Kernels/Color/ChromaClasses.h"

#include "Proc/Effects/Kit/ByteTables.h"
#include "Proc/Interfaces/EffectExceptions.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace Velnor::Proc::Kernels {
namespace {

/// Sums of up to 65535 samples, the three numbers of a class in one word: 24 bits of blue, 24 of red, 16 of the count.
class ShortSums {
public:
    /// Makes room for so many samples, of which MOST at a time are possible.
    void MakeRoom(std::uint64_t samples, std::span<ChromaSum> sums) {
        if (added + samples > MOST) MoveTo(sums);
        added += samples;
    }

    /// A sample of column x. Neighbours are of one class mostly: sums in turn do not wait for each other.
    void Add(std::uint64_t x, unsigned char number, unsigned char blue, unsigned char red) {
        lanes[x % LANES][number] += blue | std::uint64_t{red} << RED_AT | std::uint64_t{1} << COUNT_AT;
    }

    void MoveTo(std::span<ChromaSum> sums) {
        constexpr std::uint64_t LEVELS = (1U << RED_AT) - 1;
        for (auto& lane : lanes)
            for (std::size_t number = 0; number < lane.size(); ++number) {
                std::uint64_t const part = std::exchange(lane[number], 0);
                if (part == 0) continue;
                if (number >= sums.size())
                    VELNOR_THROW(EffectException, "A pixel is of class " + std::to_string(number) +
                                                      "; there are only " + std::to_string(sums.size()) +
                                                      " classes, counted from 0.");
                sums[number] +=
                    {static_cast<std::uint32_t>(part & LEVELS), static_cast<std::uint32_t>(part >> RED_AT & LEVELS),
                     static_cast<std::uint32_t>(part >> COUNT_AT)};
            }
        added = 0;
    }

private:
    static constexpr std::size_t LANES = 4;
    static constexpr unsigned int RED_AT = 24;
    static constexpr unsigned int COUNT_AT = 48;
    static constexpr std::uint64_t MOST = 0xffff; // Of which 255 each still fit 24 bits.

    std::array<std::array<std::uint64_t, 256>, LANES> lanes{};
    std::uint64_t added = 0;
};

} // namespace

void AddChroma(ChromaClasses const& picture, std::span<ChromaSum> sums) {
    constexpr std::uint64_t STRETCH = 1U << 14;
    ShortSums part;
    std::uint64_t const width = picture.blue.GetWidth();
    for (std::uint64_t y = 0; y < picture.blue.GetHeight(); ++y) {
        unsigned char const* const classes = picture.classes.GetRow(y << picture.shiftY);
        unsigned char const* const blue = picture.blue.GetRow(y);
        unsigned char const* const red = picture.red.GetRow(y);
        for (std::uint64_t from = 0; from < width; from += STRETCH) {
            std::uint64_t const to = std::min(from + STRETCH, width);
            part.MakeRoom(to - from, sums);
            for (std::uint64_t x = from; x < to; ++x) part.Add(x, classes[x << picture.shiftX], blue[x], red[x]);
        }
    }
    part.MoveTo(sums);
}

void DivideChroma(std::span<ChromaSum> sums) {
    for (ChromaSum& sum : sums) {
        if (sum.count == 0) continue;
        sum.blue /= sum.count;
        sum.red /= sum.count;
    }
}

void WriteChroma(ChromaClasses const& picture, std::span<ChromaSum const> means) {
    Table blueTable{};
    Table redTable{};
    for (std::size_t i = 0; i < means.size() && i < blueTable.size(); ++i) {
        blueTable[i] = static_cast<unsigned char>(means[i].blue);
        redTable[i] = static_cast<unsigned char>(means[i].red);
    }
    std::uint64_t const width = picture.blue.GetWidth();
    if (picture.shiftX == 0 && picture.shiftY == 0) {
        ConstPlane const classes(picture.classes.GetData(), picture.classes.GetStride(), width,
                                 picture.blue.GetHeight());
        MapBytes(classes, picture.blue, {&blueTable, 1}, 1);
        MapBytes(classes, picture.red, {&redTable, 1}, 1);
        return;
    }
    for (std::uint64_t y = 0; y < picture.blue.GetHeight(); ++y) {
        unsigned char const* const classes = picture.classes.GetRow(y << picture.shiftY);
        unsigned char* const blue = picture.blue.GetRow(y);
        unsigned char* const red = picture.red.GetRow(y);
        for (std::uint64_t x = 0; x < width; ++x) {
            unsigned char const number = classes[x << picture.shiftX];
            blue[x] = blueTable[number];
            red[x] = redTable[number];
        }
    }
}

} // namespace Velnor::Proc::Kernels
