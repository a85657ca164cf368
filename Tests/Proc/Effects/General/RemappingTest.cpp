#include "Proc/Settings/SettingsEffectRemapping.h"

#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/Pictures.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <stdexcept>

namespace Velnor::Proc {
namespace {

using namespace Testing;
using Map = SettingsEffectRemapping::Map;

class RemappingTest : public ::testing::Test {
protected:
    VideoHandle Remap(SettingsEffectRemapping const& settings, VideoHandle const& picture) {
        effect->SetSettings(settings);
        return VideoHandle(&AsVideo(effect->ProcessData(std::vector<DataHandle>{picture})));
    }

    StandardHost host;
    IEffectContext& context = *host.GetContext();
    intrusive_ptr<IOneInputEffectVideo> effect =
        host.GetFactory()->CreateOneInputEffect(SettingsEffectRemapping::CLASS_ID, ImplNames::DEFAULT);
};

TEST_F(RemappingTest, TheFunctionIsAskedOncePerPixelAndSaysWhatIsRead) {
    VideoHandle const picture = MakeNoise(context, PixFmt::RGB24, 30, 20);
    std::vector<std::pair<int, int>> asked;
    VideoHandle const result = Remap(SettingsEffectRemapping([&](int x, int y) {
                                         asked.push_back({x, y});
                                         return std::pair(static_cast<float>(x + 3), static_cast<float>(y - 2));
                                     }),
                                     picture);
    EXPECT_EQ(asked.size(), 600U);
    EXPECT_EQ(std::set(asked.begin(), asked.end()).size(), 600U);
    for (unsigned int y = 0; y < 20; ++y)
        for (unsigned int x = 0; x < 30; ++x) {
            auto const* const from = picture->GetPlane(0).GetOffsetPtr(std::min(x + 3, 29U), y < 2 ? 0 : y - 2);
            auto const* const to = result->GetPlane(0).GetOffsetPtr(x, y);
            EXPECT_TRUE(std::equal(to, to + 3, from)) << x << ", " << y;
        }
}

TEST_F(RemappingTest, WhatDoesNotMoveKeepsItsBytesInEveryFormat) {
    auto const stay = [](int x, int y) { return std::pair(static_cast<float>(x), static_cast<float>(y)); };
    for (PixFmtDescription const& format : PixFmtDescription::GetAll())
        for (auto const& [width, height] : {std::pair{1U, 1U}, {16U, 8U}, {13U, 7U}}) {
            VideoHandle const picture = MakeNoise(context, format.format, width, height);
            VideoHandle const result = Remap(SettingsEffectRemapping(stay), picture);
            SCOPED_TRACE(std::string(format.name) + " " + std::to_string(width));
            if (format.model == ColorModel::Palette) {
                EXPECT_EQ(result->GetPixFmt(), PixFmt::RGBA);
                continue;
            }
            EXPECT_EQ(result->GetPixFmt(), format.format);
            for (unsigned char i = 0; i < format.planesCount; ++i)
                for (std::uint64_t y = 0; y < result->GetPlane(i).GetHeight(); ++y)
                    for (std::uint64_t x = 0; x < result->GetPlane(i).GetWidth(); ++x) {
                        // Bytes without a meaning, and halves of a packed group beyond an odd width, are free.
                        bool const isPacked = format.planesCount == 1;
                        if (isPacked && (width == 13 || width == 1) && format.model == ColorModel::Luma) continue;
                        ASSERT_EQ(result->GetPlane(i).GetRow(y)[x], picture->GetPlane(i).GetRow(y)[x])
                            << "plane " << int{i} << ", " << x << ", " << y;
                    }
        }
}

TEST_F(RemappingTest, ChromaMovesWithTheLuma) {
    // By 4 luma pixels to the left and 2 up: 2 and 1 chroma samples of 4:2:0, bytes again.
    auto const shift = [](int x, int y) { return std::pair(static_cast<float>(x + 4), static_cast<float>(y + 2)); };
    for (PixFmt const format : {PixFmt::YUV420P, PixFmt::NV12, PixFmt::YUVA420P}) {
        VideoHandle const picture = MakeNoise(context, format, 31, 17);
        VideoHandle const result = Remap(SettingsEffectRemapping(shift), picture);
        std::uint64_t const bytes = picture->GetDescription().planes[1].bytes;
        ConstPlane const from = picture->GetPlane(1);
        ConstPlane const to = result->GetPlane(1);
        for (std::uint64_t y = 0; y + 1 < to.GetHeight(); ++y)
            for (std::uint64_t x = 0; x + 2 * bytes < to.GetWidth(); ++x)
                ASSERT_EQ(to.GetRow(y)[x], from.GetRow(y + 1)[x + 2 * bytes]) << x << ", " << y;
        EXPECT_EQ(result->GetPlane(0).GetRow(5)[7], picture->GetPlane(0).GetRow(7)[11]);
    }
}

TEST_F(RemappingTest, ClearPixelsGiveNoColour) {
    auto const between = [](int x, int y) {
        return std::pair(static_cast<float>(x) + 0.5F, static_cast<float>(y) + 0.25F);
    };
    for (PixFmt const id : {PixFmt::RGBA, PixFmt::ARGB, PixFmt::YA8, PixFmt::GBRAP, PixFmt::YUVA420P}) {
        VideoHandle const picture = MakeNoise(context, id, 24, 16);
        PixFmtDescription const& format = picture->GetDescription();
        auto const fill = [&](ComponentPlace const& place, int seen, int clear) {
            PlaneLayout const& layout = format.planes[place.plane];
            MutablePlane const plane = picture->GetMutablePlane(place.plane);
            for (std::uint64_t y = 0; y < plane.GetHeight(); ++y)
                for (std::uint64_t x = 0; x * layout.bytes < plane.GetWidth(); ++x)
                    plane.GetRow(y)[x * layout.bytes + place.offset] =
                        static_cast<unsigned char>(x << layout.shiftX < 12 ? seen : clear);
        };
        for (std::size_t k = 0; k < format.componentsCount; ++k) fill(format.components[k], 70, 240);
        fill(format.alpha, 255, 0);
        VideoHandle const result = Remap(SettingsEffectRemapping(between), picture);
        for (std::size_t k = 0; k < format.componentsCount; ++k) {
            PlaneLayout const& layout = format.planes[format.components[k].plane];
            ConstPlane const plane = result->GetPlane(format.components[k].plane);
            for (std::uint64_t x = 0; x * layout.bytes < plane.GetWidth(); ++x)
                EXPECT_EQ(plane.GetRow(3)[x * layout.bytes + format.components[k].offset],
                          x << layout.shiftX < 12 ? 70 : 240)
                    << format.name << " component " << k << ", " << x;
        }
        std::uint64_t const step = format.planes[format.alpha.plane].bytes;
        EXPECT_EQ(result->GetPlane(format.alpha.plane).GetRow(3)[11 * step + format.alpha.offset], 128);
    }
}

TEST_F(RemappingTest, PositionsThatAreNoNumbersAreSafeAndAThrowingFunctionLeavesThePicture) {
    constexpr float INF = std::numeric_limits<float>::infinity();
    VideoHandle const picture = MakeNoise(context, PixFmt::YUV420P, 19, 9);
    auto const wild = [](int x, int y) {
        float const values[] = {INF, -INF, std::numeric_limits<float>::quiet_NaN(), 3e38F, -3e38F};
        return std::pair(values[x % 5], values[y % 5]);
    };
    VideoHandle const result = Remap(SettingsEffectRemapping(wild), picture);
    EXPECT_EQ(result->GetPlane(0).GetRow(1)[0], picture->GetPlane(0).GetRow(0)[18]);

    std::vector<unsigned char> const before = Samples(*picture);
    effect->SetSettings(SettingsEffectRemapping([](int, int y) -> std::pair<float, float> {
        if (y == 4) throw std::runtime_error("enough");
        return {0, 0};
    }));
    DataHandle data = picture;
    EXPECT_THROW(effect->ProcessData(data), std::runtime_error);
    EXPECT_EQ(data, DataHandle(picture));
    EXPECT_EQ(Samples(*picture), before);
}

TEST_F(RemappingTest, TheLensKeepsTheCentreAndBendsTheCorners) {
    VideoHandle const picture = MakeNoise(context, PixFmt::GRAY8, 41, 31);
    ConstPlane const from = picture->GetPlane(0);
    SettingsEffectRemapping settings;
    EXPECT_TRUE(settings.IsEmpty());
    settings.SetLens(-20); // the corners read at 0.8 of their distance: 20 * 0.8 = 16 columns, 15 * 0.8 = 12 rows
    VideoHandle const result = Remap(settings, picture);
    ConstPlane const to = result->GetPlane(0);
    EXPECT_EQ(to.GetRow(15)[20], from.GetRow(15)[20]);
    EXPECT_EQ(to.GetRow(0)[0], from.GetRow(3)[4]);
    EXPECT_EQ(to.GetRow(30)[40], from.GetRow(27)[36]);
}

} // namespace
} // namespace Velnor::Proc
