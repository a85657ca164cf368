#include "Proc/Host/Files/Salvage.h"

#include "Proc/Host/Files/EncodersModule.h"
#include "Proc/Host/Files/ExifBlock.h"
#include "Proc/Host/Files/FileFacts.h"
#include "Proc/Host/Files/WebPFile.h"

#include <png.h>
#include <webp/decode.h>

#include <algorithm>
#include <csetjmp>
#include <cstdint>
#include <memory>
#include <new>
#include <vector>

namespace Velnor::Proc::Files {
namespace {

using Bytes = std::vector<std::uint8_t>;

std::string ReadAll(int descriptor) {
    FileBytes const file(descriptor);
    return file.Read(0, file.GetSize());
}

/// An image with that header and no pixels.
OwnedImage MakeHeader(int width, int height, int bands) {
    OwnedImage image(vips_image_new());
    vips_image_init_fields(image.get(), width, height, bands, VIPS_FORMAT_UCHAR, VIPS_CODING_NONE,
                           bands < 3 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB, 1.0, 1.0);
    return image;
}

void SetBlob(VipsImage* image, char const* name, std::string const& content) {
    if (!content.empty()) vips_image_set_blob_copy(image, name, content.data(), content.size());
}

/// What the library would have taken out of the file.
void SetMetadata(VipsImage* image, WebPChunks const& chunks) {
    SetBlob(image, VIPS_META_ICC_NAME, chunks.profile);
    SetBlob(image, VIPS_META_EXIF_NAME, chunks.exif);
    SetBlob(image, VIPS_META_XMP_NAME, chunks.xmp);
    if (!chunks.exif.empty() && FindExifDamage(chunks.exif).empty())
        vips_image_set_int(image, VIPS_META_ORIENTATION, ExifBlock(chunks.exif).GetOrientation());
}

OwnedImage MakeImage(Bytes const& pixels, int width, int height, int bands) {
    OwnedImage const memory(
        vips_image_new_from_memory_copy(pixels.data(), pixels.size(), width, height, bands, VIPS_FORMAT_UCHAR));
    VipsImage* image = nullptr;
    VipsInterpretation const model = bands < 3 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB;
    if (memory == nullptr || vips_copy(memory.get(), &image, "interpretation", model, nullptr) != 0) return nullptr;
    return OwnedImage(image);
}

/// The decoder of a PNG file in memory. It reports failure by a jump, over which no object with a destructor may live:
/// all of them live here.
class PngSalvage {
public:
    explicit PngSalvage(std::string_view png) : file(png) {
        decoder = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning);
        info = decoder == nullptr ? nullptr : png_create_info_struct(decoder);
        if (info == nullptr) throw std::bad_alloc();
        png_set_read_fn(decoder, this, Read);
    }
    ~PngSalvage() { png_destroy_read_struct(&decoder, &info, nullptr); }
    PngSalvage(PngSalvage const&) = delete;
    PngSalvage& operator=(PngSalvage const&) = delete;

    Salvaged Run() {
        if (!ReadHeader()) return {};
        pixels.resize(rowBytes * static_cast<std::size_t>(height));
        ReadPasses();
        if (rowsRead == 0) return {};
        return {MakeImage(pixels, static_cast<int>(rowBytes) / bands, height, bands), isWhole};
    }

private:
    static void OnError(png_structp png, png_const_charp) { longjmp(png_jmpbuf(png), 1); }
    static void OnWarning(png_structp png, png_const_charp) {
        static_cast<PngSalvage*>(png_get_error_ptr(png))->hasWarned = true;
    }
    static void Read(png_structp png, png_bytep target, std::size_t count) {
        auto* const self = static_cast<PngSalvage*>(png_get_io_ptr(png));
        if (count > self->file.size() - self->at) png_error(png, "the file ends");
        std::copy_n(self->file.data() + self->at, count, target);
        self->at += count;
    }

