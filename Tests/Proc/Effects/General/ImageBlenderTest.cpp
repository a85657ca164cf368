#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Interfaces/ProcException.h"
#include "Proc/Settings/SettingsEffectImageBlender.h"
#include "Tests/Support/ColourPictures.h"
#include "Tests/Support/HostRun.h"

#include <gtest/gtest.h>

#include <limits>

namespace Velnor::Proc {
namespace {

using namespace Testing;
using Blend = SettingsEffectImageBlender;

class ImageBlenderTest : public HostRunTest {
protected:
    VideoHandle Apply(Blend const& settings, DataHandle first, ConstDataHandle const& second) {
        effect->SetSettings(settings);
        effect->ProcessData(first, second);
        return VideoHandle(&AsVideo(first));
    }
    std::string Refusal(Blend const& settings, DataHandle const& first, ConstDataHandle const& second) {
        return RefusalOf([&] { Apply(settings, first, second); });
    }

    intrusive_ptr<ITwoInputEffectVideo> const effect =
        host.GetFactory()->CreateTwoInputEffect(Blend::CLASS_ID, ImplNames::DEFAULT);
};

int Join(int alpha, int constant, BlendAlphaMode mode) {
    if (mode == BLEND_CONSTANT) return constant;
    return mode == BLEND_LARGER ? std::max(alpha, constant) : (alpha * constant + 127) / 255;
}

/// The mean alpha over a chroma sample's area.
int MeanAlpha(IDataVideo const& picture, std::uint32_t x, std::uint32_t y) {
    PixFmtDescription const& format = picture.GetDescription();
    FrameFormat const frame = picture.GetFrameFormat();
    int sum = 0;
    int count = 0;
    for (std::uint32_t row = y << format.chromaShiftY; row < std::min(frame.height, (y + 1) << format.chromaShiftY);
         ++row)
        for (std::uint32_t column = x << format.chromaShiftX;
             column < std::min(frame.width, (x + 1) << format.chromaShiftX); ++column, ++count)
            sum += format.hasAlpha ? Sample(picture, format.alpha, false, column, row) : 255;
    return (sum + count / 2) / count;
}

/// What each component of the blend of two pictures at (x, y) must be, one sample after the other.
void ExpectBlended(IDataVideo const& result, IDataVideo const& first, IDataVideo const& second, Blend const& s) {
    PixFmtDescription const& format = first.GetDescription();
    FrameFormat const frame = first.GetFrameFormat();
    FrameFormat const over = second.GetFrameFormat();
    for (std::size_t k = 0; k < format.componentsCount; ++k) {
        bool const isChroma = format.model == ColorModel::Luma && k > 0;
        unsigned int const shiftX = isChroma ? format.chromaShiftX : 0;
        unsigned int const shiftY = isChroma ? format.chromaShiftY : 0;
        bool const isLuma = format.model == ColorModel::Luma && k == 0;
        auto const columns = static_cast<int>((over.width + (1U << shiftX) - 1) >> shiftX);
        auto const rows = static_cast<int>((over.height + (1U << shiftY) - 1) >> shiftY);
        for (std::uint32_t y = 0; y < (frame.height + (1U << shiftY) - 1) >> shiftY; ++y)
            for (std::uint32_t x = 0; x < (frame.width + (1U << shiftX) - 1) >> shiftX; ++x) {
                auto const read = [&](IDataVideo const& picture, std::uint32_t column, std::uint32_t row) -> int {
                    return Sample(picture, format.components[k], isLuma, column << shiftX, row << shiftY);
                };
                int const column = static_cast<int>(x) - (s.GetPositionX() >> shiftX);
                int const row = static_cast<int>(y) - (s.GetPositionY() >> shiftY);
                int wanted = read(first, x, y);
                if (column >= 0 && row >= 0 && column < columns && row < rows) {
                    auto const cx = static_cast<std::uint32_t>(column);
                    auto const cy = static_cast<std::uint32_t>(row);
                    int own = isChroma ? MeanAlpha(second, cx, cy)
                                       : (format.hasAlpha ? Sample(second, format.alpha, false, cx, cy) : 255);
                    if (ConstPlane const extra = second.GetExtraAlpha(isChroma ? 1 : 0); !extra.IsEmpty())
                        own = extra.GetRow(cy)[cx];
                    int const a = Join(own, s.GetAlpha(), s.GetAlphaMode());
                    wanted = (a * read(second, cx, cy) + (255 - a) * wanted + 127) / 255;
                }
                ASSERT_EQ(read(result, x, y), wanted) << format.name << " component " << k << " at " << x << ", " << y;
            }
    }
    for (std::uint32_t y = 0; format.hasAlpha && y < frame.height; ++y)
        for (std::uint32_t x = 0; x < frame.width; ++x)
            ASSERT_EQ(Sample(result, format.alpha, false, x, y), Sample(first, format.alpha, false, x, y));
}

TEST_F(ImageBlenderTest, IsTheFormulaInEveryFormatAtEveryPositionAndInEveryMode) {
    for (PixFmtDescription const& format : PixFmtDescription::GetAll()) {
        if (format.model == ColorModel::Palette) continue;
        VideoHandle const first = MakeNoise(context, format.format, 35, 13, 1);
        VideoHandle const second = MakeNoise(context, format.format, 21, 7, 2);
        std::vector<unsigned char> const before = Samples(*first);
        std::vector<unsigned char> const beforeSecond = Samples(*second);
        for (Blend const& settings : {Blend(), Blend(3, 5, 200, BLEND_PRODUCT), Blend(-4, -2, 90, BLEND_LARGER),
                                      Blend(30, 11, 255, BLEND_PRODUCT), Blend(-7, 9, 130, BLEND_CONSTANT),
                                      Blend(35, 0, 255, BLEND_CONSTANT), Blend(0, -7, 255, BLEND_PRODUCT)}) {
            VideoHandle const result = Apply(settings, first, second);
            ASSERT_EQ(result->GetPixFmt(), format.format);
            ExpectBlended(*result, *first, *second, settings);
        }
        EXPECT_EQ(Samples(*first), before) << format.name;
        EXPECT_EQ(Samples(*second), beforeSecond) << format.name;
    }
}

TEST_F(ImageBlenderTest, ExtraAlphaComesBeforeOwnAlphaAndIsUsedUp) {
    for (PixFmt const format : {PixFmt::RGB24, PixFmt::BGRA, PixFmt::YUVA420P, PixFmt::NV12, PixFmt::UYVY422,
                                PixFmt::YUV444P, PixFmt::GRAY8}) {
        VideoHandle const first = MakeNoise(context, format, 19, 11, 1);
        VideoHandle const second = MakeNoise(context, format, 19, 11, 2);
        first->SetPlane(0, MakeNoise(context, PixFmt::GRAY8, 19, 11, 8)->GetPlane(0));
        // Larger than the picture, as a mask may be; chroma has an alpha that the luma's would not give.
        second->SetPlane(0, MakeNoise(context, PixFmt::GRAY8, 23, 12, 3)->GetPlane(0));
        second->SetPlane(1, MakeNoise(context, PixFmt::GRAY8, 23, 12, 4)->GetPlane(0));
        for (Blend const& settings : {Blend(), Blend(2, 4, 100, BLEND_LARGER), Blend(4, 0, 100, BLEND_CONSTANT)}) {
            VideoHandle const result = Apply(settings, first, second);
            ExpectBlended(*result, *first, *second, settings);
            EXPECT_TRUE(result->GetExtraAlpha(0).IsEmpty());
        }
        EXPECT_FALSE(first->GetExtraAlpha(0).IsEmpty());
        EXPECT_FALSE(second->GetExtraAlpha(1).IsEmpty());
    }
}

TEST_F(ImageBlenderTest, ChromaWithoutAnAlphaOfItsOwnTakesTheMeanOfTheMask) {
    VideoHandle const first = MakeNoise(context, PixFmt::YUV420P, 5, 3, 1);
    VideoHandle const second = MakeNoise(context, PixFmt::YUV420P, 5, 3, 2);
    VideoHandle const mask = MakeNoise(context, PixFmt::GRAY8, 5, 3, 3);
    second->SetPlane(0, mask->GetPlane(0));
    VideoHandle const result = Apply(Blend(), first, second);
    auto const at = [&](std::uint64_t x, std::uint64_t y) { return int{mask->GetPlane(0).GetRow(y)[x]}; };
    int const a = (at(2, 0) + at(3, 0) + at(2, 1) + at(3, 1) + 2) / 4;
    int const over = second->GetPlane(1).GetRow(0)[1];
    EXPECT_EQ(result->GetPlane(1).GetRow(0)[1], (a * over + (255 - a) * first->GetPlane(1).GetRow(0)[1] + 127) / 255);
    EXPECT_EQ(result->GetPlane(2).GetRow(1)[2],
              (at(4, 2) * second->GetPlane(2).GetRow(1)[2] + (255 - at(4, 2)) * first->GetPlane(2).GetRow(1)[2] + 127) /
                  255);
}

TEST_F(ImageBlenderTest, AnyNumberIsAnAlphaAndAPosition) {
    VideoHandle const first = MakeNoise(context, PixFmt::RGB24, 9, 4, 1);
    VideoHandle const second = MakeNoise(context, PixFmt::RGB24, 9, 4, 2);
    constexpr int LOW = std::numeric_limits<int>::min();
    constexpr int HIGH = std::numeric_limits<int>::max();
    EXPECT_EQ(Samples(*Apply(Blend(0, 0, LOW, BLEND_PRODUCT), first, second)), Samples(*first));
    EXPECT_EQ(Samples(*Apply(Blend(0, 0, HIGH, BLEND_PRODUCT), first, second)), Samples(*second));
    for (auto const& [x, y] : {std::pair{LOW, 0}, {HIGH, 0}, {0, LOW}, {HIGH, HIGH}})
        EXPECT_EQ(Samples(*Apply(Blend(x, y, 255, BLEND_PRODUCT), first, second)), Samples(*first));
}

TEST_F(ImageBlenderTest, PalettePicturesAreBlendedAsTheirColours) {
    VideoHandle const first = MakeBars(context, PixFmt::PAL8, 64, 5);
    VideoHandle const second = MakeBars(context, PixFmt::PAL8, 20, 5);
    Blend const settings(7, 1, 128, BLEND_PRODUCT);
    VideoHandle const under = Convert(first, PixFmt::RGBA);
    VideoHandle const over = Convert(second, PixFmt::RGBA);
    for (auto const& [one, other] : {std::pair{first, second}, {first, over}, {under, second}}) {
        VideoHandle const result = Apply(settings, one, other);
        EXPECT_EQ(result->GetPixFmt(), PixFmt::RGBA);
        ExpectBlended(*result, *under, *over, settings);
    }
}

TEST_F(ImageBlenderTest, WritesInPlaceOnlyWhereNobodyElseLooks) {
    DataHandle alone = MakeNoise(context, PixFmt::RGB24, 9, 4, 1);
    IData const* const object = alone.get();
    alone->SetTimeStamp(7);
    VideoHandle const twin = AsVideo(alone).MakeCopy(CopyMode::Share);
    std::vector<unsigned char> const before = Samples(*twin);
    effect->ProcessData(alone, MakeNoise(context, PixFmt::RGB24, 9, 4, 2));
    EXPECT_EQ(alone.get(), object);
    EXPECT_EQ(Samples(*twin), before);

    DataHandle held = alone;
    std::vector<unsigned char> const beforeHeld = Samples(AsVideo(held));
    effect->ProcessData(alone, MakeNoise(context, PixFmt::RGB24, 9, 4, 3));
    EXPECT_NE(alone, held);
    EXPECT_EQ(alone->GetTimeStamp(), 7);
    EXPECT_EQ(Samples(AsVideo(held)), beforeHeld);

    // A picture over itself.
    DataHandle itself = MakeNoise(context, PixFmt::RGB24, 9, 4, 5);
    std::vector<unsigned char> const beforeItself = Samples(AsVideo(itself));
    effect->ProcessData(itself, itself);
    EXPECT_EQ(Samples(AsVideo(itself)), beforeItself);
}

TEST_F(ImageBlenderTest, RefusesOtherFormatsByNameAndWorksAfterwards) {
    VideoHandle const first = MakeNoise(context, PixFmt::RGB24, 9, 4, 1);
    std::string const formats = Refusal(Blend(), first, MakeNoise(context, PixFmt::BGR24, 9, 4, 2));
    EXPECT_NE(formats.find("rgb24"), std::string::npos) << formats;
    EXPECT_NE(formats.find("bgr24"), std::string::npos) << formats;
    EXPECT_NE(Refusal(Blend(), nullptr, first), "");
    EXPECT_NE(Refusal(Blend(), first, nullptr), "");
    EXPECT_EQ(Samples(*Apply(Blend(), first, MakeNoise(context, PixFmt::RGB24, 9, 4, 2))),
              Samples(*MakeNoise(context, PixFmt::RGB24, 9, 4, 2)));
}

} // namespace
} // namespace Velnor::Proc
