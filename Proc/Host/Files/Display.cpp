#include "Proc/Host/Files/Display.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <limits>
#include <string_view>
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

/// Of PFM, which the library takes for no colours in particular.
OwnedImage LinearRgbToRgb(OwnedImage const& image) {
    return ToRgb(Apply(image, [](VipsImage* in, VipsImage** out) {
        return vips_copy(in, out, "interpretation", VIPS_INTERPRETATION_scRGB, nullptr);
    }));
}

/// The value that stands for white in an image of integers, 0 where it is the largest of unsigned ones of one or two
/// bytes.
double GetWhite(VipsImage* image) {
    int most = 0; // Of a PNM file, which may have any.
    bool const isTold = vips_image_get_typeof(image, "ppm-max-value") != 0 &&
                        vips_image_get_int(image, "ppm-max-value", &most) == 0 && most > 0;
    VipsBandFormat const format = vips_image_get_format(image);
    if (isTold && most != (format == VIPS_FORMAT_UCHAR ? UINT8_MAX : UINT16_MAX)) return most;
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
    if (vips_image_get_typeof(image.get(), "pfm-scale") != 0) return LinearRgbToRgb(image);
    if (vips_band_format_isfloat(format)) return ScaleToBytes(image, 1);
    double const white = GetWhite(image.get());
    return white == 0 ? std::move(image) : ScaleToBytes(image, white);
}

/// The number of 32 bits at a place, the most significant byte first.
std::uint32_t ToNumber(std::string_view bytes, std::size_t at) {
    std::uint32_t number = 0;
    for (std::size_t i = at; i < at + 4; ++i) number = number << 8 | static_cast<unsigned char>(bytes[i]);
    return number;
}

/// How many frames an animated PNG has, which its decoder takes for one of a single frame; 1 for all else. The chunk
/// that tells stands before the samples.
int CountPngFrames(int descriptor) {
    constexpr std::string_view SIGNATURE("\x89PNG\r\n\x1a\n", 8);
    constexpr std::uint64_t FRAME_BYTES = 12; // Length, type and checksum.
    auto const read = [descriptor](std::uint64_t at, std::size_t bytes) {
        std::string content(bytes, '\0');
        ssize_t const got = pread(descriptor, content.data(), bytes, static_cast<off_t>(at));
        return got == static_cast<ssize_t>(bytes) ? content : std::string();
    };
    std::uint64_t at = SIGNATURE.size();
    if (read(0, at) != SIGNATURE) return 1;
    for (;;) {
        std::string const chunk = read(at, FRAME_BYTES); // Length, type and the first number of the content.
        std::string_view const type = chunk.empty() ? "" : std::string_view(chunk).substr(4, 4);
        if (type.empty() || type == "IDAT") return 1;
        if (type == "acTL")
            return static_cast<int>(std::min<std::uint32_t>(ToNumber(chunk, 8), std::numeric_limits<int>::max()));
        at += ToNumber(chunk, 0) + FRAME_BYTES;
    }
}

} // namespace

bool ChangesColorModel(VipsImage* image) { return !IsGreyOrRgb(vips_image_guess_interpretation(image)); }

std::vector<std::string> DescribeConversions(VipsImage* image, int descriptor) {
    std::vector<std::string> lines;
    int const pages = std::max(vips_image_get_n_pages(image), CountPngFrames(descriptor));
    if (pages > 1) lines.push_back("of its " + std::to_string(pages) + " pages or frames the first is read");
    VipsInterpretation const interpretation = vips_image_guess_interpretation(image);
    if (!IsGreyOrRgb(interpretation) && interpretation != VIPS_INTERPRETATION_scRGB) {
        std::string model = vips_enum_nick(VIPS_TYPE_INTERPRETATION, interpretation);
        std::ranges::transform(model, model.begin(), [](unsigned char c) { return std::toupper(c); });
        lines.push_back("its colours, " + model + ", become RGB");
    }
    VipsBandFormat const format = vips_image_get_format(image);
    if (format != VIPS_FORMAT_UCHAR && format != VIPS_FORMAT_CHAR)
        lines.push_back("its samples of " + std::to_string(8 * vips_format_sizeof(format)) + " bits become 8 bits");
    return lines;
}

OwnedImage MakeDisplayable(OwnedImage image) {
    image = ConvertModel(std::move(image));
    if (image == nullptr || vips_image_get_bands(image.get()) <= MAX_BANDS) return image;
    return Apply(image,
                 [](VipsImage* in, VipsImage** out) { return vips_extract_band(in, out, 0, "n", MAX_BANDS, nullptr); });
}

OwnedImage WithSrgbProfile(OwnedImage const& image) {
    OwnedImage labelled = WithoutProfile(image);
    if (labelled == nullptr || vips_image_get_bands(labelled.get()) < 3) return labelled;
    VipsBlob* profile = nullptr;
    if (vips_profile_load("srgb", &profile, nullptr) != 0) return nullptr;
    std::size_t bytes = 0;
    void const* const content = vips_blob_get(profile, &bytes);
    vips_image_set_blob_copy(labelled.get(), VIPS_META_ICC_NAME, content, bytes);
    vips_area_unref(VIPS_AREA(profile));
    return labelled;
}

} // namespace Velnor::Proc::Files
