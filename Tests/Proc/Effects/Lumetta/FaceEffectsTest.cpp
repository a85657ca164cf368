// The effects on faces, with a detector whose faces the test gives, and once on a portrait with the host's own.

#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Effects/Lumetta/Kernels/Faces/FaceGeometry.h"
#include "Proc/Effects/Lumetta/Kernels/Shapes/DrawContour.h"
#include "Proc/Host/PictureFile.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsEffectAligner.h"
#include "Proc/Settings/SettingsEffectDrawFace.h"
#include "Proc/Settings/SettingsEffectEyeExtending.h"
#include "Proc/Settings/SettingsEffectFaceDetector.h"
#include "Proc/Settings/SettingsEffectFaceMask.h"
#include "Proc/Settings/SettingsEffectFaceThinning.h"
#include "Proc/Settings/SettingsEffectRemapping.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/Places.h"
#include "Tests/Support/RecordingFactory.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(Aligner)
VELNOR_DECLARE_EFFECT(DrawFace)
VELNOR_DECLARE_EFFECT(EyeExtending)
VELNOR_DECLARE_EFFECT(FaceMask)
VELNOR_DECLARE_EFFECT(FaceThinning)
namespace {

using namespace Testing;
using Bytes = std::vector<unsigned char>;

constexpr std::uint32_t WIDTH = 200, HEIGHT = 220;

void Ring(Face& face, Face::Part const& part, float x, float y, float radiusX, float radiusY) {
    for (std::size_t i = 0; i < part.count; ++i) {
        // From the left over the top, as the annotation goes.
        float const angle =
            std::numbers::pi_v<float> * (1 + 2 * static_cast<float>(i) / static_cast<float>(part.count));
        face.landmarks[part.first + i] = {x + radiusX * std::cos(angle), y + radiusY * std::sin(angle)};
    }
}

/// An upright face, 100 pixels wide, its eyes 44 pixels apart and level, its axis at x = 100.
Face MakeFace() {
    Face face;
    face.left = 50, face.top = 60, face.width = 100, face.height = 110;
    for (std::size_t i = 0; i < Face::JAW.count; ++i) {
        float const angle = std::numbers::pi_v<float> * (1 - static_cast<float>(i) / 16);
        face.landmarks[i] = {100 + 50 * std::cos(angle), 100 + 80 * std::sin(angle)};
    }
    for (std::size_t i = 0; i < 5; ++i) {
        face.landmarks[Face::LEFT_BROW.first + i] = {66 + 6 * static_cast<float>(i), 80};
        face.landmarks[Face::RIGHT_BROW.first + i] = {110 + 6 * static_cast<float>(i), 80};
    }
    for (std::size_t i = 0; i < Face::NOSE.count; ++i)
        face.landmarks[Face::NOSE.first + i] = {100, 95 + 4 * static_cast<float>(i)};
    Ring(face, Face::LEFT_EYE, 78, 100, 10, 5);
    Ring(face, Face::RIGHT_EYE, 122, 100, 10, 5);
    Ring(face, Face::OUTER_LIPS, 100, 150, 20, 8);
    Ring(face, Face::INNER_LIPS, 100, 150, 12, 3);
    return face;
}

class FaceEffects : public ::testing::Test {
protected:
    using Create = intrusive_ptr<IEffect> (*)(FactoryHandle const&, ContextHandle const&);

    /// Runs an effect whose sub-effect `detector` finds the given faces.
    DataHandle Run(Create create, int detector, Settings const& settings, DataHandle const& picture) {
        effect = create(MakeShared<RecordingFactory>(recorder), context);
        recorder.findings[detector] = [this](Settings& found) {
            dynamic_cast<SettingsEffectFaceDetector&>(found).SetFaces(faces);
        };
        effect->SetSettings(settings);
        recorder.Take();
        std::vector<DataHandle> const inputs{picture};
        DataHandle const result = effect->ProcessData(inputs);
        return result ? result : picture;
    }
    template <class S>
    int FacesFound() const {
        return dynamic_cast<S const&>(effect->GetSettingsBase()).GetFacesFound();
    }
    VideoHandle Grey() { return MakeFlat(*context, PixFmt::RGBA, WIDTH, HEIGHT, {90, 90, 90, 77}); }

