#include "Proc/Host/Files/Metadata.h"

#include "Proc/Host/Files/ColorProfile.h"
#include "Proc/Host/Files/ExifBlock.h"
#include "Proc/Host/Files/FileFacts.h"
#include "Proc/Host/Files/ImageResources.h"
#include "Proc/Host/Files/JpegSegments.h"
#include "Proc/Host/Files/JxlBoxes.h"
#include "Proc/Host/Files/MetadataLibrary.h"
#include "Proc/Host/Files/PngFile.h"
#include "Proc/Host/Files/XmpPacket.h"

#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace Velnor::Proc::Files {
namespace {

constexpr double PIXELS_PER_MM_OF_NO_RESOLUTION = 1.0;

std::string GetText(VipsImage* image, char const* name) {
    char const* text = nullptr;
    if (vips_image_get_typeof(image, name) == 0 || vips_image_get_string(image, name, &text) != 0) return {};
    return text;
}

/// A file's bytes in memory, as far as they are looked at. They may be changed, which the file does not see.
class MappedFile {
public:
    explicit MappedFile(int descriptor) {
        struct stat status {};
        if (fstat(descriptor, &status) != 0 || status.st_size == 0) return;
        size = static_cast<std::size_t>(status.st_size);
        data = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE, descriptor, 0);
    }
    ~MappedFile() {
        if (data != MAP_FAILED) munmap(data, size);
    }
    MappedFile(MappedFile const&) = delete;
    MappedFile& operator=(MappedFile const&) = delete;

    std::span<unsigned char const> Get() const {
        return data == MAP_FAILED ? std::span<unsigned char const>()
                                  : std::span(static_cast<unsigned char const*>(data), size);
    }

private:
    void* data = MAP_FAILED;
    std::size_t size = 0;
};

void TakeTiffTags(int descriptor, MetadataBlocks& blocks) {
    MappedFile const file(descriptor);
    try {
        if (!file.Get().empty()) ReadTiffTags(file.Get(), blocks);
    } catch (std::exception const&) {
        // A large file in 64 bits, or damage in tags that the decoder of its samples does not mind.
    }
}

/// Texts of older kinds are in Latin-1, some in UTF-16.
std::string ToUtf8(std::string const& text) {
    if (g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE) return text;
    std::unique_ptr<char, decltype(&g_free)> const converted(g_convert(text.data(), static_cast<gssize>(text.size()),
                                                                       "UTF-8", IsUtf16(text) ? "UTF-16" : "ISO-8859-1",
                                                                       nullptr, nullptr, nullptr),
                                                             &g_free);
    return converted == nullptr ? std::string() : converted.get();
}

void TakePngText(std::string const& key, std::string const& text, MetadataBlocks& blocks) {
    // Text that people put in about the picture. Other texts speak of the program that wrote the file.
    constexpr std::array<std::string_view, 5> CARRIED{"Title", "Author", "Description", "Copyright", "Comment"};
    if (std::ranges::find(CARRIED, key) != CARRIED.end()) blocks.texts.emplace_back(key, ToUtf8(text));
    if (!key.starts_with("Raw profile type ")) return;
    std::string const content = UnwrapRawProfile(text);
    if ((key.ends_with(" exif") || key.ends_with(" APP1")) && blocks.exif.empty()) {
        if (content.starts_with("Exif")) blocks.exif = content;
    } else if (key.ends_with(" xmp") && blocks.xmp.empty()) {
        blocks.xmp = content;
    } else if (key.ends_with(" iptc") || key.ends_with(" 8bim")) {
        blocks.resources += content.starts_with("8BIM") ? content : WrapIptc(content);
    }
}

