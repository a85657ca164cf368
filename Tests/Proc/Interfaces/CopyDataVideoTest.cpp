#include "Proc/Interfaces/ProcException.h"
#include "Tests/Support/FakePicture.h"
#include "Tests/Support/Refusal.h"

#include <gtest/gtest.h>

#include <climits>

namespace Velnor::Proc {
namespace {

using Tests::FakePicture;

intrusive_ptr<FakePicture> Picture(PixFmt format, std::uint32_t width, std::uint32_t height, unsigned char value) {
    auto picture = MakeShared<FakePicture>(format, width, height);
    for (unsigned char plane = 0; plane < GetPlanesCount(*picture); ++plane) picture->Paint(plane, value);
    return picture;
}

std::string Refusal(ConstVideoHandle const& source, VideoHandle const& target, int x, int y) {
    return Testing::RefusalOf([&] { CopyDataVideo(source, target, x, y); });
}

TEST(CopyDataVideo, LaysTheSourceOverAndCutsWhatFallsOutside) {
    auto const source = Picture(PixFmt::GRAY8, 2, 2, 0);
    for (unsigned char i = 0; i < 4; ++i) *source->GetMutablePlane(0).GetOffsetPtr(i % 2, i / 2) = i;
    auto const copied = [&](int x, int y) {
        auto const target = Picture(PixFmt::GRAY8, 3, 2, 9);
        CopyDataVideo(source, target, x, y);
        EXPECT_TRUE(target->AreGuardsWhole());
        return target->Read(0);
    };
    using Samples = std::vector<int>;
    EXPECT_EQ(copied(0, 0), (Samples{0, 1, 9, 2, 3, 9}));
    EXPECT_EQ(copied(2, 1), (Samples{9, 9, 9, 9, 9, 0}));
    EXPECT_EQ(copied(-1, -1), (Samples{3, 9, 9, 9, 9, 9}));
    for (int away : {3, -2, INT_MAX, INT_MIN}) EXPECT_EQ(copied(away, 0), Samples(6, 9)) << away;
    EXPECT_EQ(copied(0, INT_MIN), Samples(6, 9));
}

TEST(CopyDataVideo, EveryFormatIsCopiedWholeWithoutTouchingPadding) {
    for (PixFmtDescription const& format : PixFmtDescription::GetAll()) {
        SCOPED_TRACE(format.name);
        auto const source = Picture(format.format, 7, 5, 1);
        auto const target = Picture(format.format, 7, 5, 2);
        CopyDataVideo(source, target, 0, 0);
        for (unsigned char plane = 0; plane < GetPlanesCount(*target); ++plane)
            EXPECT_EQ(target->Read(plane), source->Read(plane)) << int(plane);
        EXPECT_TRUE(target->AreGuardsWhole());
    }
}

TEST(CopyDataVideo, ChromaFollowsThePlaceAndIsNeverCut) {
    auto const source = Picture(PixFmt::YUV420P, 2, 2, 1);
    auto const target = Picture(PixFmt::YUV420P, 4, 4, 9);
    EXPECT_EQ(Refusal(source, target, 1, 2), "Position 1, 2 cuts a chroma sample of format yuv420p.");
    EXPECT_EQ(target->Read(0), std::vector<int>(16, 9));
    CopyDataVideo(source, target, 2, 0);
    EXPECT_EQ(target->Read(0), (std::vector<int>{9, 9, 1, 1, 9, 9, 1, 1, 9, 9, 9, 9, 9, 9, 9, 9}));
    EXPECT_EQ(target->Read(1), (std::vector<int>{9, 1, 9, 9}));
    EXPECT_NE(Refusal(source, target, -1, 0), "");
}

TEST(CopyDataVideo, RefusesUnlikeFormatsAndMissingPictures) {
    auto const grey = Picture(PixFmt::GRAY8, 2, 2, 1);
    auto const colour = Picture(PixFmt::BGR24, 2, 2, 1);
    EXPECT_EQ(Refusal(grey, colour, 0, 0), "Pictures to copy differ in format: gray8 into bgr24.");
    EXPECT_EQ(Refusal(nullptr, colour, 0, 0), "A picture is needed, the handle is null.");
    EXPECT_NE(Refusal(grey, nullptr, 0, 0), "");
    EXPECT_EQ(&AsVideo(DataHandle(grey)), grey.get());
    EXPECT_THROW(AsVideo(ConstDataHandle()), ProcException);
}

} // namespace
} // namespace Velnor::Proc
