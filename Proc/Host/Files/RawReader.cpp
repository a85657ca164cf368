#include "Proc/Host/Files/RawReader.h"

#include "Proc/Host/Files/Limits.h"
#include "Proc/Host/Files/Metadata.h"
#include "Proc/Host/MemoryRoom.h"

#include <fcntl.h>
#include <libraw/libraw.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <memory>
#include <new>
#include <string_view>

namespace Velnor::Proc::Files {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Fail(fs::path const& path, std::string const& reason) {
    VELNOR_THROW(FileInputException, path.string() + " cannot be read: " + reason + ".");
}

/// One step of the library, which returns an error of the system, above 0, or one of its own.
void Require(fs::path const& path, int result) {
    if (result == ENOMEM || result == LIBRAW_UNSUFFICIENT_MEMORY) throw std::bad_alloc();
    if (result != LIBRAW_SUCCESS) Fail(path, LibRaw::strerror(result));
}

/// Before a sample is read: a number of 16 bits from the sensor, four of them a pixel in development, the result and
/// the picture.
void RequireLimits(fs::path const& path, libraw_image_sizes_t const& sizes, ReadOptions const& options) {
    constexpr std::uint64_t BYTES = 2 + 4 * 2 + 3 + 3;
    std::error_code error;
    FileFacts facts;
    facts.fileBytes = fs::file_size(path, error);
    facts.pixelBits = 16;
    auto const frame = FrameFormat::Square(sizes.width, sizes.height);
    std::uint64_t const memory = std::uint64_t{sizes.raw_width} * sizes.raw_height * BYTES;
    Files::RequireLimits(path, frame, memory, ReadKind::Raw, facts, options);
    if (options.onHeader) options.onHeader({std::uint64_t{frame.width} * frame.height, memory});
    RequireRoom(memory + WORKING_ROOM);
}

struct ClearMemory {
    void operator()(libraw_processed_image_t* image) const { LibRaw::dcraw_clear_mem(image); }
};
using Developed = std::unique_ptr<libraw_processed_image_t, ClearMemory>;

Developed Develop(fs::path const& path, ReadOptions const& options) {
    auto const raw = std::make_unique<LibRaw>();
    bool isDamaged = false; // What the library only tells of, and goes on.
    raw->set_dataerror_handler([](void* flag, char const*, int) { *static_cast<bool*>(flag) = true; }, &isDamaged);
    Require(path, raw->open_file(path.c_str()));
    RequireLimits(path, raw->imgdata.sizes, options);
    constexpr int SRGB = 1;
    raw->imgdata.params.use_camera_wb = 1;
    raw->imgdata.params.output_color = SRGB;
    raw->imgdata.params.output_bps = 8;
    Require(path, raw->unpack());
    if (isDamaged && !options.acceptDamaged) Fail(path, "it is damaged");
    Require(path, raw->dcraw_process());
    int error = LIBRAW_SUCCESS;
    Developed image(raw->dcraw_make_mem_image(&error));
    Require(path, error);
    if (image == nullptr || image->bits != 8 || (image->colors != 1 && image->colors != 3))
        Fail(path, "its samples are of an unknown kind");
    return image;
}

std::shared_ptr<FileMetadata const> TakeMetadata(fs::path const& path) {
    int const descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return nullptr;
    auto metadata = FileMetadata::TakeRaw(descriptor);
    close(descriptor);
    return metadata;
}

} // namespace

bool IsRawName(fs::path const& path) {
    constexpr std::array<std::string_view, 19> NAMES{".3fr", ".arw", ".cr2", ".cr3", ".crw", ".dcr", ".dng",
                                                     ".erf", ".iiq", ".kdc", ".mrw", ".nef", ".nrw", ".orf",
                                                     ".pef", ".raf", ".rw2", ".srw", ".x3f"};
    std::string extension = path.extension().string();
    std::ranges::transform(extension, extension.begin(), [](unsigned char c) { return std::tolower(c); });
    return std::ranges::find(NAMES, extension) != NAMES.end();
}

LoadedPicture ReadRawPicture(fs::path const& path, IEffectContext& context, ReadOptions const& options) {
    std::error_code error;
    if (!fs::is_regular_file(path, error)) Fail(path, error ? error.message() : "it is no regular file");
    Developed const image = Develop(path, options);
    LoadedPicture loaded;
    loaded.picture = context.CreateImage(image->colors == 1 ? PixFmt::GRAY8 : PixFmt::RGB24,
                                         FrameFormat::Square(image->width, image->height));
    MutablePlane const plane = loaded.picture->GetMutablePlane(0);
    for (std::uint64_t y = 0; y < plane.GetHeight(); ++y)
        std::copy_n(image->data + y * plane.GetWidth(), plane.GetWidth(), plane.GetRow(y));
    loaded.metadata = TakeMetadata(path);
    return loaded;
}

} // namespace Velnor::Proc::Files
