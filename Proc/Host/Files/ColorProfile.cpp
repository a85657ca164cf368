#include "Proc/Host/Files/ColorProfile.h"

#include "Proc/Host/Files/FileBytes.h"

#include <lcms2.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <new>
#include <stdexcept>

namespace Velnor::Proc::Files {
namespace {

struct CloseProfile {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, CloseProfile>;

struct DeleteTransform {
    void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
using Transform = std::unique_ptr<void, DeleteTransform>;

Profile Open(std::string const& bytes) {
    return Profile(cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size())));
}

struct FreeCurve {
    void operator()(cmsToneCurve* curve) const { cmsFreeToneCurve(curve); }
};

/// Grey with the curve of sRGB (IEC 61966-2-1).
Profile MakeSrgbGrey() {
    std::array<double, 5> const srgb{2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    std::unique_ptr<cmsToneCurve, FreeCurve> const curve(cmsBuildParametricToneCurve(nullptr, 4, srgb.data()));
    if (curve == nullptr) throw std::bad_alloc();
    return Profile(cmsCreateGrayProfile(cmsD50_xyY(), curve.get()));
}

cmsUInt32Number GetLayout(int bands, SampleDepth depth) {
    bool const isGrey = bands < 3;
    return COLORSPACE_SH(static_cast<cmsUInt32Number>(isGrey ? PT_GRAY : PT_RGB)) | CHANNELS_SH(isGrey ? 1U : 3U) |
           EXTRA_SH(bands % 2 == 0 ? 1U : 0U) | BYTES_SH(depth == SampleDepth::Bits16 ? 2U : 1U);
}

using Bytes = std::vector<unsigned char>;

/// RGB pixels of sRGB in the colours of the profile; none for one that is not for RGB or is damaged.
Bytes FromSrgb(Bytes pixels, std::string const& profile) {
    Profile const target = IsProfileFor(profile, false) ? Open(profile) : nullptr;
    Profile const srgb(cmsCreate_sRGBProfile());
    if (target == nullptr || srgb == nullptr) return {};
    Transform const transform(cmsCreateTransform(srgb.get(), TYPE_RGB_8, target.get(), TYPE_RGB_8,
                                                 INTENT_RELATIVE_COLORIMETRIC,
                                                 cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_NOOPTIMIZE));
    auto const count = static_cast<cmsUInt32Number>(pixels.size() / 3);
    if (transform == nullptr) return {};
    cmsDoTransform(transform.get(), pixels.data(), pixels.data(), count);
    return pixels;
}

} // namespace

bool IsProfileFor(std::string const& profile, bool grey) {
    constexpr std::size_t COLOR_SPACE_AT = 16;
    return profile.size() >= COLOR_SPACE_AT + 4 && profile.compare(COLOR_SPACE_AT, 4, grey ? "GRAY" : "RGB ") == 0;
}

bool IsProfileWhole(std::string const& profile) {
    constexpr std::size_t HEADER_BYTES = 128;
    return profile.empty() ||
           (profile.size() >= HEADER_BYTES && profile.size() >= ToNumber(std::string_view(profile).substr(0, 4)));
}

bool IsSrgb(std::string const& profile) {
    Bytes grid;
    for (unsigned int i = 0; i < 4096; ++i)
        for (unsigned int const level : {i >> 8, i >> 4 & 15, i & 15})
            grid.push_back(static_cast<unsigned char>(level * 17));
    return std::ranges::equal(grid, FromSrgb(grid, profile),
                              [](int one, int other) { return std::abs(one - other) <= 1; });
}

Color FromSrgb(Color const& color, std::string const& profile) {
    Bytes const found = FromSrgb(Bytes{color.GetRed(), color.GetGreen(), color.GetBlue()}, profile);
    if (found.empty() || IsSrgb(profile)) return color;
    return {found[2], found[1], found[0], color.GetOpacity()};
}

SrgbConversion::SrgbConversion(std::string const& profile, int bands, SampleDepth depth, int pixels)
    : width(static_cast<std::uint32_t>(pixels)) {
    if (profile.empty()) return;
    Profile const source = Open(profile);
    Profile const srgb = bands < 3 ? MakeSrgbGrey() : Profile(cmsCreate_sRGBProfile());
    cmsUInt32Number const layout = GetLayout(bands, depth);
    if (source != nullptr && srgb != nullptr)
        transform = Transform(cmsCreateTransform(source.get(), layout, srgb.get(), layout, INTENT_RELATIVE_COLORIMETRIC,
                                                 cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_COPY_ALPHA));
    if (transform == nullptr)
        throw std::invalid_argument("its colour profile, by which it is to become sRGB, is damaged");
    buffer.resize(std::size_t{width} * static_cast<std::size_t>(bands));
}

void const* SrgbConversion::Convert(void const* row) {
    if (transform == nullptr) return row;
    cmsDoTransform(transform.get(), row, buffer.data(), width);
    return buffer.data();
}

} // namespace Velnor::Proc::Files
