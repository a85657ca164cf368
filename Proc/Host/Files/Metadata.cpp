#include "Proc/Host/Files/Metadata.h"

#include "Proc/Host/Files/Thumbnails.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

namespace Velnor::Proc::Files {
namespace {

constexpr std::array<std::string_view, 7> CARRIED{
    VIPS_META_EXIF_NAME, VIPS_META_XMP_NAME,         VIPS_META_IPTC_NAME,      VIPS_META_PHOTOSHOP_NAME,
    VIPS_META_ICC_NAME,  VIPS_META_IMAGEDESCRIPTION, VIPS_META_RESOLUTION_UNIT};

/// Text that people put into PNG files about the picture. Other texts speak of the program that wrote the file, or hold
/// whole blocks of metadata, thumbnails included, in a program's own wrapping.
constexpr std::array<std::string_view, 5> CARRIED_TEXTS{"Title", "Author", "Description", "Copyright", "Comment"};

constexpr double PIXELS_PER_MM_OF_NO_RESOLUTION = 1.0;

bool IsCarried(std::string_view name) {
    if (std::ranges::find(CARRIED, name) != CARRIED.end()) return true;
    // The library writes the EXIF tags that exist as fields, so those of the thumbnail (ifd1) go by being left out.
    if (name.starts_with("exif-ifd")) return !name.starts_with("exif-ifd1-") && name != "exif-ifd0-Orientation";
    if (!name.starts_with("png-comment-")) return false;
    std::string_view const key = name.substr(name.rfind('-') + 1);
    return std::ranges::find(CARRIED_TEXTS, key) != CARRIED_TEXTS.end();
}

/// Copies one field, a block with its bytes: the loaders of HEIC and AVIF hand out blocks that go with their image.
void CopyField(VipsImage* source, VipsImage* target, char const* name) {
    GValue value = G_VALUE_INIT;
    if (vips_image_get(source, name, &value) != 0) {
        vips_error_clear();
        return;
    }
    if (G_VALUE_TYPE(&value) == VIPS_TYPE_BLOB) {
        std::size_t bytes = 0;
        void const* const data = vips_value_get_blob(&value, &bytes);
        vips_image_set_blob_copy(target, name, data, bytes);
    } else {
        vips_image_set(target, name, &value);
    }
    g_value_unset(&value);
}

std::span<char const> GetBlob(VipsImage* image, char const* name) {
    void const* data = nullptr;
    std::size_t length = 0;
    if (vips_image_get_typeof(image, name) == 0 || vips_image_get_blob(image, name, &data, &length) != 0) return {};
    return {static_cast<char const*>(data), length};
}

std::string AsString(std::span<char const> blob) { return {blob.begin(), blob.end()}; }

void SetBlob(VipsImage* image, char const* name, std::string const& content) {
    vips_image_set_blob_copy(image, name, content.data(), content.size());
}

/// Puts the cleaned block in the place of the original, where cleaning changed it.
template <class Clean>
void CleanBlob(VipsImage* image, char const* name, Clean const& clean) {
    std::span<char const> const blob = GetBlob(image, name);
    if (blob.empty()) return;
    std::string const original = AsString(blob);
    std::string const cleaned = clean(original);
    if (cleaned != original) SetBlob(image, name, cleaned);
}

/// IPTC stands bare in TIFF files and among image resources in JPEG files, which the library passes on under the same
/// name. Here it is kept among the resources, which both kinds can hold.
void MoveIptcToResources(VipsImage* image) {
    std::string const iptc = AsString(GetBlob(image, VIPS_META_IPTC_NAME));
    if (iptc.empty()) return;
    std::string resources = AsString(GetBlob(image, VIPS_META_PHOTOSHOP_NAME));
    if (iptc.starts_with(RESOURCES_HEAD))
        resources += iptc.substr(RESOURCES_HEAD.size());
    else if (resources.empty())
        resources = WrapIptc(iptc);
    SetBlob(image, VIPS_META_PHOTOSHOP_NAME, resources);
    vips_image_remove(image, VIPS_META_IPTC_NAME);
}

/// Whether an ICC profile is for grey or for RGB pictures, as its header says (ICC.1:2010, 7.2.6).
bool IsProfileFor(std::span<char const> profile, bool grey) {
    constexpr std::size_t COLOR_SPACE_AT = 16;
    if (profile.size() < COLOR_SPACE_AT + 4) return false;
    return std::memcmp(profile.data() + COLOR_SPACE_AT, grey ? "GRAY" : "RGB ", 4) == 0;
}

} // namespace

std::shared_ptr<VipsMetadata const> VipsMetadata::Take(VipsImage* source) {
    OwnedImage fields(vips_image_new());
    std::unique_ptr<char*, decltype(&g_strfreev)> const names(vips_image_get_fields(source), &g_strfreev);
    bool any = false;
    for (char** name = names.get(); *name != nullptr; ++name) {
        if (!IsCarried(*name)) continue;
        CopyField(source, fields.get(), *name);
        any = any || std::string_view(*name) != VIPS_META_RESOLUTION_UNIT;
    }
    double const xResolution = vips_image_get_xres(source);
    double const yResolution = vips_image_get_yres(source);
    any = any || xResolution != PIXELS_PER_MM_OF_NO_RESOLUTION || yResolution != PIXELS_PER_MM_OF_NO_RESOLUTION;
    if (!any) return nullptr;
    vips_image_init_fields(fields.get(), 1, 1, 1, VIPS_FORMAT_UCHAR, VIPS_CODING_NONE, VIPS_INTERPRETATION_B_W,
                           xResolution, yResolution);
    CleanBlob(fields.get(), VIPS_META_XMP_NAME, CleanXmp);
    CleanBlob(fields.get(), VIPS_META_EXIF_NAME, CleanExif);
    MoveIptcToResources(fields.get());
    CleanBlob(fields.get(), VIPS_META_PHOTOSHOP_NAME, CleanPhotoshopResources);
    return std::shared_ptr<VipsMetadata const>(new VipsMetadata(std::move(fields)));
}

void VipsMetadata::Apply(VipsImage* target, FileKind kind) const {
    bool const grey = vips_image_get_bands(target) < 3;
    std::unique_ptr<char*, decltype(&g_strfreev)> const names(vips_image_get_fields(header.get()), &g_strfreev);
    for (char** name = names.get(); *name != nullptr; ++name)
        if (IsCarried(*name)) CopyField(header.get(), target, *name);
    if (!IsProfileFor(GetBlob(target, VIPS_META_ICC_NAME), grey)) vips_image_remove(target, VIPS_META_ICC_NAME);
    // The library writes what it calls IPTC as the segment of a JPEG file as it is.
    std::string const resources = AsString(GetBlob(target, VIPS_META_PHOTOSHOP_NAME));
    if (kind == FileKind::Jpeg && !resources.empty())
        SetBlob(target, VIPS_META_IPTC_NAME, std::string(RESOURCES_HEAD) + resources);
    target->Xres = vips_image_get_xres(header.get());
    target->Yres = vips_image_get_yres(header.get());
    vips_image_set_int(target, VIPS_META_ORIENTATION, 1);
}

std::span<char const> VipsMetadata::GetRgbProfile() const {
    std::span<char const> const profile = GetBlob(header.get(), VIPS_META_ICC_NAME);
    return IsProfileFor(profile, false) ? profile : std::span<char const>();
}

} // namespace Velnor::Proc::Files
