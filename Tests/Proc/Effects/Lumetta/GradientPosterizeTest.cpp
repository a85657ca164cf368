#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Effects/Lumetta/Kernels/Color/ChromaClasses.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Settings/SettingsEffectGradientPosterize.h"
#include "Tests/Support/ColourPictures.h"
#include "Tests/Support/HostRun.h"
#include "Tests/Support/RecordingFactory.h"
#include "Tests/Support/Refusal.h"

#include <gtest/gtest.h>

#include <array>
#include <set>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(GradientPosterize)
namespace {

using namespace Testing;

SettingsEffectGradientPosterize Colors(unsigned char count) {
    SettingsEffectGradientPosterize settings;
    settings.SetColorCount(count);
    return settings;
}

/// The effect beside a posterize effect that the test decides: number 2 to be created.
class GradientPosterizeTest : public CompositionTest<CreateGradientPosterize> {
protected:
    void ClassesAre(std::function<unsigned char(std::uint64_t x, std::uint64_t y)> const& classOf) {
        recorder.oneInput[2] = [this, classOf](DataHandle& data) {
            VideoHandle const palette = context->CreateImage(PixFmt::PAL8, data->GetFrameFormat());
            MutablePlane const plane = palette->GetMutablePlane(0);
            for (std::uint64_t y = 0; y < plane.GetHeight(); ++y)
                for (std::uint64_t x = 0; x < plane.GetWidth(); ++x) plane.GetRow(y)[x] = classOf(x, y);
            data = palette;
        };
    }
    VideoHandle Apply(DataHandle data) {
        effect->ProcessData({data});
        return VideoHandle(&AsVideo(data));
    }
    std::string Refusal(DataHandle const& data) {
        return RefusalOf<EffectException>([&] { Apply(data); });
    }
};

TEST_F(GradientPosterizeTest, ConfiguresPosterizeAtEachChangeOfSettingsAndAtNoPicture) {
    EXPECT_EQ(recorder.Take(), (Calls{"create 1 SettingsColorspaceConverter/Default", "set 1",
                                      "create 2 SettingsEffectPosterize/Default", "set 2 is-pal=true"}));
    for (int i = 0; i < 2; ++i) {
        effect->SetSettings(Colors(5));
        EXPECT_EQ(recorder.Take(), Calls{"set 2 colors-number=5 is-pal=true"});
    }
    ClassesAre([](auto, auto) { return 4; });
    Apply(MakeNoise(*context, PixFmt::YUV420P, 7, 5));
    EXPECT_EQ(
        recorder.Take(),
        (Calls{"create 3 SettingsColorspaceConverter/Default",
               "set 3 formats=yuva444p,yuva422p,yuva420p,yuv444p,yuv440p,yuv422p,yuv420p,yuv411p,yuv410p,yuvj420p,"
               "yuvj422p,yuvj444p,yuvj440p,yuvj411p",
               "run 3", "run 2"}));
    Apply(MakeNoise(*context, PixFmt::YUV420P, 7, 5));
    EXPECT_EQ(recorder.Take(), (Calls{"run 3", "run 2"}));
}

TEST_F(GradientPosterizeTest, ChromaIsTheTruncatedMeanOfTheClassAtTheUpperLeftPixel) {
    auto const classOf = [](std::uint64_t x, std::uint64_t y) {
        return static_cast<unsigned char>((x * 3 + y) % 4 + 1);
    };
    ClassesAre(classOf);
    effect->SetSettings(Colors(6)); // Classes 0 and 5 stay empty.
    for (PixFmt const format : {PixFmt::YUV420P, PixFmt::YUV410P, PixFmt::YUV440P, PixFmt::YUV411P, PixFmt::YUVA444P}) {
        VideoHandle const source = MakeNoise(*context, format, 19, 9);
        PixFmtDescription const& d = source->GetDescription();
        VideoHandle const data = source->MakeCopy(CopyMode::Value);
        VideoHandle const result = Apply(data);
        EXPECT_EQ(result, data) << "posterize replaced its own handle, not the picture's";
        for (unsigned char plane = 1; plane <= 2; ++plane) {
            std::array<unsigned int, 6> sums{};
            std::array<unsigned int, 6> counts{};
            ConstPlane const from = source->GetPlane(plane);
            auto const number = [&](std::uint64_t x, std::uint64_t y) {
                return std::size_t{classOf(x << d.chromaShiftX, y << d.chromaShiftY)};
            };
            for (std::uint64_t y = 0; y < from.GetHeight(); ++y)
                for (std::uint64_t x = 0; x < from.GetWidth(); ++x) {
                    sums[number(x, y)] += from.GetRow(y)[x];
                    ++counts[number(x, y)];
                }
            for (std::uint64_t y = 0; y < from.GetHeight(); ++y)
                for (std::uint64_t x = 0; x < from.GetWidth(); ++x)
                    ASSERT_EQ(result->GetPlane(plane).GetRow(y)[x], sums[number(x, y)] / counts[number(x, y)])
                        << d.name << " plane " << int{plane};
        }
        std::size_t const lumaBytes = 19 * 9;
        std::vector<unsigned char> before = Samples(*source);
        std::vector<unsigned char> after = Samples(*result);
        before.resize(lumaBytes);
        after.resize(lumaBytes);
        EXPECT_EQ(after, before) << "the luma stays";
    }
}

TEST_F(GradientPosterizeTest, RefusesClassesBeyondItsColours) {
    VideoHandle const picture = MakeNoise(*context, PixFmt::YUV444P, 5, 4);
    std::vector<unsigned char> const before = Samples(*picture);
    effect->SetSettings(Colors(3));
    ClassesAre([](std::uint64_t x, std::uint64_t y) { return x == 4 && y == 3 ? 3 : 0; });
    EXPECT_THAT(Refusal(picture), HasSubstr("class 3"));
    recorder.oneInput.clear(); // A posterize effect that does nothing.
    EXPECT_THAT(Refusal(picture), HasSubstr("another kind"));
    EXPECT_EQ(Samples(*picture), before);
    ClassesAre([](auto, auto) { return 2; });
    EXPECT_EQ(Refusal(picture), "");
}

TEST(ChromaClasses, SumsAreOf32BitsAndWrap) {
    std::vector<unsigned char> samples(1 << 16, 255);
    std::vector<unsigned char> const classes(1 << 16, 0);
    constexpr std::int64_t SIDE = 256;
    MutablePlane const plane(samples.data(), SIDE, SIDE, SIDE);
    Kernels::ChromaClasses const picture{{classes.data(), SIDE, SIDE, SIDE}, plane, plane, 0, 0};
    std::array<Kernels::ChromaSum, 1> sums{};
    std::uint64_t exact = 0;
    for (int i = 0; i < 260; ++i) {
        Kernels::AddChroma(picture, sums);
        exact += 255 * samples.size();
    }
    ASSERT_GT(exact, 0xffffffffU);
    EXPECT_EQ(sums[0].blue, static_cast<std::uint32_t>(exact));
    EXPECT_EQ(sums[0].count, 260U << 16);
}

TEST(GradientPosterize, WithTheHostsPosterizeEveryLumaFormatKeepsItsLumaAndHasAsManyChromaPairsAsColours) {
    HostRun run;
    for (PixFmtDescription const& d : PixFmtDescription::GetAll()) {
        if (d.model != ColorModel::Luma) continue;
        SCOPED_TRACE(d.name);
        VideoHandle const source = MakeNoise(run.context, d.format, 61, 35);
        VideoHandle const result = run.Apply(Colors(4), source);
        ASSERT_EQ(result->GetPixFmt(), d.format);
        std::set<std::pair<int, int>> pairs;
        for (std::uint32_t y = 0; y < 35; ++y)
            for (std::uint32_t x = 0; x < 61; ++x) {
                auto const level = [&](IDataVideo const& picture, std::size_t i) {
                    return int{Sample(picture, d.components[i], i == 0, x, y)};
                };
                ASSERT_EQ(level(*result, 0), level(*source, 0));
                pairs.insert({level(*result, 1), level(*result, 2)});
            }
        EXPECT_EQ(pairs.size(), 4U);
    }
}

} // namespace
} // namespace Velnor::Proc
