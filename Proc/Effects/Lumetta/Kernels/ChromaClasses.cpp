#include "Proc/Effects/Lumetta/Kernels/ChromaClasses.h"

#include "Proc/Effects/Lumetta/Exceptions.h"
#include "Proc/Effects/Lumetta/Kernels/ByteTables.h"

#include <array>
#include <string>

namespace Velnor::Proc::Kernels {

void AddChroma(ChromaClasses const& picture, std::span<ChromaSum> sums) {
    // Neighbours are of one class mostly: sums in turn do not wait for each other.
    constexpr std::size_t LANES = 4;
    std::array<std::array<ChromaSum, 256>, LANES> lanes{};
    for (std::uint64_t y = 0; y < picture.blue.GetHeight(); ++y) {
        unsigned char const* const classes = picture.classes.GetRow(y << picture.shiftY);
        unsigned char const* const blue = picture.blue.GetRow(y);
        unsigned char const* const red = picture.red.GetRow(y);
        for (std::uint64_t x = 0; x < picture.blue.GetWidth(); ++x) {
            ChromaSum& sum = lanes[x % LANES][classes[x << picture.shiftX]];
            sum.blue += blue[x];
            sum.red += red[x];
            ++sum.count;
        }
    }
    for (auto const& lane : lanes)
        for (std::size_t number = 0; number < lane.size(); ++number) {
            ChromaSum const& part = lane[number];
            if (part.count == 0) continue;
            if (number >= sums.size())
                VELNOR_THROW(EffectException, "A pixel is of class " + std::to_string(number) + "; there are only " +
                                                  std::to_string(sums.size()) + " classes, counted from 0.");
            sums[number] += part;
        }
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
