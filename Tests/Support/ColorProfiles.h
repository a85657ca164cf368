#pragma once

#include <lcms2.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace Velnor::Proc::Testing {

using Rgb = std::array<int, 3>;

inline std::string TakeBytes(cmsHPROFILE profile) {
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    std::string bytes(size, '\0');
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

/// The primaries and the white of Display P3 with a plain gamma.
inline std::string MakeWideProfile(double gamma = 2.2) {
    cmsCIExyY const white{0.3127, 0.3290, 1};
    cmsCIExyYTRIPLE const primaries{{0.680, 0.320, 1}, {0.265, 0.690, 1}, {0.150, 0.060, 1}};
    cmsToneCurve* const curve = cmsBuildGamma(nullptr, gamma);
    std::array<cmsToneCurve*, 3> const curves{curve, curve, curve};
    std::string bytes = TakeBytes(cmsCreateRGBProfile(&white, &primaries, curves.data()));
    cmsFreeToneCurve(curve);
    return bytes;
}

inline std::string MakeGreyProfile(double gamma) {
    cmsToneCurve* const curve = cmsBuildGamma(nullptr, gamma);
    std::string bytes = TakeBytes(cmsCreateGrayProfile(cmsD50_xyY(), curve));
    cmsFreeToneCurve(curve);
    return bytes;
}

/// A colour of an RGB profile as sRGB, or the other way round, in floating point.
inline Rgb ThroughProfile(std::string const& bytes, Rgb const& from, bool toSrgb) {
    cmsHPROFILE const srgb = cmsCreate_sRGBProfile();
    cmsHPROFILE const own = cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
    cmsHTRANSFORM const transform = cmsCreateTransform(toSrgb ? own : srgb, TYPE_RGB_DBL, toSrgb ? srgb : own,
                                                       TYPE_RGB_DBL, INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE);
    std::array<double, 3> const given{from[0] / 255.0, from[1] / 255.0, from[2] / 255.0};
    std::array<double, 3> found{};
    cmsDoTransform(transform, given.data(), found.data(), 1);
    cmsDeleteTransform(transform);
    cmsCloseProfile(own);
    cmsCloseProfile(srgb);
    Rgb to{};
    std::ranges::transform(found, to.begin(),
                           [](double value) { return std::clamp(static_cast<int>(std::lround(value * 255)), 0, 255); });
    return to;
}

} // namespace Velnor::Proc::Testing