/// What the library puts into fields of its own making.
void TakeField(VipsImage* image, std::string const& name, MetadataBlocks& blocks) {
    constexpr std::string_view PNG_TEXT = "png-comment-";
    if (name.starts_with(PNG_TEXT)) {
        std::size_t const dash = name.find('-', PNG_TEXT.size());
        if (dash != std::string::npos) TakePngText(name.substr(dash + 1), GetText(image, name.c_str()), blocks);
    } else if (name.starts_with("heif-mime-")) {
        std::string const block = GetBlob(image, name.c_str());
        if (block.find("<rdf:RDF") != std::string::npos) blocks.xmp = block;
    } else if (name == "gif-comment") {
        blocks.comments.push_back(GetText(image, name.c_str()));
    }
}

/// What EXIF says where the file itself says nothing.
void TakeExifResolution(MetadataBlocks& blocks) {
    if (blocks.xResolution > 0 || blocks.exif.empty()) return;
    try {
        auto const resolution = ExifBlock(blocks.exif).GetResolution();
        if (!resolution) return;
        blocks.xResolution = resolution->x;
        blocks.yResolution = resolution->y;
    } catch (std::out_of_range const&) {
        // Told when it is written.
    }
}

struct KindTraits {
    char const* name;
    bool hasExifAndXmp, hasResources, hasComments, hasTexts, hasResolution, hasProfile;
};

KindTraits GetTraits(FileKind kind) {
    switch (kind) {
    case FileKind::Jpeg:
        return {"JPEG", true, true, true, false, true, true};
    case FileKind::Png:
        return {"PNG", true, true, false, true, true, true};
    case FileKind::Tiff:
        return {"TIFF", true, true, false, false, true, true};
    case FileKind::WebP:
        return {"WebP", true, false, false, false, false, true};
    case FileKind::Avif:
        return {"AVIF", true, false, false, false, false, true};
    case FileKind::Heic:
        return {"HEIC", true, false, false, false, false, true};
    case FileKind::Jxl:
        return {"JPEG XL", true, false, false, false, false, true};
    default:
        return {"PNM", false, false, false, false, false, false};
    }
}

/// The steps from what was read to what a file of a kind holds. Each says what it leaves out.
class Fitting {
public:
    Fitting(MetadataBlocks source, FileKind fileKind, FrameFormat const& pictureFrame, Strip what, bool hasBecomeSrgb)
        : kind(fileKind), traits(GetTraits(kind)), frame(pictureFrame), strip(what), isSrgb(hasBecomeSrgb) {
        fitted.blocks = std::move(source);
    }

    FileMetadata::Fitted Run(bool isGrey) {
        MetadataBlocks& blocks = fitted.blocks;
        if (strip == Strip::All)
            blocks = {{},           {}, {}, std::move(blocks.profile), {}, {}, blocks.xResolution, blocks.yResolution,
                      blocks.coding};
        FitProfile(isGrey);
        FitExif();
        FitXmp();
        blocks.resources = CleanImageResources(blocks.resources);
        if (!traits.hasTexts) MoveTexts();
        if (!traits.hasComments && !blocks.comments.empty()) MoveComments();
        if (!traits.hasResources && !blocks.resources.empty()) MoveResources();
        if (!traits.hasResolution && blocks.xResolution > 0 && traits.hasExifAndXmp)
            GetExif().AddResolution({blocks.xResolution, blocks.yResolution});
        if (exif) blocks.exif = exif->GetBytes();
        FitRoom();
        return std::move(fitted);
    }

private:
    void Lose(std::string const& what) { fitted.losses.push_back(what); }

    ExifBlock& GetExif() {
        if (!exif) exif.emplace("");
        return *exif;
    }

    void FitProfile(bool isGrey) {
        std::string& profile = fitted.blocks.profile;
        bool const isFit = IsProfileFor(profile, isGrey);
        if (profile.empty() || (isFit && traits.hasProfile)) return;
        bool const isUsual = IsSrgb(profile); // What a picture without a profile is taken for.
        profile.clear();
        if (isUsual) return;
        Lose(isFit ? "the colour profile is left out"
                   : "the colour profile, which is not for such pixels, is left out");
    }

