// Alpha extractor, alpha inserter and extra alpha extractor.
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Interfaces/ProcException.h"
#include "Proc/Settings/SettingsEffectAlphaExtractor.h"
#include "Proc/Settings/SettingsEffectAlphaInserter.h"
#include "Proc/Settings/SettingsEffectExtraAlphaExtractor.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/ColourPictures.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/Refusal.h"

#include <gtest/gtest.h>

namespace Velnor::Proc {
namespace {

using namespace Testing;

class AlphaEffectsTest : public ::testing::Test {
protected:
    template <class SettingsClass>
    DataHandle Apply(SettingsClass const& settings, DataHandle data) {
        auto const effect = host.GetFactory()->CreateOneInputEffect(SettingsClass::CLASS_ID, ImplNames::DEFAULT);
        effect->SetSettings(settings);
        effect->ProcessData(data);
        return data;
    }
    VideoHandle Insert(DataHandle first, ConstDataHandle const& mask) {
        inserter->SetSettings(SettingsEffectAlphaInserter());
        inserter->ProcessData(first, mask);
        return VideoHandle(&AsVideo(first));
    }

    StandardHost host;
    IEffectContext& context = *host.GetContext();
    intrusive_ptr<ITwoInputEffectVideo> const inserter =
        host.GetFactory()->CreateTwoInputEffect(SettingsEffectAlphaInserter::CLASS_ID, ImplNames::DEFAULT);
};

TEST_F(AlphaEffectsTest, OwnAlphaComesOutOfEveryFormatThatHasIt) {
    for (PixFmtDescription const& format : PixFmtDescription::GetAll()) {
        VideoHandle const picture = MakeBars(context, format.format, 131, 5);
        picture->SetTimeStamp(5);
        std::vector<unsigned char> const before = Samples(*picture);
        DataHandle const alpha = Apply(SettingsEffectAlphaExtractor(), picture);
        EXPECT_EQ(Samples(*picture), before);
        ASSERT_EQ(alpha != nullptr, format.hasAlpha) << format.name;
        if (!alpha) continue;
        ASSERT_EQ(alpha->GetPixFmt(), PixFmt::GRAY8);
        ASSERT_EQ(alpha->GetFrameFormat(), picture->GetFrameFormat());
        EXPECT_EQ(alpha->GetTimeStamp(), 5);
        for (std::uint32_t y = 0; y < 5; ++y)
            for (std::uint32_t x = 0; x < 131; ++x)
                ASSERT_EQ(AsVideo(alpha).GetPlane(0).GetRow(y)[x], ReadColour(*picture, x, y).alpha) << format.name;
    }
    VideoHandle const masked = MakeNoise(context, PixFmt::RGB24, 3, 3);
    masked->SetPlane(0, MakeNoise(context, PixFmt::GRAY8, 3, 3)->GetPlane(0));
    EXPECT_EQ(Apply(SettingsEffectAlphaExtractor(), masked), nullptr) << "extra alpha is not the picture's own";
}

TEST_F(AlphaEffectsTest, TheInserterWritesOwnAlphaAndAttachesBothPlanes) {
    VideoHandle const mask = MakeNoise(context, PixFmt::GRAY8, 19, 7, 9);
    for (PixFmtDescription const& format : PixFmtDescription::GetAll()) {
        VideoHandle const picture = MakeBars(context, format.format, 19, 7);
        picture->SetTimeStamp(5);
        std::vector<unsigned char> const before = Samples(*picture);
        VideoHandle const result = Insert(picture, mask);
        EXPECT_EQ(Samples(*picture), before) << format.name;
        EXPECT_EQ(result->GetTimeStamp(), 5);
        bool const isPalette = format.model == ColorModel::Palette;
        ASSERT_EQ(result->GetPixFmt(), isPalette ? PixFmt::RGBA : format.format);
        DataHandle const chroma = Apply(SettingsEffectExtraAlphaExtractor(format.format), mask);
        ASSERT_EQ(result->GetExtraAlpha(1).GetWidth(), chroma->GetFrameFormat().width) << format.name;
        for (std::uint32_t y = 0; y < 7; ++y)
            for (std::uint32_t x = 0; x < 19; ++x) {
                int const level = mask->GetPlane(0).GetRow(y)[x];
                Colour4 wanted = ReadColour(*picture, x, y);
                if (format.hasAlpha) wanted.alpha = level;
                ASSERT_EQ(ReadColour(*result, x, y), wanted) << format.name;
                ASSERT_EQ(result->GetExtraAlpha(0).GetRow(y)[x], level);
                ASSERT_EQ(result->GetExtraAlpha(1).GetRow(y >> format.chromaShiftY)[x >> format.chromaShiftX],
                          AsVideo(ConstDataHandle(chroma))
                              .GetPlane(0)
                              .GetRow(y >> format.chromaShiftY)[x >> format.chromaShiftX]);
            }
    }
}

TEST_F(AlphaEffectsTest, TheInserterRefusesOtherMasks) {
    VideoHandle const picture = MakeNoise(context, PixFmt::BGRA, 19, 7);
    std::vector<unsigned char> const before = Samples(*picture);
    for (VideoHandle const& mask : {MakeNoise(context, PixFmt::GRAY8, 18, 7), MakeNoise(context, PixFmt::GRAY8, 19, 8),
                                    MakeNoise(context, PixFmt::YA8, 19, 7)}) {
        std::string const text = RefusalOf([&] { Insert(picture, mask); });
        EXPECT_THAT(text, HasSubstr("19 x 7 pixels of format bgra"));
        EXPECT_THAT(text, HasSubstr(mask->GetDescription().name));
    }
    EXPECT_NE(RefusalOf([&] { Insert(picture, nullptr); }), "");
    EXPECT_NE(RefusalOf([&] { Insert(nullptr, picture); }), "");
    EXPECT_EQ(Samples(*picture), before);
    EXPECT_TRUE(picture->GetExtraAlpha(0).IsEmpty());
}

TEST_F(AlphaEffectsTest, TheMaskComesAtTheResolutionOfTheChroma) {
    VideoHandle const mask = MakeNoise(context, PixFmt::GRAY8, 11, 6, 9);
    auto const at = [&](std::uint64_t x, std::uint64_t y) { return int{mask->GetPlane(0).GetRow(y)[x]}; };
    auto const plane = [&](PixFmt format) {
        DataHandle const result = Apply(SettingsEffectExtraAlphaExtractor(format), mask);
        return VideoHandle(&AsVideo(result));
    };
    for (PixFmt const format : {PixFmt::NONE, PixFmt::YUV444P, PixFmt::RGB24, PixFmt::GRAY8, PixFmt::PAL8})
        EXPECT_EQ(plane(format), mask);
    VideoHandle const quarter = plane(PixFmt::NV12);
    EXPECT_EQ(quarter->GetFrameFormat(), FrameFormat::Square(6, 3));
    EXPECT_EQ(quarter->GetPlane(0).GetRow(1)[2], (at(4, 2) + at(5, 2) + at(4, 3) + at(5, 3) + 2) / 4);
    EXPECT_EQ(quarter->GetPlane(0).GetRow(2)[5], (at(10, 4) + at(10, 5) + 1) / 2);
    EXPECT_EQ(plane(PixFmt::UYYVYY411)->GetFrameFormat(), FrameFormat::Square(3, 6));
    EXPECT_EQ(plane(PixFmt::YUV440P)->GetPlane(0).GetRow(1)[7], (at(7, 2) + at(7, 3) + 1) / 2);

    std::string const unknown = RefusalOf([&] { plane(static_cast<PixFmt>(9)); });
    EXPECT_NE(unknown.find("pixel-format is 9"), std::string::npos) << unknown;
    std::string const noMask = RefusalOf(
        [&] { Apply(SettingsEffectExtraAlphaExtractor(PixFmt::NV12), MakeNoise(context, PixFmt::RGB24, 2, 2)); });
    EXPECT_THAT(noMask, HasSubstr("rgb24"));
}

} // namespace
} // namespace Velnor::Proc
