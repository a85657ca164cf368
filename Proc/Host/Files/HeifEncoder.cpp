#include "Core/Processors.h"
#include "Proc/Host/Files/EncodersModule.h"
#include "Proc/Host/PictureFile.h"

#include <libheif/heif.h>

#include <cstring>
#include <memory>

namespace Velnor::Proc::Files {
namespace {

template <auto Free>
struct Freeing {
    template <class Object>
    void operator()(Object* object) const {
        Free(object);
    }
};

template <class Object, auto Free>
using Held = std::unique_ptr<Object, Freeing<Free>>;
using HeldContext = Held<heif_context, &heif_context_free>;
using HeldEncoder = Held<heif_encoder, &heif_encoder_release>;
using HeldImage = Held<heif_image, &heif_image_release>;
using HeldPicture = Held<heif_image_handle, &heif_image_handle_release>;

void Require(heif_error const& error) {
    if (error.code != heif_error_Ok) VELNOR_THROW(FileException, error.message);
}

HeldEncoder MakeEncoder(heif_context* context, HeifCodec codec, EncoderOptions const& options) {
    heif_encoder* encoder = nullptr;
    Require(heif_context_get_encoder_for_format(
        context, codec == HeifCodec::Av1 ? heif_compression_AV1 : heif_compression_HEVC, &encoder));
    HeldEncoder held(encoder);
    Require(heif_encoder_set_lossy_quality(encoder, options.quality));
    Require(heif_encoder_set_lossless(encoder, options.isLossless ? 1 : 0));
    bool const isHalved = options.isChromaHalved && !options.isLossless;
    Require(heif_encoder_set_parameter_string(encoder, "chroma", isHalved ? "420" : "444"));
    // Of AV1; the other encoder asks the system, and has no such parameter.
    (void)heif_encoder_set_parameter_integer(encoder, "threads", static_cast<int>(Core::GetThreadsPerPicture()));
    return held;
}

HeldImage MakeImage(ConstPlane const& plane, std::string const& profile) {
    auto const width = static_cast<int>(plane.GetWidth() / plane.GetSampleBytes());
    auto const height = static_cast<int>(plane.GetHeight());
    heif_image* image = nullptr;
    Require(heif_image_create(width, height, heif_colorspace_RGB,
                              plane.GetSampleBytes() == 4 ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB,
                              &image));
    HeldImage held(image);
    Require(heif_image_add_plane(image, heif_channel_interleaved, width, height, 8));
    int stride = 0;
    unsigned char* const samples = heif_image_get_plane(image, heif_channel_interleaved, &stride);
    for (std::uint64_t y = 0; y < plane.GetHeight(); ++y)
        std::memcpy(samples + y * static_cast<std::uint64_t>(stride), plane.GetRow(y), plane.GetWidth());
    if (!profile.empty()) Require(heif_image_set_raw_color_profile(image, "prof", profile.data(), profile.size()));
    return held;
}

heif_error Append(heif_context*, void const* data, std::size_t bytes, void* user) {
    try {
        static_cast<std::string*>(user)->append(static_cast<char const*>(data), bytes);
        return {heif_error_Ok, heif_suberror_Unspecified, ""};
    } catch (std::bad_alloc const&) {
        return {heif_error_Memory_allocation_error, heif_suberror_Unspecified, "there is not enough memory"};
    }
}

} // namespace

std::string EncodeHeif(ConstPlane const& plane, MetadataBlocks const& metadata, HeifCodec codec,
                       EncoderOptions const& options) {
    HeldContext const context(heif_context_alloc());
    HeldEncoder const encoder = MakeEncoder(context.get(), codec, options);
    HeldImage const image = MakeImage(plane, metadata.profile);
    heif_image_handle* handle = nullptr;
    Require(heif_context_encode_image(context.get(), image.get(), encoder.get(), nullptr, &handle));
    HeldPicture const picture(handle);
    auto const sizeOf = [](std::string const& block) { return static_cast<int>(block.size()); };
    if (!metadata.exif.empty())
        Require(heif_context_add_exif_metadata(context.get(), handle, metadata.exif.data(), sizeOf(metadata.exif)));
    if (!metadata.xmp.empty())
        Require(heif_context_add_XMP_metadata(context.get(), handle, metadata.xmp.data(), sizeOf(metadata.xmp)));
    std::string file;
    heif_writer writer{1, &Append};
    Require(heif_context_write(context.get(), &writer, &file));
    return file;
}

} // namespace Velnor::Proc::Files
