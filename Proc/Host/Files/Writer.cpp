#include "Proc/Host/Files/Writer.h"

#include "Proc/Host/Files/Metadata.h"
#include "Proc/Host/Files/PaletteFile.h"
#include "Proc/Host/Files/Target.h"
#include "Proc/Host/MemoryRoom.h"

#include <cstring>
#include <new>

namespace Velnor::Proc::Files {
namespace {

namespace fs = std::filesystem;

/// Fills a strip for the encoder from the picture's rows, which may be padded or upside down.
int CopyStrip(VipsRegion* region, void*, void* user, void*, gboolean*) {
    auto const* const plane = static_cast<ConstPlane const*>(user);
    VipsRect const& area = region->valid;
    std::size_t const bytes = VIPS_REGION_SIZEOF_LINE(region);
    for (int y = area.top; y < area.top + area.height; ++y)
        std::memcpy(VIPS_REGION_ADDR(region, area.left, y),
                    plane->GetOffsetPtr(static_cast<std::uint64_t>(area.left), static_cast<std::uint64_t>(y)), bytes);
    return 0;
}

/// An image of the library on a packed picture's samples; the plane outlives it. Null when the library fails.
OwnedImage WrapPlane(ConstPlane const& plane, FileKind kind, VipsMetadata const* metadata) {
    auto const bands = static_cast<int>(plane.GetSampleBytes());
    auto const width = static_cast<int>(plane.GetWidth() / plane.GetSampleBytes());
    OwnedImage image(vips_image_new());
    vips_image_init_fields(image.get(), width, static_cast<int>(plane.GetHeight()), bands, VIPS_FORMAT_UCHAR,
                           VIPS_CODING_NONE, bands < 3 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB, 1.0, 1.0);
    if (metadata != nullptr) metadata->Apply(image.get(), kind);
    if (vips_image_pipelinev(image.get(), VIPS_DEMAND_STYLE_THINSTRIP, nullptr) != 0) return nullptr;
    // The library takes what the callback reads as writable, and never writes it.
    if (vips_image_generate(image.get(), nullptr, CopyStrip, nullptr, const_cast<ConstPlane*>(&plane), nullptr) != 0)
        return nullptr;
    return image;
}

int SaveJpeg(VipsImage* image, VipsTarget* target, int quality) {
    constexpr int FULL_CHROMA_QUALITY = 95;
    return vips_jpegsave_target(image, target, "Q", quality, "subsample_mode",
                                quality < FULL_CHROMA_QUALITY ? VIPS_FOREIGN_SUBSAMPLE_ON : VIPS_FOREIGN_SUBSAMPLE_OFF,
                                nullptr);
}

int Save(VipsImage* image, VipsTarget* target, FileKind kind, int quality) {
    switch (kind) {
    case FileKind::Jpeg:
        return SaveJpeg(image, target, quality);
    case FileKind::Png:
        return vips_pngsave_target(image, target, nullptr);
    case FileKind::Tiff:
        return vips_tiffsave_target(image, target, "compression", VIPS_FOREIGN_TIFF_COMPRESSION_LZW, "predictor",
                                    VIPS_FOREIGN_TIFF_PREDICTOR_HORIZONTAL, nullptr);
    case FileKind::WebP:
        return vips_webpsave_target(image, target, "Q", quality, nullptr);
    }
    return -1;
}

/// Throws what writing threw, else the library's complaint.
[[noreturn]] void Fail(fs::path const& path, Target const* target) {
    std::string const reason = TakeError();
    if (target != nullptr) target->Rethrow();
    if (IsAboutMemory(reason, WORKING_ROOM)) throw std::bad_alloc();
    VELNOR_THROW(FileOutputException, path.string() + " cannot be written: " + reason + ".");
}

void WritePacked(OutputFile& file, fs::path const& path, FileKind kind, ConstPlane const& plane,
                 VipsMetadata const* metadata, int quality) {
    OwnedImage const image = WrapPlane(plane, kind, metadata);
    if (image == nullptr) Fail(path, nullptr);
    Target const target(file);
    if (Save(image.get(), target.Get(), kind, quality) != 0) Fail(path, &target);
}

} // namespace

void WriteVipsPicture(fs::path const& path, FileKind kind, IDataVideo const& picture, PictureMetadata const* metadata,
                      WriteOptions const& options) {
    auto const* const fields = dynamic_cast<VipsMetadata const*>(metadata);
    RequireRoom(WORKING_ROOM);
    OutputFile file(path, options.overwrite);
    if (picture.GetPixFmt() != PixFmt::PAL8)
        WritePacked(file, path, kind, picture.GetPlane(0), fields, options.quality);
    else if (!WritePalettePng(file, picture, fields))
        Fail(path, nullptr);
    file.Commit();
}

} // namespace Velnor::Proc::Files
