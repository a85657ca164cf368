// Radial blur, details, sketch, glass, glare and restoration, with the host's own sub-effects.

#include "Proc/Effects/Kit/PullPush.h"
#include "Proc/Effects/Lumetta/Kernels/Blur/TurnedMean.h"
#include "Proc/Effects/Lumetta/Kernels/Style/GlassCells.h"
#include "Proc/Effects/Lumetta/Kernels/Style/HatchStrokes.h"
#include "Proc/Effects/Lumetta/Kernels/Style/Scratches.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsEffectAutoGlareRemove.h"
#include "Proc/Settings/SettingsEffectBlurRadial.h"
#include "Proc/Settings/SettingsEffectColoredGlass.h"
#include "Proc/Settings/SettingsEffectDetailsEnhance.h"
#include "Proc/Settings/SettingsEffectRestorer.h"
#include "Proc/Settings/SettingsEffectSketch.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/PluginHost.h"
#include "Tests/Support/Refusal.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <set>

namespace Velnor::Proc {
namespace {

using namespace Testing;
using Paint = std::function<int(int x, int y)>;

class StyleEffectsTest : public ::testing::Test {
protected:
    static VideoHandle MakeGrey(PixFmt format, int width, int height, Paint const& paint) {
        return Testing::MakeGrey(*PluginHost().GetContext(), format, width, height, paint);
    }
    static int At(DataHandle const& picture, int x, int y) { return Testing::At(AsVideo(picture), x, y); }

