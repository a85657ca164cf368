#include "Proc/Effects/Lumetta/Kernels/ChromaClasses.h"

#include "Proc/Effects/Lumetta/Exceptions.h"

#include <string>

namespace Velnor::Proc::Kernels {

void AddChroma(ChromaClasses const& picture, std::span<ChromaSum> sums) {
    for (std::uint64_t y = 0; y < picture.blue.GetHeight(); ++y) {
        unsigned char const* const classes = picture.classes.GetRow(y << picture.shiftY);
        unsigned char const* const blue = picture.blue.GetRow(y);
        unsigned char const* const red = picture.red.GetRow(y);
        for (std::uint64_t x = 0; x < picture.blue.GetWidth(); ++x) {
            std::size_t const number = classes[x << picture.shiftX];
            if (number >= sums.size())
                VELNOR_THROW(EffectException, "A pixel is of class " + std::to_string(number) + "; there are only " +
                                                  std::to_string(sums.size()) + " classes, counted from 0.");
            ChromaSum& sum = sums[number];
            sum.blue += blue[x];
            sum.red += red[x];
            ++sum.count;
        }
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
    for (std::uint64_t y = 0; y < picture.blue.GetHeight(); ++y) {
        unsigned char const* const classes = picture.classes.GetRow(y << picture.shiftY);
        unsigned char* const blue = picture.blue.GetRow(y);
        unsigned char* const red = picture.red.GetRow(y);
        for (std::uint64_t x = 0; x < picture.blue.GetWidth(); ++x) {
            ChromaSum const& mean = means[classes[x << picture.shiftX]];
            blue[x] = static_cast<unsigned char>(mean.blue);
            red[x] = static_cast<unsigned char>(mean.red);
        }
    }
}

} // namespace Velnor::Proc::Kernels
