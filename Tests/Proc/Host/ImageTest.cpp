#include "Proc/Host/Context.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/Refusal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Velnor::Proc {
namespace {

using namespace Testing;
using Bytes = std::vector<unsigned char>;

class ImageTest : public ::testing::Test {
protected:
    VideoHandle Make(PixFmt format, std::uint32_t width, std::uint32_t height) {
        return MakeNoise(*context, format, width, height);
    }

    ContextHandle const context = MakeShared<Context>();
};

std::string ErrorOfRectangle(IDataVideo& picture, std::uint32_t x, std::uint32_t y, std::uint32_t w, std::uint32_t h) {
    return RefusalOf([&] { picture.SetRectangle(x, y, w, h); });
}

TEST_F(ImageTest, AloneIsWrittenInPlaceAndSharedIsDuplicated) {
    VideoHandle const source = Make(PixFmt::YUV420P, 33, 21);
    Bytes const before = Samples(*source);
    unsigned char const* const place = source->GetPlane(2).GetData();
    EXPECT_FALSE(source->IsShared());
    EXPECT_EQ(source->GetMutablePlane(2).GetData(), place);

    for (CopyMode mode : {CopyMode::Share, CopyMode::Value, CopyMode::Independent}) {
        VideoHandle const copy = source->MakeCopy(mode);
        EXPECT_TRUE(source->IsShared() && copy->IsShared());
        EXPECT_EQ(copy->GetPlane(2).GetData(), place);
        copy->GetMutablePlane(0).GetRow(20)[32] ^= 255;
        EXPECT_FALSE(source->IsShared() || copy->IsShared());
        EXPECT_EQ(Samples(*source), before);
        Bytes expected = before;
        expected[20 * 33 + 32] ^= 255;
        EXPECT_EQ(Samples(*copy), expected);
    }
    VideoHandle copy = source->MakeCopy(CopyMode::Value);
    source->GetMutablePlane(0).GetRow(0)[0] ^= 255;
    EXPECT_EQ(Samples(*copy), before) << "the source was written";
    EXPECT_EQ(copy->GetPlane(2).GetData(), place) << "and moved, since the copy stays";
    EXPECT_EQ(copy->GetMutablePlane(2).GetData(), place);
}

TEST_F(ImageTest, FillOfASharedPictureLeavesTheOther) {
    VideoHandle const source = Make(PixFmt::RGB24, 5, 4);
    Bytes const before = Samples(*source);
    VideoHandle const copy = source->MakeCopy(CopyMode::Share);
    copy->Fill(Color(1, 2, 3, 4));
    EXPECT_EQ(Samples(*source), before);
    EXPECT_EQ(copy->GetPlane(0).GetRow(3)[12], 3);
    EXPECT_FALSE(source->IsShared());
}

TEST_F(ImageTest, AttributesGoWithValuesOnly) {
    VideoHandle const source = Make(PixFmt::GRAY8, 4, 4);
    source->SetTimeStamp(7);
    source->SetDuration(-9);
    source->SetAspect(4, 3);
    VideoHandle const shared = source->MakeCopy(CopyMode::Share);
    EXPECT_EQ(shared->GetTimeStamp(), 0);
    EXPECT_EQ(shared->GetDuration(), 0);
    EXPECT_EQ(shared->GetFrameFormat(), (FrameFormat{4, 4, 4, 3}));
    for (CopyMode mode : {CopyMode::Value, CopyMode::Independent}) {
        VideoHandle const copy = source->MakeCopy(mode);
        EXPECT_EQ(copy->GetTimeStamp(), 7);
        EXPECT_EQ(copy->GetDuration(), -9);
        EXPECT_EQ(copy->GetFrameFormat(), source->GetFrameFormat());
    }
    shared->CopyAttributes(*source);
    EXPECT_EQ(shared->GetTimeStamp(), 7);
    EXPECT_EQ(shared->GetDuration(), -9);

    std::set<std::uint64_t> const ids{source->GetId(), shared->GetId(), source->MakeCopy(CopyMode::Value)->GetId()};
    EXPECT_EQ(ids.size(), 3U);
}

TEST_F(ImageTest, ARectangleIsAViewInEveryFormat) {
    for (PixFmtDescription const& format : PixFmtDescription::GetAll()) {
        SCOPED_TRACE(format.name);
        VideoHandle const whole = Make(format.format, 23, 17);
        VideoHandle const part = whole->MakePart({8, 4, 7, 5});
        EXPECT_EQ(part->GetFrameFormat(), FrameFormat::Square(7, 5));
        EXPECT_EQ(part->GetRectangle(), (Rectangle{8, 4, 7, 5}));
        for (unsigned char i = 0; i < format.planesCount; ++i) {
            bool const isPalette = format.format == PixFmt::PAL8 && i == 1;
            PlaneLayout const layout = format.planes[i];
            ConstPlane const plane = part->GetPlane(i);
            EXPECT_EQ(plane.GetData(), isPalette
                                           ? whole->GetPlane(i).GetData()
                                           : whole->GetPlane(i).GetOffsetPtr(8U >> layout.shiftX, 4U >> layout.shiftY));
            EXPECT_EQ(plane.GetWidth(), static_cast<std::uint64_t>(format.GetPlanWidthSize(7, i)));
            EXPECT_EQ(plane.GetHeight(), static_cast<std::uint64_t>(format.GetPlanHeight(5, i)));
            EXPECT_EQ(plane.GetSampleBytes(), layout.bytes);
        }
        Bytes const samples = Samples(*part);
        Bytes const source = Samples(*whole);
        part->Detach();
        EXPECT_EQ(Samples(*part), samples);
        EXPECT_LT(part->GetMemorySize(), whole->GetMemorySize()) << "only the rectangle is duplicated";
        part->Fill(Color(9, 8, 7, 6));
        EXPECT_EQ(Samples(*whole), source);

        part->SetRectangle(4, 4, 3, 1);
        EXPECT_EQ(part->GetRectangle(), (Rectangle{12, 8, 3, 1})) << "in the picture it was first cut from";
    }
}

TEST_F(ImageTest, SamplesAreCalledByAnotherFormatOnlyWherePlanesAreAlike) {
    VideoHandle const picture = context->CreateImage(PixFmt::RGB24, FrameFormat::Square(5, 3));
    unsigned char const* const samples = picture->GetPlane(0).GetData();
    picture->Relabel(PixFmt::BGR24);
    EXPECT_EQ(picture->GetPixFmt(), PixFmt::BGR24);
    EXPECT_EQ(picture->GetPlane(0).GetData(), samples);
    for (PixFmt const other : {PixFmt::RGBA, PixFmt::GRAY8, PixFmt::YUV444P, PixFmt::NONE}) {
        EXPECT_THROW(picture->Relabel(other), ProcException);
        EXPECT_EQ(picture->GetPixFmt(), PixFmt::BGR24);
    }
}

TEST_F(ImageTest, ImpossibleRectanglesChangeNothing) {
    VideoHandle const picture = Make(PixFmt::YUV420P, 20, 10);
    Bytes const before = Samples(*picture);
    EXPECT_EQ(ErrorOfRectangle(*picture, 2, 2, 0, 4), "The rectangle of 0 x 4 pixels at 2, 2 is empty.");
    EXPECT_EQ(ErrorOfRectangle(*picture, 2, 2, 19, 4),
              "The rectangle of 19 x 4 pixels at 2, 2 reaches out of the picture, 20 x 10 pixels.");
    EXPECT_EQ(ErrorOfRectangle(*picture, 2, 2, 0xffffffffU, 4),
              "The rectangle of 4294967295 x 4 pixels at 2, 2 reaches out of the picture, 20 x 10 pixels.");
    EXPECT_EQ(ErrorOfRectangle(*picture, 2, 3, 4, 4),
              "The rectangle of 4 x 4 pixels at 2, 3 cuts a chroma sample of format yuv420p, one for 2 x 2 pixels.");
    EXPECT_EQ(Samples(*picture), before);
    EXPECT_EQ(picture->GetRectangle(), (Rectangle{0, 0, 20, 10}));
    EXPECT_NE(RefusalOf([&] { picture->MakePart({0, 9, 4, 2}); }), "");
    EXPECT_FALSE(picture->IsShared());
    Make(PixFmt::YUV444P, 20, 10)->SetRectangle(3, 3, 17, 7);
}

TEST_F(ImageTest, ImpossiblePicturesAreRefused) {
    auto const create = [&](PixFmt format, std::uint32_t width, std::uint32_t height) {
        return RefusalOf([&] { context->CreateImage(format, FrameFormat::Square(width, height)); });
    };
    EXPECT_EQ(create(static_cast<PixFmt>(9), 1, 1),
              "Pixel format 9 is unknown: pictures are of the 8-bit formats in PixFmt.");
    EXPECT_EQ(create(PixFmt::RGBA, 0, 5), "A picture of 0 x 5 pixels is impossible: each side is 1 to 1048576.");
    EXPECT_EQ(create(PixFmt::RGBA, 5, 1048577),
              "A picture of 5 x 1048577 pixels is impossible: each side is 1 to 1048576.");
    EXPECT_THROW(context->CreateImage(PixFmt::RGBA, FrameFormat::Square(1U << 20, 1U << 20)), std::bad_alloc);

    VideoHandle const grey = context->CreateImage(PixFmt::GRAY8, FrameFormat::Square(2, 2));
    EXPECT_EQ(RefusalOf([&] { grey->GetPlane(1); }), "Plane 1 does not exist: format gray8 has 1.");
    EXPECT_EQ(RefusalOf([&] { grey->GetMutablePlane(255); }), "Plane 255 does not exist: format gray8 has 1.");
}

TEST_F(ImageTest, PlanesOfOddSizesLieApartOnBoundaries) {
    for (PixFmtDescription const& format : PixFmtDescription::GetAll())
        for (std::uint32_t width : {1U, 3U, 65U}) {
            SCOPED_TRACE(std::string(format.name) + " " + std::to_string(width));
            VideoHandle const picture = Make(format.format, width, 7);
            unsigned char const* end = nullptr;
            std::uint64_t bytes = 0;
            for (unsigned char i = 0; i < format.planesCount; ++i) {
                ConstPlane const plane = picture->GetPlane(i);
                EXPECT_EQ(plane.GetWidth(),
                          static_cast<std::uint64_t>(format.GetPlanWidthSize(static_cast<int>(width), i)));
                EXPECT_EQ(reinterpret_cast<std::uintptr_t>(plane.GetData()) % 64, 0U);
                EXPECT_EQ(plane.GetStride() % 64, 0);
                EXPECT_GE(plane.GetStride(), static_cast<std::int64_t>(plane.GetWidth()));
                EXPECT_GE(plane.GetData(), end);
                end = plane.GetRow(plane.GetHeight());
                bytes += static_cast<std::uint64_t>(plane.GetStride()) * plane.GetHeight();
            }
            EXPECT_EQ(end, picture->GetPlane(0).GetData() + bytes);
            EXPECT_GE(picture->GetMemorySize(), bytes);
        }
}

/// All of the memory from the first row of plane 0 to the last row of the last plane.
std::pair<unsigned char*, unsigned char*> WholeMemory(IDataVideo& picture) {
    MutablePlane const last = picture.GetMutablePlane(static_cast<unsigned char>(GetPlanesCount(picture) - 1));
    return {picture.GetMutablePlane(0).GetData(), last.GetRow(last.GetHeight())};
}

TEST_F(ImageTest, FillPaintsTheRowsAndNothingElse) {
    Color const color(10, 200, 90, 77);
    for (PixFmtDescription const& format : PixFmtDescription::GetAll()) {
        SCOPED_TRACE(format.name);
        VideoHandle const picture = Make(format.format, 29, 11);
        auto const [begin, end] = WholeMemory(*picture);
        std::fill(begin, end, static_cast<unsigned char>(123)); // No component of the colour, nor its luma or chroma.
        picture->SetRectangle(4, 4, 17, 5);
        picture->Fill(color);
        ASSERT_EQ(picture->GetPlane(0).GetRow(0) >= begin && picture->GetPlane(0).GetRow(0) < end, true);

        bool const isYuv = format.model == ColorModel::Luma || format.model == ColorModel::Grey;
        std::vector<int> const values = isYuv ? std::vector<int>{color.y(), color.u(), color.v()}
                                              : std::vector<int>{color.GetRed(), color.GetGreen(), color.GetBlue()};
        for (std::size_t i = 0; i < format.componentsCount; ++i) {
            ComponentPlace const place = format.components[i];
            ConstPlane const plane = picture->GetPlane(place.plane);
            for (std::uint64_t y = 0; y < plane.GetHeight(); ++y)
                for (std::uint64_t x = place.offset; x < plane.GetWidth(); x += plane.GetSampleBytes())
                    ASSERT_EQ(plane.GetRow(y)[x], values[i]) << i << " at " << x << ", " << y;
        }
        std::ptrdiff_t painted = 0;
        for (unsigned char i = 0; i < format.planesCount; ++i)
            painted += static_cast<std::ptrdiff_t>(picture->GetPlane(i).GetWidth() * picture->GetPlane(i).GetHeight());
        EXPECT_EQ(end - begin - std::count(begin, end, 123), painted);
    }
}

TEST_F(ImageTest, FillKnowsTheBytesBesideTheComponents) {
    Color const color(10, 200, 90, 77);
    unsigned char const y = color.y(), u = color.u(), v = color.v();
    auto const pixels = [&](PixFmt format, unsigned char plane, std::size_t count) {
        VideoHandle const picture = Make(format, 4, 3);
        picture->Fill(color);
        unsigned char const* const row = picture->GetPlane(plane).GetRow(picture->GetPlane(plane).GetHeight() - 1);
        return Bytes(row, row + count);
    };
    EXPECT_EQ(pixels(PixFmt::YUYV422, 0, 8), (Bytes{y, u, y, v, y, u, y, v}));
    EXPECT_EQ(pixels(PixFmt::UYVY422, 0, 4), (Bytes{u, y, v, y}));
    EXPECT_EQ(pixels(PixFmt::UYYVYY411, 0, 6), (Bytes{u, y, y, v, y, y}));
    EXPECT_EQ(pixels(PixFmt::NV21, 1, 4), (Bytes{v, u, v, u}));
    EXPECT_EQ(pixels(PixFmt::YA8, 0, 4), (Bytes{y, 77, y, 77}));
    EXPECT_EQ(pixels(PixFmt::XRGB, 0, 8), (Bytes{255, 90, 200, 10, 255, 90, 200, 10}));
    EXPECT_EQ(pixels(PixFmt::RGBX, 0, 4), (Bytes{90, 200, 10, 255}));
    EXPECT_EQ(pixels(PixFmt::BGRA, 0, 4), (Bytes{10, 200, 90, 77}));
    EXPECT_EQ(pixels(PixFmt::GBRAP, 3, 2), (Bytes{77, 77}));
    EXPECT_EQ(pixels(PixFmt::YUVA420P, 3, 2), (Bytes{77, 77}));
    EXPECT_EQ(pixels(PixFmt::PAL8, 0, 4), (Bytes{0, 0, 0, 0}));
    Bytes const palette = pixels(PixFmt::PAL8, 1, 1024);
    EXPECT_EQ(Bytes(palette.begin(), palette.begin() + 4), (Bytes{90, 200, 10, 77}));
    EXPECT_EQ(Bytes(palette.end() - 4, palette.end()), (Bytes{90, 200, 10, 77}));
}

struct Owner : IRefCountable {
    explicit Owner(bool& endFlag) : ended(endFlag) {}
    ~Owner() override { ended = true; }
    bool& ended;
};

TEST_F(ImageTest, WrappedMemoryIsReadInPlaceAndNeverWritten) {
    constexpr std::uint32_t WIDTH = 5, HEIGHT = 4, STRIDE = 23;
    Bytes memory(STRIDE * HEIGHT + 64);
    for (std::size_t i = 0; i < memory.size(); ++i) memory[i] = static_cast<unsigned char>(i * 7 + 1);
    Bytes const before = memory;
    bool ended = false;
    VideoHandle picture;
    std::vector<ConstPlane> const planes{ConstPlane(memory.data() + 32, STRIDE, WIDTH * 3, HEIGHT, 3, true)};
    context->WrapImage(&picture, PixFmt::BGR24, FrameFormat::Square(WIDTH, HEIGHT), planes, MakeShared<Owner>(ended));

    EXPECT_TRUE(picture->IsShared());
    EXPECT_EQ(picture->GetPlane(0).GetStride(), -23);
    EXPECT_EQ(picture->GetPlane(0).GetRow(0), memory.data() + 32 + 3 * STRIDE);
    VideoHandle const part = picture->MakePart({1, 1, 2, 2});
    Bytes const samples = Samples(*part);
    EXPECT_EQ(samples[0], before[32 + 2 * STRIDE + 3]);

    VideoHandle const independent = picture->MakeCopy(CopyMode::Independent);
    Bytes expected = Samples(*picture);
    picture->GetMutablePlane(0).GetRow(0)[0] ^= 255;
    expected[0] ^= 255;
    EXPECT_EQ(Samples(*picture), expected);
    EXPECT_FALSE(ended) << "the part still reads the caller's memory";
    part->Fill(Color());
    EXPECT_TRUE(ended);
    EXPECT_EQ(memory, before);
    expected[0] ^= 255;
    memory.assign(memory.size(), 0);
    EXPECT_EQ(Samples(*independent), expected) << "an independent copy holds samples of its own";
}

TEST_F(ImageTest, WrapTakesOnlyWhatMakesAPicture) {
    Bytes const memory(100);
    ConstPlane const luma(memory.data(), 8, 8, 6, 1, false);
    ConstPlane const chroma(memory.data(), 4, 4, 3, 1, false);
    auto const wrap = [&](std::vector<ConstPlane> const& planes) {
        VideoHandle picture;
        return RefusalOf(
            [&] { context->WrapImage(&picture, PixFmt::YUV420P, FrameFormat::Square(7, 5), planes, nullptr); });
    };
    EXPECT_EQ(wrap({luma, chroma, chroma}), "");
    EXPECT_EQ(wrap({luma}), "A picture in format yuv420p has 3 planes, not 1.");
    EXPECT_EQ(wrap({luma, chroma, ConstPlane()}), "A picture in format yuv420p needs plane 2, it is null.");
    EXPECT_EQ(wrap({luma, ConstPlane(memory.data(), 4, 3, 3, 1, false), chroma}),
              "A picture in format yuv420p, 7 x 5 pixels, needs a plane 1 of 4 x 3 bytes, not 3 x 3 bytes.");
}

TEST_F(ImageTest, ExtraAlphaIsCopiedCroppedAndShared) {
    VideoHandle const picture = Make(PixFmt::YUV420P, 9, 7);
    VideoHandle const mask = Make(PixFmt::GRAY8, 12, 8);
    EXPECT_FALSE(picture->HasAlpha());
    EXPECT_TRUE(picture->GetExtraAlpha(0).IsEmpty());
    picture->SetPlane(0, mask->GetPlane(0));
    picture->SetPlane(1, mask->GetPlane(0));
    EXPECT_TRUE(picture->HasAlpha());
    EXPECT_EQ(picture->GetExtraAlpha(0).GetWidth(), 9U);
    EXPECT_EQ(picture->GetExtraAlpha(0).GetHeight(), 7U);
    EXPECT_EQ(picture->GetExtraAlpha(1).GetWidth(), 5U);
    EXPECT_EQ(picture->GetExtraAlpha(1).GetHeight(), 4U);
    EXPECT_TRUE(picture->GetExtraAlpha(2).IsEmpty());

    VideoHandle const part = picture->MakePart({4, 2, 3, 4});
    EXPECT_EQ(part->GetExtraAlpha(0).GetWidth(), 3U);
    EXPECT_EQ(part->GetExtraAlpha(1).GetHeight(), 2U);
    for (std::uint64_t y = 0; y < 4; ++y)
        for (std::uint64_t x = 0; x < 3; ++x)
            EXPECT_EQ(part->GetExtraAlpha(0).GetRow(y)[x], mask->GetPlane(0).GetRow(y + 2)[x + 4]);
    EXPECT_EQ(part->GetExtraAlpha(1).GetRow(1)[1], mask->GetPlane(0).GetRow(2)[3]);

    unsigned char const kept = mask->GetPlane(0).GetRow(2)[4];
    mask->Fill(Color::Black(Color::Opacity::Opaque));
    picture->SetPlane(0, ConstPlane());
    EXPECT_TRUE(picture->GetExtraAlpha(0).IsEmpty());
    EXPECT_TRUE(picture->HasAlpha());
    picture->DropExtraAlpha();
    EXPECT_FALSE(picture->HasAlpha());
    part->Fill(Color());
    EXPECT_EQ(part->GetExtraAlpha(0).GetRow(0)[0], kept) << "neither source nor writing reaches a copy's extra alpha";
}

TEST_F(ImageTest, ExtraAlphaThatDoesNotFitIsRefused) {
    VideoHandle const picture = Make(PixFmt::YUV422P, 9, 7);
    auto const set = [&](unsigned char index, PixFmt format, std::uint32_t width, std::uint32_t height) {
        VideoHandle const mask = Make(format, width, height);
        return RefusalOf([&] { picture->SetPlane(index, mask->GetPlane(0)); });
    };
    EXPECT_EQ(set(0, PixFmt::GRAY8, 8, 7), "Extra alpha plane 0 needs at least 9 x 7 samples, not 8 x 7 samples.");
    EXPECT_EQ(set(1, PixFmt::GRAY8, 5, 6), "Extra alpha plane 1 needs at least 5 x 7 samples, not 5 x 6 samples.");
    EXPECT_EQ(set(0, PixFmt::RGBA, 9, 7), "Extra alpha plane 0 needs one byte a sample, not 4.");
    EXPECT_EQ(set(2, PixFmt::GRAY8, 9, 7), "Extra alpha plane 2 does not exist: there are 0 and 1.");
    EXPECT_FALSE(picture->HasAlpha());
    EXPECT_EQ(set(1, PixFmt::GRAY8, 5, 7), "");
}

TEST_F(ImageTest, MemoryComesBackAtTheLastReference) {
    FrameFormat const frame = FrameFormat::Square(400, 300);
    VideoHandle first = context->CreateImage(PixFmt::RGBA, frame);
    unsigned char const* const place = first->GetPlane(0).GetData();
    std::uint64_t const used = context->GetMemoryUsed();
    EXPECT_GE(used, 400U * 300U * 4U);
    VideoHandle copy = first->MakeCopy(CopyMode::Independent);
    EXPECT_EQ(context->GetMemoryUsed(), used);
    first.reset();
    EXPECT_EQ(context->GetMemoryPooled(), 0U);
    copy.reset();
    EXPECT_EQ(context->GetMemoryUsed(), 0U);
    EXPECT_EQ(context->GetMemoryPooled(), used);
    EXPECT_EQ(context->CreateImage(PixFmt::RGBA, frame)->GetPlane(0).GetData(), place);
    context->ReleaseMemory();
    EXPECT_EQ(context->GetMemoryPooled(), 0U);
}

TEST_F(ImageTest, ThreadsCopyAndWriteTheSamePicture) {
    VideoHandle source = Make(PixFmt::YUVA420P, 61, 43);
    Bytes const before = Samples(*source);
    std::vector<std::thread> threads;
    for (int id = 0; id < 4; ++id)
        threads.emplace_back([&before, &source, own = source->MakeCopy(CopyMode::Value)]() mutable {
            for (int i = 0; i < 50; ++i) {
                VideoHandle const part = source->MakePart({4, 2, 20, 20});
                part->Fill(Color::White(Color::Opacity::Opaque));
                VideoHandle const copy = source->MakeCopy(CopyMode::Independent);
                copy->GetMutablePlane(3).GetRow(0)[0] ^= 1;
            }
            // The copies of all threads are written at the same time, the last one in place.
            own->GetMutablePlane(0).GetRow(42)[60] ^= 1;
            Bytes changed = before;
            changed[42 * 61 + 60] ^= 1;
            EXPECT_EQ(Samples(*own), changed);
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(Samples(*source), before);
    EXPECT_FALSE(source->IsShared());
}

TEST_F(ImageTest, TheLastOwnerWritesInPlaceWhileOthersLeave) {
    for (int round = 0; round < 50; ++round) {
        VideoHandle source = Make(PixFmt::GRAY8, 64, 8);
        VideoHandle copy = source->MakeCopy(CopyMode::Value);
        Bytes const before = Samples(*source);
        std::thread other([&] { copy->GetMutablePlane(0).GetRow(0)[0] ^= 255; });
        source->GetMutablePlane(0).GetRow(7)[63] ^= 255;
        other.join();
        EXPECT_EQ(copy->GetPlane(0).GetRow(7)[63], before.back());
        EXPECT_EQ(source->GetPlane(0).GetRow(0)[0], before.front());
    }
}

} // namespace
} // namespace Velnor::Proc
