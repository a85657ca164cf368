#include "Proc/Effects/Photo/MagickSupport.h"

#include "Core/Processors.h"
#include "Proc/Host/FatalError.h"
#include "Proc/Host/MemoryRoom.h"
#include "Proc/Interfaces/EffectExceptions.h"

#include <algorithm>
#include <array>
#include <mutex>

namespace Velnor::Proc::MagickSupport {
namespace {

using MagickCore::Quantum; // Named without its namespace in the macros below.
using MagickCore::ResourceType;

[[noreturn]] void Refuse(std::string const& text) {
    EffectException error;
    error << TagTranscodingErrorCode(TranscodingErrors::OverLimit);
    Velnor::Details::ThrowDescribed(error, text, VELNOR_LOCATION);
}

void RequireWithin(std::uint64_t value, ResourceType type, std::string const& who, std::string const& what) {
    std::uint64_t const limit = MagickCore::GetMagickResourceLimit(type);
    if (value <= limit) return;
    Refuse(who + " cannot take the picture: its " + what + " of " + std::to_string(value) +
           " pixels is over the limit of ImageMagick's policy, " + std::to_string(limit) + ".");
}

std::uint64_t GetRoom(ResourceType type) {
    std::uint64_t const limit = MagickCore::GetMagickResourceLimit(type);
    std::uint64_t const used = MagickCore::GetMagickResource(type);
    return limit - std::min(limit, used);
}

/// Where the components of a packed pixel lie.
struct ColourPlaces {
    explicit ColourPlaces(PixFmtDescription const& format)
        : step(format.planes[0].bytes),
          red(format.components[0].offset),
          green(format.components[1].offset),
          blue(format.components[2].offset) {}
    std::size_t step, red, green, blue;
};

/// What one of our 256 levels is in the library's, exactly.
constexpr unsigned int LEVEL = QuantumRange / 255;
static_assert(LEVEL * 255 == QuantumRange);

/// The library ends the process when this returns.
void EndByLibrary(MagickCore::ExceptionType, char const* reason, char const*) {
    if (FatalErrorHandler const handler = GetFatalErrorHandler()) handler(reason);
}

void SetUp() {
    static std::once_flag once;
    std::call_once(once, [] {
        ::Magick::InitializeMagick(nullptr);
        MagickCore::SetFatalErrorHandler(EndByLibrary);
        MagickCore::SetMagickResourceLimit(
            MagickCore::ThreadResource,
            std::min<MagickCore::MagickSizeType>(Core::GetThreadsPerPicture(),
                                                 MagickCore::GetMagickResourceLimit(MagickCore::ThreadResource)));
    });
}

} // namespace

std::vector<PixFmt> const& GetColourFormats() {
    static std::vector<PixFmt> const formats{PixFmt::RGB24, PixFmt::BGR24, PixFmt::RGBA, PixFmt::BGRA};
    return formats;
}

void RequireRoom(FrameFormat const& frame, int copies, std::string const& who) {
    SetUp();
    RequireWithin(frame.width, MagickCore::WidthResource, who, "width");
    RequireWithin(frame.height, MagickCore::HeightResource, who, "height");
    std::uint64_t const pixels = std::uint64_t{frame.width} * frame.height;
    RequireWithin(pixels, MagickCore::AreaResource, who, "area");

    // The library keeps a picture in memory or, where that is full, in a file.
    std::array<std::uint64_t, 2> rooms{GetRoom(MagickCore::MemoryResource), GetRoom(MagickCore::DiskResource)};
    std::uint64_t const bytes = pixels * sizeof(MagickCore::PixelPacket);
    for (int i = 0; i < copies; ++i) {
        auto const room = std::ranges::find_if(rooms, [&](std::uint64_t size) { return size >= bytes; });
        if (room == rooms.end())
            Refuse(who + " cannot take the picture: it needs " + std::to_string(copies) + " times " +
                   std::to_string(bytes) + " bytes, and ImageMagick's policy leaves " +
                   std::to_string(GetRoom(MagickCore::MemoryResource)) + " in memory and " +
                   std::to_string(GetRoom(MagickCore::DiskResource)) + " on disk.");
        *room -= bytes;
    }
}

void Run(std::string const& who, std::function<void()> const& work) {
    SetUp();
    try {
        work();
    } catch (::Magick::Exception const& error) {
        if (IsAboutMemory(error.what(), 0)) throw std::bad_alloc();
        VELNOR_THROW(EffectException, who + " was stopped by ImageMagick: " + error.what() + ".");
    }
}

::Magick::Image Import(IDataVideo const& picture) {
    FrameFormat const frame = picture.GetFrameFormat();
    // Made empty and filled by rows: the constructor that takes samples hides a refusal and hands out a null image.
    ::Magick::Image image(::Magick::Geometry(frame.width, frame.height), ::Magick::Color("black"));
    image.type(::Magick::TrueColorType);
    image.modifyImage();
    ColourPlaces const places(picture.GetDescription());
    ConstPlane const plane = picture.GetPlane(0);
    for (std::uint32_t y = 0; y < frame.height; ++y) {
        MagickCore::PixelPacket* const row = image.setPixels(0, static_cast<ssize_t>(y), frame.width, 1);
        unsigned char const* pixel = plane.GetRow(y);
        for (std::uint32_t x = 0; x < frame.width; ++x, pixel += places.step) {
            row[x].red = static_cast<Quantum>(pixel[places.red] * LEVEL);
            row[x].green = static_cast<Quantum>(pixel[places.green] * LEVEL);
            row[x].blue = static_cast<Quantum>(pixel[places.blue] * LEVEL);
            row[x].opacity = OpaqueOpacity;
        }
        image.syncPixels();
    }
    return image;
}

void Export(::Magick::Image const& image, IDataVideo& picture) {
    FrameFormat const frame = picture.GetFrameFormat();
    ColourPlaces const places(picture.GetDescription());
    MutablePlane const plane = picture.GetMutablePlane(0);
    auto const toByte = [](Quantum level) { return static_cast<unsigned char>((level + LEVEL / 2) / LEVEL); };
    for (std::uint32_t y = 0; y < frame.height; ++y) {
        MagickCore::PixelPacket const* const row = image.getConstPixels(0, static_cast<ssize_t>(y), frame.width, 1);
        unsigned char* pixel = plane.GetRow(y);
        for (std::uint32_t x = 0; x < frame.width; ++x, pixel += places.step) {
            pixel[places.red] = toByte(row[x].red);
            pixel[places.green] = toByte(row[x].green);
            pixel[places.blue] = toByte(row[x].blue);
        }
    }
}

} // namespace Velnor::Proc::MagickSupport
