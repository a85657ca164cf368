#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Settings/SettingsEffectEdgeRemove.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/Pictures.h"

#include <gmock/gmock.h>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(EdgeRemove)
namespace {

using namespace Testing;
using ::testing::HasSubstr;
using Pictures = std::vector<DataHandle>;
using Pixel = std::array<int, 4>;

constexpr std::uint32_t SIDE = 48;
constexpr std::uint32_t FIRST = 14; ///< Of the object's columns.
constexpr std::uint32_t LAST = 33;

/// A red object on green, mixed half and half in the columns on both sides of it, where the mask is at a half.
struct EdgeRemoveTest : ::testing::Test {
    StandardHost host;
    intrusive_ptr<IEffect> const effect = CreateEdgeRemove(host.GetFactory(), host.GetContext());
    VideoHandle picture = host.GetContext()->CreateImage(PixFmt::RGB24, FrameFormat::Square(SIDE, SIDE));
    VideoHandle mask = host.GetContext()->CreateImage(PixFmt::GRAY8, FrameFormat::Square(SIDE, SIDE));

    EdgeRemoveTest() {
        MutablePlane const pixels = picture->GetMutablePlane(0);
        MutablePlane const shares = mask->GetMutablePlane(0);
        for (std::uint32_t y = 0; y < SIDE; ++y)
            for (std::uint32_t x = 0; x < SIDE; ++x) {
                int const share = Share(x);
                shares.GetRow(y)[x] = static_cast<unsigned char>(share);
                unsigned char* const pixel = pixels.GetRow(y) + 3 * x;
                pixel[0] = static_cast<unsigned char>(200 * share / 255);
                pixel[1] = static_cast<unsigned char>(200 * (255 - share) / 255);
                pixel[2] = 40;
            }
    }

    static int Share(std::uint32_t x) {
        if (x + 1 == FIRST || x == LAST + 1) return 128;
        return x >= FIRST && x <= LAST ? 255 : 0;
    }

    static SettingsEffectEdgeRemove Clean(double strength, int fringe, int erosion, double feather) {
        SettingsEffectEdgeRemove settings;
        settings.SetStrength(strength);
        settings.SetFringe(fringe);
        settings.SetErosion(erosion);
        settings.SetFeather(feather);
        return settings;
    }

    VideoHandle Run(SettingsEffectEdgeRemove const& settings, Pictures inputs) {
        effect->SetSettings(settings);
        return VideoHandle(&AsVideo(effect->ProcessData(inputs)));
    }

    static Pixel At(VideoHandle const& result, std::uint32_t x) {
        unsigned char const* const pixel = result->GetPlane(0).GetRow(SIDE / 2) + 4 * x;
        return {pixel[0], pixel[1], pixel[2], pixel[3]};
    }
};

TEST_F(EdgeRemoveTest, ContinuesTheObjectsColourIntoItsFringe) {
    std::vector<unsigned char> const before = Samples(*picture);
    VideoHandle const result = Run(Clean(100, 1, 0, 0), {picture, mask});
    ASSERT_EQ(result->GetPixFmt(), PixFmt::RGBA);
    for (std::uint32_t x = FIRST - 1; x <= LAST + 1; ++x) EXPECT_EQ(At(result, x), (Pixel{200, 0, 40, Share(x)})) << x;
    EXPECT_EQ(At(result, 0)[3], 0);
    EXPECT_EQ(Samples(*picture), before);

    EXPECT_EQ(At(Run(Clean(0, 1, 0, 0), {picture, mask}), FIRST - 1), (Pixel{100, 99, 40, 128}));
    EXPECT_NEAR(At(Run(Clean(50, 1, 0, 0), {picture, mask}), FIRST - 1)[1], 50, 1);
}

TEST_F(EdgeRemoveTest, ErodesAndFeathersTheMask) {
    VideoHandle const narrow = Run(Clean(100, 1, 3, 0), {picture, mask});
    EXPECT_EQ(At(narrow, FIRST + 1)[3], 0);
    EXPECT_EQ(At(narrow, FIRST + 2)[3], 128);
    EXPECT_EQ(At(narrow, FIRST + 3)[3], 255);
    VideoHandle const soft = Run(Clean(100, 1, 0, 3), {picture, mask});
    for (std::uint32_t x = 6; x <= FIRST + 6; ++x) EXPECT_GT(At(soft, x)[3], At(soft, x - 1)[3]) << x;
}

TEST_F(EdgeRemoveTest, TakesTheOwnAlphaOfACutOutAsItsMask) {
    VideoHandle const cutOut = Run(Clean(0, 0, 0, 0), {picture, mask});
    EXPECT_EQ(Samples(*Run(Clean(100, 1, 0, 0), {cutOut})), Samples(*Run(Clean(100, 1, 0, 0), {picture, mask})));
}

TEST_F(EdgeRemoveTest, SaysWhatIsWrong) {
    auto const refusal = [&](SettingsEffectEdgeRemove const& settings, Pictures const& inputs) -> std::string {
        try {
            Run(settings, inputs);
        } catch (EffectException const& exception) {
            return DescribeException(exception);
        }
        return "none";
    };
    VideoHandle const small = MakeFlat(*host.GetContext(), PixFmt::GRAY8, 5, 4, {9});
    EXPECT_THAT(refusal({}, {}), HasSubstr("0 pictures"));
    EXPECT_THAT(refusal({}, {picture, mask, mask}), HasSubstr("3 pictures"));
    EXPECT_THAT(refusal({}, {picture, nullptr}), HasSubstr("null"));
    EXPECT_THAT(refusal({}, {picture, small}), HasSubstr("5 x 4"));
    EXPECT_THAT(refusal({}, {picture}), HasSubstr("rgb24"));
    EXPECT_THAT(refusal(Clean(100, -1, 0, 0), {picture, mask}), HasSubstr("fringe"));
}

} // namespace
} // namespace Velnor::Proc