    bool ReadHeader() {
        if (setjmp(png_jmpbuf(decoder)) != 0) return false;
        png_set_crc_action(decoder, PNG_CRC_QUIET_USE, PNG_CRC_QUIET_USE);
        png_read_info(decoder, info);
        png_set_expand(decoder);
        png_set_scale_16(decoder);
        passes = png_set_interlace_handling(decoder);
        png_read_update_info(decoder, info);
        rowBytes = png_get_rowbytes(decoder, info);
        height = static_cast<int>(png_get_image_height(decoder, info));
        bands = png_get_channels(decoder, info);
        return true;
    }

    void ReadPasses() {
        if (setjmp(png_jmpbuf(decoder)) != 0) return;
        for (int pass = 0; pass < passes; ++pass)
            for (int y = 0; y < height; ++y, ++rowsRead)
                png_read_row(decoder, nullptr, pixels.data() + rowBytes * static_cast<std::size_t>(y));
        png_read_end(decoder, nullptr);
        isWhole = !hasWarned;
    }

    std::string_view file;
    std::size_t at = 0;
    png_structp decoder = nullptr;
    png_infop info = nullptr;
    int passes = 0;
    std::size_t rowBytes = 0;
    int height = 0;
    int bands = 1;
    std::uint64_t rowsRead = 0; ///< Of all passes.
    bool isWhole = false;
    bool hasWarned = false;
    Bytes pixels;
};

} // namespace

OwnedImage SalvageWebp(int descriptor, std::function<void(VipsImage*)> const& check) {
    std::string const file = ReadAll(descriptor);
    auto const* const bytes = reinterpret_cast<std::uint8_t const*>(file.data());
    WebPBitstreamFeatures features{};
    bool const isKnown = WebPGetFeatures(bytes, file.size(), &features) == VP8_STATUS_OK;
    if (!isKnown || features.has_animation != 0) return nullptr;
    int const bands = features.has_alpha != 0 ? 4 : 3;
    check(MakeHeader(features.width, features.height, bands).get());
    int const stride = features.width * bands;
    Bytes pixels(static_cast<std::size_t>(stride) * static_cast<std::size_t>(features.height));
    std::unique_ptr<WebPIDecoder, decltype(&WebPIDelete)> const decoder(
        WebPINewRGB(bands == 4 ? MODE_RGBA : MODE_RGB, pixels.data(), pixels.size(), stride), &WebPIDelete);
    if (decoder == nullptr) throw std::bad_alloc();
    (void)WebPIUpdate(decoder.get(), bytes, file.size()); // That it is damaged is known.
    int rows = 0;
    bool const isAny = WebPIDecGetRGB(decoder.get(), &rows, nullptr, nullptr, nullptr) != nullptr && rows > 0;
    OwnedImage image = isAny ? MakeImage(pixels, features.width, features.height, bands) : nullptr;
    if (image != nullptr) SetMetadata(image.get(), ReadWebPChunks(FileBytes(file)));
    return image;
}

Salvaged SalvageInterlacedPng(int descriptor) {
    std::string const file = ReadAll(descriptor);
    return PngSalvage(file).Run();
}

Salvaged SalvageJpegXl(int descriptor) {
    SalvagedJxl const found = GetEncoders().salvageJxl(ReadAll(descriptor));
    if (found.samples.empty()) return {};
    return {MakeImage(found.samples, static_cast<int>(found.width), static_cast<int>(found.height),
                      static_cast<int>(found.bands)),
            found.isWhole};
}

Owned<VipsSource> FillUp(int descriptor, std::uint64_t missingBytes) {
    std::string const whole = ReadAll(descriptor) + std::string(missingBytes, '\0');
    VipsBlob* const blob = vips_blob_copy(whole.data(), whole.size());
    Owned<VipsSource> source(vips_source_new_from_blob(blob));
    vips_area_unref(VIPS_AREA(blob));
    return source;
}

} // namespace Velnor::Proc::Files
