#include "Proc/Settings/SettingsEffectFaceDetector.h"
#include "Tests/Proc/Effects/Photo/PhotoEffectTest.h"

#include "Proc/Settings/SettingsResizer.h"

#include <gmock/gmock.h>

#include <numeric>

namespace Velnor::Proc {
namespace {

using namespace Testing;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using S = SettingsEffectFaceDetector;

Face::Point Middle(std::span<Face::Point const> points) {
    Face::Point sum;
    for (Face::Point const& point : points) {
        sum.x += point.x / static_cast<float>(points.size());
        sum.y += point.y / static_cast<float>(points.size());
    }
    return sum;
}

class FaceDetectorTest : public PhotoEffectTest<S> {
protected:
    std::vector<Face> Find(DataHandle const& picture, int smallest = 40) {
        S settings;
        settings.SetSmallestFace(smallest);
        Apply(settings, picture);
        return Result().GetFaces();
    }
    VideoHandle Scale(VideoHandle const& picture, double factor) {
        auto const resizer = host.GetFactory()->CreateOneInputEffect(SettingsResizer::CLASS_ID, ImplNames::DEFAULT);
        SettingsResizer settings;
        settings.SetMode(SettingsResizer::BY_FACTOR);
        settings.SetFactor(factor);
        resizer->SetSettings(settings);
        DataHandle result = picture->MakeCopy(CopyMode::Value);
        resizer->ProcessData(result);
        return VideoHandle(&AsVideo(result));
    }
    static void ExpectNear(Face const& found, Face const& wanted, double scale, double tolerance) {
        for (std::size_t i = 0; i < Face::LANDMARKS_COUNT; ++i) {
            EXPECT_NEAR(found.landmarks[i].x, wanted.landmarks[i].x * scale, tolerance) << i;
            EXPECT_NEAR(found.landmarks[i].y, wanted.landmarks[i].y * scale, tolerance) << i;
        }
    }
};

TEST_F(FaceDetectorTest, FindsTheOneFaceOfThePortraitWithItsParts) {
    VideoHandle const portrait = ReadSample("astronaut.png");
    std::vector<unsigned char> const before = Samples(*portrait);
    std::vector<Face> const faces = Find(portrait);
    EXPECT_EQ(Samples(*portrait), before);
    ASSERT_THAT(faces, SizeIs(1));
    Face const& face = faces[0];
    EXPECT_NEAR(face.left + face.width / 2.0, 222, 12);
    EXPECT_NEAR(face.top + face.height / 2.0, 122, 12);
    EXPECT_NEAR(face.width, 90, 20);

    // Read off the photograph by eye.
    auto const expectMiddle = [&](Face::Part const& part, double x, double y) {
        Face::Point const middle = Middle(face.Get(part));
        EXPECT_NEAR(middle.x, x, 5) << part.first;
        EXPECT_NEAR(middle.y, y, 5) << part.first;
    };
    expectMiddle(Face::LEFT_EYE, 203, 101);
    expectMiddle(Face::RIGHT_EYE, 247, 103);
    expectMiddle(Face::OUTER_LIPS, 223, 146);
    auto const y = [&](Face::Part const& part) { return Middle(face.Get(part)).y; };
    EXPECT_LT(y(Face::LEFT_BROW), y(Face::LEFT_EYE));
    EXPECT_LT(y(Face::RIGHT_BROW), y(Face::RIGHT_EYE));
    EXPECT_LT(y(Face::RIGHT_EYE), y(Face::NOSE));
    EXPECT_LT(y(Face::NOSE), y(Face::INNER_LIPS));
    EXPECT_NEAR(face.Get(Face::JAW)[8].x, 225, 5); // the chin
    EXPECT_NEAR(face.Get(Face::JAW)[8].y, 178, 5);
    EXPECT_LT(face.Get(Face::JAW).front().x, face.Get(Face::JAW).back().x);
}

TEST_F(FaceDetectorTest, ForgetsFacesWhereThereAreNone) {
    EXPECT_THAT(Find(ReadSample("astronaut.png")), SizeIs(1));
    for (std::string const name : {"chelsea.png", "coffee.png", "rocket.jpg"})
        EXPECT_THAT(Find(ReadSample(name)), SizeIs(0)) << name;
    EXPECT_THAT(Find(MakeNoise(context, PixFmt::RGB24, 1, 1), 20), SizeIs(0));
    EXPECT_THAT(Find(MakeNoise(context, PixFmt::GRAY8, 300, 2), 20), SizeIs(0));
}

TEST_F(FaceDetectorTest, LandmarksFollowTheScaleOfThePicture) {
    VideoHandle const portrait = ReadSample("astronaut.png");
    Face const face = Find(portrait).at(0);
    // Searched at a reduced size, and the face itself reduced for its landmarks.
    std::vector<Face> const large = Find(Scale(portrait, 5));
    ASSERT_THAT(large, SizeIs(1));
    ExpectNear(large[0], face, 5, 5 * 4);
    EXPECT_THAT(Find(Scale(portrait, 0.5), 100), SizeIs(0));
    std::vector<Face> const small = Find(Scale(portrait, 0.5), 30);
    ASSERT_THAT(small, SizeIs(1));
    ExpectNear(small[0], face, 0.5, 0.5 * 6);
}

TEST_F(FaceDetectorTest, TheLargestFaceComesFirst) {
    VideoHandle const portrait = ReadSample("astronaut.png");
    VideoHandle const half = Scale(portrait, 0.6);
    VideoHandle const both = context.CreateImage(portrait->GetPixFmt(), FrameFormat::Square(900, 520));
    both->Fill(Color(128, 128, 128, 255));
    CopyDataVideo(half, both, 0, 100);
    CopyDataVideo(portrait, both, 330, 0);
    std::vector<Face> const faces = Find(both);
    ASSERT_THAT(faces, SizeIs(2));
    EXPECT_GT(faces[0].left, 330);
    EXPECT_LT(faces[1].left, 330);
    EXPECT_GT(faces[0].width, faces[1].width);
}

TEST_F(FaceDetectorTest, ReadsRowsInAnyOrderAndNoByteBeyondThem) {
    VideoHandle const head = ReadSample("astronaut.png")->MakePart({120, 0, 220, 260});
    VideoHandle const grey = Paint(context, PixFmt::GRAY8, 220, 260,
                                   [&](std::uint32_t x, std::uint32_t y) { return ReadColour(*head, x, y); });
    std::vector<Face> const faces = Find(grey);
    ASSERT_THAT(faces, SizeIs(1));
    for (bool const isBottomUp : {false, true}) {
        FencedPicture const fenced(*grey, isBottomUp);
        EXPECT_EQ(Find(fenced.Wrap(context), 80), Find(grey, 80));
        EXPECT_EQ(Find(fenced.Wrap(context)), faces);
    }
}

TEST_F(FaceDetectorTest, SaysWhatIsWrongWithAModel) {
    VideoHandle const portrait = ReadSample("astronaut.png");
    S settings;
    settings.SetModel((folder.GetPath() / "absent.dat").string());
    EXPECT_THAT(Refusal(settings, portrait), HasSubstr("There is no landmark model " + settings.GetModel()));
    EXPECT_THAT(Refusal(settings, portrait), HasSubstr("libdlib-data"));
    for (std::string const content : {"", "no model", "\x01\x01\x01\x7f\x7f\x7f\x7f\x7f"}) {
        settings.SetModel(WriteFile("broken.dat", content));
        EXPECT_THAT(Refusal(settings, portrait), HasSubstr("The landmark model " + settings.GetModel()));
        EXPECT_THAT(Result().GetFaces(), SizeIs(0));
    }
    EXPECT_THAT(Find(portrait), SizeIs(1));
}

} // namespace
} // namespace Velnor::Proc
