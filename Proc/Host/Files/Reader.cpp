#include "Proc/Host/Files/Reader.h"

#include "Proc/Host/Files/Display.h"
#include "Proc/Host/Files/Metadata.h"
#include "Proc/Host/Files/RowSink.h"
#include "Proc/Host/Image.h"
#include "Proc/Host/MemoryPool.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <thread>

namespace Velnor::Proc::Files {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Fail(fs::path const& path, std::string const& reason) {
    VELNOR_THROW(FileInputException, path.string() + " cannot be read: " + reason + ".");
}

/// A file open for reading.
class InputFile {
public:
    explicit InputFile(fs::path const& path) : descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (descriptor < 0) Fail(path, std::generic_category().message(errno));
        struct stat status {};
        bool const known = fstat(descriptor, &status) == 0;
        bool const isFolder = known && S_ISDIR(status.st_mode);
        bool const isEmpty = known && S_ISREG(status.st_mode) && status.st_size == 0;
        if (!isFolder && !isEmpty) return;
        close(descriptor);
        Fail(path, isFolder ? "it is a folder" : "it is empty");
    }
    ~InputFile() { close(descriptor); }
    InputFile(InputFile const&) = delete;
    InputFile& operator=(InputFile const&) = delete;

    int Get() const { return descriptor; }

private:
    int const descriptor;
};

/// Opens the picture and reads its header, no pixel.
OwnedImage OpenHeader(fs::path const& path, InputFile const& file, ReadOptions const& options) {
    // By descriptor, since a name given to the library may end in loader options: "photo.jpg[shrink=2]".
    Owned<VipsSource> const source(vips_source_new_from_descriptor(file.Get()));
    if (source == nullptr) Fail(path, TakeError());
    bool isKnown = vips_foreign_find_load_source(source.get()) != nullptr;
    if (!isKnown) {
        LoadRarerKinds();
        isKnown = vips_foreign_find_load_source(source.get()) != nullptr;
        vips_error_clear();
    }
    if (!isKnown) {
        Fail(path, "it is no picture file of a known kind, or damaged from the start");
    }
    VipsFailOn const failOn = options.acceptDamaged ? VIPS_FAIL_ON_NONE : VIPS_FAIL_ON_WARNING;
    OwnedImage image(
        vips_image_new_from_source(source.get(), "", "access", VIPS_ACCESS_SEQUENTIAL, "fail_on", failOn, nullptr));
    if (image == nullptr) Fail(path, TakeError());
    return image;
}

void RequireSize(fs::path const& path, VipsImage* image, std::uint64_t maxPixels) {
    auto const width = static_cast<std::uint64_t>(vips_image_get_width(image));
    auto const height = static_cast<std::uint64_t>(vips_image_get_height(image));
    std::string const what = path.string() + " is too large: " + std::to_string(width) + " x " + std::to_string(height);
    if (width * height > maxPixels)
        VELNOR_THROW(FileLimitException, what + " are " + std::to_string(width * height) + " pixels, the limit is " +
                                             std::to_string(maxPixels) + ".");
    if (width > Image::MAX_SIDE || height > Image::MAX_SIDE)
        VELNOR_THROW(FileLimitException, what + " pixels, a side has at most " + std::to_string(Image::MAX_SIDE) + ".");
}

/// A picture for the image, upright. Black where the decoder may not reach.
VideoHandle CreatePicture(VipsImage* image, int orientation, IEffectContext& context, bool mayStayIncomplete) {
    constexpr std::array<PixFmt, 4> FORMATS{PixFmt::GRAY8, PixFmt::YA8, PixFmt::RGB24, PixFmt::RGBA};
    auto width = static_cast<std::uint32_t>(vips_image_get_width(image));
    auto height = static_cast<std::uint32_t>(vips_image_get_height(image));
    if (RowSink::SwapsSides(orientation)) std::swap(width, height);
    PixFmt const format = FORMATS.at(static_cast<std::size_t>(vips_image_get_bands(image) - 1));
    VideoHandle picture = context.CreateImage(format, FrameFormat::Square(width, height));
    if (mayStayIncomplete) picture->Fill(Color());
    return picture;
}

