#include "Proc/Host/Files/Reader.h"

#include "Proc/Host/Files/BmpReader.h"
#include "Proc/Host/Files/ColorProfile.h"
#include "Proc/Host/Files/Display.h"
#include "Proc/Host/Files/JpegSegments.h"
#include "Proc/Host/Files/Limits.h"
#include "Proc/Host/Files/Metadata.h"
#include "Proc/Host/Files/OtherKinds.h"
#include "Proc/Host/Files/RowSink.h"
#include "Proc/Host/Files/Salvage.h"
#include "Proc/Host/Image.h"
#include "Proc/Host/MemoryPool.h"
#include "Proc/Host/MemoryRoom.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <iterator>
#include <new>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

namespace Velnor::Proc::Files {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Fail(fs::path const& path, std::string const& reason) {
    VELNOR_THROW(FileInputException, path.string() + " cannot be read: " + reason + ".");
}

/// @param mayBeAccepted  whether that would keep a part
[[noreturn]] void FailByDamage(fs::path const& path, std::string const& damage, bool mayBeAccepted) {
    if (!mayBeAccepted) Fail(path, "it is damaged: " + damage);
    VELNOR_THROW(FileDamageException, path.string() + " cannot be read: it is damaged: " + damage + ".");
}

/// Throws std::bad_alloc when that is why the library failed, by what it says or by what is seen.
void RequireMemory(std::string const& reason) {
    if (IsAboutMemory(reason, WORKING_ROOM)) throw std::bad_alloc();
}

[[noreturn]] void FailInLibrary(fs::path const& path) {
    std::string const reason = TakeError();
    if (reason.find("limit exceeded") != std::string::npos)
        VELNOR_THROW(FileLimitException, path.string() + " is too large: " + reason + ".");
    RequireMemory(reason);
    Fail(path, reason);
}

/// Why a file of this mode is not read, empty when it is: reading a pipe or a device may never end, or do something.
std::string RefuseMode(mode_t mode) {
    if (S_ISREG(mode)) return {};
    if (S_ISDIR(mode)) return "it is a folder";
    if (S_ISFIFO(mode)) return "it is a pipe, not a file";
    return S_ISSOCK(mode) ? "it is a socket, not a file" : "it is a device, not a file";
}

/// Of a file, to tell its kind.
constexpr std::size_t HEAD_BYTES = 1024;

/// A regular file open for reading.
class InputFile {
public:
    explicit InputFile(fs::path const& path) {
        // Asked before it is opened, which some devices take as a command; and of what was opened then.
        struct stat status {};
        if (stat(path.c_str(), &status) != 0) Fail(path, std::generic_category().message(errno));
        if (std::string const reason = RefuseMode(status.st_mode); !reason.empty()) Fail(path, reason);
        descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        if (descriptor < 0) Fail(path, std::generic_category().message(errno));
        std::string const reason = fstat(descriptor, &status) != 0 ? "it changed" : RefuseMode(status.st_mode);
        if (reason.empty() && status.st_size > 0) return;
        close(descriptor);
        Fail(path, reason.empty() ? "it is empty" : reason);
    }
    ~InputFile() { close(descriptor); }
    InputFile(InputFile const&) = delete;
    InputFile& operator=(InputFile const&) = delete;

    int Get() const { return descriptor; }

