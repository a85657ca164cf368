#include "Proc/Host/Files/Writer.h"

#include "Proc/Host/Files/EncodersModule.h"
#include "Proc/Host/Files/ExifBlock.h"
#include "Proc/Host/Files/ImageResources.h"
#include "Proc/Host/Files/JpegSegments.h"
#include "Proc/Host/Files/Metadata.h"
#include "Proc/Host/Files/MetadataLibrary.h"
#include "Proc/Host/Files/PngFile.h"
#include "Proc/Host/Files/Target.h"
#include "Proc/Host/Files/WebPFile.h"
#include "Proc/Host/MemoryRoom.h"

#include <cstring>
#include <new>
#include <string_view>

namespace Velnor::Proc::Files {
namespace {

namespace fs = std::filesystem;

constexpr int USUAL_QUALITY = 90;
constexpr int USUAL_HEIF_QUALITY = 70;
constexpr int FULL_CHROMA_QUALITY = 95; // Cameras halve it below.

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
OwnedImage WrapPlane(ConstPlane const& plane) {
    auto const bands = static_cast<int>(plane.GetSampleBytes());
    auto const width = static_cast<int>(plane.GetWidth() / plane.GetSampleBytes());
    OwnedImage image(vips_image_new());
    vips_image_init_fields(image.get(), width, static_cast<int>(plane.GetHeight()), bands, VIPS_FORMAT_UCHAR,
                           VIPS_CODING_NONE, bands < 3 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB, 1.0, 1.0);
    if (vips_image_pipelinev(image.get(), VIPS_DEMAND_STYLE_THINSTRIP, nullptr) != 0) return nullptr;
    // The library takes what the callback reads as writable, and never writes it.
    if (vips_image_generate(image.get(), nullptr, CopyStrip, nullptr, const_cast<ConstPlane*>(&plane), nullptr) != 0)
        return nullptr;
    return image;
}

void SetBlob(VipsImage* image, char const* name, std::string const& content) {
    if (!content.empty()) vips_image_set_blob_copy(image, name, content.data(), content.size());
}

void SetResolution(VipsImage* image, MetadataBlocks const& metadata) {
    if (metadata.xResolution == 0) return;
    image->Xres = metadata.xResolution;
    image->Yres = metadata.yResolution;
    vips_image_set_string(image, VIPS_META_RESOLUTION_UNIT, "in");
}

/// What an encoder of the library puts into memory.
class EncodedBuffer {
public:
    ~EncodedBuffer() { g_free(data); }
    void** GetData() { return &data; }
    std::size_t* GetSize() { return &size; }
    std::span<unsigned char> Get() const { return {static_cast<unsigned char*>(data), size}; }
    std::string_view GetText() const { return {static_cast<char const*>(data), size}; }

private:
    void* data = nullptr;
    std::size_t size = 0;
};

/// One file being written.
class Writing {
public:
    Writing(OutputFile& output, fs::path const& name, IDataVideo const& video, FileMetadata::Fitted& fittedMetadata,
            WriteOptions const& writeOptions)
        : file(output), path(name), picture(video), fitted(fittedMetadata), options(writeOptions) {}

    void Run(FileKind kind) {
        if (kind == FileKind::Png) {
            if (!WritePng(file, picture, metadata, GetPngCompression()))
                fitted.losses.emplace_back("the colour profile, which is damaged, is left out");
            return;
        }
        plane = picture.GetPlane(0);
        if (kind == FileKind::Avif || kind == FileKind::Heic || kind == FileKind::Jxl) return WriteRarer(kind);
        image = WrapPlane(plane);
        if (image == nullptr) Fail();
        SetResolution(image.get(), metadata);
        if (kind == FileKind::Jpeg) return WriteJpeg();
        if (kind == FileKind::Tiff) return WriteTiff();
        if (kind == FileKind::WebP) return WriteWebP();
        WritePnm();
    }

private:
    int GetPngCompression() const {
        constexpr int USUAL = 6;
        return options.compression.empty() ? USUAL : options.compression[0] - '0';
    }

