#include "Proc/Settings/SettingsGuide.h"

#include <algorithm>
#include <array>

namespace Velnor::Proc {
namespace {

constexpr std::string_view LIGHT = "Light and colour";
constexpr std::string_view TONING = "Toning and fewer colours";
constexpr std::string_view SHARPNESS = "Blur and sharpness";
constexpr std::string_view STYLE = "Style";
constexpr std::string_view FACES = "Faces";
constexpr std::string_view REPAIR = "Repair";
constexpr std::string_view CUTTING = "Cutting out and masks";
constexpr std::string_view SHAPE = "Size and shape";
constexpr std::string_view JOINING = "Several pictures";
constexpr std::string_view TOOLS = "Tools";

constexpr std::string_view STROKES =
    "strokes, a picture of the photograph's size: white on the object, grey (128) on its background, else black";

constexpr std::array GUIDES{
    SettingsGuide{"SettingsEffectAutoEnhance", LIGHT},
    SettingsGuide{"SettingsEffectBalanceLuma", LIGHT},
    SettingsGuide{"SettingsEffectCLAHE", LIGHT},
    SettingsGuide{"SettingsEffectColorBalance", LIGHT, {}, {}, "brightness=15,gamma=20"},
    SettingsGuide{"SettingsEffectColorBalanceAuto", LIGHT},
    SettingsGuide{"SettingsEffectHistogram", LIGHT},
    SettingsGuide{"SettingsEffectMidEqualizer", LIGHT, "the photograph whose levels the result meets half-way",
                  "other.jpg"},
    SettingsGuide{"SettingsEffectReduceLocalLuma", LIGHT,
                  "the mask, a grey picture of the photograph's size: white where it is burnt or dodged", "mask.png"},
    SettingsGuide{"SettingsEffectTintTemperature", LIGHT},
    SettingsGuide{"SettingsEffectVibrance", LIGHT, {}, {}, "strength=60"},
    SettingsGuide{"SettingsEffectWhiteBalance", LIGHT},

    SettingsGuide{"SettingsEffectBiColorToning", TONING},
    SettingsGuide{"SettingsEffectBlackWhite", TONING},
    SettingsGuide{"SettingsEffectBlendPalette", TONING, "the photograph whose palette is taken", "palette.jpg"},
    SettingsGuide{"SettingsEffectColorReduce", TONING},
    SettingsGuide{"SettingsEffectGradient", TONING},
    SettingsGuide{"SettingsEffectGradientPosterize", TONING},
    SettingsGuide{"SettingsEffectPosterize", TONING},
    SettingsGuide{"SettingsEffectReplaceChroma", TONING},
    SettingsGuide{"SettingsEffectSplitToning", TONING},

    SettingsGuide{"SettingsEffectBlur", SHARPNESS},
    SettingsGuide{"SettingsEffectBlurBokeh", SHARPNESS},
    SettingsGuide{"SettingsEffectBlurRadial", SHARPNESS},
    SettingsGuide{"SettingsEffectDetailsEnhance", SHARPNESS},
    SettingsGuide{"SettingsEffectSmartBlur", SHARPNESS},
    SettingsGuide{"SettingsEffectTiltShift", SHARPNESS},

    SettingsGuide{"SettingsEffectColoredGlass", STYLE},
    SettingsGuide{"SettingsEffectNoiseVideo", STYLE},
    SettingsGuide{"SettingsEffectOilPaint", STYLE},
    SettingsGuide{"SettingsEffectPixelate", STYLE},
    SettingsGuide{"SettingsEffectSketch", STYLE},
    SettingsGuide{"SettingsEffectVignette", STYLE},

    SettingsGuide{"SettingsEffectAligner", FACES},
    SettingsGuide{"SettingsEffectDrawFace", FACES},
    SettingsGuide{"SettingsEffectEyeExtending", FACES},
    SettingsGuide{"SettingsEffectFaceDetector", FACES},
    SettingsGuide{"SettingsEffectFaceMask", FACES},
    SettingsGuide{"SettingsEffectFaceThinning", FACES},

    SettingsGuide{"SettingsEffectAutoGlareRemove", REPAIR},
    SettingsGuide{"SettingsEffectRestorer", REPAIR},

    SettingsGuide{"SettingsEffectRemoveBackground", CUTTING,
                  "strokes (white on the subject, grey (128) behind it, else black), a new background, or one of each; "
                  "strokes are of the photograph's size",
                  "strokes.png"},
    SettingsGuide{"SettingsEffectGrabCut", CUTTING, STROKES, "strokes.png"},
    SettingsGuide{"SettingsEffectGrabCutSegmentation", CUTTING, STROKES, "strokes.png"},
    SettingsGuide{"SettingsEffectEdgeRemove", CUTTING,
                  "the mask of the cut-out, a grey picture of the photograph's size: white on the object", "mask.png"},
    SettingsGuide{"SettingsEffectAlphaExtractor", CUTTING, {}, {}, {}, "cutout.png"},
    SettingsGuide{"SettingsEffectAlphaInserter", CUTTING,
                  "the mask, a grey picture of the photograph's size: white is opaque, black clear", "mask.png"},
    SettingsGuide{"SettingsEffectExtraAlphaExtractor", CUTTING, {}, {}, {}, "mask.png"},
    SettingsGuide{"SettingsEffectMorphology", CUTTING},
    SettingsGuide{"SettingsEffectShapeMask", CUTTING},

    SettingsGuide{"SettingsResizer", SHAPE, {}, {}, "long-side=1024"},
    SettingsGuide{"SettingsEffectCrop", SHAPE},
    SettingsGuide{"SettingsEffectFlip", SHAPE},
    SettingsGuide{"SettingsEffectRotate", SHAPE},
    SettingsGuide{"SettingsEffectPad", SHAPE},
    SettingsGuide{"SettingsEffectDirectionalAreaDeformation", SHAPE},
    SettingsGuide{"SettingsEffectImplode", SHAPE},
    SettingsGuide{"SettingsEffectRemapping", SHAPE, {}, {}, "lens=20"},
    SettingsGuide{"SettingsEffectHorizonDetector", SHAPE},

    SettingsGuide{"SettingsEffectCutter", JOINING},
    SettingsGuide{"SettingsEffectImageBlender", JOINING, "the picture that is laid over the photograph", "overlay.png"},
    SettingsGuide{"SettingsEffectPanorama", JOINING, "a photograph that overlaps the others, in any order", "right.jpg",
                  "mode=scans", "left.jpg"},
    SettingsGuide{"SettingsEffectStitcher", JOINING,
                  "a photograph that overlaps the others, in any order, or the next piece of a picture", "right.jpg",
                  "mode=panorama", "left.jpg"},

    SettingsGuide{"SettingsColorspaceConverter", TOOLS, {}, {}, "formats=gray8"},
    SettingsGuide{"SettingsEffectCustom", TOOLS},
    SettingsGuide{"SettingsEffectEmpty", TOOLS},
    SettingsGuide{"SettingsEffectNeuralPredict", TOOLS},
    SettingsGuide{"SettingsEffectVideoGenerator", TOOLS},
};

constexpr SettingsGuide OF_OTHERS{{}, "Other effects"};

} // namespace

SettingsGuide const& FindGuide(std::string_view classId) {
    auto const found = std::ranges::find(GUIDES, classId, &SettingsGuide::classId);
    return found == GUIDES.end() ? OF_OTHERS : *found;
}

std::span<SettingsGuide const> GetGuides() { return GUIDES; }

} // namespace Velnor::Proc