    void FitExif() {
        MetadataBlocks& blocks = fitted.blocks;
        if (blocks.exif.empty()) return;
        try {
            exif.emplace(std::move(blocks.exif));
            exif->SetUpright(frame.width, frame.height);
            exif->DropThumbnail();
            if (kind == FileKind::Tiff) TakeResolution();
            if (isSrgb) exif->SetSrgb();
            if (strip == Strip::Gps) exif->DropGps();
            if (strip == Strip::Thumbnail) exif->WipePreviews();
        } catch (std::out_of_range const&) {
            exif.reset();
            Lose("EXIF, which is damaged, is left out");
        }
        blocks.exif.clear();
    }

    /// In a TIFF file there is one place for what EXIF says and what its file said.
    void TakeResolution() {
        auto const resolution = exif->GetResolution();
        if (!resolution) return;
        fitted.blocks.xResolution = resolution->x;
        fitted.blocks.yResolution = resolution->y;
    }

    /// Runs a change of the XMP packet by the library.
    template <class Change>
    bool ChangeXmp(Change const& change) {
        try {
            fitted.blocks.xmp = change(fitted.blocks.xmp);
            return true;
        } catch (std::exception const&) {
            return false;
        }
    }

    void FitXmp() {
        std::string& xmp = fitted.blocks.xmp;
        if (xmp.empty()) return;
        xmp = CleanXmp(xmp, frame.width, frame.height);
        if (isSrgb) xmp = LabelXmpSrgb(xmp);
        bool const isDone = (strip != Strip::Gps || ChangeXmp(DropGpsFromXmp)) &&
                            (strip != Strip::Thumbnail || ChangeXmp(DropPicturesFromXmp));
        if (isDone) return;
        xmp.clear();
        Lose("XMP, which is damaged, is left out");
    }

    bool MoveText(std::string const& key, std::string const& text) {
        if (!traits.hasExifAndXmp) return false;
        if (key == "Title") return ChangeXmp([&](std::string const& xmp) { return AddTitleToXmp(xmp, text); });
        if (key == "Comment") fitted.blocks.comments.push_back(text);
        if (key == "Author") return GetExif().AddText(ExifBlock::ARTIST, text);
        if (key == "Copyright") return GetExif().AddText(ExifBlock::COPYRIGHT, text);
        if (key == "Description") return GetExif().AddText(ExifBlock::DESCRIPTION, text);
        return true;
    }

    void MoveTexts() {
        for (auto const& [key, text] : fitted.blocks.texts)
            if (!MoveText(key, text)) Lose("the text " + key + " is left out");
        fitted.blocks.texts.clear();
    }

    void MoveComments() {
        std::string whole;
        for (std::string const& comment : fitted.blocks.comments)
            whole += (whole.empty() ? "" : "\n") + ToUtf8(comment);
        fitted.blocks.comments.clear();
        if (traits.hasTexts &&
            std::ranges::count(fitted.blocks.texts, "Comment", [](auto const& text) { return text.first; }) == 0)
            fitted.blocks.texts.emplace_back("Comment", whole);
        else if (!traits.hasExifAndXmp || !GetExif().AddUserComment(whole))
            Lose("the comment is left out");
    }

    void MoveResources() {
        std::vector<ImageResource> const resources = ParseImageResources(fitted.blocks.resources);
        std::string const iptc = FindIptc(fitted.blocks.resources);
        fitted.blocks.resources.clear();
        if (std::ranges::count(resources, IPTC_RESOURCE, &ImageResource::identifier) != std::ssize(resources))
            Lose("image resources are left out");
        if (iptc.empty()) return;
        bool isComplete = true;
        auto const add = [&](std::string const& xmp) { return AddIptcToXmp(xmp, iptc, isComplete); };
        if (!traits.hasExifAndXmp || !ChangeXmp(add)) return Lose("IPTC is left out");
        Lose(isComplete ? "IPTC is kept as XMP" : "IPTC is kept as XMP, as far as that knows its fields");
    }

