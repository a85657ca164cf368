#include "Core/PixFmt.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace Velnor {
namespace {

AVPixelFormat InLibavutil(PixFmtDescription const& record) { return av_get_pix_fmt(std::string(record.name).c_str()); }

bool IsEightBit(AVPixFmtDescriptor const& format) {
    constexpr std::uint64_t FOREIGN = AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_BAYER;
    return format.nb_components > 0 && (format.flags & FOREIGN) == 0 &&
           std::all_of(format.comp, format.comp + format.nb_components, [](auto const& c) { return c.depth == 8; });
}

TEST(PixFmt, EveryEightBitFormatOfLibavutilIsThereUnderItsLastingCode) {
    std::set<int> codes;
    for (auto const* format = av_pix_fmt_desc_next(nullptr); format != nullptr; format = av_pix_fmt_desc_next(format)) {
        if (!IsEightBit(*format)) continue;
        int const today = av_pix_fmt_desc_get_id(format);
        int const code = today <= 43 ? today : today + 2; // two codes that were between have since been removed
        PixFmtDescription const* const record = PixFmtDescription::Find(static_cast<PixFmt>(code));
        ASSERT_NE(record, nullptr) << format->name << ", code " << code;
        EXPECT_EQ(InLibavutil(*record), today) << format->name << " against " << record->name;
        codes.insert(code);
    }
    EXPECT_EQ(codes.size(), PixFmtDescription::GetAll().size());
}

TEST(PixFmt, CodesOfTheContractHoldTheLayoutsThatEffectsRelyOn) {
    auto const name = [](int code) { return PixFmtDescription::Find(static_cast<PixFmt>(code))->name; };
    std::vector<std::pair<int, std::string_view>> const relied{
        {0, "yuv420p"},   {2, "rgb24"},     {3, "bgr24"},     {4, "yuv422p"},   {5, "yuv444p"},   {6, "yuv410p"},
        {7, "yuv411p"},   {8, "gray8"},     {11, "pal8"},     {12, "yuvj420p"}, {13, "yuvj422p"}, {14, "yuvj444p"},
        {25, "argb"},     {26, "rgba"},     {27, "abgr"},     {28, "bgra"},     {31, "yuv440p"},  {32, "yuvj440p"},
        {33, "yuva420p"}, {80, "yuva422p"}, {81, "yuva444p"}, {120, "0rgb"},    {121, "rgb0"},    {122, "0bgr"},
        {123, "bgr0"},    {140, "yuvj411p"}};
    for (auto const& [code, expected] : relied) EXPECT_EQ(name(code), expected) << code;
}

TEST(PixFmt, PlacesOfComponentsAreThoseOfLibavutil) {
    for (PixFmtDescription const& record : PixFmtDescription::GetAll()) {
        SCOPED_TRACE(record.name);
        AVPixFmtDescriptor const& format = *av_pix_fmt_desc_get(InLibavutil(record));
        EXPECT_EQ(record.hasAlpha, (format.flags & AV_PIX_FMT_FLAG_ALPHA) != 0);
        EXPECT_EQ(record.chromaShiftX, format.log2_chroma_w);
        EXPECT_EQ(record.chromaShiftY, format.log2_chroma_h);
        if (record.model == ColorModel::Palette)
            continue; // libavutil does not count the palette, nor describe its entries
        EXPECT_EQ(record.planesCount, av_pix_fmt_count_planes(InLibavutil(record)));
        ASSERT_EQ(record.componentsCount + (record.hasAlpha ? 1 : 0), format.nb_components);
        EXPECT_EQ(record.model == ColorModel::Rgb, (format.flags & AV_PIX_FMT_FLAG_RGB) != 0);
        for (int i = 0; i < record.componentsCount; ++i) {
            EXPECT_EQ(record.components[static_cast<std::size_t>(i)].plane, format.comp[i].plane) << i;
            EXPECT_EQ(record.components[static_cast<std::size_t>(i)].offset, format.comp[i].offset) << i;
        }
        if (record.hasAlpha) {
            EXPECT_EQ(record.alpha.plane, format.comp[record.componentsCount].plane);
            EXPECT_EQ(record.alpha.offset, format.comp[record.componentsCount].offset);
        }
    }
}

TEST(PixFmt, PlaneSizesAreThoseOfLibavutilAtOddSizesToo) {
    for (PixFmtDescription const& record : PixFmtDescription::GetAll()) {
        for (int size : {1, 2, 3, 4, 5, 7, 8, 13, 64, 6001}) {
            SCOPED_TRACE(std::string(record.name) + " at " + std::to_string(size));
            int widths[4];
            ASSERT_GE(av_image_fill_linesizes(widths, InLibavutil(record), size), 0);
            std::ptrdiff_t const strides[4]{widths[0], widths[1], widths[2], widths[3]};
            std::size_t bytes[4];
            ASSERT_GE(av_image_fill_plane_sizes(bytes, InLibavutil(record), size, strides), 0);
            for (unsigned char plane = 0; plane < 4; ++plane) {
                bool const isPalette = record.model == ColorModel::Palette && plane == 1;
                bool const isWhole = record.planes[0].shiftX == 0 || size % (1 << record.planes[0].shiftX) == 0;
                auto const width = record.GetPlanWidthSize(size, plane);
                auto const height = record.GetPlanHeight(size, plane);
                if (isPalette) {
                    EXPECT_EQ(width * height, static_cast<std::int64_t>(bytes[plane]));
                } else if (isWhole) { // libavutil cuts the last group of packed luma, where we keep whole ones
                    EXPECT_EQ(width, widths[plane]) << int(plane);
                    EXPECT_EQ(width * height, static_cast<std::int64_t>(bytes[plane])) << int(plane);
                } else {
                    EXPECT_GE(width, widths[plane]) << int(plane);
                }
            }
        }
    }
}

TEST(PixFmt, SizesOfMissingPlanesAndEmptyPicturesAreZero) {
    PixFmtDescription const& yuv = *PixFmtDescription::Find(PixFmt::YUV420P);
    EXPECT_EQ(yuv.GetPlanWidthSize(10, 3), 0);
    EXPECT_EQ(yuv.GetPlanHeight(10, 200), 0);
    EXPECT_EQ(yuv.GetPlanWidthSize(-3, 0), 0);
    EXPECT_EQ(yuv.GetPlanHeight(0, 1), 0);
    EXPECT_EQ(PixFmtDescription::Find(PixFmt::RGBA)->GetPlanWidthSize(0x7fffffff, 0), 4LL * 0x7fffffff);
    EXPECT_EQ(PixFmtDescription::Find(PixFmt::YUV410P)->GetPlanHeight(0x7fffffff, 1), 1LL << 29);
    EXPECT_EQ(PixFmtDescription::Find(PixFmt::UYYVYY411)->GetPlanWidthSize(5, 0), 12);
}

TEST(PixFmt, UnknownFormatsAreNotFound) {
    for (int code : {-1, -2, 9, 10, 22, 44, 54, 79, 82, 139, 193, 0x7fffffff})
        EXPECT_EQ(PixFmtDescription::Find(static_cast<PixFmt>(code)), nullptr) << code;
    for (std::string_view name : {"", "rgb", "RGB24", "rgb24 ", "none"})
        EXPECT_EQ(PixFmtDescription::Find(name), nullptr) << name;
    for (PixFmtDescription const& record : PixFmtDescription::GetAll()) {
        EXPECT_EQ(PixFmtDescription::Find(record.format), &record);
        EXPECT_EQ(PixFmtDescription::Find(record.name), &record);
    }
}

TEST(PixFmt, RectanglesBeginAtWholeChromaSamples) {
    auto const aligned = [](PixFmt format, std::uint32_t x, std::uint32_t y) {
        return PixFmtDescription::Find(format)->IsAligned(x, y);
    };
    EXPECT_TRUE(aligned(PixFmt::YUV420P, 2, 4));
    EXPECT_FALSE(aligned(PixFmt::YUV420P, 1, 0));
    EXPECT_FALSE(aligned(PixFmt::YUV420P, 0, 1));
    EXPECT_TRUE(aligned(PixFmt::YUV422P, 2, 1));
    EXPECT_TRUE(aligned(PixFmt::YUV440P, 1, 2));
    EXPECT_FALSE(aligned(PixFmt::YUV440P, 1, 1));
    EXPECT_FALSE(aligned(PixFmt::YUYV422, 1, 0));
    EXPECT_FALSE(aligned(PixFmt::UYYVYY411, 2, 0));
    EXPECT_TRUE(aligned(PixFmt::YUVA444P, 1, 1));
    EXPECT_TRUE(aligned(PixFmt::PAL8, 3, 5));
}

} // namespace
} // namespace Velnor
