// Effects on a piece of a photograph, against pictures that were looked at once. Scripts/goldens makes them anew; look
// at each before it is committed.

#include "Proc/Host/PictureFile.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/Places.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ostream>
#include <sstream>

namespace Velnor::Proc {
namespace {

using namespace Testing;

/// Another picture that an effect reads.
struct Input {
    std::string file; ///< From the root of the sources on.
    Rectangle part;
};

struct Golden {
    std::string file;       ///< Named as the effect is at the command line.
    std::string parameters; ///< name=value, with blanks between them.
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
    LoadedPicture const photo = ReadPicture(std::string(Testing::SOURCE_DIR) + "/" + input.file, *host.GetContext());
    return photo.picture->MakePart(input.part);
}

TEST_P(GoldenTest, LooksAsItDidWhenItWasAccepted) {
    Golden const& golden = GetParam();
    StandardHost host;
    host.LoadPlugin(Testing::LUMETTA_FILE);
    std::vector<std::string> const classIds = host.GetFactory()->GetClassIds();
    auto const classId = std::ranges::find_if(
        classIds, [&](std::string const& id) { return SettingsType::Find(id)->GetEffectName() == golden.file; });
    ASSERT_NE(classId, classIds.end());
    auto const effect = host.GetFactory()->CreateEffect(*classId, ImplNames::DEFAULT);
    auto const settings = SettingsType::Find(*classId)->create();
    std::istringstream parameters(golden.parameters);
    for (std::string given; parameters >> given;)
        for (SettingsField const& field : settings->GetType().describe())
            if (given.starts_with(field.name + "=")) field.parse(*settings, given.substr(field.name.size() + 1));
    effect->SetSettings(*settings);

    std::vector<DataHandle> inputs{ReadPart(host, {"Samples/" + golden.photo, golden.part})};
    for (Input const& input : golden.further) inputs.push_back(ReadPart(host, input));
    DataHandle const made = effect->ProcessData(inputs);
    bool const hasAlpha = made->GetDescription().hasAlpha;
    VideoHandle const result = ToRgb(host, made, hasAlpha);

    std::string const path = std::string(Testing::SOURCE_DIR) + "/Tests/golden/" + golden.file + ".png";
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
        Golden{"white-balance", "reference=#b39c96", 0}, Golden{"auto-enhance", "", 3},
        Golden{"histogram", "draw=true size=60", 1}, Golden{"replace-chroma", "key-color=#a87850 new-color=#5078a8", 1},
        Golden{"balance-luma", "shadows=80", 1}, Golden{"color-reduce", "colors=8 dither=false", 1},
        Golden{"pixelate", "strength=60", 1}, Golden{"tint-temperature", "temperature=20", 2},
        Golden{"color-balance-auto", "light-balance=true", 0}, Golden{"black-white", "threshold=0.4", 0},
        Golden{"gradient", "", 2}, Golden{"bi-color-toning", "", 1},
        Golden{
            "blend-palette", "", 1, "chelsea.png", {100, 60, 121, 97}, {{"Samples/coffee.png", {200, 100, 150, 150}}}},
        Golden{"blur-bokeh", "", 1, "coffee.png", {320, 60, 121, 97}},
        Golden{"colored-glass", "", 1, "astronaut.png", PORTRAIT}, Golden{"sketch", "", 1},
        Golden{"blur-radial", "strength=40", 1}, Golden{"details-enhance", "", 1},
        Golden{"directional-area-deformation", "strokes=30,30>60,30;90,70>70,50 size=50 strength=100", 1},
        Golden{"gradient-posterize", "color-count=4", 1}, Golden{"implode", "strength=80", 1},
        Golden{"restorer", "denoise=60", 2, "astronaut.png", PORTRAIT},
        Golden{"shape-mask", "shape=polygon rotation=20", 1}, Golden{"tilt-shift", "shape-mask.height=30", 1},
        Golden{"vignette", "", 1}, Golden{"auto-glare-remove", "strength=100", 1, "coffee.png", {320, 225, 121, 97}},
        Golden{"aligner", "eyes-distance=35", 1, "astronaut.png", PORTRAIT},
        Golden{"face-mask", "", 1, "astronaut.png", PORTRAIT},
        Golden{"face-thinning", "strength=100", 1, "astronaut.png", PORTRAIT},
        Golden{"grab-cut", "", 0, "astronaut.png", CUT, {STROKES}},
        Golden{"grab-cut-segmentation", "", 0, "astronaut.png", CUT, {STROKES}},
        Golden{"edge-remove", "", 2, "astronaut.png", CUT, {MASK}},
        Golden{"reduce-local-luma", "strength=80", 1, "astronaut.png", CUT, {MASK}},
        Golden{"remove-background", "result=color color=#3060a0", 3, "astronaut.png", CUT, {STROKES}},
        Golden{"stitcher",
               "overlap-x=19",
               0,
               "chelsea.png",
               {100, 60, 70, 97},
               {{"Samples/chelsea.png", {151, 60, 70, 97}}}},
        Golden{"draw-face", "line-width=1", 0, "astronaut.png", PORTRAIT},
        Golden{"eye-extending", "strength=80", 0, "astronaut.png", PORTRAIT}, Golden{"oil-paint", "radius=3", 0},
        Golden{"blur", "dev-x=4 dev-y=2", 1}, Golden{"clahe", "clip-limit=3", 2},
        Golden{"morphology", "operation=smooth radius=3", 0}, Golden{"rotate", "angle=12 output-size-mode=whole", 1},
        Golden{"smart-blur", "luma-blur=60", 2}),
    TestName);

} // namespace
} // namespace Velnor::Proc
