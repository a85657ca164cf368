#include "Proc/Host/Files/Display.h"

#include <limits>
#include <utility>

namespace Velnor::Proc::Files {
namespace {

constexpr int MAX_BANDS = 4;

/// Runs an operation of the library, `operation(input, &output)`, which returns 0 when it succeeds. Null gives null.
template <class Operation>
OwnedImage Apply(OwnedImage const& image, Operation const& operation) {
    VipsImage* output = nullptr;
    if (image == nullptr || operation(image.get(), &output) != 0) return nullptr;
    return OwnedImage(output);
}

/// A copy of the header, so that fields can be taken out of an image that others may hold.
OwnedImage WithoutProfile(OwnedImage const& image) {
    OwnedImage copy = Apply(image, [](VipsImage* in, VipsImage** out) { return vips_copy(in, out, nullptr); });
    if (copy != nullptr) vips_image_remove(copy.get(), VIPS_META_ICC_NAME);
    return copy;
}

OwnedImage CmykToRgb(OwnedImage const& image) {
    return Apply(image, [](VipsImage* in, VipsImage** out) {
        return vips_icc_transform(in, out, "srgb", "embedded", TRUE, "input_profile", "cmyk", "intent",
                                  VIPS_INTENT_RELATIVE, "black_point_compensation", TRUE, "depth", 8, nullptr);
    });
}

OwnedImage ToRgb(OwnedImage const& image) {
    return WithoutProfile(Apply(image, [](VipsImage* in, VipsImage** out) {
        return vips_colourspace(in, out, VIPS_INTERPRETATION_sRGB, nullptr);
    }));
}

/// Grey in floating point, as if it were three equal bands. Its alpha, which hardly any such file has, is given up.
OwnedImage LinearGreyToGrey(OwnedImage const& image) {
    OwnedImage const linear = Apply(image, [](VipsImage* in, VipsImage** out) {
        VipsImage* grey = nullptr;
        if (vips_extract_band(in, &grey, 0, nullptr) != 0) return -1;
        Owned<VipsImage> const owner(grey);
        VipsImage* bands[] = {grey, grey, grey};
        VipsImage* joined = nullptr;
        if (vips_bandjoin(bands, &joined, 3, nullptr) != 0) return -1;
        Owned<VipsImage> const joinedOwner(joined);
        return vips_copy(joined, out, "interpretation", VIPS_INTERPRETATION_scRGB, nullptr);
    });
    return Apply(ToRgb(linear), [](VipsImage* in, VipsImage** out) { return vips_extract_band(in, out, 0, nullptr); });
}

/// The value that stands for white in a format of integers, 0 for others.
double GetWhite(VipsBandFormat format) {
    switch (format) {
    case VIPS_FORMAT_CHAR:
        return std::numeric_limits<signed char>::max();
    case VIPS_FORMAT_SHORT:
        return std::numeric_limits<short>::max();
    case VIPS_FORMAT_UINT:
        return std::numeric_limits<unsigned int>::max();
    case VIPS_FORMAT_INT:
        return std::numeric_limits<int>::max();
    default:
        return 0;
    }
}

OwnedImage ScaleToBytes(OwnedImage const& image, double white) {
    OwnedImage const scaled = Apply(image, [white](VipsImage* in, VipsImage** out) {
        return vips_linear1(in, out, 255 / white, 0.5, nullptr); // The cast cuts, and clips.
    });
    return Apply(scaled, [](VipsImage* in, VipsImage** out) { return vips_cast(in, out, VIPS_FORMAT_UCHAR, nullptr); });
}

bool IsGreyOrRgb(VipsInterpretation interpretation) {
    switch (interpretation) {
    case VIPS_INTERPRETATION_B_W:
    case VIPS_INTERPRETATION_GREY16:
    case VIPS_INTERPRETATION_RGB:
    case VIPS_INTERPRETATION_RGB16:
    case VIPS_INTERPRETATION_sRGB:
    case VIPS_INTERPRETATION_MULTIBAND:
        return true;
    default:
        return false;
    }
}

OwnedImage ConvertModel(OwnedImage image) {
    VipsInterpretation const interpretation = vips_image_guess_interpretation(image.get());
    VipsBandFormat const format = vips_image_get_format(image.get());
    if (interpretation == VIPS_INTERPRETATION_CMYK) return CmykToRgb(image);
    if (!IsGreyOrRgb(interpretation)) return ToRgb(image);
    if (vips_band_format_isfloat(format) && vips_image_get_bands(image.get()) < 3) return LinearGreyToGrey(image);
    if (vips_band_format_isfloat(format)) return ScaleToBytes(image, 1);
    double const white = GetWhite(format);
    return white == 0 ? std::move(image) : ScaleToBytes(image, white);
}

} // namespace

OwnedImage MakeDisplayable(OwnedImage image) {
    image = ConvertModel(std::move(image));
    if (image == nullptr || vips_image_get_bands(image.get()) <= MAX_BANDS) return image;
    return Apply(image,
                 [](VipsImage* in, VipsImage** out) { return vips_extract_band(in, out, 0, "n", MAX_BANDS, nullptr); });
}

} // namespace Velnor::Proc::Files
