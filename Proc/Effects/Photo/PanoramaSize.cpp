#include "Proc/Effects/Photo/PanoramaSize.h"
#include "Proc/Interfaces/FrameFormat.h"

#include "Proc/Interfaces/EffectExceptions.h"

#include <algorithm>
#include <limits>
#include <string>

namespace Velnor::Proc {
namespace {

constexpr std::int64_t MOST_PIXELS = std::int64_t{1} << 28;
constexpr std::int64_t LONGEST_SIDE = std::int64_t{1} << 17;
constexpr std::int64_t LONGEST_SIDE_OF_ONE = std::numeric_limits<std::int16_t>::max() - 1; ///< OpenCV's, when it warps.
constexpr std::int64_t FARTHEST = std::int64_t{1} << 30; ///< Numbers beyond come from an overflow.

std::string Pixels(std::int64_t width, std::int64_t height) { return SizeText(width, height) + " pixels"; }

void RequireOne(PanoramaPlace const& place, std::size_t number) {
    std::string const subject = "Picture " + std::to_string(number) + " would ";
    std::string const end = ": it hardly matches the others.";
    if (std::max(std::abs(place.x), std::abs(place.y)) > FARTHEST)
        VELNOR_THROW(EffectException, subject + "lie at " + std::to_string(place.x) + ", " + std::to_string(place.y) +
                                          " in the panorama; at most " + std::to_string(FARTHEST) +
                                          " from its origin is possible" + end);
    if (std::min(place.width, place.height) < 1 || std::max(place.width, place.height) > LONGEST_SIDE_OF_ONE)
        VELNOR_THROW(EffectException, subject + "take " + Pixels(place.width, place.height) +
                                          " of the panorama; 1 to " + std::to_string(LONGEST_SIDE_OF_ONE) +
                                          " on a side are possible" + end);
}

} // namespace

void RequirePossibleSize(std::vector<PanoramaPlace> const& places) {
    for (std::size_t i = 0; i < places.size(); ++i) RequireOne(places[i], i + 1);
    std::int64_t left = FARTHEST, top = FARTHEST, right = -FARTHEST, bottom = -FARTHEST;
    for (PanoramaPlace const& place : places) {
        left = std::min(left, place.x);
        top = std::min(top, place.y);
        right = std::max(right, place.x + place.width);
        bottom = std::max(bottom, place.y + place.height);
    }
    std::int64_t const width = right - left;
    std::int64_t const height = bottom - top;
    if (std::max(width, height) > LONGEST_SIDE || width * height > MOST_PIXELS)
        VELNOR_THROW(EffectException, "The panorama would be " + Pixels(width, height) + "; at most " +
                                          std::to_string(MOST_PIXELS) + " in all and " + std::to_string(LONGEST_SIDE) +
                                          " on a side are possible.");
}

} // namespace Velnor::Proc