    VipsForeignTiffCompression GetTiffCompression() const {
        if (options.compression == "none") return VIPS_FOREIGN_TIFF_COMPRESSION_NONE;
        return options.compression == "deflate" ? VIPS_FOREIGN_TIFF_COMPRESSION_DEFLATE
                                                : VIPS_FOREIGN_TIFF_COMPRESSION_LZW;
    }

    struct Release {
        void operator()(VipsArrayDouble* array) const { vips_area_unref(VIPS_AREA(array)); }
    };

    std::unique_ptr<VipsArrayDouble, Release> MakeBackground() const {
        Color const& color = options.background;
        std::vector<double> levels{static_cast<double>(color.y())};
        if (plane.GetSampleBytes() > 2)
            levels = {static_cast<double>(color.GetRed()), static_cast<double>(color.GetGreen()),
                      static_cast<double>(color.GetBlue())};
        return std::unique_ptr<VipsArrayDouble, Release>(
            vips_array_double_new(levels.data(), static_cast<int>(levels.size())));
    }

    int GetQuality(int usual) const { return options.quality.value_or(usual); }

    /// Throws what writing threw, else the library's complaint.
    [[noreturn]] void Fail(Target const* target = nullptr) const {
        std::string const reason = TakeError();
        if (target != nullptr) target->Rethrow();
        if (IsAboutMemory(reason, WORKING_ROOM)) throw std::bad_alloc();
        FailWith(reason);
    }

    [[noreturn]] void FailWith(std::string const& reason) const {
        VELNOR_THROW(FileOutputException, path.string() + " cannot be written: " + reason + ".");
    }

    void Put(std::string_view content) { file.Write(content.data(), content.size()); }

    void WriteJpeg() {
        constexpr std::size_t START_OF_IMAGE = 2; // Told to leave out metadata, the encoder begins with its tables.
        Target const target(file, MakeJpegSegments(metadata), START_OF_IMAGE);
        auto const& coding = metadata.coding;
        int const quality = GetQuality(coding ? coding->quality : USUAL_QUALITY);
        bool const isHalved =
            options.halvesChroma.value_or(coding ? coding->isChromaHalved : quality < FULL_CHROMA_QUALITY);
        if (vips_jpegsave_target(image.get(), target.Get(), "Q", quality, "subsample_mode",
                                 isHalved ? VIPS_FOREIGN_SUBSAMPLE_ON : VIPS_FOREIGN_SUBSAMPLE_OFF, "background",
                                 MakeBackground().get(), "strip", TRUE, nullptr) != 0)
            Fail(&target);
    }

    /// EXIF and IPTC are tags among those of the picture.
    void WriteTiff() {
        SetBlob(image.get(), VIPS_META_ICC_NAME, metadata.profile);
        SetBlob(image.get(), VIPS_META_XMP_NAME, metadata.xmp);
        auto const save = [&](auto const& function, auto... target) {
            return function(image.get(), target..., "compression", GetTiffCompression(), "predictor",
                            VIPS_FOREIGN_TIFF_PREDICTOR_HORIZONTAL, nullptr);
        };
        if (metadata.exif.empty() && metadata.resources.empty()) {
            Target const target(file);
            if (save(vips_tiffsave_target, target.Get()) != 0) Fail(&target);
            return;
        }
        EncodedBuffer encoded;
        if (save(vips_tiffsave_buffer, encoded.GetData(), encoded.GetSize()) != 0) Fail();
        Put(AddTags(encoded));
    }

    std::string AddTags(EncodedBuffer const& encoded) const {
        try {
            ExifBlock whole(metadata.exif.empty() ? std::string(encoded.GetText())
                                                  : AddTiffTags(encoded.Get(), metadata.exif));
            std::string const iptc = FindIptc(metadata.resources);
            std::string const others = DropIptc(metadata.resources);
            if (!iptc.empty()) whole.AddBlock(ExifBlock::IPTC, iptc);
            if (!others.empty()) whole.AddBlock(ExifBlock::IMAGE_RESOURCES, others);
            return std::move(whole).GetBytes();
        } catch (std::bad_alloc const&) {
            throw;
        } catch (std::exception const& error) {
            FailWith("its metadata cannot be added: " + std::string(error.what()));
        }
    }

