// ColorReduce and BlendPalette.
#include "Proc/Effects/Lumetta/Kernels/Color/ColorTransfer.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Settings/SettingsEffectBlendPalette.h"
#include "Proc/Settings/SettingsEffectColorReduce.h"
#include "Tests/Support/ColourPictures.h"
#include "Tests/Support/HostRun.h"

#include <gtest/gtest.h>

#include <set>

namespace Velnor::Proc {
namespace {

using namespace Testing;

struct PaletteEffectsTest : ::testing::Test {
    static SettingsEffectColorReduce Reduce(int colors, bool dither, bool palette = true) {
        SettingsEffectColorReduce settings;
        settings.SetColors(colors);
        settings.SetDither(dither);
        settings.SetPalette(palette);
        return settings;
    }
    /// Two hues under a light that grows to the right.
    VideoHandle Ramp(PixFmt format, Colour4 const& upper, Colour4 const& lower) {
        return Paint(run.context, format, 64, 40, [&](std::uint32_t x, std::uint32_t y) {
            Colour4 const& c = y < 20 ? upper : lower;
            double const light = (x + 16) / 80.0;
            return Colour4{c.red * light, c.green * light, c.blue * light, c.alpha};
        });
    }
    static Kernels::ColorSpread SpreadOf(VideoHandle const& picture) {
        return Kernels::MeasureSpread(
            Kernels::CountColors(picture->GetPlane(0), Kernels::PackedRgb(picture->GetPixFmt()), false).colors);
    }
    HostRun run;
};

TEST_F(PaletteEffectsTest, AFewColoursAreKeptExactlyAndTheResultIsAPalettePicture) {
    std::vector<Colour4> const colors{{255, 0, 0}, {0, 255, 0}, {30, 60, 250}, {255, 255, 255}, {0, 0, 0}};
    VideoHandle const picture = Paint(run.context, PixFmt::BGR24, 31, 17, [&](std::uint32_t x, std::uint32_t y) {
        return colors[(x / 3 + y) % colors.size()];
    });
    for (bool const dither : {false, true})
        for (int const count : {5, 256}) {
            VideoHandle const reduced = run.Apply(Reduce(count, dither), picture);
            ASSERT_EQ(reduced->GetPixFmt(), PixFmt::PAL8);
            EXPECT_EQ(Samples(*run.Convert(reduced, PixFmt::BGR24)), Samples(*picture));
        }
}

TEST_F(PaletteEffectsTest, NoMoreColoursThanAskedAndMoreColoursAreNearer) {
    VideoHandle const picture = MakeNoise(run.context, PixFmt::RGB24, 64, 48);
    double previous = 1e9;
    for (int const count : {2, 3, 16, 64, 256}) {
        std::vector<unsigned char> const out =
            Samples(*run.Convert(run.Apply(Reduce(count, false), picture), PixFmt::RGB24));
        std::vector<unsigned char> const in = Samples(*picture);
        std::set<std::array<unsigned char, 3>> used;
        double error = 0;
        for (std::size_t i = 0; i < out.size(); i += 3) used.insert({out[i], out[i + 1], out[i + 2]});
        for (std::size_t i = 0; i < out.size(); ++i) error += (out[i] - in[i]) * (out[i] - in[i]);
        EXPECT_LE(used.size(), static_cast<std::size_t>(count));
        EXPECT_LT(error, previous);
        previous = error;
    }
}

TEST_F(PaletteEffectsTest, DiffusedErrorKeepsTheMeanWhereNearestColoursBand) {
    VideoHandle const ramp = Paint(run.context, PixFmt::RGB24, 128, 64, [](std::uint32_t x, std::uint32_t) {
        double const v = 20 + 1.6 * x;
        return Colour4{v, v, v, 255};
    });
    auto const worstBlock = [&](bool dither) {
        std::vector<unsigned char> const out = Samples(*run.Convert(run.Apply(Reduce(4, dither), ramp), PixFmt::RGB24));
        double worst = 0;
        for (std::size_t left = 32; left < 96; left += 8) { // within the palette's own range
            double sum = 0;
            for (std::size_t y = 0; y < 64; ++y)
                for (std::size_t x = left; x < left + 8; ++x) sum += out[(y * 128 + x) * 3];
            worst = std::max(worst, std::abs(sum / 512 - (20 + 1.6 * (double(left) + 3.5))));
        }
        return worst;
    };
    EXPECT_LT(worstBlock(true), 5);
    EXPECT_GT(worstBlock(false), 10);
}

TEST_F(PaletteEffectsTest, TransparencyIsAnEntryOfThePaletteOrStaysAsItIs) {
    VideoHandle const picture = Paint(run.context, PixFmt::RGBA, 16, 8, [](std::uint32_t x, std::uint32_t y) {
        return Colour4{double(x * 16), double(y * 30), 90, x < 4 ? 20.0 : 200.0};
    });
    VideoHandle const reduced = run.Apply(Reduce(4, true), picture);
    EXPECT_EQ(ReadColour(*reduced, 2, 3).alpha, 0);
    EXPECT_EQ(ReadColour(*reduced, 9, 3).alpha, 255);
    std::set<unsigned char> used;
    for (std::uint64_t y = 0; y < 8; ++y)
        for (std::uint64_t x = 0; x < 16; ++x) used.insert(reduced->GetPlane(0).GetRow(y)[x]);
    EXPECT_LE(used.size(), 4U);
    VideoHandle const same = run.Apply(Reduce(4, true, false), picture);
    ASSERT_EQ(same->GetPixFmt(), PixFmt::RGBA);
    for (std::uint32_t x = 0; x < 16; ++x) EXPECT_EQ(ReadColour(*same, x, 5).alpha, x < 4 ? 20 : 200);
    VideoHandle const hole = MakeFlat(run.context, PixFmt::RGBA, 3, 3, {9, 9, 9, 0});
    EXPECT_EQ(ReadColour(*run.Apply(Reduce(2, true), hole), 1, 1).alpha, 0);
}

TEST_F(PaletteEffectsTest, TheFirstTakesTheSpreadOfTheSecond) {
    VideoHandle const first = Ramp(PixFmt::RGB24, {200, 120, 90}, {120, 150, 180});
    VideoHandle const second = Ramp(PixFmt::BGRX, {120, 200, 100}, {60, 90, 160});
    VideoHandle const result = run.Apply(SettingsEffectBlendPalette(), first, second);
    Kernels::ColorSpread const wanted = SpreadOf(second);
    Kernels::ColorSpread const got = SpreadOf(result);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(got.mean[i], wanted.mean[i], 0.01) << i;
        EXPECT_NEAR(std::sqrt(got.covariance[i][i]), std::sqrt(wanted.covariance[i][i]), 0.012) << i;
    }
}

TEST_F(PaletteEffectsTest, BlendStrengthRunsFromNothingAndLumaCanBeKept) {
    VideoHandle const first = Ramp(PixFmt::BGRA, {200, 120, 90, 50}, {120, 150, 180, 250});
    VideoHandle const second = Ramp(PixFmt::RGB24, {60, 200, 60}, {20, 90, 40});
    SettingsEffectBlendPalette settings;
    double previous = SpreadOf(first).mean[1];
    for (double const strength : {0.0, 50.0, 100.0}) {
        settings.SetStrength(strength);
        VideoHandle const result = run.Apply(settings, first, second);
        if (strength == 0) {
            EXPECT_EQ(Samples(*result), Samples(*first));
        }
        double const greenward = SpreadOf(result).mean[1];
        EXPECT_LE(greenward, previous);
        previous = greenward;
        EXPECT_EQ(ReadColour(*result, 3, 3).alpha, 50);
    }
    settings.SetKeepLuma(true);
    VideoHandle const kept = run.Apply(settings, first, second);
    for (std::uint32_t x = 0; x < 64; ++x)
        for (std::uint32_t const y : {5U, 30U})
            EXPECT_NEAR(Luma(ReadColour(*kept, x, y)), Luma(ReadColour(*first, x, y)), 1.5);
}

TEST_F(PaletteEffectsTest, ColoursThatDoNotFitKeepLightnessAndHue) {
    // A dull picture with a few colours in it takes a colourful palette, which carries those far out of sRGB.
    VideoHandle const first = Paint(run.context, PixFmt::RGB24, 64, 40, [](std::uint32_t x, std::uint32_t y) {
        if (x > 0) return Colour4{90.0 + x, 100.0 + y, 110.0 + (x + y) % 7};
        return Colour4{100 + 13.0 * (y % 8), 95 + 25.0 * (y / 8), 120 - 10.0 * (y % 5)};
    });
    VideoHandle const second = Ramp(PixFmt::RGB24, {250, 60, 40}, {30, 90, 250});
    Kernels::ColorTransfer const transfer(SpreadOf(first), SpreadOf(second));
    VideoHandle const result = run.Apply(SettingsEffectBlendPalette(), first, second);
    auto const lab = [](IDataVideo const& picture, std::uint32_t y) {
        Colour4 const c = ReadColour(picture, 0, y);
        return Kernels::ToOkLab({static_cast<float>(c.red), static_cast<float>(c.green), static_cast<float>(c.blue)});
    };
    int outside = 0;
    for (std::uint32_t y = 0; y < 40; ++y) {
        Kernels::Lab const wanted = transfer(lab(*first, y));
        Kernels::Lab const got = lab(*result, y);
        auto const [low, high] = std::ranges::minmax(Kernels::FromOkLab(wanted));
        if ((low > -20 && high < 275) || wanted.l < 0.2F || wanted.l > 0.9F) continue;
        ++outside;
        EXPECT_NEAR(got.l, wanted.l, 0.02);
        // Across the hue that is wanted nothing is left: -b a is at right angles to it.
        EXPECT_NEAR((got.a * wanted.b - got.b * wanted.a) / std::hypot(wanted.a, wanted.b), 0, 0.02);
        EXPECT_GE(got.a * wanted.a + got.b * wanted.b, 0);
    }
    EXPECT_GT(outside, 5);
}

TEST_F(PaletteEffectsTest, APictureIsItsOwnPalette) {
    VideoHandle const picture = Ramp(PixFmt::RGB24, {220, 90, 60}, {60, 120, 200});
    std::vector<unsigned char> const in = Samples(*picture);
    std::vector<unsigned char> const out = Samples(*run.Apply(SettingsEffectBlendPalette(), picture, picture));
    for (std::size_t i = 0; i < in.size(); ++i) ASSERT_NEAR(out[i], in[i], 2);
}

TEST_F(PaletteEffectsTest, BlendTakesSixFormatsAndNoOther) {
    VideoHandle const good = MakeNoise(run.context, PixFmt::RGB24, 6, 4);
    std::set<PixFmt> const accepted{PixFmt::RGB24, PixFmt::BGR24, PixFmt::RGBA,
                                    PixFmt::BGRA,  PixFmt::RGBX,  PixFmt::BGRX};
    auto const effect = run.Make(SettingsEffectBlendPalette());
    for (PixFmtDescription const& format : PixFmtDescription::GetAll()) {
        VideoHandle const other = MakeNoise(run.context, format.format, 6, 4);
        for (bool const isFirst : {true, false}) {
            std::vector<DataHandle> const inputs{isFirst ? other : good, isFirst ? good : other};
            std::string refusal;
            try {
                effect->ProcessData(inputs);
            } catch (EffectException const& error) {
                refusal = *boost::get_error_info<TagDescription>(error);
            }
            EXPECT_EQ(refusal, accepted.count(format.format) > 0 ? "" : "Pixel format is not supported!");
        }
    }
}

} // namespace
} // namespace Velnor::Proc
