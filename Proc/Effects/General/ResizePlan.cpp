#include "Proc/Effects/General/ResizePlan.h"

#include "Proc/Effects/General/Scaler.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace Velnor::Proc {
namespace {

using S = SettingsResizer;

/// A side of the result, from its exact length.
std::uint32_t RoundSide(double length, char const* side, S const& settings) {
    if (length > LARGEST_PICTURE_SIDE)
        VELNOR_THROW(ProcException, "Resizer: the " + std::string(side) + " would be " + std::to_string(length) +
                                        " pixels; at most " + std::to_string(LARGEST_PICTURE_SIDE) + " are possible.");
    auto const rounded = static_cast<std::uint32_t>(std::lround(length));
    if (rounded > 0) return rounded;
    if (!settings.IsAtLeastOnePixel())
        VELNOR_THROW(ProcException, "Resizer: the " + std::string(side) + " would be 0 pixels.");
    return 1;
}

Size RoundSize(double width, double height, S const& settings) {
    return {RoundSide(width, "width", settings), RoundSide(height, "height", settings)};
}

double Ratio(std::uint32_t a, std::uint32_t b) { return static_cast<double>(a) / static_cast<double>(b); }

/// A length in the middle of a longer one, on whole chroma samples.
std::uint32_t Centre(std::uint32_t whole, std::uint32_t length, std::uint8_t shift) {
    return ((whole - length) / 2 >> shift) << shift;
}

/// The largest central part with the target's shape.
Rectangle CutToShape(FrameFormat const& frame, FrameFormat const& target, PixFmtDescription const& format) {
    double const scale = std::max(Ratio(target.width, frame.width), Ratio(target.height, frame.height));
    auto const length = [scale](std::uint32_t wanted, std::uint32_t whole) {
        return std::clamp(static_cast<std::uint32_t>(std::lround(wanted / scale)), 1U, whole);
    };
    Rectangle part{0, 0, length(target.width, frame.width), length(target.height, frame.height)};
    part.x = Centre(frame.width, part.width, format.chromaShiftX);
    part.y = Centre(frame.height, part.height, format.chromaShiftY);
    return part;
}

/// Mode to-frame with a fit that keeps the shape: fills in everything but the result's pixel aspect.
void PlanFit(ResizePlan& plan, FrameFormat const& frame, PixFmtDescription const& format, S const& settings) {
    FrameFormat const target = settings.GetTarget();
    if (settings.GetFitting() == S::FILL) {
        plan.part = CutToShape(frame, target, format);
        plan.scaledWidth = target.width;
        plan.scaledHeight = target.height;
        return;
    }
    double scale = std::min(Ratio(target.width, frame.width), Ratio(target.height, frame.height));
    if (settings.GetFitting() == S::SHRINK_INSIDE) scale = std::min(scale, 1.0);
    Size const inside = RoundSize(frame.width * scale, frame.height * scale, settings);
    plan.scaledWidth = inside.width;
    plan.scaledHeight = inside.height;
    if (settings.GetFitting() != S::BARS) {
        plan.result.width = inside.width;
        plan.result.height = inside.height;
        return;
    }
    plan.left = Centre(target.width, inside.width, format.chromaShiftX);
    plan.top = Centre(target.height, inside.height, format.chromaShiftY);
}

/// Settings with a mode in the place of width, height and longer side. Where both sides of the result are given,
/// and the fitting does not say another thing, the picture keeps its shape.
S ResolveSides(FrameFormat const& frame, S const& given) {
    if (given.GetMode() != S::OFF)
        VELNOR_THROW(ProcException, "Resizer: width, height and longer side go without a mode, which is " +
                                        std::to_string(given.GetMode()) + ".");
    if (given.GetLongSide() != 0 && (given.GetWidth() != 0 || given.GetHeight() != 0))
        VELNOR_THROW(ProcException, "Resizer: the longer side, " + std::to_string(given.GetLongSide()) +
                                        ", goes without width and height.");
    S settings = given;
    FrameFormat target = frame;
    target.width = given.GetLongSide() != 0 ? given.GetLongSide() : given.GetWidth();
    target.height = given.GetLongSide() != 0 ? given.GetLongSide() : given.GetHeight();
    bool const isShrink = given.GetFitting() == S::SHRINK_INSIDE;
    if (given.GetLongSide() != 0 || given.GetFitting() == S::EXACT)
        settings.SetFitting(isShrink ? S::SHRINK_INSIDE : S::INSIDE);
    settings.SetTarget(target);
    settings.SetMode(target.width == 0 ? S::TO_HEIGHT : (target.height == 0 ? S::TO_WIDTH : S::TO_FRAME));
    if (isShrink && settings.GetMode() != S::TO_FRAME) {
        bool const isSmaller = target.width != 0 ? target.width >= frame.width : target.height >= frame.height;
        if (isSmaller) settings.SetMode(S::OFF);
    }
    return settings;
}

std::uint32_t IntermediateSide(std::uint32_t from, std::uint32_t to, std::uint32_t largest) {
    if (from <= static_cast<std::uint64_t>(to) * largest) return from;
    return to * largest;
}

} // namespace

ResizePlan PlanResize(FrameFormat const& frame, PixFmtDescription const& format, S const& given) {
    S const settings = given.HasSides() ? ResolveSides(frame, given) : given;
    FrameFormat const target = settings.GetTarget();
    Size size{frame.width, frame.height};
    switch (settings.GetMode()) {
    case S::OFF:
        break;
    case S::TO_WIDTH:
        size = RoundSize(target.width, frame.height * Ratio(target.width, frame.width), settings);
        break;
    case S::TO_HEIGHT:
        size = RoundSize(frame.width * Ratio(target.height, frame.height), target.height, settings);
        break;
    case S::BY_FACTOR:
        size = RoundSize(frame.width * settings.GetFactor(), frame.height * settings.GetFactor(), settings);
        break;
    case S::TO_FRAME:
        size = RoundSize(target.width, target.height, settings);
        break;
    }
    ResizePlan plan{{0, 0, frame.width, frame.height}, size.width, size.height, frame, 0, 0};
    plan.result.width = size.width;
    plan.result.height = size.height;
    if (settings.GetMode() != S::TO_FRAME) return plan;
    plan.result.aspectNumerator = target.aspectNumerator;
    plan.result.aspectDenominator = target.aspectDenominator;
    if (settings.GetFitting() != S::EXACT && settings.GetFitting() != S::STRETCH) {
        S whole = settings;
        whole.SetTarget(plan.result); // Sides of 0 have become 1 by now.
        PlanFit(plan, frame, format, whole);
    }
    return plan;
}

std::vector<Size> PlanSteps(Size from, Size to, S::ResizeMethods method) {
    std::vector<Size> steps;
    for (std::uint32_t largest = Scaler::GetLargestShrink(method);;) {
        Size const rest{IntermediateSide(from.width, to.width, largest),
                        IntermediateSide(from.height, to.height, largest)};
        if (rest == from) break;
        // A step by area can be too much as well: at most that far.
        std::uint32_t const farthest = Scaler::GetLargestShrink(S::AREA);
        auto const limit = [&](std::uint32_t wanted, std::uint32_t side) {
            return std::max(wanted, (side + farthest - 1) / farthest);
        };
        from = {limit(rest.width, from.width), limit(rest.height, from.height)};
        steps.push_back(from);
    }
    steps.push_back(to);
    return steps;
}

} // namespace Velnor::Proc
