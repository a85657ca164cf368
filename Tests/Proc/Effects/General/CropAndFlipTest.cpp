#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsEffectCrop.h"
#include "Proc/Settings/SettingsEffectFlip.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/ColourPictures.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/Refusal.h"

#include <gtest/gtest.h>

namespace Velnor::Proc {
namespace {

using namespace Testing;

int At(IDataVideo const& picture, std::uint64_t x, std::uint64_t y) { return picture.GetPlane(0).GetRow(y)[x]; }

class CropAndFlipTest : public ::testing::Test {
protected:
    template <class S>
    VideoHandle Apply(S const& settings, DataHandle data) {
        auto const effect = host.GetFactory()->CreateOneInputEffect(S::CLASS_ID, ImplNames::DEFAULT);
        effect->SetSettings(settings);
        effect->ProcessData(data);
        return VideoHandle(&AsVideo(data));
    }

    StandardHost host;
    IEffectContext& context = *host.GetContext();
};

TEST_F(CropAndFlipTest, FlipMovesEveryComponentToTheOtherSideInEveryFormat) {
    for (PixFmtDescription const& format : PixFmtDescription::GetAll()) {
        if (format.model == ColorModel::Palette) continue;
        VideoHandle const picture = MakeNoise(context, format.format, 8, 4);
        for (auto const direction :
             {SettingsEffectFlip::HORIZONTAL, SettingsEffectFlip::VERTICAL, SettingsEffectFlip::BOTH}) {
            SettingsEffectFlip const settings(direction);
            VideoHandle const result = Apply(settings, picture);
            ASSERT_EQ(result->GetPixFmt(), format.format);
            EXPECT_NE(Samples(*result), Samples(*picture)) << format.name;
            EXPECT_EQ(Samples(*Apply(settings, result)), Samples(*picture)) << format.name << " " << direction;
            for (std::size_t k = 0; k < format.componentsCount; ++k) {
                bool const isLuma = format.model == ColorModel::Luma && k == 0;
                std::uint32_t const x = direction == SettingsEffectFlip::VERTICAL ? 1 : 6;
                std::uint32_t const y = direction == SettingsEffectFlip::HORIZONTAL ? 0 : 3;
                EXPECT_EQ(Sample(*result, format.components[k], isLuma, 1, 0),
                          Sample(*picture, format.components[k], isLuma, x, y))
                    << format.name << " " << direction << " " << k;
            }
        }
    }
}

TEST_F(CropAndFlipTest, FlipKeepsAPaletteAndRefusesOtherDirections) {
    VideoHandle const picture = MakeNoise(context, PixFmt::PAL8, 5, 3);
    VideoHandle const result = Apply(SettingsEffectFlip(), picture);
    EXPECT_EQ(At(*result, 0, 1), At(*picture, 4, 1));
    EXPECT_EQ(std::as_const(*result).GetPlane(1).GetRow(0)[17], std::as_const(*picture).GetPlane(1).GetRow(0)[17]);
    SettingsEffectFlip settings;
    settings.SetDirection(static_cast<SettingsEffectFlip::Direction>(7));
    EXPECT_EQ(RefusalOf([&] { Apply(settings, picture); }),
              "The setting direction is 7; horizontal, vertical and both are accepted.");
}

TEST_F(CropAndFlipTest, CropIsTheInsideOfTheMargins) {
    VideoHandle const picture = MakeNoise(context, PixFmt::RGB24, 9, 7);
    VideoHandle const result = Apply(SettingsEffectCrop(CropInfo(1, 2, 3, 4)), picture);
    ASSERT_EQ(result->GetFrameFormat(), FrameFormat::Square(5, 1));
    EXPECT_EQ(At(*result, 0, 0), At(*picture, 3, 2));
    // Of halved chroma the first corner moves on to a whole sample.
    VideoHandle const halved = MakeNoise(context, PixFmt::YUV420P, 9, 7);
    VideoHandle const inside = Apply(SettingsEffectCrop(CropInfo(1, 1, 1, 1)), halved);
    ASSERT_EQ(inside->GetFrameFormat(), FrameFormat::Square(6, 4));
    EXPECT_EQ(At(*inside, 0, 0), At(*halved, 2, 2));
    EXPECT_EQ(RefusalOf([&] { Apply(SettingsEffectCrop(CropInfo(0, 3, 0, 4)), picture); }),
              "The margins of the crop, 3 and 4 pixels, leave nothing of a picture 7 pixels high.");
}

} // namespace
} // namespace Velnor::Proc