    template <class S>
    static DataHandle Apply(S const& settings, VideoHandle const& picture) {
        auto const effect = PluginHost().GetFactory()->CreateOneInputEffect(S::CLASS_ID, ImplNames::VELNOR);
        effect->SetSettings(settings);
        DataHandle data = picture;
        effect->ProcessData(data);
        return data;
    }
};

TEST_F(StyleEffectsTest, ATurnKeepsRingsAndAZoomKeepsRays) {
    auto const radius = [](int x, int y) { return std::hypot(x - 50.0, y - 50.0); };
    auto const angle = [](int x, int y) { return std::atan2(y - 50.0, x - 50.0); };
    auto const rings = [&](int x, int y) { return static_cast<int>(128 + 100 * std::sin(radius(x, y) / 4)); };
    auto const rays = [&](int x, int y) { return static_cast<int>(128 + 100 * std::sin(angle(x, y) * 6)); };
    SettingsEffectBlurRadial settings;
    settings.SetStrength(100);
    settings.SetCenterX(50.5);
    settings.SetCenterY(50.5);
    struct Case {
        SettingsEffectBlurRadial::Mode mode;
        Paint kept, blurred;
    };
    for (Case const& each :
         {Case{SettingsEffectBlurRadial::SPIN, rings, rays}, Case{SettingsEffectBlurRadial::ZOOM, rays, rings}}) {
        settings.SetMode(each.mode);
        DataHandle const kept = Apply(settings, MakeGrey(PixFmt::GRAY8, 101, 101, each.kept));
        DataHandle const blurred = Apply(settings, MakeGrey(PixFmt::RGB24, 101, 101, each.blurred));
        double contrast = 0;
        for (int y = 20; y < 81; y += 3)
            for (int x = 20; x < 81; x += 3) {
                if (radius(x, y) < 15 || radius(x, y) > 32) continue;
                EXPECT_NEAR(At(kept, x, y), each.kept(x, y), 12) << x << ", " << y;
                contrast = std::max(contrast, std::abs(At(blurred, x, y) - 128.0));
            }
        EXPECT_LT(contrast, 85);
    }
}

TEST(TurnedMeanTest, IsTheMeanOfTwoPlacesInTheMiddleAndAtEachBorder) {
    constexpr std::int64_t WIDTH = 43, HEIGHT = 19;
    Kernels::Similarity const turned{std::cos(0.4), std::sin(0.4), 11, 14};
    Kernels::Similarity const grown{0.7, 0, 60, -3};
    Kernels::Similarity const mirrored{-1, 0, 21.25, 9.5};
    for (std::int64_t const bytes : {1, 2, 3, 4})
        for (auto const& [first, second] : {std::pair{turned, grown}, {grown, mirrored}, {mirrored, turned}}) {
            auto const rowBytes = static_cast<std::uint64_t>(WIDTH * bytes);
            std::vector<unsigned char> from(rowBytes * HEIGHT);
            for (std::size_t i = 0; i < from.size(); ++i) from[i] = static_cast<unsigned char>(i * i * 37 >> 3);
            std::vector<unsigned char> to(from.size());
            auto const stride = static_cast<std::int64_t>(rowBytes);
            Kernels::MeanOfTwo(ConstPlane(from.data(), stride, rowBytes, HEIGHT),
                               MutablePlane(to.data(), stride, rowBytes, HEIGHT), static_cast<unsigned int>(bytes),
                               first, second);
            auto const sample = [&](Kernels::Similarity const& map, std::int64_t column, std::int64_t row,
                                    std::int64_t k) {
                double const dx = static_cast<double>(column) - map.centerX;
                double const dy = static_cast<double>(row) - map.centerY;
                double const x = std::clamp(map.centerX + map.a * dx - map.b * dy, 0.0, WIDTH - 1.0);
                double const y = std::clamp(map.centerY + map.b * dx + map.a * dy, 0.0, HEIGHT - 1.0);
                auto const at = [&](double u, double v) {
                    auto const place = static_cast<std::int64_t>(std::min(v, HEIGHT - 1.0)) * WIDTH +
                                       static_cast<std::int64_t>(std::min(u, WIDTH - 1.0));
                    return static_cast<double>(from[static_cast<std::size_t>(place * bytes + k)]);
                };
                double const u = x - std::floor(x);
                double const v = y - std::floor(y);
                return (1 - v) * ((1 - u) * at(x, y) + u * at(x + 1, y)) +
                       v * ((1 - u) * at(x, y + 1) + u * at(x + 1, y + 1));
            };
            double worst = 0;
            for (std::int64_t y = 0; y < HEIGHT; ++y)
                for (std::int64_t i = 0; i < WIDTH * bytes; ++i) {
                    double const wanted =
                        (sample(first, i / bytes, y, i % bytes) + sample(second, i / bytes, y, i % bytes)) / 2;
                    worst = std::max(worst, std::abs(to[static_cast<std::size_t>(y * WIDTH * bytes + i)] - wanted));
                }
            // Places are rounded down to a 256th of a pixel, each way, where levels differ by up to 255.
            EXPECT_LE(worst, 2.5) << bytes << " bytes, " << first.a << " and " << second.a;
        }
}

TEST_F(StyleEffectsTest, DetailGrowsAndEdgesGetNoHalo) {
    auto const paint = [](int x, int y) { return (x < 40 ? 60 : 190) + ((x / 2 + y / 2) % 2 == 0 ? 4 : -4); };
    SettingsEffectDetailsEnhance settings;
    settings.SetFine(100);
    DataHandle const result = Apply(settings, MakeGrey(PixFmt::GRAY8, 80, 80, paint));
    for (int x = 4; x < 76; ++x) {
        int const change = At(result, x, 40) - paint(x, 40);
        EXPECT_LE(std::abs(change), 12) << x; // a halo would reach a quarter of the step of 130
    }
    EXPECT_GE(std::abs(At(result, 12, 40) - At(result, 14, 40)), 12); // 8 before
    EXPECT_EQ(At(Apply(settings, MakeGrey(PixFmt::GRAY8, 40, 40, [](int, int) { return 77; })), 20, 20), 77);
}

TEST_F(StyleEffectsTest, ASketchIsWhiteWithDarkLinesAlongEdges) {
    SettingsEffectSketch settings;
    settings.SetHatching(0);
    settings.SetPaper(0);
    settings.SetPencil(2);
    auto const paint = [](int x, int) { return x < 50 ? 90 : 200; };
    DataHandle const result = Apply(settings, MakeGrey(PixFmt::RGB24, 100, 100, paint));
    EXPECT_GE(At(result, 10, 50), 250);
    EXPECT_GE(At(result, 90, 50), 250);
    EXPECT_LE(At(result, 48, 50), 160);
    settings.SetHatching(100);
    int darkest = 255;
    DataHandle const hatched = Apply(settings, MakeGrey(PixFmt::RGB24, 100, 100, [](int, int) { return 40; }));
    for (int x = 20; x < 80; ++x) darkest = std::min(darkest, At(hatched, x, 50));
    EXPECT_LE(darkest, 200);
}

TEST_F(StyleEffectsTest, HatchingFollowsTheToneAndRepeatsNowhere) {
    constexpr int SIDE = 240;
    VideoHandle const tone = MakeGrey(PixFmt::GRAY8, SIDE, SIDE, [](int, int y) {
        return y < 80 ? 220 : y < 160 ? 130 : 20;
    });
    std::vector<unsigned char> const paper = Kernels::DrawHatching(tone->GetPlane(0), 5);
    std::array<double, 3> ink{}; // Of each third.
    for (std::size_t i = 0; i < paper.size(); ++i)
        ink[i * 3 / paper.size()] += (255.0 - paper[i]) / (SIDE * SIDE / 3 * 255.0);
    EXPECT_LT(ink[0], 0.001); // What reaches over the border.
    EXPECT_GT(ink[1], 0.02);
    EXPECT_GT(ink[2], 0.3);
    EXPECT_GT(ink[2], 2 * ink[1]);

    // Ruled lines would be like themselves again at some distance; what is drawn by hand is not.
    auto const dark = [&](int x, int y) {
        return 255.0 - paper[static_cast<std::size_t>(y * SIDE + x)] - ink[2] * 255;
    };
    auto const likeness = [&](int dx, int dy) {
        double sum = 0;
        for (int y = 165; y < 215; ++y)
            for (int x = 0; x < 200; ++x) sum += dark(x, y) * dark(x + dx, y + dy);
        return sum;
    };
    double const whole = likeness(0, 0);
    for (int dy = 0; dy < 25; ++dy)
        for (int dx = dy < 12 ? 12 : 0; dx < 40; ++dx) EXPECT_LT(likeness(dx, dy), whole / 2) << dx << ", " << dy;
}

TEST_F(StyleEffectsTest, GlassTakesPackedColourOnly) {
    SettingsEffectColoredGlass settings;
    VideoHandle const planar = MakeGrey(PixFmt::YUV420P, 16, 16, [](int x, int) { return x; });
    EXPECT_EQ(RefusalOf<FilterException>([&] { Apply(settings, planar); }), "Pixel format is not supported!");
    settings.SetLeadWidth(0);
    settings.SetSaturation(100);
    DataHandle const flat = Apply(settings, MakeGrey(PixFmt::RGBA, 50, 40, [](int, int) { return 93; }));
    EXPECT_EQ(Samples(AsVideo(flat)), Samples(*MakeGrey(PixFmt::RGBA, 50, 40, [](int, int) { return 93; })));
}

TEST_F(StyleEffectsTest, PanesAreSmallerWhereThereAreEdges) {
    auto const paint = [](int x, int y) { return x < 80 ? 120 : (x / 4 + y / 4) % 2 == 0 ? 40 : 210; };
    VideoHandle const picture = MakeGrey(PixFmt::RGB24, 160, 80, paint);
    for (double const awareness : {0.0, 1.0}) {
        Kernels::GlassCells const cells = Kernels::FindCells(picture->GetPlane(0), 3, {20, awareness, 1});
        std::set<std::uint32_t> plain, detailed;
        for (std::size_t i = 0; i < cells.labels.size(); ++i)
            if (i % 160 < 70 || i % 160 >= 90) (i % 160 < 80 ? plain : detailed).insert(cells.labels[i]);
        EXPECT_LE(plain.size(), 24U);
        if (awareness > 0)
            EXPECT_GE(detailed.size(), 8 * plain.size());
        else
            EXPECT_LE(detailed.size(), 24U);
    }
}

TEST_F(StyleEffectsTest, CellsAreWhatIsNearestAndBordersAreMeasured) {
    VideoHandle const noise = MakeNoise(*PluginHost().GetContext(), PixFmt::BGR24, 61, 47);
    Kernels::GlassCells const cells = Kernels::FindCells(noise->GetPlane(0), 3, {9, 0, 5});
    ASSERT_EQ(cells.labels.size(), 61U * 47U);
    std::vector<double> x(cells.colours.size());
    std::vector<double> y(x);
    std::vector<double> count(x);
    for (std::size_t i = 0; i < cells.labels.size(); ++i) {
        ASSERT_LT(cells.labels[i], x.size());
        x[cells.labels[i]] += static_cast<double>(i % 61);
        y[cells.labels[i]] += static_cast<double>(i / 61);
        ++count[cells.labels[i]];
    }
    int strange = 0; // Pixels much nearer to another cell's centre.
    for (std::size_t i = 0; i < cells.labels.size(); ++i) {
        auto const distance = [&](std::size_t c) {
            return std::hypot(static_cast<double>(i % 61) - x[c] / count[c],
                              static_cast<double>(i / 61) - y[c] / count[c]);
        };
        for (std::size_t c = 0; c < x.size(); ++c)
            if (count[c] > 0 && distance(c) + 1.5 < distance(cells.labels[i])) ++strange;
    }
    EXPECT_EQ(strange, 0);
    std::vector<std::uint16_t> const borders = Kernels::FindBorderDistances({5, {0, 0, 1, 1, 1}, {}, {}});
    EXPECT_EQ(borders, (std::vector<std::uint16_t>{3, 0, 3, 6, 9}));
}

TEST_F(StyleEffectsTest, HolesAreFilledFromAroundAndNothingElseChanges) {
    auto const ramp = [](int x, int y) { return 40 + x + y; };
    VideoHandle const picture = MakeGrey(PixFmt::RGBA, 64, 50, ramp);
    auto const isHole = [](int x, int y) { return x >= 20 && x < 33 && y >= 15 && y < 31; };
    VideoHandle const weights = MakeGrey(PixFmt::GRAY8, 64, 50, [&](int x, int y) { return isHole(x, y) ? 0 : 255; });
    for (int y = 15; y < 31; ++y) // What was in the hole must not matter.
        for (int x = 20; x < 33; ++x)
            for (std::uint64_t k = 0; k < 3; ++k)
                picture->GetMutablePlane(0).GetRow(
                    static_cast<std::uint64_t>(y))[static_cast<std::uint64_t>(x) * 4 + k] = 255;
    Kernels::FillHoles(picture->GetMutablePlane(0), 4, weights->GetPlane(0));
    for (int y = 0; y < 50; ++y)
        for (int x = 0; x < 64; ++x) EXPECT_NEAR(At(picture, x, y), ramp(x, y), isHole(x, y) ? 9 : 0) << x << ", " << y;

    VideoHandle const nothing = MakeGrey(PixFmt::GRAY8, 64, 50, [](int, int) { return 0; });
    std::vector<unsigned char> const before = Samples(*picture);
    Kernels::FillHoles(picture->GetMutablePlane(0), 4, nothing->GetPlane(0));
    EXPECT_EQ(Samples(*picture), before);
}

TEST_F(StyleEffectsTest, ScratchesAndSpecksAreDamageAndTextureIsNot) {
    VideoHandle const noise = MakeNoise(*PluginHost().GetContext(), PixFmt::GRAY8, 100, 60);
    auto const isSprinkled = [&](int x, int y) { return At(noise, x, y) < 100; };
    VideoHandle const thin = MakeGrey(PixFmt::GRAY8, 100, 60, [&](int x, int y) {
        bool const isScratch = x == 20;
        bool const isSpeck = std::abs(x - 50) <= 1 && std::abs(y - 30) <= 1;
        bool const isTexture = x >= 70 && isSprinkled(x, y);
        return isScratch ? 30 : isSpeck || isTexture ? 90 : 0;
    });
    Kernels::MarkDamage(thin->GetMutablePlane(0), 25);
    EXPECT_EQ(At(thin, 20, 5), 0);
    EXPECT_EQ(At(thin, 50, 30), 0);
    EXPECT_EQ(At(thin, 40, 40), 255);
    int marked = 0;
    for (int y = 10; y < 50; ++y)
        for (int x = 80; x < 95; ++x) marked += At(thin, x, y) == 0 ? 1 : 0;
    EXPECT_LE(marked, 30); // of 600
}

TEST_F(StyleEffectsTest, AScratchIsTakenFromAPrintAndASpotOfGlareFromASurface) {
    auto const print = [](int x, int y) { return 80 + x / 2 + y / 3; };
    SettingsEffectRestorer restore;
    restore.SetRecoverColor(false);
    restore.SetDenoise(0);
    DataHandle const restored =
        Apply(restore, MakeGrey(PixFmt::RGB24, 120, 90, [&](int x, int y) { return x == 60 ? 250 : print(x, y); }));
    for (int y = 5; y < 85; y += 8) EXPECT_NEAR(At(restored, 60, y), print(60, y), 6) << y;
    EXPECT_EQ(At(restored, 30, 40), print(30, 40));

    auto const isSpot = [](int x, int y) { return std::hypot(x - 100.0, y - 100.0) < 5; };
    SettingsEffectAutoGlareRemove glare;
    glare.SetStrength(100);
    DataHandle const matt =
        Apply(glare, MakeGrey(PixFmt::BGRA, 200, 200, [&](int x, int y) { return isSpot(x, y) ? 250 : 120; }));
    EXPECT_NEAR(At(matt, 100, 100), 120, 10);
    EXPECT_EQ(At(matt, 20, 20), 120);
    DataHandle const wall =
        Apply(glare, MakeGrey(PixFmt::BGRA, 200, 200, [](int x, int) { return x < 100 ? 250 : 120; }));
    EXPECT_EQ(At(wall, 50, 100), 250);
}

} // namespace
} // namespace Velnor::Proc
