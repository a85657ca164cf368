#include "Proc/Settings/SettingsEffectPad.h"
#include "Tests/Support/ColourPictures.h"
#include "Tests/Support/HostRun.h"

#include <gtest/gtest.h>

namespace Velnor::Proc {
namespace {

using namespace Testing;
using S = SettingsEffectPad;

class PadTest : public HostRunTest {};

/// The place in a line of `size` samples that one walking to and fro between its ends comes to.
int Walk(int place, int size, S::Mode mode) {
    if (mode == S::EDGE) return std::clamp(place, 0, size - 1);
    while (place < 0 || place >= size) place = place < 0 ? -1 - place : 2 * size - 1 - place;
    return place;
}

TEST_F(PadTest, EveryComponentComesFromItsEdgeOrMirrorPlace) {
    for (PixFmtDescription const& format : PixFmtDescription::GetAll()) {
        if (format.model == ColorModel::Palette) continue;
        // Whole chroma samples, so that the mirror lies at the same place in every plane; a margin beyond the picture.
        VideoHandle const picture = MakeNoise(context, format.format, 8, 4);
        std::vector<unsigned char> const before = Samples(*picture);
        for (S::Mode const mode : {S::EDGE, S::MIRROR}) {
            VideoHandle const result = Apply(S(CropInfo(20, 4, 3, 9), mode), picture);
            ASSERT_EQ(result->GetPixFmt(), format.format);
            ASSERT_EQ(result->GetFrameFormat(), FrameFormat::Square(31, 17));
            for (std::size_t k = 0; k < format.componentsCount; ++k) {
                bool const isLuma = format.model == ColorModel::Luma && k == 0;
                unsigned int const shiftX = format.model == ColorModel::Luma && k > 0 ? format.chromaShiftX : 0;
                unsigned int const shiftY = format.model == ColorModel::Luma && k > 0 ? format.chromaShiftY : 0;
                for (int y = 0; y < 17; ++y)
                    for (int x = 0; x < 31; ++x) {
                        auto const fromX = Walk((x >> shiftX) - (20 >> shiftX), 8 >> shiftX, mode) << shiftX;
                        auto const fromY = Walk((y >> shiftY) - (4 >> shiftY), 4 >> shiftY, mode) << shiftY;
                        ASSERT_EQ(Sample(*result, format.components[k], isLuma, static_cast<std::uint32_t>(x),
                                         static_cast<std::uint32_t>(y)),
                                  Sample(*picture, format.components[k], isLuma, static_cast<std::uint32_t>(fromX),
                                         static_cast<std::uint32_t>(fromY)))
                            << format.name << " component " << k << " at " << x << ", " << y << " mode " << mode;
                    }
            }
        }
        EXPECT_EQ(Samples(*picture), before) << format.name;
    }
}

TEST_F(PadTest, OneColourSurroundsThePicture) {
    for (PixFmtDescription const& format : PixFmtDescription::GetAll()) {
        VideoHandle const picture = MakeBars(context, format.format, 21, 3);
        S settings(CropInfo(4, 8, 5, 2), S::COLOR);
        settings.SetMarginColor(Color(20, 30, 210, 77));
        VideoHandle const result = Apply(settings, picture);
        ASSERT_EQ(result->GetPixFmt(), format.format);
        ASSERT_EQ(result->GetFrameFormat(), FrameFormat::Square(30, 13));
        VideoHandle const flat = context.CreateImage(format.format, FrameFormat::Square(1, 1));
        flat->Fill(settings.GetMarginColor());
        for (std::uint32_t y = 0; y < 13; ++y)
            for (std::uint32_t x = 0; x < 30; ++x) {
                bool const isInside = x >= 4 && x < 25 && y >= 8 && y < 11;
                Colour4 const wanted = isInside ? ReadColour(*picture, x - 4, y - 8) : ReadColour(*flat, 0, 0);
                // Chroma samples on the border belong to both.
                if (format.chromaShiftX + format.chromaShiftY > 0 && (x >= 24 || y >= 10)) continue;
                ASSERT_EQ(ReadColour(*result, x, y), wanted) << format.name << " at " << x << ", " << y;
            }
    }
}

TEST_F(PadTest, RightAndLowerMarginsAreExactAndTheOthersComeToWholeChromaSamples) {
    VideoHandle const picture = MakeNoise(context, PixFmt::YUV410P, 5, 3);
    EXPECT_EQ(Apply(S(CropInfo(0, 0, 1, 2), S::MIRROR), picture)->GetFrameFormat(), FrameFormat::Square(6, 5));
    VideoHandle const result = Apply(S(CropInfo(1, 5, 0, 0), S::EDGE), picture);
    EXPECT_EQ(result->GetFrameFormat(), FrameFormat::Square(9, 11));
    EXPECT_EQ(result->GetPlane(0).GetRow(8)[4], picture->GetPlane(0).GetRow(0)[0]);
    VideoHandle const odd = Apply(S(CropInfo(0, 0, 3, 0), S::MIRROR), MakeNoise(context, PixFmt::YUYV422, 5, 1));
    EXPECT_EQ(Sample(*odd, odd->GetDescription().components[0], true, 5, 0),
              Sample(*odd, odd->GetDescription().components[0], true, 4, 0));
    EXPECT_EQ(
        Apply(S(CropInfo(3, 3, 3, 3), S::MIRROR), MakeNoise(context, PixFmt::GRAY8, 1, 1))->GetPlane(0).GetRow(6)[0],
        MakeNoise(context, PixFmt::GRAY8, 1, 1)->GetPlane(0).GetRow(0)[0]);
}

TEST_F(PadTest, RefusesWhatHasNoMeaning) {
    VideoHandle const picture = MakeNoise(context, PixFmt::RGB24, 5, 3);
    std::string const wide = Refusal(S(CropInfo(0xffffffff, 0, 0, 0), S::EDGE), picture);
    EXPECT_NE(wide.find("4294967295 + 5 + 0 pixels wide"), std::string::npos) << wide;
    EXPECT_NE(Refusal(S(CropInfo(1, 0, 0, 0), S::EDGE), nullptr), "");
    EXPECT_EQ(Apply(S(S::MIRROR), picture)->GetPlane(0).GetData(), picture->GetPlane(0).GetData())
        << "no margins, nothing to do";
}

} // namespace
} // namespace Velnor::Proc
