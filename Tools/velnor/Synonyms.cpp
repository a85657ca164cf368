#include "Tools/velnor/Synonyms.h"

#include "Tools/velnor/Suggestions.h"

#include <algorithm>
#include <array>
#include <string>

namespace Velnor::Tool {
namespace {

constexpr std::array SYNONYMS{
    Synonym{"auto auto-fix autofix enhance auto-tone improve", "auto-enhance"},
    Synonym{"auto-contrast auto-levels auto-color levels normalize equalize", "color-balance-auto"},
    Synonym{"bg-remove background-removal remove-bg matte subject", "remove-background"},
    Synonym{"blend overlay composite watermark", "image-blender"},
    Synonym{"bokeh lens-blur", "blur-bokeh"},
    Synonym{"border frame margin margins extend-canvas", "pad"},
    Synonym{"brightness gamma exposure lighten darken", "color-balance"},
    Synonym{"bulge pinch spherize", "implode"},
    Synonym{"bw b&w black-and-white monochrome threshold binarize", "black-white"},
    Synonym{"cartoon comic", "posterize", true},
    Synonym{"clarity detail details sharpen sharpness unsharp unsharp-mask", "details-enhance"},
    Synonym{"colorize duotone", "gradient"},
    Synonym{"contrast local-contrast", "clahe"},
    Synonym{"trim cut-off", "crop"},
    Synonym{"cutout cut-out select", "grab-cut"},
    Synonym{"denoise noise-reduction despeckle skin-smooth smooth", "smart-blur"},
    Synonym{"desaturate grayscale greyscale gray grey", "colorspace-converter:formats=gray8"},
    Synonym{"dilate erode", "morphology"},
    Synonym{"dodge burn", "reduce-local-luma"},
    Synonym{"faces find-faces", "face-detector"},
    Synonym{"flop mirror", "flip"},
    Synonym{"gaussian gaussian-blur gauss soften", "blur"},
    Synonym{"grain film-grain noise", "noise-video"},
    Synonym{"hdr highlights shadows tone-map", "balance-luma"},
    Synonym{"invert negate negative", "gradient:stops=0:#ffffff,255:#000000", true},
    Synonym{"join merge stitch montage", "stitcher"},
    Synonym{"lens-correction undistort distort", "remapping"},
    Synonym{"liquify push warp", "directional-area-deformation"},
    Synonym{"miniature tiltshift", "tilt-shift"},
    Synonym{"mosaic censor blocks", "pixelate"},
    Synonym{"motion-blur zoom-blur spin-blur radial-blur", "blur-radial"},
    Synonym{"oil oilpaint painting paint", "oil-paint"},
    Synonym{"opacity transparency alpha set-alpha", "alpha-inserter"},
    Synonym{"pencil drawing draw charcoal", "sketch"},
    Synonym{"quantize reduce-colors palette", "color-reduce"},
    Synonym{"repair restore scratches old-photo", "restorer"},
    Synonym{"resize scale shrink enlarge downscale upscale thumbnail", "resizer"},
    Synonym{"saturate saturation", "vibrance"},
    Synonym{"sepia vintage toning", "bi-color-toning"},
    Synonym{"slim slim-face", "face-thinning"},
    Synonym{"slice split tile tiles cut", "cutter"},
    Synonym{"stained-glass", "colored-glass"},
    Synonym{"straighten turn deskew", "rotate"},
    Synonym{"temperature tint warm warmth cool", "tint-temperature"},
    Synonym{"wb whitebalance neutralize", "white-balance"},
};

/// Whether the word stands among those with a space between two.
bool Contains(std::string_view words, std::string_view word) {
    return (" " + std::string(words) + " ").find(" " + std::string(word) + " ") != std::string::npos;
}

} // namespace

std::span<Synonym const> GetSynonyms() { return SYNONYMS; }

Synonym const* FindSynonym(std::string_view typed) {
    std::string const word = ToLower(typed);
    if (word.empty() || word.find(' ') != std::string::npos) return nullptr;
    auto const* const found =
        std::ranges::find_if(SYNONYMS, [&](Synonym const& synonym) { return Contains(synonym.words, word); });
    return found == SYNONYMS.end() ? nullptr : found;
}

} // namespace Velnor::Tool
