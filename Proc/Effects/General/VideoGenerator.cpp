// VideoGenerator: makes a grey picture of a white shape that fills a black frame, such as a lens aperture. It needs no
// input; of a picture that it is handed it takes time stamp and duration, and nothing else.
#include "Proc/Effects/General/Kernels/FillContours.h"
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Settings/SettingsEffectVideoGenerator.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

namespace Velnor::Proc {
namespace {

using Kernels::Contour;
using Kernels::ContourPoint;
using Shape = SettingsEffectVideoGenerator;

/// A closed line around the origin, within -1 to 1, clockwise from the top.
using Curve = std::function<ContourPoint(double angle)>;

ContourPoint Polar(double angle, double radius) { return {std::sin(angle) * radius, -std::cos(angle) * radius}; }

/// Straight sides between corners on the unit circle, bent towards it.
ContourPoint PolygonPoint(double angle, int blades, double roundness) {
    double const step = 2 * std::numbers::pi / blades;
    double const fromMiddle = std::fmod(angle, step) - step / 2;
    double const straight = std::cos(step / 2) / std::cos(fromMiddle);
    return Polar(angle, std::lerp(straight, 1.0, roundness));
}

ContourPoint StarPoint(double angle, int points, double inner) {
    double const half = std::numbers::pi / points;
    double const t = std::fmod(angle, 2 * half) / half; // from an outer corner at 0 to an inner one at 1 and back
    double const start = angle - t * half;
    ContourPoint const a = t < 1 ? Polar(start, 1) : Polar(start + half, inner);
    ContourPoint const b = t < 1 ? Polar(start + half, inner) : Polar(start + 2 * half, 1);
    double const share = t < 1 ? t : t - 1;
    return {std::lerp(a.x, b.x, share), std::lerp(a.y, b.y, share)};
}

/// The curve of trigonometric polynomials that is widely known as the heart curve, in the frame that it touches.
ContourPoint HeartPoint(double angle) {
    double const x = std::pow(std::sin(angle), 3);
    double const y = 13 * std::cos(angle) - 5 * std::cos(2 * angle) - 2 * std::cos(3 * angle) - std::cos(4 * angle);
    constexpr double TOP = 11.9722; // of y; its lowest is -17
    constexpr double BOTTOM = -17;
    return {x, (TOP + BOTTOM - 2 * y) / (TOP - BOTTOM)};
}

std::vector<Curve> MakeCurves(SettingsEffectVideoGenerator const& settings) {
    int const blades = settings.GetBlades();
    double const inner = std::clamp(settings.GetInnerRadius() / 100, 0.0, 1.0);
    double const roundness = std::clamp(settings.GetRoundness() / 100, 0.0, 1.0);
    switch (settings.GetShape()) {
    case Shape::DISC:
        return {[](double angle) { return Polar(angle, 1); }};
    case Shape::POLYGON:
        return {[=](double angle) { return PolygonPoint(angle, blades, roundness); }};
    case Shape::RING:
        return {[](double angle) { return Polar(angle, 1); }, [=](double angle) { return Polar(angle, inner); }};
    case Shape::HEART:
        return {&HeartPoint};
    case Shape::STAR:
        break;
    }
    return {[=](double angle) { return StarPoint(angle, blades, inner); }};
}

/// A curve, turned, as a line in pixels. Corners lie on points of it.
Contour Trace(Curve const& curve, SettingsEffectVideoGenerator const& settings) {
    FrameFormat const frame = settings.GetSize();
    int const corners = 2 * settings.GetBlades();
    int const points =
        (std::clamp(static_cast<int>(std::max(frame.width, frame.height)), 128, 8192) / corners + 1) * corners;
    double const turn = settings.GetRotation() / 180 * std::numbers::pi;
    Contour contour;
    for (int i = 0; i < points; ++i) {
        ContourPoint const p = curve(2 * std::numbers::pi * i / points);
        double const x = p.x * std::cos(turn) - p.y * std::sin(turn);
        double const y = p.x * std::sin(turn) + p.y * std::cos(turn);
        contour.push_back({(x + 1) * 0.5 * frame.width, (y + 1) * 0.5 * frame.height});
    }
    return contour;
}

} // namespace

class VideoGenerator : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectVideoGenerator> {
public:
    VideoGenerator(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext, ImplNames::DEFAULT) {}

    using EffectBaseOneInput::ProcessData;

    void ProcessData(DataHandle& data) override {
        Run([&] { ProcessInternal(data); });
    }

    void ProcessInternal(DataHandle& data) override {
        std::vector<Contour> contours;
        for (Curve const& curve : MakeCurves(settings)) contours.push_back(Trace(curve, settings));
        VideoHandle const picture = context->CreateImage(PixFmt::GRAY8, settings.GetSize());
        Kernels::FillContours(contours, picture->GetMutablePlane(0));
        if (data) picture->CopyAttributes(*data);
        data = picture;
    }
};

VELNOR_EFFECT(SettingsEffectVideoGenerator, OneInput, VideoGenerator)

} // namespace Velnor::Proc