/// Has the system provide the memory of a large plane on another thread while the decoder, which needs it row by row,
/// works: to clear 36 megabytes of new pages takes a tenth of the time of decoding into them. To be called when the
/// decoder has started: the kernel lets no other thread map memory meanwhile. The plane outlives the thread.
std::jthread ProvidePages(MutablePlane const& plane) {
    constexpr std::uint64_t WORTH_A_THREAD = 4U << 20;
    constexpr std::uintptr_t PAGE = 4096;
    auto const bytes = static_cast<std::uint64_t>(plane.GetStride()) * plane.GetHeight();
    if (plane.GetStride() <= 0 || bytes < WORTH_A_THREAD) return {};
    auto const first = (reinterpret_cast<std::uintptr_t>(plane.GetData()) + PAGE - 1) / PAGE * PAGE;
    auto const whole = bytes / PAGE * PAGE - PAGE;
    return std::jthread([first, whole] {
        // By pieces, so that a decoder that has to map after all waits for one of them.
        constexpr std::uintptr_t PIECE = MemoryPool::HUGE_PAGE;
        for (std::uintptr_t at = first; at < first + whole; at = at / PIECE * PIECE + PIECE) {
            std::uintptr_t const end = std::min(at / PIECE * PIECE + PIECE, first + whole);
            // Where the kernel does not know it, each page comes with its first row.
            if (madvise(reinterpret_cast<void*>(at), end - at, MADV_POPULATE_WRITE) != 0) return;
        }
    });
}

/// Puts all rows of the image and returns how many there were before the decoder failed, if it did. One thread reads:
/// decoders work in sequence, and handing strips from thread to thread costs more than it brings.
int PutRows(VipsImage* image, MutablePlane const& plane, RowSink& sink) {
    constexpr int STRIP_ROWS = 16; // Small enough for the cache between the decoder and the picture.
    std::jthread pages;
    Owned<VipsRegion> const region(vips_region_new(image));
    int const height = vips_image_get_height(image);
    for (int top = 0; top < height; top += STRIP_ROWS) {
        VipsRect const strip{0, top, vips_image_get_width(image), std::min(STRIP_ROWS, height - top)};
        if (vips_region_prepare(region.get(), &strip) != 0) return top;
        if (top == 0) pages = ProvidePages(plane);
        for (int y = top; y < top + strip.height; ++y)
            sink.Put(static_cast<std::uint64_t>(y), VIPS_REGION_ADDR(region.get(), 0, y));
    }
    return height;
}

void Decode(fs::path const& path, VipsImage* image, int orientation, IDataVideo& picture, bool acceptDamaged) {
    SampleDepth const depth =
        vips_image_get_format(image) == VIPS_FORMAT_USHORT ? SampleDepth::Bits16 : SampleDepth::Bits8;
    MutablePlane const plane = picture.GetMutablePlane(0);
    RowSink sink(plane, depth, orientation);
    int const rows = PutRows(image, plane, sink);
    if (rows == vips_image_get_height(image)) return;
    std::string const reason = TakeError();
    if (!acceptDamaged || rows == 0) Fail(path, "it is damaged: " + reason);
}

} // namespace

LoadedPicture ReadVipsPicture(fs::path const& path, IEffectContext& context, ReadOptions const& options) {
    InputFile const file(path);
    OwnedImage image = OpenHeader(path, file, options);
    RequireSize(path, image.get(), options.maxPixels);
    int const orientation = vips_image_get_orientation(image.get());
    image = MakeDisplayable(std::move(image));
    if (image == nullptr) Fail(path, TakeError());
    LoadedPicture loaded;
    loaded.picture = CreatePicture(image.get(), orientation, context, options.acceptDamaged);
    loaded.metadata = VipsMetadata::Take(image.get());
    Decode(path, image.get(), orientation, *loaded.picture, options.acceptDamaged);
    return loaded;
}

} // namespace Velnor::Proc::Files
