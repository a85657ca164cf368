#include "Proc/Host/PictureFile.h"

#include "Proc/Host/Files/FilesModule.h"
#include "Proc/Host/ModuleLoader.h"
#include "Proc/Host/PluginLoader.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <new>
#include <span>
#include <string_view>

namespace Velnor::Proc {
namespace {

namespace fs = std::filesystem;
using Files::FileKind;

/// One kind of file: its extensions, and which formats it holds as they are.
struct KindRecord {
    FileKind kind;
    std::span<std::string_view const> extensions;
    std::span<PixFmt const> formats;
};

constexpr std::array<std::string_view, 3> JPEG_NAMES{".jpg", ".jpeg", ".jpe"};
constexpr std::array<std::string_view, 1> PNG_NAMES{".png"};
constexpr std::array<std::string_view, 2> TIFF_NAMES{".tif", ".tiff"};
constexpr std::array<std::string_view, 1> WEBP_NAMES{".webp"};
constexpr std::array<std::string_view, 1> AVIF_NAMES{".avif"};
constexpr std::array<std::string_view, 2> HEIC_NAMES{".heic", ".heif"};
constexpr std::array<std::string_view, 1> JXL_NAMES{".jxl"};
constexpr std::array<std::string_view, 3> PNM_NAMES{".ppm", ".pgm", ".pnm"};
constexpr std::array<PixFmt, 2> JPEG_FORMATS{PixFmt::RGB24, PixFmt::GRAY8};
constexpr std::array<PixFmt, 5> PNG_FORMATS{PixFmt::RGB24, PixFmt::RGBA, PixFmt::GRAY8, PixFmt::YA8, PixFmt::PAL8};
constexpr std::array<PixFmt, 4> TIFF_FORMATS{PixFmt::RGB24, PixFmt::RGBA, PixFmt::GRAY8, PixFmt::YA8};
constexpr std::array<PixFmt, 2> WEBP_FORMATS{PixFmt::RGB24, PixFmt::RGBA};
constexpr auto AVIF_FORMATS = WEBP_FORMATS;
constexpr auto JXL_FORMATS = TIFF_FORMATS;
constexpr auto PNM_FORMATS = JPEG_FORMATS;
constexpr std::array<KindRecord, 8> KINDS{{{FileKind::Jpeg, JPEG_NAMES, JPEG_FORMATS},
                                           {FileKind::Png, PNG_NAMES, PNG_FORMATS},
                                           {FileKind::Tiff, TIFF_NAMES, TIFF_FORMATS},
                                           {FileKind::WebP, WEBP_NAMES, WEBP_FORMATS},
                                           {FileKind::Avif, AVIF_NAMES, AVIF_FORMATS},
                                           {FileKind::Heic, HEIC_NAMES, AVIF_FORMATS},
                                           {FileKind::Jxl, JXL_NAMES, JXL_FORMATS},
                                           {FileKind::Pnm, PNM_NAMES, PNM_FORMATS}}};

KindRecord const& FindKind(fs::path const& path) {
    std::string extension = path.extension().string();
    std::ranges::transform(extension, extension.begin(), [](unsigned char c) { return std::tolower(c); });
    std::string known;
    for (KindRecord const& record : KINDS) {
        if (std::ranges::find(record.extensions, extension) != record.extensions.end()) return record;
        for (std::string_view const name : record.extensions) known += (known.empty() ? "" : ", ") + std::string(name);
    }
    VELNOR_THROW(FileOutputException,
                 path.string() + " cannot be written: " +
                     (extension.empty() ? "the name has no extension" : "the extension " + extension + " is unknown") +
                     "; known are " + known + ".");
}

/// Whether a picture of the format can be written as the kind, alpha laid over the background where the file has none.
bool Takes(KindRecord const& record, PixFmt format) {
    bool const flattened = (record.kind == FileKind::Jpeg || record.kind == FileKind::Pnm) &&
                           (format == PixFmt::RGBA || format == PixFmt::YA8);
    return flattened || std::ranges::find(record.formats, format) != record.formats.end();
}

void RequireFormat(fs::path const& path, KindRecord const& record, PixFmtDescription const& description) {
    if (Takes(record, description.format)) return;
    std::string known;
    for (PixFmtDescription const& each : PixFmtDescription::GetAll())
        if (Takes(record, each.format)) known += (known.empty() ? "" : ", ") + std::string(each.name);
    VELNOR_THROW(FileOutputException, path.string() + " cannot be written: such a file holds pictures in " + known +
                                          ", not in " + std::string(description.name) + ".");
}

Files::FilesModule const& LoadModule() {
    fs::path const file = GetInstalledFolder() / Files::FILES_MODULE_FILE;
    void* const library = OpenModule(file);
    if (library == nullptr) {
        char const* const error = dlerror();
        VELNOR_THROW(FileException, std::string("The module that picture files need cannot be loaded: ") +
                                        (error == nullptr ? "the loader gives no reason" : error) + ".");
    }
    auto const entry = reinterpret_cast<Files::FilesModuleFunction>(dlsym(library, Files::FILES_MODULE_ENTRY));
    if (entry == nullptr)
        VELNOR_THROW(FileException, "Picture files need the module " + file.string() + ", which has no entry " +
                                        Files::FILES_MODULE_ENTRY + ".");
    return *entry();
}

Files::FilesModule const& GetModule() {
    static Files::FilesModule const& module = LoadModule(); // Tried anew by the next caller when it throws.
    return module;
}

/// Runs the work on a file, and says which it was when there is no memory for it.
template <class Work>
auto WithMemory(fs::path const& path, std::string const& verb, Work const& work) {
    try {
        return work();
    } catch (std::bad_alloc const&) {
        FileException error;
        error << TagTranscodingErrorCode(TranscodingErrors::OutOfMemory);
        Velnor::Details::ThrowDescribed(error, path.string() + " cannot be " + verb + ": there is not enough memory.",
                                        VELNOR_LOCATION);
    }
}

} // namespace

PictureMetadata::~PictureMetadata() = default;

LoadedPicture ReadPicture(fs::path const& path, IEffectContext& context, ReadOptions const& options) {
    return WithMemory(path, "read", [&] { return GetModule().read(path, context, options); });
}

std::vector<std::string> WritePicture(fs::path const& path, IDataVideo const& picture, PictureMetadata const* metadata,
                                      WriteOptions const& options) {
    KindRecord const& record = FindKind(path);
    RequireFormat(path, record, picture.GetDescription());
    RequireWriteOptions(path, options);
    return WithMemory(path, "written",
                      [&] { return GetModule().write(path, record.kind, picture, metadata, options); });
}

Color ToPhotosColor(Color const& color, PictureMetadata const* metadata) {
    return metadata == nullptr ? color : GetModule().toPhotosColor(color, *metadata);
}

void RequireWriteOptions(fs::path const& path, WriteOptions const& options) {
    KindRecord const& record = FindKind(path);
    auto const isOneOf = [&](std::initializer_list<FileKind> kinds) {
        return std::ranges::find(kinds, record.kind) != kinds.end();
    };
    using enum FileKind;
    auto const refuse = [&](std::string const& reason) {
        VELNOR_THROW(FileOutputException, path.string() + " cannot be written: " + reason + ".");
    };
    if (options.quality && (*options.quality < 1 || *options.quality > 100))
        refuse("the quality is 1 to 100, not " + std::to_string(*options.quality));
    if (options.quality && !isOneOf({Jpeg, WebP, Avif, Heic, Jxl})) refuse("such a file has no quality");
    if (options.isLossless && !isOneOf({WebP, Jxl})) refuse("lossless is a choice in WebP and JPEG XL files alone");
    if (options.isLossless && options.quality) refuse("what is lossless has no quality");
    if (options.halvesChroma && !isOneOf({Jpeg, Avif, Heic})) refuse("such a file has no choice of subsampling");
    std::string const& compression = options.compression;
    if (compression.empty()) return;
    if (!isOneOf({Png, Tiff})) refuse("such a file has no choice of compression");
    bool const isDigit = compression.size() == 1 && std::isdigit(static_cast<unsigned char>(compression[0])) != 0;
    if (record.kind == Png && !isDigit) refuse("the compression of PNG is 0 to 9, not " + compression);
    if (record.kind == Tiff && compression != "none" && compression != "lzw" && compression != "deflate")
        refuse("the compression of TIFF is none, lzw or deflate, not " + compression);
}

std::vector<PixFmt> GetWritableFormats(fs::path const& path) {
    KindRecord const& record = FindKind(path);
    return {record.formats.begin(), record.formats.end()};
}

} // namespace Velnor::Proc
