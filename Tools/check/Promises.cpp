#include "Tools/check/Promises.h"

#include <algorithm>
#include <array>

namespace Velnor::Proc::Check {
namespace {

constexpr std::array PROMISES{
    Promise{"registration", "is made as it is registered, alone and unused", 1, CheckRegistration},
    Promise{"settings", "names, defaults, ranges and texts fit together, and the effect takes all of them", 1,
            CheckSettings},
    Promise{"bypass", "does nothing when its settings say so", 1, CheckBypass},
    Promise{"wrong-inputs", "refuses a missing picture and a wrong number of them", 1, CheckWrongInputs},
    Promise{"formats", "takes every pixel format and size or says why not, and leaves what the caller shares", 1,
            CheckFormats},
    Promise{"same-bytes", "makes the same of the same, in every instance", 1, CheckSameness},
    Promise{"ranges", "works at both ends of each range", 2, CheckRanges},
    Promise{"independence", "makes of a photograph the same whatever came before it", 2, CheckIndependence},
    Promise{"alpha", "shows nothing of the colours of clear pixels", 2, CheckHiddenColours},
    Promise{"errors", "leaves the caller's pictures and a new effect's state when anything it calls fails", 2,
            CheckFailures},
    Promise{"stop", "ends soon when it is told to stop, and leaves the same as an error", 2, CheckStop},
    Promise{"threads", "starts no threads of its own, and leaves none behind", 2, CheckThreads},
    Promise{"random", "works or refuses whatever its parameters are, and does the same again", 3, CheckRandomCalls},
};

struct Waiver {
    std::string_view effect;
    std::string_view implementation;
    std::string_view promise;
    std::string_view reason;
};

constexpr std::string_view COUNTS_ALL = "its arithmetic over all pixels, the hidden ones too, is fixed";
constexpr std::string_view MEASURES = "measures all pixels, the hidden ones too";
constexpr std::string_view REMEMBERS = "carries on from the picture before, as its parameters say";
constexpr std::string_view KEEPS_KERNEL = "keeps the aperture that the first picture got";
constexpr std::string_view CUTS = "cuts with twelve workers";
constexpr std::array WAIVERS{
    Waiver{"auto-enhance", "Velnor", "alpha", COUNTS_ALL},
    Waiver{"black-white", "Velnor", "alpha", COUNTS_ALL},
    Waiver{"blur-bokeh", "Velnor", "alpha", COUNTS_ALL},
    Waiver{"color-balance-auto", "Velnor", "alpha", COUNTS_ALL},
    Waiver{"gradient-posterize", "Velnor", "alpha", COUNTS_ALL},
    Waiver{"grab-cut", "Velnor", "alpha", COUNTS_ALL},
    Waiver{"grab-cut-segmentation", "Velnor", "alpha", COUNTS_ALL},
    Waiver{"histogram", "Velnor", "alpha", MEASURES},
    Waiver{"auto-enhance", "Velnor", "random", REMEMBERS},
    Waiver{"auto-enhance", "Velnor", "independence", REMEMBERS},
    Waiver{"blur-bokeh", "Velnor", "independence", KEEPS_KERNEL},
    Waiver{"directional-area-deformation", "Velnor", "random", REMEMBERS},
    Waiver{"directional-area-deformation", "Velnor", "independence", REMEMBERS},
    Waiver{"grab-cut", "Velnor", "threads", CUTS},
    Waiver{"grab-cut-segmentation", "Velnor", "threads", CUTS},
    Waiver{"remove-background", "Velnor", "threads", CUTS},
    Waiver{"video-generator", "Default", "wrong-inputs", "needs no picture"},
};

} // namespace

std::span<Promise const> GetPromises() { return PROMISES; }

std::string_view FindWaiver(RegisteredEffect const& effect, Promise const& promise) {
    std::string const name = GetEffectName(effect);
    auto const found = std::ranges::find_if(WAIVERS, [&](Waiver const& waiver) {
        return waiver.effect == name && waiver.implementation == effect.implName && waiver.promise == promise.name;
    });
    return found == WAIVERS.end() ? "" : found->reason;
}

} // namespace Velnor::Proc::Check
