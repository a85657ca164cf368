#include "Proc/Settings/SettingsEffectNoiseVideo.h"

#include "Proc/Effects/General/Kernels/GrainField.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/Pictures.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Velnor::Proc {
namespace {

using namespace Testing;
using Words = std::array<std::uint32_t, 4>;

TEST(Philox, GivesThePublishedAnswers) {
    EXPECT_EQ(Kernels::Philox({0, 0, 0, 0}, {0, 0}), (Words{0x6627e8d5, 0xe169c58d, 0xbc57ac4c, 0x9b00dbd8}));
    EXPECT_EQ(Kernels::Philox({~0U, ~0U, ~0U, ~0U}, {~0U, ~0U}),
              (Words{0x408f276d, 0x41c83b0e, 0xa20bc7c6, 0x6d5451fd}));
}

/// Mean and deviation of the whole field, of its columns modulo 4, and the correlation of neighbours.
TEST(GrainField, HasTheSameDeviationOnGrainsAndBetween) {
    for (bool const uniform : {false, true})
        for (float const size : {1.0F, 2.5F, 4.0F}) {
            Kernels::GrainField field(7, 0, size, uniform, 600);
            std::array<double, 4> squares{};
            double sum = 0;
            double products = 0;
            for (std::uint32_t y = 0; y < 600; ++y) {
                float const* const row = field.GetRow(y);
                for (std::size_t x = 0; x < 600; ++x) {
                    sum += double{row[x]};
                    squares[x % 4] += double{row[x]} * double{row[x]};
                    if (x > 0) products += double{row[x]} * double{row[x - 1]};
                }
            }
            SCOPED_TRACE(size);
            EXPECT_NEAR(sum / 360000, 0, 0.03);
            for (double const square : squares) EXPECT_NEAR(std::sqrt(square / 90000), 1, 0.03);
            double const likeness = products / 360000; // of neighbours
            EXPECT_GE(likeness, size == 1 ? -0.02 : size == 2.5F ? 0.5 : 0.85);
            EXPECT_LE(likeness, size == 1 ? 0.02 : size == 2.5F ? 0.85 : 1);
        }
}

class NoiseTest : public ::testing::Test {
protected:
    std::vector<unsigned char> Process(SettingsEffectNoiseVideo const& settings, PixFmt format = PixFmt::RGB24) {
        auto const effect =
            host.GetFactory()->CreateOneInputEffect(SettingsEffectNoiseVideo::CLASS_ID, ImplNames::DEFAULT);
        effect->SetSettings(settings);
        DataHandle data = MakeFlat(*host.GetContext(), format, 64, 48, {128});
        effect->ProcessData(data);
        EXPECT_EQ(data->GetPixFmt(), format);
        return Samples(AsVideo(data));
    }
    StandardHost host;
};

TEST_F(NoiseTest, IsAFunctionOfTheSeedAloneAndOfKnownBytes) {
    SettingsEffectNoiseVideo settings;
    std::vector<unsigned char> const once = Process(settings);
    EXPECT_EQ(Process(settings), once);
    for (std::size_t i = 0; i < once.size(); i += 3)
        ASSERT_TRUE(once[i] == once[i + 1] && once[i] == once[i + 2]) << "grey noise";
    // From the published generator by hand: counter (0, 0), seed 1, the sum of 16 bytes.
    std::uint32_t sum = 0;
    for (std::uint32_t const word : Kernels::Philox({0, 0, 0, 0}, {1, 0}))
        for (int shift = 0; shift < 32; shift += 8) sum += word >> shift & 255U;
    EXPECT_EQ(once[0], std::lround(128 + 10 * (sum - 2040.0) / 295.601));
    settings.SetSeed(2);
    EXPECT_NE(Process(settings), once);
    settings.SetSeed(1);
    settings.SetMonochrome(false);
    std::vector<unsigned char> const coloured = Process(settings);
    EXPECT_NE(coloured, once);
    std::vector<unsigned char> const blueFirst = Process(settings, PixFmt::BGR24);
    for (std::size_t i = 0; i < coloured.size(); i += 3) ASSERT_EQ(coloured[i], blueFirst[i + 2]);
}

TEST_F(NoiseTest, StrengthIsTheDeviationInLevels) {
    SettingsEffectNoiseVideo settings;
    settings.SetStrength(20);
    settings.SetGrainSize(1.5);
    double squares = 0;
    for (unsigned char const level : Process(settings)) squares += (level - 128.0) * (level - 128.0);
    EXPECT_NEAR(std::sqrt(squares / (64 * 48 * 3)), 20, 1.5);
}

} // namespace
} // namespace Velnor::Proc