    void FitRoom() {
        MetadataBlocks& blocks = fitted.blocks;
        if (kind == FileKind::Jpeg && blocks.exif.size() > MAX_JPEG_EXIF) {
            Lose("EXIF of " + std::to_string(blocks.exif.size()) + " bytes, which is too long, is left out");
            blocks.exif.clear();
        }
        auto const require = [this](bool hasRoom, std::string& block, char const* name) {
            if (hasRoom || block.empty()) return;
            block.clear();
            Lose(std::string(name) + " is left out");
        };
        require(traits.hasExifAndXmp, blocks.exif, "EXIF");
        require(traits.hasExifAndXmp, blocks.xmp, "XMP");
    }

    FileKind const kind;
    KindTraits const traits;
    FrameFormat const& frame;
    Strip const strip;
    bool const isSrgb;
    std::optional<ExifBlock> exif;
    FileMetadata::Fitted fitted;
};

} // namespace

std::shared_ptr<FileMetadata const> FileMetadata::Take(VipsImage* image, int descriptor, bool isSrgb) {
    auto const taken = std::make_shared<FileMetadata>();
    taken->TakeTimes(descriptor);
    taken->isSrgb = isSrgb;
    MetadataBlocks& blocks = taken->blocks;
    blocks.exif = GetBlob(image, VIPS_META_EXIF_NAME);
    blocks.xmp = GetBlob(image, VIPS_META_XMP_NAME);
    blocks.resources = GetBlob(image, VIPS_META_PHOTOSHOP_NAME);
    std::unique_ptr<char*, decltype(&g_strfreev)> const names(vips_image_get_fields(image), &g_strfreev);
    for (char** name = names.get(); *name != nullptr; ++name) TakeField(image, *name, blocks);
    bool const hasResolution = vips_image_get_xres(image) != PIXELS_PER_MM_OF_NO_RESOLUTION ||
                               vips_image_get_yres(image) != PIXELS_PER_MM_OF_NO_RESOLUTION;
    blocks.xResolution = hasResolution ? vips_image_get_xres(image) : 0;
    blocks.yResolution = hasResolution ? vips_image_get_yres(image) : 0;
    std::string const loader = GetText(image, VIPS_META_LOADER);
    if (loader.starts_with("jpegload")) taken->damage = ReadJpegSegments(descriptor, blocks);
    if (loader.starts_with("jxlload")) taken->damage = ReadJxlBoxes(descriptor, blocks);
    if (loader.starts_with("tiffload")) TakeTiffTags(descriptor, blocks);
    blocks.profile = GetBlob(image, VIPS_META_ICC_NAME); // Of the picture, which may have become sRGB.
    TakeExifResolution(blocks);
    taken->FindDamage();
    return taken;
}

std::shared_ptr<FileMetadata const> FileMetadata::TakeRaw(int descriptor) {
    auto const taken = std::make_shared<FileMetadata>();
    taken->TakeTimes(descriptor);
    TakeTiffTags(descriptor, taken->blocks);
    TakeExifResolution(taken->blocks);
    return taken;
}

void FileMetadata::FindDamage() {
    if (damage.empty()) damage = FindExifDamage(blocks.exif);
    if (damage.empty() && !AreImageResourcesWhole(blocks.resources)) damage = "its image resources are cut short";
    if (IsProfileWhole(blocks.profile)) return;
    blocks.profile.clear();
    if (damage.empty()) damage = "its colour profile is cut short";
}

void FileMetadata::TakeTimes(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) return;
    times[0] = status.st_atim;
    times[1] = status.st_mtim;
}

FileMetadata::Fitted FileMetadata::Fit(FileKind kind, IDataVideo const& picture, Strip strip) const {
    bool const isGrey = picture.GetPixFmt() == PixFmt::GRAY8 || picture.GetPixFmt() == PixFmt::YA8;
    return Fitting(blocks, kind, picture.GetFrameFormat(), strip, isSrgb).Run(isGrey);
}

char const* GetKindName(FileKind kind) { return GetTraits(kind).name; }

} // namespace Velnor::Proc::Files