    ContextHandle const context = CreateContext();
    Recorder recorder;
    intrusive_ptr<IEffect> effect;
    std::vector<Face> faces{MakeFace()};
};

unsigned char At(DataHandle const& mask, std::uint64_t x, std::uint64_t y) {
    return *AsVideo(mask).GetPlane(0).GetOffsetPtr(x, y);
}

TEST(EyeMap, GrowsAnIrisEvenlyAndEndsBetweenTheEyes) {
    Kernels::EyeMap const map({MakeFace()}, 0.25F);
    EXPECT_EQ(map(78, 100), std::pair(78.0F, 100.0F));
    auto const [right, y0] = map(82, 100);
    auto const [x0, down] = map(78, 104);
    EXPECT_NEAR(right - 78, down - 100, 1e-4); // round stays round
    EXPECT_NEAR(right - 78, 4 * 0.77, 0.02);
    EXPECT_EQ(y0, 100.0F);
    EXPECT_EQ(x0, 78.0F);
    for (auto const& [x, y] : {std::pair{100, 100}, {78, 79}, {55, 100}, {144, 100}, {0, 0}})
        EXPECT_EQ(map(x, y), std::pair(static_cast<float>(x), static_cast<float>(y))) << x << " " << y;
    float last = -1;
    for (int x = 50; x < 150; ++x) { // Nothing folds.
        EXPECT_GT(map(x, 100).first, last);
        last = map(x, 100).first;
    }
}

TEST(JawMap, MovesBothCheeksInAlikeAndLeavesTheRest) {
    Kernels::JawMap const map({MakeFace()}, 0.1F);
    auto const shift = [&](int x, int y) { return map(x, y).first - static_cast<float>(x); };
    EXPECT_LT(shift(60, 150), -3); // Reads farther out, so what is there comes in.
    EXPECT_NEAR(shift(60, 150), -shift(140, 150), 1e-3);
    EXPECT_NEAR(map(60, 150).second, 150, 1e-3);
    EXPECT_NEAR(shift(100, 150), 0, 1e-3);
    EXPECT_EQ(shift(20, 150), 0);
    EXPECT_EQ(shift(100, 60), 0);
    for (int y = 80; y < 200; y += 10)
        for (int x = 1; x < 200; ++x) EXPECT_GT(map(x, y).first, map(x - 1, y).first) << x << " " << y;
}

TEST(DrawContour, CoversAPixelByItsShareAndStaysInsideThePlane) {
    Bytes bytes(12 * 8, 0);
    MutablePlane const plane(bytes.data(), 12, 10, 8); // Two bytes between rows are not the plane's.
    Kernels::Contour const square{{{1.5F, 1.5F}, {5, 1.5F}, {5, 5.5F}, {1.5F, 5.5F}}, true, true, 0};
    Kernels::DrawContour(plane, square, 0);
    EXPECT_EQ(plane.GetRow(3)[1], 0);
    EXPECT_EQ(plane.GetRow(3)[2], 255);
    EXPECT_EQ(plane.GetRow(3)[5], 128); // The outline halves it.
    EXPECT_EQ(plane.GetRow(3)[6], 0);
    Kernels::DrawContour(plane, {{{-50, 3}, {90, 900}}, false, false, 2}, 3);
    Kernels::DrawContour(plane, {{{1e9F, -1e9F}}, false, false, 2}, 3);
    for (std::size_t y = 0; y < 8; ++y) EXPECT_EQ(bytes[y * 12 + 10] + bytes[y * 12 + 11], 0);
    EXPECT_EQ(plane.GetRow(3)[2], 255); // Never lowered.
}

TEST_F(FaceEffects, WithoutAFaceThePictureKeepsItsBytesAndTheMaskIsEmpty) {
    faces.clear();
    VideoHandle const picture = MakeNoise(*context, PixFmt::YUV420P, 33, 21);
    Bytes const before = Samples(*picture);
    auto const expectSame = [&](Create create, int detector, Settings const& settings) {
        EXPECT_EQ(Run(create, detector, settings, picture), picture);
        EXPECT_EQ(Samples(*picture), before);
        EXPECT_EQ(recorder.Take(), std::vector<std::string>{"run " + std::to_string(detector)});
        recorder = {};
    };
    expectSame(CreateAligner, 1, SettingsEffectAligner());
    expectSame(CreateEyeExtending, 1, SettingsEffectEyeExtending());
    expectSame(CreateFaceThinning, 1, SettingsEffectFaceThinning());
    expectSame(CreateDrawFace, 2, SettingsEffectDrawFace()); // 1 is the converter back.
    EXPECT_EQ(FacesFound<SettingsEffectDrawFace>(), 0);
    recorder = {};
    DataHandle const mask = Run(CreateFaceMask, 1, SettingsEffectFaceMask(), picture);
    EXPECT_EQ(mask->GetPixFmt(), PixFmt::GRAY8);
    EXPECT_EQ(Samples(AsVideo(mask)), Bytes(33 * 21, 0));
}

TEST_F(FaceEffects, MasksHaveThePartsChosen) {
    SettingsEffectFaceMask settings;
    settings.SetFeather(0);
    DataHandle const skin = Run(CreateFaceMask, 1, settings, Grey());
    EXPECT_EQ(FacesFound<SettingsEffectFaceMask>(), 1);
    EXPECT_EQ(At(skin, 100, 125), 255);
    EXPECT_EQ(At(skin, 100, 60), 255); // The forehead.
    for (auto const& [x, y] : {std::pair{78U, 100U}, {122U, 100U}, {100U, 150U}, {78U, 80U}, {10U, 100U}, {100U, 200U}})
        EXPECT_EQ(At(skin, x, y), 0) << x << " " << y;
    settings.SetSkin(false);
    settings.SetEyes(true);
    settings.SetBrows(true);
    recorder = {};
    DataHandle const parts = Run(CreateFaceMask, 1, settings, Grey());
    EXPECT_EQ(At(parts, 78, 100), 255);
    EXPECT_EQ(At(parts, 122, 80), 255);
    EXPECT_EQ(At(parts, 100, 150), 0);
    EXPECT_EQ(At(parts, 100, 125), 0);
}

TEST_F(FaceEffects, DrawsInTheColourAndKeepsAlpha) {
    SettingsEffectDrawFace settings;
    settings.SetContours(false);
    settings.SetLineColor(Color(0, 0, 255, 255)); // Red.
    settings.SetLineWidth(1);
    VideoHandle const picture = Grey();
    DataHandle const result = Run(CreateDrawFace, 2, settings, picture);
    ConstPlane const plane = AsVideo(result).GetPlane(0);
    auto const pixel = [&](std::uint64_t x, std::uint64_t y) {
        unsigned char const* const bytes = plane.GetOffsetPtr(x, y);
        return Bytes(bytes, bytes + 4);
    };
    for (auto const& [x, y] : {std::pair{50U, 100U}, {149U, 100U}, {100U, 60U}, {100U, 169U}})
        EXPECT_EQ(pixel(x, y), (Bytes{255, 0, 0, 77})) << x << " " << y;
    EXPECT_EQ(pixel(100, 100), (Bytes{90, 90, 90, 77}));
    EXPECT_EQ(FacesFound<SettingsEffectDrawFace>(), 1);
}

TEST_F(FaceEffects, TheAlignerReadsTheEyesAtTheirChosenPlaces) {
    // A face turned by a right angle: the eyes are one above the other.
    Face& face = faces[0];
    for (Face::Point& point : face.landmarks) point = {100 - (point.y - 100), 100 + (point.x - 100)};
    SettingsEffectAligner settings;
    settings.SetWidth(100);
    settings.SetHeight(100);
    settings.SetEyesDistance(50);
    SettingsEffectRemapping::Map map;

    recorder.findings[2] = [&](Settings& given) { map = dynamic_cast<SettingsEffectRemapping&>(given).GetMap(); };
    DataHandle const result = Run(CreateAligner, 1, settings, Grey());
    EXPECT_EQ(result->GetFrameFormat().width, WIDTH); // The largest square; the resizer here does nothing.
    EXPECT_EQ(result->GetFrameFormat().height, WIDTH);
    ASSERT_TRUE(map);
    // Half of 200 pixels apart, about (99.5, 83.6).
    auto const [middleX, middleY] = map(99, 84);
    auto const [rightX, rightY] = map(149, 84);
    EXPECT_NEAR(middleX, 100, 0.5);
    EXPECT_NEAR(middleY, 100, 0.5);
    EXPECT_NEAR(rightX, middleX, 0.01);
    EXPECT_NEAR(rightY - middleY, 22, 0.01);
}

TEST(FaceEffectsOnAPortrait, ChangeTheFaceAlone) {
    StandardHost host;
    host.LoadPlugin(Testing::LUMETTA_FILE);
    LoadedPicture const photo =
        ReadPicture(std::string(Testing::SOURCE_DIR) + "/Samples/astronaut.png", *host.GetContext());
    for (std::string const& id : {SettingsEffectEyeExtending::CLASS_ID, SettingsEffectFaceThinning::CLASS_ID}) {
        SCOPED_TRACE(id);
        auto const effect = host.GetFactory()->CreateOneInputEffect(id, ImplNames::VELNOR);
        DataHandle data = photo.picture->MakeCopy(CopyMode::Value);
        effect->ProcessData(data);
        ConstPlane const before = photo.picture->GetPlane(0);
        ConstPlane const after = AsVideo(data).GetPlane(0);
        int changedInside = 0;
        int changedOutside = 0;
        for (std::uint64_t y = 0; y < after.GetHeight(); ++y)
            for (std::uint64_t x = 0; x < after.GetWidth(); ++x) {
                if (before.GetRow(y)[x] == after.GetRow(y)[x]) continue;
                std::uint64_t const column = x / after.GetSampleBytes();
                bool const isNear = column > 120 && column < 325 && y > 60 && y < 230;
                ++(isNear ? changedInside : changedOutside);
            }
        EXPECT_GT(changedInside, 300);
        EXPECT_EQ(changedOutside, 0);
    }
}

} // namespace
} // namespace Velnor::Proc
