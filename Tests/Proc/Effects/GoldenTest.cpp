// Effects on a piece of a photograph, against pictures that were looked at once. Scripts/goldens makes them anew; look
// at each before it is committed.

#include "Proc/Host/PictureFile.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/Pictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <ostream>

namespace Velnor::Proc {
namespace {

using namespace Testing;

/// Another picture that an effect reads.
struct Input {
    std::string file; ///< From the root of the sources on.
    Rectangle part;
};

struct Golden {
    std::string file;
    std::string classId;
    std::map<std::string, std::string> parameters;
    int tolerance; ///< Levels that a sample may be off: conversions are the library's, which may round otherwise.
    std::string photo = "chelsea.png";
    Rectangle part{100, 60, 121, 97};
    std::vector<Input> further{};
};

void PrintTo(Golden const& golden, std::ostream* out) { *out << golden.file; }

class GoldenTest : public ::testing::TestWithParam<Golden> {};

/// A picture with alpha keeps it.
VideoHandle ToRgb(Host& host, DataHandle data, bool hasAlpha) {
    auto const converter =
        host.GetFactory()->CreateOneInputEffect(SettingsColorspaceConverter::CLASS_ID, ImplNames::DEFAULT);
    converter->SetSettings(SettingsColorspaceConverter(hasAlpha ? PixFmt::RGBA : PixFmt::RGB24, true));
    converter->ProcessData(data);
    return VideoHandle(&AsVideo(data));
}

DataHandle ReadPart(Host& host, Input const& input) {
    LoadedPicture const photo = ReadPicture(VELNOR_SOURCE_DIR "/" + input.file, *host.GetContext());
    return photo.picture->MakePart(input.part);
}

TEST_P(GoldenTest, LooksAsItDidWhenItWasAccepted) {
    Golden const& golden = GetParam();
    StandardHost host;
    host.LoadPlugin(LUMETTA_FILE);
    auto const effect = host.GetFactory()->CreateEffect(golden.classId, ImplNames::DEFAULT);
    auto const settings = SettingsType::Find(golden.classId)->create();
    for (SettingsField const& field : settings->GetType().describe())
        if (auto const given = golden.parameters.find(field.name); given != golden.parameters.end())
            field.parse(*settings, given->second);
    effect->SetSettings(*settings);

    std::vector<DataHandle> inputs{ReadPart(host, {"Samples/" + golden.photo, golden.part})};
    for (Input const& input : golden.further) inputs.push_back(ReadPart(host, input));
    DataHandle const made = effect->ProcessData(inputs);
    bool const hasAlpha = made->GetDescription().hasAlpha;
    VideoHandle const result = ToRgb(host, made, hasAlpha);

    std::string const path = VELNOR_SOURCE_DIR "/Tests/golden/" + golden.file + ".png";
    if (std::getenv("VELNOR_REFRESH_GOLDENS") != nullptr) {
        WritePicture(path, *result, nullptr, {.overwrite = true});
        GTEST_SKIP() << path << " was made anew";
    }
    VideoHandle const expected = ToRgb(host, ReadPicture(path, *host.GetContext()).picture, hasAlpha);
    ASSERT_EQ(result->GetFrameFormat(), expected->GetFrameFormat());
    std::vector<unsigned char> const got = Samples(*result);
    std::vector<unsigned char> const wanted = Samples(*expected);
    int worst = 0;
    for (std::size_t i = 0; i < got.size(); ++i) worst = std::max(worst, std::abs(got[i] - wanted[i]));
    EXPECT_LE(worst, golden.tolerance);
}

std::string TestName(::testing::TestParamInfo<Golden> const& golden) {
    std::string name = golden.param.file;
    std::ranges::replace(name, '-', '_');
    return name;
}

constexpr Rectangle PORTRAIT{130, 30, 180, 180}; ///< The face and some way around it, as the detector needs.

constexpr Rectangle CUT{110, 0, 240, 180}; ///< The same with strokes on both sides of the hair.
Input const STROKES{"Samples/astronaut-strokes.png", CUT};
Input const MASK{"Tests/golden/grab-cut.png", {0, 0, CUT.width, CUT.height}};

INSTANTIATE_TEST_SUITE_P(
    Effects, GoldenTest,
    ::testing::Values(
        Golden{"white-balance", "SettingsEffectWhiteBalance", {{"reference", "#b39c96"}}, 0},
        Golden{"auto-enhance", "SettingsEffectAutoEnhance", {}, 3},
        Golden{"histogram", "SettingsEffectHistogram", {{"draw", "true"}, {"size", "60"}}, 1},
        Golden{
            "replace-chroma", "SettingsEffectReplaceChroma", {{"key-color", "#a87850"}, {"new-color", "#5078a8"}}, 1},
        Golden{"balance-luma", "SettingsEffectBalanceLuma", {{"shadows", "80"}}, 1},
        Golden{"color-reduce", "SettingsEffectColorReduce", {{"colors", "8"}, {"dither", "false"}}, 1},
        Golden{"pixelate", "SettingsEffectPixelate", {{"strength", "60"}}, 1},
        Golden{"tint-temperature", "SettingsEffectTintTemperature", {{"temperature", "20"}}, 2},
        Golden{"color-balance-auto", "SettingsEffectColorBalanceAuto", {{"light-balance", "true"}}, 0},
        Golden{"black-white", "SettingsEffectBlackWhite", {{"threshold", "0.4"}}, 0},
        Golden{"gradient", "SettingsEffectGradient", {}, 2},
        Golden{"bi-color-toning", "SettingsEffectBiColorToning", {}, 1},
        Golden{"blend-palette",
               "SettingsEffectBlendPalette",
               {},
               1,
               "chelsea.png",
               {100, 60, 121, 97},
               {{"Samples/coffee.png", {200, 100, 150, 150}}}},
        Golden{"blur-bokeh", "SettingsEffectBlurBokeh", {}, 1, "coffee.png", {320, 60, 121, 97}},
        Golden{"colored-glass", "SettingsEffectColoredGlass", {}, 1, "astronaut.png", PORTRAIT},
        Golden{"sketch", "SettingsEffectSketch", {}, 1},
        Golden{"blur-radial", "SettingsEffectBlurRadial", {{"strength", "40"}}, 1},
        Golden{"details-enhance", "SettingsEffectDetailsEnhance", {}, 1},
        Golden{"directional-area-deformation",
               "SettingsEffectDirectionalAreaDeformation",
               {{"strokes", "30,30>60,30;90,70>70,50"}, {"size", "50"}, {"strength", "100"}},
               1},
        Golden{"gradient-posterize", "SettingsEffectGradientPosterize", {{"color-count", "4"}}, 1},
        Golden{"implode", "SettingsEffectImplode", {{"strength", "80"}}, 1},
        Golden{"restorer", "SettingsEffectRestorer", {{"denoise", "60"}}, 2, "astronaut.png", PORTRAIT},
        Golden{"shape-mask", "SettingsEffectShapeMask", {{"shape", "polygon"}, {"rotation", "20"}}, 1},
        Golden{"tilt-shift", "SettingsEffectTiltShift", {{"shape-mask.height", "30"}}, 1},
        Golden{"vignette", "SettingsEffectVignette", {}, 1},
        Golden{"auto-glare-remove",
               "SettingsEffectAutoGlareRemove",
               {{"strength", "100"}},
               1,
               "coffee.png",
               {320, 225, 121, 97}},
        Golden{"aligner", "SettingsEffectAligner", {{"eyes-distance", "35"}}, 1, "astronaut.png", PORTRAIT},
        Golden{"face-mask", "SettingsEffectFaceMask", {}, 1, "astronaut.png", PORTRAIT},
        Golden{"face-thinning", "SettingsEffectFaceThinning", {{"strength", "100"}}, 1, "astronaut.png", PORTRAIT},
        Golden{"grab-cut", "SettingsEffectGrabCut", {}, 0, "astronaut.png", CUT, {STROKES}},
        Golden{"grab-cut-segmentation", "SettingsEffectGrabCutSegmentation", {}, 0, "astronaut.png", CUT, {STROKES}},
        Golden{"edge-remove", "SettingsEffectEdgeRemove", {}, 2, "astronaut.png", CUT, {MASK}},
        Golden{"reduce-local-luma",
               "SettingsEffectReduceLocalLuma",
               {{"strength", "80"}},
               1,
               "astronaut.png",
               CUT,
               {MASK}},
        Golden{"remove-background",
               "SettingsEffectRemoveBackground",
               {{"result", "color"}, {"color", "#3060a0"}},
               3,
               "astronaut.png",
               CUT,
               {STROKES}},
        Golden{"stitcher",
               "SettingsEffectStitcher",
               {{"overlap-x", "19"}},
               0,
               "chelsea.png",
               {100, 60, 70, 97},
               {{"Samples/chelsea.png", {151, 60, 70, 97}}}},
        Golden{"draw-face", "SettingsEffectDrawFace", {{"line-width", "1"}}, 0, "astronaut.png", PORTRAIT},
        Golden{"eye-extending", "SettingsEffectEyeExtending", {{"strength", "80"}}, 0, "astronaut.png", PORTRAIT},
        Golden{"oil-paint", "SettingsEffectOilPaint", {{"radius", "3"}}, 0},
        Golden{"blur", "SettingsEffectBlur", {{"dev-x", "4"}, {"dev-y", "2"}}, 1},
        Golden{"clahe", "SettingsEffectCLAHE", {{"clip-limit", "3"}}, 2},
        Golden{"morphology", "SettingsEffectMorphology", {{"operation", "smooth"}, {"radius", "3"}}, 0},
        Golden{"rotate", "SettingsEffectRotate", {{"angle", "12"}, {"output-size-mode", "whole"}}, 1},
        Golden{"smart-blur", "SettingsEffectSmartBlur", {{"luma-blur", "60"}}, 2}),
    TestName);

} // namespace
} // namespace Velnor::Proc