    /// The first bytes, fewer when there are no more.
    std::string Read(std::size_t bytes) const {
        std::string content(bytes, '\0');
        std::size_t done = 0;
        for (ssize_t got = 1; got > 0 && done < bytes; done += static_cast<std::size_t>(std::max<ssize_t>(got, 0)))
            got = pread(descriptor, content.data() + done, bytes - done, static_cast<off_t>(done));
        content.resize(done);
        return content;
    }
    std::string ReadAll() const {
        struct stat status {};
        return fstat(descriptor, &status) == 0 ? Read(static_cast<std::size_t>(status.st_size)) : std::string();
    }

private:
    int descriptor = -1;
};

[[noreturn]] void FailByKind(fs::path const& path, std::string_view head) {
    std::string const kind = NameOtherKind(head);
    Fail(path,
         (kind.empty() ? "it is no picture file of a known kind, or damaged from the start" : kind + " is not read") +
             "; read are " + ListReadKinds());
}

std::uint64_t CountPixels(VipsImage* image) {
    return static_cast<std::uint64_t>(vips_image_get_width(image)) *
           static_cast<std::uint64_t>(vips_image_get_height(image));
}

/// A picture file of which the header has been read and found within the limits.
struct Header {
    OwnedImage image;
    OwnedImage salvaged;      ///< Its pixels, where the file library gives up a damaged file as a whole.
    bool isDamaged = false;   ///< This is what could be saved of the file.
    std::uint64_t rows = 0;   ///< Of the file that are there, as far as its header tells.
    std::uint64_t memory = 0; ///< Bytes that reading takes.
    ReadKind kind = ReadKind::Jpeg;
    bool hasUnreadTags = false;
    std::string damage; ///< What is accepted, as part of a sentence.
};

/// Null when the library refuses it.
OwnedImage Load(FoundLoader const& loader, VipsSource* source, bool acceptDamaged) {
    VipsFailOn const failOn = acceptDamaged ? VIPS_FAIL_ON_NONE : VIPS_FAIL_ON_WARNING;
    VipsImage* loaded = nullptr;
    (void)vips_call(loader.operation, source, &loaded, "access", VIPS_ACCESS_SEQUENTIAL, "fail_on", failOn, nullptr);
    return OwnedImage(loaded);
}

/// The profile as it stands in the file, all or nothing.
void TakeJpegProfile(VipsImage* image, int descriptor) {
    std::string const profile = ReadJpegProfile(descriptor);
    if (profile == GetBlob(image, VIPS_META_ICC_NAME)) return;
    vips_image_remove(image, VIPS_META_ICC_NAME);
    if (!profile.empty()) vips_image_set_blob_copy(image, VIPS_META_ICC_NAME, profile.data(), profile.size());
}

/// Whether the library decodes all of a file that it does not complain of when it is told to accept damage.
bool IsWhole(FoundLoader const& loader, int descriptor) {
    Owned<VipsSource> const source(vips_source_new_from_descriptor(descriptor));
    OwnedImage const image = Load(loader, source.get(), false);
    double mean = 0;
    bool const isWhole = image != nullptr && vips_avg(image.get(), &mean, nullptr) == 0;
    vips_error_clear();
    return isWhole;
}

/// Of files that the library reads as a whole or not at all: the pixels that are there.
void Salvage(Header& header, FoundLoader const& loader, FileFacts const& facts, int descriptor) {
    header.damage = facts.damage;
    if (facts.missingBytes > 0) {
        Owned<VipsSource> const source = FillUp(descriptor, facts.missingBytes);
        header.image = Load(loader, source.get(), true);
        header.memory += facts.fileBytes + facts.missingBytes;
        return;
    }
    if (header.kind == ReadKind::Gif) header.isDamaged = !IsWhole(loader, descriptor);
    bool const isInterlaced =
        header.kind == ReadKind::Png && vips_image_get_typeof(header.image.get(), "interlaced") != 0;
    if (!isInterlaced && header.kind != ReadKind::Jxl) return;
    Salvaged salvaged = isInterlaced ? SalvageInterlacedPng(descriptor) : SalvageJpegXl(descriptor);
    header.isDamaged = !salvaged.isWhole;
    if (header.isDamaged) header.salvaged = std::move(salvaged.image);
}

/// By how much the decoder may shrink the picture, so that its longer side is still enough.
int ChooseShrink(VipsImage* image, ReadKind kind, std::uint32_t enoughSide) {
    constexpr int MOST = 8;
    if (kind != ReadKind::Jpeg || enoughSide == 0) return 1;
    auto const side = static_cast<std::uint32_t>(std::max(vips_image_get_width(image), vips_image_get_height(image)));
    int shrink = 1;
    while (shrink < MOST && side / (2U * static_cast<std::uint32_t>(shrink)) >= enoughSide) shrink *= 2;
    return shrink;
}

/// The same JPEG picture, decoded smaller. Null when it cannot be.
OwnedImage LoadShrunk(InputFile const& file, char const* operation, int shrink) {
    Owned<VipsSource> const source(vips_source_new_from_descriptor(file.Get()));
    VipsImage* loaded = nullptr;
    if (source != nullptr)
        (void)vips_call(operation, source.get(), &loaded, "access", VIPS_ACCESS_SEQUENTIAL, "fail_on",
                        VIPS_FAIL_ON_WARNING, "shrink", shrink, nullptr);
    return OwnedImage(loaded);
}

/// Opens the picture and reads its header, no pixel.
Header OpenHeader(fs::path const& path, InputFile const& file, ReadOptions const& options) {
    RequireRoom(WORKING_ROOM);
    // By descriptor, since a name given to the library may end in loader options: "photo.jpg[shrink=2]".
    Owned<VipsSource> const source(vips_source_new_from_descriptor(file.Get()));
    if (source == nullptr) FailInLibrary(path);
    std::optional<FoundLoader> const loader = FindLoaderOf(source.get());
    if (!loader) FailByKind(path, file.Read(HEAD_BYTES));
    ReadKind const kind = loader->kind;
    FileFacts const facts = ReadFileFacts(file.Get(), kind);
    RequireLittleMetadata(path, facts);
    Header header;
    header.kind = kind;
    header.image = Load(*loader, source.get(), options.acceptDamaged);
    auto const check = [&](VipsImage* image) { RequireLimits(path, image, kind, facts, options); };
    header.isDamaged = header.image == nullptr;
    if (header.isDamaged && options.acceptDamaged && kind == ReadKind::WebP)
        header.image = SalvageWebp(file.Get(), check);
    if (header.image != nullptr) check(header.image.get());
    bool const isAnyThere = facts.wholeRows != 0;
    if (!facts.damage.empty() && !(options.acceptDamaged && isAnyThere)) FailByDamage(path, facts.damage, isAnyThere);
    if (header.image == nullptr) FailInLibrary(path);
    header.memory = EstimateMemory(header.image.get(), kind, facts);
    if (options.acceptDamaged) Salvage(header, *loader, facts, file.Get());
    if (header.image == nullptr) FailInLibrary(path);
    int const shrink = options.acceptDamaged ? 1 : ChooseShrink(header.image.get(), kind, options.enoughSide);
    if (shrink > 1) header.image = LoadShrunk(file, loader->operation, shrink);
    if (header.image == nullptr) FailInLibrary(path);
    if (kind == ReadKind::Jpeg) TakeJpegProfile(header.image.get(), file.Get());
    header.rows = facts.wholeRows.value_or(static_cast<std::uint64_t>(vips_image_get_height(header.image.get())));
    header.isDamaged = header.isDamaged || facts.wholeRows.has_value();
    header.hasUnreadTags = facts.hasUnreadTags;
    return header;
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
    auto const provide = [first, whole] {
        // By pieces, so that a decoder that has to map after all waits for one of them.
        constexpr std::uintptr_t PIECE = MemoryPool::HUGE_PAGE;
        for (std::uintptr_t at = first; at < first + whole; at = at / PIECE * PIECE + PIECE) {
            std::uintptr_t const end = std::min(at / PIECE * PIECE + PIECE, first + whole);
            // Where the kernel does not know it, each page comes with its first row.
            if (madvise(reinterpret_cast<void*>(at), end - at, MADV_POPULATE_WRITE) != 0) return;
        }
    };
    try {
        return std::jthread(provide);
    } catch (std::system_error const&) { // No thread to be had: the pages come one by one.
        return {};
    }
}

/// Puts the rows of the image and returns how many there were before the decoder failed, if it did. One thread reads:
/// decoders work in sequence, and handing strips from thread to thread costs more than it brings.
int PutRows(VipsImage* image, int height, MutablePlane const& plane, SrgbConversion& conversion, RowSink& sink) {
    constexpr int STRIP_ROWS = 16; // Small enough for the cache between the decoder and the picture.
    std::jthread pages;
    Owned<VipsRegion> const region(vips_region_new(image));
    for (int top = 0; top < height; top += STRIP_ROWS) {
        VipsRect const strip{0, top, vips_image_get_width(image), std::min(STRIP_ROWS, height - top)};
        if (vips_region_prepare(region.get(), &strip) != 0) return top;
        if (top == 0) pages = ProvidePages(plane);
        for (int y = top; y < top + strip.height; ++y)
            sink.Put(static_cast<std::uint64_t>(y), conversion.Convert(VIPS_REGION_ADDR(region.get(), 0, y)));
    }
    return height;
}

SampleDepth GetDepth(VipsImage* image) {
    return vips_image_get_format(image) == VIPS_FORMAT_USHORT ? SampleDepth::Bits16 : SampleDepth::Bits8;
}

/// Whether the image's samples are to be converted by the profile: CMYK is sRGB by now, and has another one.
bool NeedsConversion(VipsImage* image, std::string const& profile) {
    return GetBlob(image, VIPS_META_ICC_NAME) == profile && IsProfileFor(profile, vips_image_get_bands(image) < 3) &&
           !IsSrgb(profile);
}

SrgbConversion MakeConversion(fs::path const& path, std::string const& profile, VipsImage* image) {
    try {
        return {profile, vips_image_get_bands(image), GetDepth(image), vips_image_get_width(image)};
    } catch (std::invalid_argument const& error) {
        Fail(path, error.what());
    }
}

/// Returns whether all rows were there.
bool Decode(fs::path const& path, VipsImage* image, int height, int orientation, SrgbConversion conversion,
            IDataVideo& picture, bool acceptDamaged) {
    MutablePlane const plane = picture.GetMutablePlane(0);
    RowSink sink(plane, GetDepth(image), orientation);
    int const rows = PutRows(image, height, plane, conversion, sink);
    if (rows == height) return true;
    std::string const reason = TakeError();
    RequireMemory(reason);
    if (!acceptDamaged || rows == 0) FailByDamage(path, reason, !acceptDamaged);
    return false;
}

/// Of what was accepted, in a line for a person; none when nothing is wrong.
std::vector<std::string> DescribeDamage(std::string damage, bool areRowsInvented) {
    if (areRowsInvented) damage += std::string(damage.empty() ? "" : "; ") + "some of its rows are invented";
    if (damage.empty()) return {};
    return {"it is damaged: " + damage};
}

LoadedPicture ReadPixels(fs::path const& path, InputFile const& file, Header header, IEffectContext& context,
                         ReadOptions const& options) {
    RequireRoom(header.memory + WORKING_ROOM);
    int const orientation = vips_image_get_orientation(header.image.get());
    LoadedPicture loaded;
    loaded.warnings = DescribeConversions(header.image.get(), file.Get());
    if (header.hasUnreadTags)
        loaded.warnings.emplace_back("its EXIF, IPTC and texts, in a TIFF file of 64 bits, are not read");
    std::string const ownProfile = options.toSrgb ? GetBlob(header.image.get(), VIPS_META_ICC_NAME) : std::string();
    bool const changesModel = ChangesColorModel(header.image.get());
    OwnedImage image = MakeDisplayable(std::move(header.image));
    bool const isConverted = image != nullptr && NeedsConversion(image.get(), ownProfile);
    if (isConverted) image = WithSrgbProfile(image);
    if (image == nullptr) FailInLibrary(path);
    bool const isSrgb = changesModel || isConverted || IsSrgb(ownProfile);
    auto const metadata = FileMetadata::Take(image.get(), file.Get(), isSrgb);
    loaded.metadata = metadata;
    if (header.damage.empty()) header.damage = metadata->GetDamage();
    if (!header.damage.empty() && !options.acceptDamaged) FailByDamage(path, header.damage, true);
    loaded.picture = CreatePicture(image.get(), orientation, context, options.acceptDamaged);
    bool const isSalvaged =
        header.salvaged != nullptr && vips_image_get_bands(header.salvaged.get()) == vips_image_get_bands(image.get());
    OwnedImage source = std::move(isSalvaged ? header.salvaged : image);
    TakeWarned();
    SrgbConversion conversion = MakeConversion(path, isConverted ? ownProfile : std::string(), source.get());
    bool const areRowsThere = Decode(path, source.get(), static_cast<int>(header.rows), orientation,
                                     std::move(conversion), *loaded.picture, options.acceptDamaged);
    source.reset(); // Some decoders warn at the end alone.
    bool const areRowsInvented = options.acceptDamaged && (TakeWarned() || header.isDamaged || !areRowsThere);
    std::ranges::move(DescribeDamage(header.damage, areRowsInvented), std::back_inserter(loaded.warnings));
    return loaded;
}

} // namespace

LoadedPicture ReadVipsPicture(fs::path const& path, IEffectContext& context, ReadOptions const& options) {
    InputFile const file(path);
    if (IsBmp(file.Read(HEAD_BYTES))) return ReadBmpPicture(path, file.ReadAll(), context, options);
    auto const open = [&] { return OpenHeader(path, file, options); };
    Header header = WithOwnComplaints(open);
    // Told between two turns: who waits for room here must not keep others from the library.
    if (options.onHeader) options.onHeader({CountPixels(header.image.get()), header.memory});
    return WithOwnComplaints([&] {
        if (header.image == nullptr) header = open(); // Used up by the first attempt.
        return ReadPixels(path, file, std::exchange(header, Header()), context, options);
    });
}

} // namespace Velnor::Proc::Files