    void WriteWebP() {
        EncodedBuffer encoded;
        if (vips_webpsave_buffer(image.get(), encoded.GetData(), encoded.GetSize(), "Q", GetQuality(USUAL_QUALITY),
                                 "lossless", options.isLossless ? TRUE : FALSE, "strip", TRUE, nullptr) != 0)
            Fail();
        auto const whole = AddWebPChunks(encoded.GetText(), metadata);
        if (!whole) FailWith("its metadata cannot be added");
        Put(*whole);
    }

    /// Of the kinds that the module of encoders makes.
    void WriteRarer(FileKind kind) {
        int const quality = GetQuality(kind == FileKind::Jxl ? USUAL_QUALITY : USUAL_HEIF_QUALITY);
        EncoderOptions const how{quality, options.isLossless,
                                 options.halvesChroma.value_or(quality < FULL_CHROMA_QUALITY)};
        std::string encoded;
        try {
            EncodersModule const& encoders = GetEncoders();
            if (kind == FileKind::Jxl)
                encoded = encoders.encodeJxl(plane, metadata, how);
            else
                encoded = encoders.encodeHeif(plane, metadata,
                                              kind == FileKind::Avif ? HeifCodec::Av1 : HeifCodec::Hevc, how);
        } catch (FileException const& error) {
            FailWith(DescribeException(error));
        }
        Put(encoded);
    }

    void WritePnm() {
        Target const target(file);
        if (vips_ppmsave_target(image.get(), target.Get(), "background", MakeBackground().get(), "strip", TRUE,
                                nullptr) != 0)
            Fail(&target);
    }

    OutputFile& file;
    fs::path const& path;
    IDataVideo const& picture;
    FileMetadata::Fitted& fitted;
    MetadataBlocks const& metadata = fitted.blocks;
    WriteOptions const& options;
    ConstPlane plane;
    OwnedImage image;
};

bool IsTransparent(IDataVideo const& picture) {
    PixFmt const format = picture.GetPixFmt();
    if (format != PixFmt::RGBA && format != PixFmt::YA8) return false;
    ConstPlane const plane = picture.GetPlane(0);
    for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) {
        unsigned char const* const row = plane.GetRow(y);
        for (std::uint64_t x = plane.GetSampleBytes() - 1; x < plane.GetWidth(); x += plane.GetSampleBytes())
            if (row[x] != 255) return true;
    }
    return false;
}

OutputFile OpenOutput(fs::path const& path, WriteOptions const& options) {
    if (options.descriptor >= 0) return {path, options.descriptor};
    return {path, options.overwrite};
}

/// Losses as a line for a person.
std::vector<std::string> DescribeLosses(FileKind kind, std::vector<std::string> const& losses) {
    if (losses.empty()) return {};
    std::string line;
    for (std::string const& loss : losses) line += (line.empty() ? "" : "; ") + loss;
    return {"in " + std::string(GetKindName(kind)) + ", " + line};
}

} // namespace

std::vector<std::string> WriteVipsPicture(fs::path const& path, FileKind kind, IDataVideo const& picture,
                                          PictureMetadata const* metadata, WriteOptions const& options) {
    auto const* const read = dynamic_cast<FileMetadata const*>(metadata);
    RequireRoom(WORKING_ROOM);
    FileMetadata::Fitted fitted;
    if (read != nullptr) fitted = read->Fit(kind, picture, options.strip);
    FileMetadata::Fitted const prepared = fitted;
    WithOwnComplaints([&] {
        fitted = prepared;
        OutputFile file = OpenOutput(path, options);
        if (options.backup) file.KeepReplaced();
        Writing(file, path, picture, fitted, options).Run(kind);
        if (options.keepTimes && read != nullptr) file.SetTimes(read->GetTimes());
        file.Commit();
    });
    if ((kind == FileKind::Jpeg || kind == FileKind::Pnm) && IsTransparent(picture))
        fitted.losses.insert(fitted.losses.begin(), "transparency is laid on the background colour");
    return DescribeLosses(kind, fitted.losses);
}

} // namespace Velnor::Proc::Files
