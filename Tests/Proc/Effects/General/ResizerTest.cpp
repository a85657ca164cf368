#include "Proc/Effects/General/ResizePlan.h"
#include "Proc/Effects/General/Scaler.h"
#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Interfaces/ProcException.h"
#include "Proc/Settings/SettingsResizer.h"
#include "Tests/Support/ColourPictures.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/Refusal.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(Resizer)
namespace {

using namespace Testing;
using S = SettingsResizer;

S ToFrame(S::ResizeMethods method, std::uint32_t width, std::uint32_t height, S::Fit fit = S::STRETCH) {
    S settings;
    settings.SetMethod(method);
    settings.SetMode(S::TO_FRAME);
    settings.SetFitting(fit);
    settings.SetTarget(FrameFormat::Square(width, height));
    return settings;
}

class ResizerTest : public testing::Test {
protected:
    VideoHandle Resize(VideoHandle const& source, S const& settings) {
        effect->SetSettings(settings);
        return boost::dynamic_pointer_cast<IDataVideo>(effect->ProcessData({source}));
    }

    std::string Refusal(VideoHandle const& source, S const& settings, VideoHandle* result = nullptr) {
        return RefusalOf([&] {
            VideoHandle const resized = Resize(source, settings);
            if (result != nullptr) *result = resized;
        });
    }

