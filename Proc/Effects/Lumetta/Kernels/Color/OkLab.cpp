#include "Proc/Effects/Lumetta/Kernels/Color/OkLab.h"

#include <algorithm>
#include <cmath>

namespace Velnor::Proc::Kernels {
namespace {

float Linear(float level) {
    float const v = level / 255.0F;
    return v <= 0.04045F ? v / 12.92F : std::pow((v + 0.055F) / 1.055F, 2.4F);
}

float Level(float linear) {
    return 255.0F * (linear <= 0.0031308F ? linear * 12.92F : 1.055F * std::pow(linear, 1.0F / 2.4F) - 0.055F);
}

} // namespace

Lab ToOkLab(RgbLevels const& rgb) {
    float const r = Linear(rgb[0]);
    float const g = Linear(rgb[1]);
    float const b = Linear(rgb[2]);
    float const l = std::cbrt(0.4122214708F * r + 0.5363325363F * g + 0.0514459929F * b);
    float const m = std::cbrt(0.2119034982F * r + 0.6806995451F * g + 0.1073969566F * b);
    float const s = std::cbrt(0.0883024619F * r + 0.2817188376F * g + 0.6299787005F * b);
    return {0.2104542553F * l + 0.7936177850F * m - 0.0040720468F * s,
            1.9779984951F * l - 2.4285922050F * m + 0.4505937099F * s,
            0.0259040371F * l + 0.7827717662F * m - 0.8086757660F * s};
}

namespace {

RgbLevels LinearFromOkLab(Lab const& lab) {
    float const l = lab.l + 0.3963377774F * lab.a + 0.2158037573F * lab.b;
    float const m = lab.l - 0.1055613458F * lab.a - 0.0638541728F * lab.b;
    float const s = lab.l - 0.0894841775F * lab.a - 1.2914855480F * lab.b;
    float const l3 = l * l * l;
    float const m3 = m * m * m;
    float const s3 = s * s * s;
    return {4.0767416621F * l3 - 3.3077115913F * m3 + 0.2309699292F * s3,
            -1.2684380046F * l3 + 2.6097574011F * m3 - 0.3413193965F * s3,
            -0.0041960863F * l3 - 0.7034186147F * m3 + 1.7076147010F * s3};
}

bool IsInGamut(Lab const& lab) {
    constexpr float ROUNDING = 1e-4F; // Of colours at the very border, a third of a level.
    return std::ranges::all_of(LinearFromOkLab(lab),
                               [](float light) { return light >= -ROUNDING && light <= 1 + ROUNDING; });
}

} // namespace

RgbLevels FromOkLab(Lab const& lab) {
    RgbLevels const light = LinearFromOkLab(lab);
    return {Level(light[0]), Level(light[1]), Level(light[2])};
}

Lab IntoGamut(Lab const& lab) {
    constexpr int HALVINGS = 14; // To a share of chroma that no level shows.
    if (!(lab.l > 0)) return {};
    if (lab.l >= 1) return {1, 0, 0};
    if (IsInGamut(lab)) return lab;
    float inside = 0;
    float outside = 1;
    auto const withChroma = [&](float share) { return Lab{lab.l, share * lab.a, share * lab.b}; };
    for (int i = 0; i < HALVINGS; ++i) {
        float const middle = (inside + outside) / 2;
        (IsInGamut(withChroma(middle)) ? inside : outside) = middle;
    }
    return withChroma(inside);
}

RgbLevels WithLuma(RgbLevels const& rgb, float luma) {
    float const own = LumaOf(rgb);
    float scale = 1;
    for (float const level : rgb) {
        float const chroma = level - own;
        float const room = chroma > 0 ? 255.0F - luma : luma;
        if (std::abs(chroma) * scale > room) scale = std::max(0.0F, room / std::abs(chroma));
    }
    return {luma + scale * (rgb[0] - own), luma + scale * (rgb[1] - own), luma + scale * (rgb[2] - own)};
}

} // namespace Velnor::Proc::Kernels
