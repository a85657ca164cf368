#include "Proc/Interfaces/IResize.h"
#include "Proc/Settings/SettingsEffectBlur.h"
#include "Proc/Settings/SettingsEffectCLAHE.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"
#include "Proc/Settings/SettingsEffectMidEqualizer.h"
#include "Proc/Settings/SettingsEffectMorphology.h"
#include "Proc/Settings/SettingsEffectRotate.h"
#include "Proc/Settings/SettingsEffectSmartBlur.h"
#include "Proc/Settings/SettingsResizer.h"
#include "Tests/Support/HostRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <span>
#include <tuple>

namespace Velnor::Proc {
namespace {

using namespace Testing;

class OpenCVEffectsTest : public HostRunTest {
protected:
    OpenCVEffectsTest() : HostRunTest(false) {}

    template <class Level>
    VideoHandle MakeGrey(int width, int height, Level const& level) {
        return Testing::MakeGrey(context, PixFmt::GRAY8, width, height, level);
    }
};

double Weight(SettingsEffectBlur const& s, double deviation, int distance, int halfWidth) {
    if (s.GetAlgorithm() == SettingsEffectBlur::BOX) return 1;
    if (s.GetAlgorithm() == SettingsEffectBlur::STACK) return halfWidth + 1 - std::abs(distance);
    return std::exp(-distance * distance / (2 * deviation * deviation));
}

/// One line of samples blurred by the direct sum.
std::vector<double> BlurLine(std::vector<double> const& line, SettingsEffectBlur const& s, double deviation) {
    auto const half = static_cast<int>(std::round(deviation * s.GetKernelLength()));
    std::vector<double> result(line.size());
    for (int i = 0; i < int(line.size()); ++i) {
        double sum = 0;
        double weights = 0;
        for (int k = std::max(0, i - half); k <= std::min(int(line.size()) - 1, i + half); ++k) {
            double const weight = half == 0 ? 1 : Weight(s, deviation, k - i, half);
            sum += weight * line[std::size_t(k)];
            weights += weight;
        }
        result[std::size_t(i)] = sum / weights;
    }
    return result;
}

TEST_F(OpenCVEffectsTest, BlurIsTheDirectSumWithinALevel) {
    for (auto const& [width, height] : {std::pair{1, 1}, {37, 3}, {301, 157}})
        for (auto const algorithm : {SettingsEffectBlur::BOX, SettingsEffectBlur::GAUSSIAN, SettingsEffectBlur::STACK})
            for (auto const& [devX, devY] : {std::pair{0.0, 1.5}, {3.0, 3.0}, {9.0, 30.0}, {100.0, 100.0}}) {
                SettingsEffectBlur settings(algorithm);
                settings.SetDevX(devX);
                settings.SetDevY(devY);
                settings.SetKernelLength(2);
                // Halves of black and white show an error of the kernel's sum at its worst.
                VideoHandle const picture = MakeGrey(
                    width, height, [w = width](int x, int y) { return x * 2 < w ? 0 : (y % 7 == 3 ? 40 : 255); });
                VideoHandle const result = Apply(settings, picture);
                auto columns = std::vector(std::size_t(width), std::vector(std::size_t(height), 0.0));
                for (int y = 0; y < height; ++y) {
                    std::vector<double> row;
                    for (int x = 0; x < width; ++x) row.push_back(At(*picture, x, y));
                    row = BlurLine(row, settings, devX);
                    for (int x = 0; x < width; ++x) columns[std::size_t(x)][std::size_t(y)] = row[std::size_t(x)];
                }
                double worst = 0;
                for (int x = 0; x < width; ++x) {
                    auto const column = BlurLine(columns[std::size_t(x)], settings, devY);
                    for (int y = 0; y < height; ++y)
                        worst = std::max(worst, std::abs(At(*result, x, y) - column[std::size_t(y)]));
                }
                EXPECT_LE(worst, 1.5) << width << "x" << height << " algorithm " << algorithm << " " << devX << " "
                                      << devY;
            }
}

/// Left half opaque and of level 60, right half clear and of level 250.
VideoHandle MakeHalfClear(IEffectContext& context, PixFmt id) {
    VideoHandle const picture = context.CreateImage(id, FrameFormat::Square(61, 33));
    PixFmtDescription const& format = picture->GetDescription();
    for (unsigned char i = 0; i < format.planesCount; ++i) {
        MutablePlane const plane = picture->GetMutablePlane(i);
        PlaneLayout const& layout = format.planes[i];
        for (std::uint64_t y = 0; y < plane.GetHeight(); ++y)
            for (std::uint64_t b = 0; b < plane.GetWidth(); ++b) {
                bool const isSeen = (b / layout.bytes) << layout.shiftX < 30;
                bool const isAlpha = i == format.alpha.plane && b % layout.bytes == format.alpha.offset;
                plane.GetRow(y)[b] = static_cast<unsigned char>(isSeen ? (isAlpha ? 255 : 60) : (isAlpha ? 0 : 250));
            }
    }
    return picture;
}

TEST_F(OpenCVEffectsTest, WhatIsClearDoesNotBleedIntoWhatIsSeen) {
    SettingsEffectBlur box(SettingsEffectBlur::BOX);
    SettingsEffectBlur wide(SettingsEffectBlur::GAUSSIAN); // On means of blocks.
    for (SettingsEffectBlur* const each : {&box, &wide}) {
        each->SetDevX(each == &box ? 4 : 25);
        each->SetDevY(3);
    }
    SettingsEffectSmartBlur smart;
    smart.SetLumaBlur(100);
    smart.SetLumaSharpen(50);
    smart.SetChromaBlur(100);
    for (PixFmt const id : {PixFmt::RGBA, PixFmt::ABGR, PixFmt::YA8, PixFmt::GBRAP, PixFmt::YUVA420P}) {
        VideoHandle const picture = MakeHalfClear(context, id);
        std::vector<VideoHandle> results{Apply(box, picture), Apply(wide, picture)};
        if (id == PixFmt::YUVA420P) results.push_back(Apply(smart, picture));
        for (VideoHandle const& result : results) {
            PixFmtDescription const& format = result->GetDescription();
            ASSERT_EQ(format.format, id);
            for (ComponentPlace const& place : std::span(format.components).first(format.componentsCount)) {
                ConstPlane const plane = result->GetPlane(place.plane);
                PlaneLayout const& layout = format.planes[place.plane];
                for (std::uint64_t x = 0; x < 30U >> layout.shiftX; ++x)
                    EXPECT_NEAR(plane.GetRow(9)[x * layout.bytes + place.offset], 60, 1) << format.name << " " << x;
            }
        }
        ConstPlane const alpha = results[0]->GetPlane(picture->GetDescription().alpha.plane);
        std::uint64_t const step = picture->GetDescription().planes[picture->GetDescription().alpha.plane].bytes;
        EXPECT_NEAR(alpha.GetRow(9)[30 * step + picture->GetDescription().alpha.offset], 120, 16);
    }
}

TEST_F(OpenCVEffectsTest, BlurReachesThePlanesOfTheMaskAlone) {
    VideoHandle const picture = MakeNoise(context, PixFmt::YUV420P, 21, 13);
    SettingsEffectBlur settings;
    settings.SetPlanesMask(4);
    VideoHandle const result = Apply(settings, picture);
    auto const plane = [](IDataVideo const& of, unsigned char i) {
        ConstPlane const p = of.GetPlane(i);
        std::vector<unsigned char> bytes;
        for (std::uint64_t y = 0; y < p.GetHeight(); ++y)
            bytes.insert(bytes.end(), p.GetRow(y), p.GetRow(y) + p.GetWidth());
        return bytes;
    };
    EXPECT_EQ(plane(*result, 0), plane(*picture, 0));
    EXPECT_EQ(plane(*result, 1), plane(*picture, 1));
    EXPECT_NE(plane(*result, 2), plane(*picture, 2));
}

TEST_F(OpenCVEffectsTest, MorphologyTakesTheExtremeOfTheDisc) {
    VideoHandle const picture = MakeNoise(context, PixFmt::GRAY8, 41, 83);
    for (int const radius : {1, 2, 3, 7, 20, 90})
        for (bool const erodes : {true, false}) {
            using S = SettingsEffectMorphology;
            VideoHandle const result = Apply(S(erodes ? S::ERODE : S::DILATE, radius), picture);
            for (int y = 0; y < 83; ++y)
                for (int x = 0; x < 41; ++x) {
                    int wanted = At(*picture, x, y);
                    for (int v = std::max(0, y - radius); v <= std::min(82, y + radius); ++v)
                        for (int u = std::max(0, x - radius); u <= std::min(40, x + radius); ++u) {
                            if ((u - x) * (u - x) + (v - y) * (v - y) > radius * radius) continue;
                            wanted =
                                erodes ? std::min(wanted, At(*picture, u, v)) : std::max(wanted, At(*picture, u, v));
                        }
                    ASSERT_EQ(At(*result, x, y), wanted) << radius << " at " << x << ", " << y;
                }
        }
}

TEST_F(OpenCVEffectsTest, MorphologyOpensThenClosesAndKeepsAlpha) {
    using S = SettingsEffectMorphology;
    VideoHandle const spots = MakeGrey(20, 20, [](int x, int y) {
        if (x == 5 && y == 5) return 255;
        return x >= 10 ? (x == 15 && y == 15 ? 0 : 200) : 20;
    });
    auto const count = [&](VideoHandle const& picture, int level) {
        return std::ranges::count(Samples(*picture), level);
    };
    EXPECT_EQ(count(Apply(S(S::OPEN, 1), spots), 255), 0);
    EXPECT_GT(count(Apply(S(S::OPEN, 1), spots), 0), 0);
    EXPECT_EQ(count(Apply(S(S::CLOSE, 1), spots), 0), 0);
    EXPECT_GT(count(Apply(S(S::CLOSE, 1), spots), 255), 0);
    VideoHandle const smooth = Apply(S(S::SMOOTH, 1), spots);
    EXPECT_EQ(count(smooth, 20) + count(smooth, 200), 400);

    VideoHandle const picture = MakeNoise(context, PixFmt::ARGB, 9, 5);
    VideoHandle const eroded = Apply(S(S::ERODE, 1), picture);
    std::vector<unsigned char> const before = Samples(*picture);
    std::vector<unsigned char> const after = Samples(*eroded);
    for (std::size_t i = 0; i < before.size(); i += 4) ASSERT_EQ(after[i], before[i]);
    EXPECT_NE(after, before);
}

TEST_F(OpenCVEffectsTest, SmartBlurKeepsEdgesAtFiftyAndNoneAtAHundred) {
    VideoHandle const step =
        MakeGrey(300, 200, [](int x, int y) { return (x < 150 ? 60 : 190) + (x * 7 + y * 13) % 9 - 4; });
    SettingsEffectSmartBlur settings;
    VideoHandle const half = Apply(settings, step);
    EXPECT_GT(At(*half, 153, 100) - At(*half, 146, 100), 110);
    int roughness = 0;
    int before = 0;
    for (int x = 20; x < 100; ++x) {
        roughness = std::max(roughness, std::abs(At(*half, x, 90) - At(*half, x + 1, 90)));
        before = std::max(before, std::abs(At(*step, x, 90) - At(*step, x + 1, 90)));
    }
    EXPECT_LE(roughness, 1);
    EXPECT_GE(before, 5);
    settings.SetLumaBlur(100);
    VideoHandle const full = Apply(settings, step);
    EXPECT_LT(At(*full, 153, 100) - At(*full, 146, 100), 80);
    settings.SetLumaBlur(0);
    settings.SetLumaSharpen(100);
    VideoHandle const sharp = Apply(settings, MakeGrey(300, 200, [](int x, int) { return x < 150 ? 60 : 190; }));
    EXPECT_LT(At(*sharp, 149, 100), 40);
    EXPECT_GT(At(*sharp, 150, 100), 210);
    EXPECT_EQ(At(*sharp, 20, 100), 60);
}

/// A place outside of the picture shows its mirror image.
int Mirror(int at, int length) {
    while (at < 0 || at >= length) at = at < 0 ? -at - 1 : 2 * length - at - 1;
    return at;
}

/// Means over the window of half-width `reach`, by the direct sum; `weight` is that of a distance.
template <class Weight>
std::vector<double> DirectMeans(std::vector<double> const& values, int width, int reach, Weight const& weight) {
    int const height = int(values.size()) / width;
    std::vector<double> means;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            double sum = 0;
            double weights = 0;
            for (int v = -reach; v <= reach; ++v)
                for (int u = -reach; u <= reach; ++u) {
                    double const each = weight(u) * weight(v);
                    sum += each * values[std::size_t(Mirror(y + v, height) * width + Mirror(x + u, width))];
                    weights += each;
                }
            means.push_back(sum / weights);
        }
    return means;
}

TEST_F(OpenCVEffectsTest, SmartBlurIsTheGuidedFilterByDirectSums) {
    SettingsEffectSmartBlur settings;
    settings.SetLumaBlur(40);
    settings.SetLumaSharpen(60);
    double const tolerance = 400.0 * 0.8 * 40 / 60;
    auto const alike = [](int) { return 1.0; };
    auto const bell = [](int x) { return std::exp(-x * x / (2 * 1.5 * 1.5)); };
    for (auto const& [w, h, reach] : {std::tuple{1, 1, 1}, {40, 2, 1}, {3, 35, 1}, {210, 150, 5}}) {
        VideoHandle const picture =
            MakeGrey(w, h, [](int x, int y) { return (x + y < 130 ? 60 : 170) + (x * x * 7 + y * 13 + x * y) % 41; });
        std::vector<double> values, squares;
        for (int i = 0; i < w * h; ++i) values.push_back(At(*picture, i % w, i / w));
        for (double const value : values) squares.push_back(value * value);
        std::vector<double> const mean = DirectMeans(values, w, reach, alike);
        std::vector<double> const square = DirectMeans(squares, w, reach, alike);
        std::vector<double> const smooth = DirectMeans(values, w, 6, bell);
        std::vector<double> keep, rest;
        for (std::size_t i = 0; i < values.size(); ++i) {
            double const variance = square[i] - mean[i] * mean[i];
            keep.push_back(variance / (variance + tolerance));
            rest.push_back((1 - keep[i]) * mean[i]);
        }
        keep = DirectMeans(keep, w, reach, alike);
        rest = DirectMeans(rest, w, reach, alike);
        VideoHandle const result = Apply(settings, picture);
        double worst = 0;
        for (std::size_t i = 0; i < values.size(); ++i) {
            double const wanted = rest[i] + keep[i] * values[i] + 0.6 * keep[i] * (values[i] - smooth[i]);
            double const got = At(*result, int(i) % w, int(i) / w);
            worst = std::max(worst, std::abs(got - std::clamp(wanted, 0.0, 255.0)));
        }
        EXPECT_LE(worst, 0.51) << w << " x " << h;
    }
}

TEST_F(OpenCVEffectsTest, SmartBlurTreatsInterleavedChromaAsPlanes) {
    VideoHandle const planar = MakeNoise(context, PixFmt::YUV420P, 61, 33);
    VideoHandle const interleaved = context.CreateImage(PixFmt::NV12, planar->GetFrameFormat());
    CopyPlane(planar->GetPlane(0), interleaved->GetMutablePlane(0));
    auto const chroma = [](IDataVideo const& of, std::uint64_t x, std::uint64_t y, unsigned char k) {
        if (of.GetPixFmt() == PixFmt::NV12) return of.GetPlane(1).GetRow(y)[2 * x + k];
        return of.GetPlane(static_cast<unsigned char>(1 + k)).GetRow(y)[x];
    };
    for (std::uint64_t y = 0; y < 17; ++y)
        for (std::uint64_t i = 0; i < 62; ++i)
            interleaved->GetMutablePlane(1).GetRow(y)[i] = chroma(*planar, i / 2, y, static_cast<unsigned char>(i % 2));
    VideoHandle const alpha = MakeGrey(61, 33, [](int x, int y) { return x < 20 ? 0 : std::min(255, 3 * x + 2 * y); });
    SettingsEffectSmartBlur settings;
    settings.SetChromaSharpen(30);
    for (bool const hasAlpha : {false, true}) {
        if (hasAlpha)
            for (VideoHandle const& each : {planar, interleaved}) each->SetPlane(0, alpha->GetPlane(0));
        VideoHandle const wanted = Apply(settings, planar);
        VideoHandle const got = Apply(settings, interleaved);
        ASSERT_EQ(got->GetPixFmt(), PixFmt::NV12);
        std::size_t differences = 0;
        for (std::uint64_t y = 0; y < 17; ++y)
            for (std::uint64_t x = 0; x < 31; ++x)
                for (unsigned char k = 0; k < 2; ++k) differences += chroma(*got, x, y, k) != chroma(*wanted, x, y, k);
        EXPECT_EQ(differences, 0U) << hasAlpha;
    }
}

TEST_F(OpenCVEffectsTest, CLAHESpreadsFlatContrastOfTheLumaAlone) {
    VideoHandle const dull = MakeGrey(101, 67, [](int x, int y) { return 110 + (x * 5 + y * 3) % 20; });
    auto const spread = [&](double limit) {
        auto const [low, high] = std::ranges::minmax(Samples(*Apply(SettingsEffectCLAHE(limit), dull)));
        return high - low;
    };
    EXPECT_GT(spread(4), 30);
    EXPECT_GT(spread(40), spread(4));
    VideoHandle const colour = MakeNoise(context, PixFmt::YUV444P, 17, 9);
    VideoHandle const result = Apply(SettingsEffectCLAHE(3), colour);
    for (unsigned char const i : {std::uint8_t{1}, std::uint8_t{2}})
        for (std::uint64_t y = 0; y < 9; ++y)
            EXPECT_TRUE(std::equal(colour->GetPlane(i).GetRow(y), colour->GetPlane(i).GetRow(y) + 17,
                                   result->GetPlane(i).GetRow(y)));
}

TEST_F(OpenCVEffectsTest, RotateMovesSamplesAtQuarterTurns) {
    VideoHandle const picture = MakeNoise(context, PixFmt::RGB24, 7, 4);
    SettingsEffectRotate settings;
    settings.SetOutputSizeMode(SettingsEffectRotate::WHOLE);
    VideoHandle result = picture;
    for (double const angle : {90.0, 180.0, -270.0}) {
        settings.SetAngle(angle);
        result = Apply(settings, result);
    } // A whole turn in all.
    EXPECT_EQ(Samples(*result), Samples(*picture));
    settings.SetAngle(90);
    result = Apply(settings, picture);
    ASSERT_EQ(result->GetFrameFormat(), FrameFormat::Square(4, 7));
    // Counter-clockwise: the upper right corner goes to the upper left.
    EXPECT_EQ(At(*result, 0, 0), At(*picture, 6, 0));
    settings.SetOutputSizeMode(SettingsEffectRotate::SAME);
    settings.SetFillColor(Color(1, 2, 3, 4));
    result = Apply(settings, picture);
    ASSERT_EQ(result->GetFrameFormat(), picture->GetFrameFormat());
    EXPECT_EQ(At(*result, 0, 0), 3); // red
}

TEST_F(OpenCVEffectsTest, RotateShowsNoMarginInsideAndTheWholePictureOutside) {
    VideoHandle const picture = MakeFlat(context, PixFmt::GRAY8, 120, 80, {200});
    SettingsEffectRotate settings;
    settings.SetFillColor(Color(0, 0, 0, 255));
    for (double const angle : {3.0, 33.0, 135.0, -77.0}) {
        settings.SetAngle(angle);
        settings.SetOutputSizeMode(SettingsEffectRotate::INNER);
        std::vector<unsigned char> const inner = Samples(*Apply(settings, picture));
        EXPECT_GT(*std::ranges::min_element(inner), 100) << angle;
        settings.SetOutputSizeMode(SettingsEffectRotate::WHOLE);
        double area = 0;
        for (unsigned char const level : Samples(*Apply(settings, picture))) area += level / 200.0;
        EXPECT_NEAR(area, 120 * 80, 250) << angle;
    }
}

TEST_F(OpenCVEffectsTest, MidEqualizerMeetsHalfWay) {
    VideoHandle const dark = MakeGrey(64, 3, [](int x, int) { return x; });
    VideoHandle const bright = MakeGrey(64, 9, [](int x, int) { return x + 100; });
    SettingsEffectMidEqualizer settings;
    VideoHandle const a = Apply(settings, dark, bright);
    VideoHandle const b = Apply(settings, bright, dark);
    for (int x = 0; x < 64; ++x) {
        EXPECT_EQ(At(*a, x, 0), x + 50);
        EXPECT_EQ(At(*b, x, 0), x + 50);
    }
    settings.SetStrength(50);
    EXPECT_EQ(At(*Apply(settings, dark, bright), 10, 1), 35);
    VideoHandle const noise = MakeNoise(context, PixFmt::RGBA, 30, 20);
    EXPECT_EQ(Samples(*Apply(SettingsEffectMidEqualizer(), noise, noise)), Samples(*noise));
}

TEST_F(OpenCVEffectsTest, GrabCutFindsTheDiscFromTwoStrokes) {
    auto const isDisc = [](int x, int y) { return (x - 30) * (x - 30) + (y - 25) * (y - 25) < 200; };
    VideoHandle const picture =
        MakeGrey(64, 50, [&](int x, int y) { return (isDisc(x, y) ? 180 : 60) + (x * 7 + y * 3) % 5; });
    VideoHandle const strokes = MakeGrey(64, 50, [](int x, int y) {
        if (y == 25 && x > 25 && x < 35) return 255;
        return y == 2 ? 128 : 0;
    });
    SettingsEffectGrabCutSegmentation const settings;
    VideoHandle const result = Apply(settings, picture, strokes);
    ASSERT_EQ(result->GetPixFmt(), PixFmt::GRAY8);
    int wrong = 0;
    for (int y = 0; y < 50; ++y)
        for (int x = 0; x < 64; ++x) wrong += At(*result, x, y) != (isDisc(x, y) ? 255 : 128);
    EXPECT_LE(wrong, 12);

    // A speck in the disc is part of it, and a second object that no stroke is on is not, but a speck under a stroke is
    // what the stroke says.
    auto const isSpeck = [](int x, int y) { return std::abs(x - 30) < 2 && std::abs(y - 31) < 2; };
    VideoHandle const marred = MakeGrey(64, 50, [&](int x, int y) {
        return ((isDisc(x, y) && !isSpeck(x, y)) || (x > 54 && y > 36 && y < 46) ? 180 : 60) + (x * 7 + y * 3) % 5;
    });
    EXPECT_EQ(Samples(*Apply(settings, marred, strokes)), Samples(*result));
    VideoHandle const more = MakeGrey(64, 50, [](int x, int y) {
        if (y == 25 && x > 25 && x < 35) return 255;
        return y == 2 || (x == 30 && y == 31) ? 128 : 0;
    });
    EXPECT_EQ(At(*Apply(settings, marred, more), 31, 30), 128);

    VideoHandle const one = MakeFlat(context, PixFmt::GRAY8, 64, 50, {255});
    EXPECT_THAT(Refusal(settings, picture, one), HasSubstr("background (value 128) cover 0 pixels"));
    VideoHandle const small = MakeFlat(context, PixFmt::GRAY8, 4, 4, {255});
    EXPECT_THAT(Refusal(settings, picture, small), HasSubstr("4 x 4"));
    EXPECT_THAT(Refusal(settings, picture, MakeNoise(context, PixFmt::RGB24, 64, 50)), HasSubstr("rgb24"));
}

TEST_F(OpenCVEffectsTest, TooLargeForOpenCVIsRefusedAndTheNextPictureIsDone) {
    auto const effect = host.GetFactory()->CreateOneInputEffect(SettingsEffectBlur::CLASS_ID, ImplNames::DEFAULT);
    DataHandle const wide = MakeFlat(context, PixFmt::GRAY8, 40000, 1, {7});
    DataHandle data = wide;
    EXPECT_THROW(effect->ProcessData(data), ProcException);
    EXPECT_EQ(data, wide);
    data = MakeFlat(context, PixFmt::GRAY8, 40, 2, {7});
    effect->ProcessData(data);
    EXPECT_EQ(Samples(AsVideo(data)), std::vector<unsigned char>(80, 7));
}

TEST_F(OpenCVEffectsTest, TheResizerGoesByItsInterfaceToo) {
    auto const effect = host.GetFactory()->CreateOneInputEffect(IResize::CLASS_ID, ImplNames::DEFAULT);
    EXPECT_EQ(effect->GetSettingsBase().GetType().classId, SettingsResizer::CLASS_ID);
}

} // namespace
} // namespace Velnor::Proc