    ContextHandle const context = MakeShared<Context>();
    intrusive_ptr<IEffect> const effect = CreateResizer(nullptr, context);
};

Size SizeOf(IDataVideo const& picture) { return {picture.GetFrameFormat().width, picture.GetFrameFormat().height}; }

std::vector<S::ResizeMethods> AllMethods() {
    std::vector<S::ResizeMethods> methods;
    for (auto const& method : EnumNames<S::ResizeMethods>::VALUES) methods.push_back(method.value);
    return methods;
}

/// How much redder than blue the middle half of a picture is.
double MeanOfCentre(IDataVideo const& picture) {
    Size const size = SizeOf(picture);
    double sum = 0;
    for (std::uint32_t y = size.height / 4; y < size.height * 3 / 4; ++y)
        for (std::uint32_t x = size.width / 4; x < size.width * 3 / 4; ++x) {
            Colour4 const colour = ReadColour(picture, x, y);
            sum += colour.red - colour.blue;
        }
    return sum / (size.width / 2 * (size.height / 2));
}

TEST_F(ResizerTest, PointMakesFlatBlocksWithoutAShift) {
    for (PixFmt const format : {PixFmt::GRAY8, PixFmt::YA8, PixFmt::RGB24, PixFmt::BGRA, PixFmt::YUV444P, PixFmt::NV24,
                                PixFmt::YUV420P, PixFmt::UYVY422, PixFmt::UYYVYY411, PixFmt::PAL8})
        for (std::uint32_t const n : {2U, 7U, 41U}) {
            VideoHandle const source = MakeNoise(*context, format, 12, 8);
            VideoHandle const large = Resize(source, ToFrame(S::POINT, 12 * n, 8 * n));
            ASSERT_EQ(SizeOf(*large), (Size{12 * n, 8 * n}));
            for (std::uint32_t y = 0; y < 8 * n; ++y)
                for (std::uint32_t x = 0; x < 12 * n; ++x)
                    ASSERT_EQ(ReadColour(*large, x, y), ReadColour(*source, x / n, y / n))
                        << source->GetDescription().name << " x" << n << " at " << x << ", " << y;
        }
    // 100 blocks of 40: a step kept in 16 bits would have drifted past a block's edge.
    VideoHandle const row = MakeNoise(*context, PixFmt::GRAY8, 100, 1);
    VideoHandle const wide = Resize(row, ToFrame(S::POINT, 4000, 3));
    for (std::uint32_t x = 0; x < 4000; ++x)
        ASSERT_EQ(wide->GetPlane(0).GetRow(2)[x], row->GetPlane(0).GetRow(0)[x / 40]);
}

TEST_F(ResizerTest, AreaGivesTheMeansOfBlocksByTheirAlpha) {
    for (PixFmt const format :
         {PixFmt::GRAY8, PixFmt::RGB24, PixFmt::BGRA, PixFmt::GBRAP, PixFmt::YUV420P, PixFmt::YA8})
        for (std::uint32_t const n : {2U, 25U, 150U, 300U}) {
            double const limit = n > Scaler::GetLargestShrink(S::AREA) ? 1.5 : 1.0; // Two steps round twice.
            VideoHandle const source = MakeNoise(*context, format, 4 * n, 2 * n);
            VideoHandle const small = Resize(source, ToFrame(S::AREA, 4, 2));
            for (unsigned char plane = 0; plane < GetPlanesCount(*source); ++plane) {
                ConstPlane const from = source->GetPlane(plane);
                PixFmtDescription const& description = source->GetDescription();
                std::uint64_t const bytes = description.planes[plane].bytes;
                for (std::uint64_t y = 0; y < small->GetPlane(plane).GetHeight(); ++y)
                    for (std::uint64_t x = 0; x < small->GetPlane(plane).GetWidth(); ++x) {
                        bool const isAlpha = plane == description.alpha.plane && x % bytes == description.alpha.offset;
                        double sum = 0;
                        double weights = 0;
                        for (std::uint64_t i = 0; i < n * n; ++i) {
                            std::uint64_t const u = x / bytes * n + i % n;
                            std::uint64_t const v = y * n + i / n;
                            double const weight =
                                description.hasAlpha && !isAlpha
                                    ? Sample(*source, description.alpha, false, static_cast<std::uint32_t>(u),
                                             static_cast<std::uint32_t>(v))
                                    : 1;
                            sum += weight * from.GetRow(v)[u * bytes + x % bytes];
                            weights += weight;
                        }
                        ASSERT_NEAR(small->GetPlane(plane).GetRow(y)[x], sum / weights, limit)
                            << source->GetDescription().name << " /" << n << " plane " << int{plane};
                    }
            }
        }
}

TEST_F(ResizerTest, EveryMethodAndFormatKeepsAGradientInPlace) {
    for (PixFmtDescription const& format : PixFmtDescription::GetAll()) {
        if (format.model == ColorModel::Palette) continue;
        VideoHandle const source = MakeGradient(*context, format.format, 64, 64);
        for (S::ResizeMethods const method : AllMethods())
            for (std::uint32_t const size : {32U, 96U, 128U}) {
                // Point drops every other sample; sinc is so wide that the ends of the gradient ring in its middle.
                if (method == S::POINT || method == S::SINC) continue;
                VideoHandle const resized = Resize(source, ToFrame(method, size, size));
                ASSERT_EQ(resized->GetPixFmt(), format.format);
                // Means over the same area: half a pixel of the source would show as 3.
                EXPECT_NEAR(MeanOfCentre(*resized), MeanOfCentre(*source), 1.2)
                    << format.name << " method " << method << " to " << size;
            }
    }
}

TEST_F(ResizerTest, FlatColoursStayInEveryMethodFormatAndSize) {
    for (PixFmtDescription const& format : PixFmtDescription::GetAll())
        for (S::ResizeMethods const method : AllMethods())
            for (auto const& [from, to] :
                 {std::pair{Size{1, 1}, Size{5, 3}}, {{3, 5}, {1, 1}}, {{7, 2}, {9, 31}}, {{33, 17}, {2, 40}}}) {
                auto const flat = [](std::uint32_t, std::uint32_t) { return Colour4{200, 90, 40, 180}; };
                VideoHandle const source = Paint(*context, format.format, from.width, from.height, flat);
                VideoHandle const resized = Resize(source, ToFrame(method, to.width, to.height));
                Colour4 const wanted = ReadColour(*source, 0, 0);
                for (std::uint32_t y = 0; y < to.height; ++y)
                    for (std::uint32_t x = 0; x < to.width; ++x) {
                        Colour4 const got = ReadColour(*resized, x, y);
                        double const error =
                            std::max({std::abs(got.red - wanted.red), std::abs(got.green - wanted.green),
                                      std::abs(got.blue - wanted.blue), std::abs(got.alpha - wanted.alpha)});
                        ASSERT_LE(error, 2.0)
                            << format.name << " method " << method << " to " << to.width << " x " << to.height;
                    }
            }
}

TEST_F(ResizerTest, ExtremeRatiosComeOut) {
    for (S::ResizeMethods const method : AllMethods())
        for (auto const& [from, to] : {std::pair{Size{3000, 1}, Size{1, 1}},
                                       {{1, 1}, {500, 300}},
                                       {{1, 3000}, {40, 2}},
                                       {{20000, 3}, {7, 900}},
                                       {{2, 2}, {8000, 2}}})
            for (PixFmt const format : {PixFmt::RGB24, PixFmt::YUV420P}) {
                VideoHandle const source = MakeGradient(*context, format, from.width, from.height);
                VideoHandle resized;
                ASSERT_EQ(Refusal(source, ToFrame(method, to.width, to.height), &resized), "")
                    << method << " " << from.width;
                ASSERT_EQ(SizeOf(*resized), to);
                // The middle of the picture is the middle of the slope; three rows of luma share two of chroma.
                if (to.width < 5 || from.width < 5 || method == S::POINT || format != PixFmt::RGB24) continue;
                Colour4 const got = ReadColour(*resized, to.width / 2, to.height / 2);
                Colour4 const wanted = ReadColour(*source, from.width / 2, from.height / 2);
                EXPECT_NEAR(got.red, wanted.red, 14) << method << " " << from.width << " to " << to.width;
            }
}

TEST_F(ResizerTest, SizesByMode) {
    VideoHandle const source = MakeNoise(*context, PixFmt::RGB24, 30, 20);
    auto const sizeBy = [&](S::ResizeMode mode, double factor, std::uint32_t width, std::uint32_t height) {
        S settings = ToFrame(S::BILINEAR, width, height);
        settings.SetMode(mode);
        settings.SetFactor(factor);
        return SizeOf(*Resize(source, settings));
    };
    EXPECT_EQ(sizeBy(S::TO_WIDTH, 1, 100, 1), (Size{100, 67}));
    EXPECT_EQ(sizeBy(S::TO_HEIGHT, 1, 1, 7), (Size{11, 7}));
    EXPECT_EQ(sizeBy(S::BY_FACTOR, 0.55, 1, 1), (Size{17, 11}));
    EXPECT_EQ(sizeBy(S::BY_FACTOR, 1e-6, 1, 1), (Size{1, 1}));
    EXPECT_EQ(sizeBy(S::OFF, 3, 9, 9), (Size{30, 20}));
    auto const sizeFitting = [&](S::Fit fit, std::uint32_t width, std::uint32_t height) {
        return SizeOf(*Resize(source, ToFrame(S::BILINEAR, width, height, fit)));
    };
    EXPECT_EQ(sizeFitting(S::EXACT, 10, 50), (Size{10, 50}));
    EXPECT_EQ(sizeFitting(S::BARS, 10, 50), (Size{10, 50}));
    EXPECT_EQ(sizeFitting(S::FILL, 10, 50), (Size{10, 50}));
    EXPECT_EQ(sizeFitting(S::SHRINK_INSIDE, 10, 50), (Size{10, 7}));
    EXPECT_EQ(sizeFitting(S::SHRINK_INSIDE, 60, 50), (Size{30, 20}));
    EXPECT_EQ(sizeFitting(S::INSIDE, 60, 50), (Size{60, 40}));
}

TEST_F(ResizerTest, BarsAreBlackAndFillCutsTheSides) {
    for (PixFmt const format : {PixFmt::RGBA, PixFmt::YUV420P}) {
        VideoHandle const source = MakeBars(*context, format, 144, 48);
        VideoHandle const barred = Resize(source, ToFrame(S::AREA, 72, 72, S::BARS));
        for (std::uint32_t x = 0; x < 72; ++x)
            for (std::uint32_t const y : {0U, 23U, 48U, 71U})
                ASSERT_EQ(ReadColour(*barred, x, y), (Colour4{0, 0, 0, 255})) << x << ", " << y;
        EXPECT_NEAR(ReadColour(*barred, 4, 24).red, ReadColour(*source, 8, 0).red, 2);
        EXPECT_NEAR(ReadColour(*barred, 4, 47).red, ReadColour(*source, 8, 0).red, 2);

        VideoHandle const filled = Resize(source, ToFrame(S::AREA, 24, 24, S::FILL)); // Columns 48 to 95, halved.
        EXPECT_NEAR(ReadColour(*filled, 4, 12).red, ReadColour(*source, 56, 0).red, 2);
        EXPECT_NEAR(ReadColour(*filled, 20, 12).green, ReadColour(*source, 88, 0).green, 2);
    }
}

TEST_F(ResizerTest, NothingToDoIsTheSameObjectAndAspectFollowsTheMode) {
    VideoHandle const source = MakeNoise(*context, PixFmt::PAL8, 30, 20);
    source->SetAspect(4, 3);
    S settings = ToFrame(S::LANCZOS, 30, 20);
    VideoHandle const reshaped = Resize(source, settings);
    EXPECT_EQ(reshaped->GetFrameFormat(), FrameFormat::Square(30, 20));
    EXPECT_EQ(reshaped->GetPlane(0).GetData(), source->GetPlane(0).GetData());
    EXPECT_EQ(source->GetFrameFormat(), (FrameFormat{30, 20, 4, 3}));

    settings.SetTarget({30, 20, 4, 3});
    EXPECT_EQ(Resize(source, settings), source);
    settings.SetMode(S::BY_FACTOR);
    EXPECT_EQ(Resize(source, settings), source);
    settings.SetFactor(0.5);
    VideoHandle const small = Resize(source, settings);
    EXPECT_EQ(small->GetFrameFormat(), (FrameFormat{15, 10, 4, 3}));
    EXPECT_EQ(small->GetPixFmt(), PixFmt::RGBA);
}

TEST_F(ResizerTest, KeepsTheInputAndItsSurroundings) {
    VideoHandle const whole = MakeNoise(*context, PixFmt::RGB24, 90, 60);
    std::vector<unsigned char> const before = Samples(*whole);
    VideoHandle const part = whole->MakePart({9, 7, 43, 31});
    VideoHandle const alone = part->MakeCopy(CopyMode::Independent);
    alone->Detach();
    for (S::ResizeMethods const method : AllMethods()) {
        VideoHandle const resized = Resize(part, ToFrame(method, 50, 20));
        EXPECT_EQ(Samples(*resized), Samples(*Resize(alone, ToFrame(method, 50, 20)))) << method;
        for (bool const bottomUp : {false, true}) {
            FencedPicture const fenced(*part, bottomUp);
            EXPECT_EQ(Samples(*Resize(fenced.Wrap(*context), ToFrame(method, 50, 20))), Samples(*resized)) << method;
        }
    }
    EXPECT_EQ(Samples(*whole), before);

    part->SetTimeStamp(5);
    part->SetPlane(0, MakeNoise(*context, PixFmt::GRAY8, 43, 31)->GetPlane(0));
    VideoHandle const resized = Resize(part, ToFrame(S::AREA, 20, 20));
    EXPECT_EQ(resized->GetTimeStamp(), 5);
    EXPECT_TRUE(resized->GetExtraAlpha(0).IsEmpty());
    EXPECT_FALSE(part->GetExtraAlpha(0).IsEmpty());
}

TEST_F(ResizerTest, RefusesWhatHasNoMeaning) {
    VideoHandle const source = MakeNoise(*context, PixFmt::RGB24, 8, 8);
    S settings = ToFrame(S::AREA, 0, 5);
    EXPECT_EQ(SizeOf(*Resize(source, settings)), (Size{1, 5}));
    settings.SetAtLeastOnePixel(false);
    EXPECT_EQ(Refusal(source, settings), "Resizer: the width would be 0 pixels.");
    settings.SetMode(S::BY_FACTOR).SetFactor(1e9);
    EXPECT_NE(Refusal(source, settings).find("at most 1048576"), std::string::npos);
}

TEST(PlanStepsTest, LongShrinksComeDownInMultiplesOfTheTarget) {
    using Sizes = std::vector<Size>;
    EXPECT_EQ(PlanSteps({4000, 3000}, {40, 30}, S::AREA), (Sizes{{40, 30}}));
    EXPECT_EQ(PlanSteps({3000, 1}, {1, 9}, S::LANCZOS), (Sizes{{25, 1}, {1, 9}}));
    EXPECT_EQ(PlanSteps({1000000, 1}, {1, 1}, S::AREA), (Sizes{{6667, 1}, {150, 1}, {1, 1}}));
    EXPECT_EQ(PlanSteps({1, 1}, {5000, 3000}, S::SINC), (Sizes{{5000, 3000}}));
}

} // namespace
} // namespace Velnor::Proc
