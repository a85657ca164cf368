#include "Proc/Effects/General/Kernels/BlendRows.h"
#include "Proc/Effects/General/Kernels/ChromaMean.h"
#include "Proc/Interfaces/ProcException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <vector>

namespace Velnor::Proc::Kernels {
namespace {

using Bytes = std::vector<unsigned char>;

unsigned char Blended(int alpha, int over, int under) {
    return static_cast<unsigned char>((alpha * over + (255 - alpha) * under + 127) / 255);
}

Bytes Noise(std::size_t size, std::uint32_t seed) {
    Bytes bytes(size);
    for (unsigned char& byte : bytes) {
        seed = seed * 1664525U + 1013904223U;
        byte = static_cast<unsigned char>(seed >> 24);
    }
    return bytes;
}

TEST(BlendRows, RoundsExactlyForEveryAlphaAndBothLevels) {
    Bytes every(256);
    std::iota(every.begin(), every.end(), static_cast<unsigned char>(0));
    for (int alpha = 0; alpha < 256; ++alpha) {
        Bytes const alphas(256, static_cast<unsigned char>(alpha));
        for (int under = 0; under < 256; ++under) {
            Bytes row(256, static_cast<unsigned char>(under));
            BlendPixels(row.data(), every.data(), alphas.data(), 256, {});
            for (int over = 0; over < 256; ++over)
                ASSERT_EQ(row[static_cast<std::size_t>(over)], Blended(alpha, over, under))
                    << alpha << " " << over << " " << under;
        }
        Bytes products = every;
        MultiplyAlpha(products.data(), 256, static_cast<unsigned char>(alpha));
        for (int one = 0; one < 256; ++one)
            ASSERT_EQ(products[static_cast<std::size_t>(one)], (one * alpha + 127) / 255);
    }
}

TEST(BlendRows, EachByteTakesItsPixelsAlphaAndMaskedBytesStay) {
    for (unsigned int bytes = 1; bytes <= 4; ++bytes)
        for (unsigned int kept = 0; kept <= bytes; ++kept) // `bytes`: none is kept
            // About the lengths of vectors and of the stretch that is done at a time.
            for (std::size_t const pixels : {0U, 1U, 15U, 33U, 1023U, 1024U, 1025U, 2100U}) {
                BlendShape shape{bytes, {255, 255, 255, 255}};
                if (kept < bytes) shape.mask[kept] = 0;
                Bytes const under = Noise(pixels * bytes + 9, 1);
                Bytes const over = Noise(pixels * bytes, 2);
                Bytes const alpha = Noise(pixels, 3);
                Bytes row = under;
                BlendPixels(row.data() + 1, over.data(), alpha.data(), pixels, shape);
                Bytes wanted = under;
                for (std::size_t i = 0; i < pixels * bytes; ++i)
                    if (i % bytes != kept) wanted[i + 1] = Blended(alpha[i / bytes], over[i], under[i + 1]);
                ASSERT_EQ(row, wanted) << bytes << " bytes, " << kept << " kept, " << pixels << " pixels";
            }
}

TEST(ChromaMean, IsTheRoundedMeanOfTheSamplesThatThereAre) {
    for (unsigned int shiftX = 0; shiftX <= 2; ++shiftX)
        for (unsigned int shiftY = 0; shiftY <= 2; ++shiftY)
            for (auto const& [width, height] : {std::pair{1U, 1U}, {2U, 3U}, {5U, 4U}, {67U, 7U}}) {
                Bytes const samples = Noise(width * height, 5);
                ConstPlane const source(samples.data(), width, width, height);
                std::uint64_t const columns = (width + (1U << shiftX) - 1) >> shiftX;
                std::uint64_t const rows = (height + (1U << shiftY) - 1) >> shiftY;
                Bytes means(columns * rows, 77);
                MeanOverChroma(source, {means.data(), static_cast<std::int64_t>(columns), columns, rows}, shiftX,
                               shiftY);
                for (std::uint64_t i = 0; i < means.size(); ++i) {
                    unsigned int sum = 0;
                    unsigned int count = 0;
                    for (std::uint64_t y = i / columns << shiftY;
                         y < std::min<std::uint64_t>(height, (i / columns + 1) << shiftY); ++y)
                        for (std::uint64_t x = i % columns << shiftX;
                             x < std::min<std::uint64_t>(width, (i % columns + 1) << shiftX); ++x) {
                            sum += samples[y * width + x];
                            ++count;
                        }
                    ASSERT_EQ(means[i], (sum + count / 2) / count) << width << " " << shiftX << shiftY << " " << i;
                }
            }
    Bytes one(1);
    Bytes const four(4);
    EXPECT_THROW(MeanOverChroma({four.data(), 4, 4, 1}, {one.data(), 1, 1, 1}, 1, 0), ProcException);
}

} // namespace
} // namespace Velnor::Proc::Kernels
