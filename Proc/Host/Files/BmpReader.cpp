#include "Proc/Host/Files/BmpReader.h"

#include "Proc/Host/Files/Limits.h"
#include "Proc/Host/ModuleLoader.h"
#include "Proc/Host/PluginLoader.h"
#include "Proc/Interfaces/EffectExceptions.h"

#include <dlfcn.h>

#include <cstdlib>

namespace Velnor::Proc::Files {
namespace {

/// Bytes of the older header's size, of the newer ones' and of what stands before them.
constexpr std::size_t FILE_HEADER = 14;
constexpr std::size_t OLD_HEADER = 12;
constexpr std::size_t NEW_HEADER = 40;

/// Of the picture, and of the library's own.
constexpr unsigned PIXEL_BYTES = 4;
constexpr unsigned DECODER_BYTES = 8;

std::uint32_t ToNumber(std::string_view bytes) {
    std::uint32_t value = 0;
    for (auto at = bytes.rbegin(); at != bytes.rend(); ++at) value = value << 8 | static_cast<unsigned char>(*at);
    return value;
}

/// Width and height; 0 where the header is none. A negative height is that of rows from the top down.
FrameFormat ReadSize(std::string_view file) {
    if (file.size() < FILE_HEADER + NEW_HEADER) return FrameFormat::Square(0, 0);
    bool const isOld = ToNumber(file.substr(FILE_HEADER, 4)) == OLD_HEADER;
    if (isOld) return FrameFormat::Square(ToNumber(file.substr(18, 2)), ToNumber(file.substr(20, 2)));
    auto const height = static_cast<std::int32_t>(ToNumber(file.substr(22, 4)));
    return FrameFormat::Square(ToNumber(file.substr(18, 4)), static_cast<std::uint32_t>(std::llabs(height)));
}

BmpDecoderFunction LoadDecoder(std::filesystem::path const& path) {
    void* const module = OpenModule(GetInstalledFolder() / BMP_DECODER_FILE);
    void* const entry = module == nullptr ? nullptr : dlsym(module, BMP_DECODER_ENTRY);
    if (entry == nullptr)
        VELNOR_THROW(FileException, path.string() + " cannot be read: the decoder of BMP cannot be loaded.");
    return reinterpret_cast<BmpDecoderFunction>(entry);
}

} // namespace

bool IsBmp(std::string_view head) { return head.starts_with("BM") && head.size() >= FILE_HEADER; }

LoadedPicture ReadBmpPicture(std::filesystem::path const& path, std::string const& content, IEffectContext& context,
                             ReadOptions const& options) {
    FrameFormat const frame = ReadSize(content);
    if (frame.width == 0 || frame.height == 0)
        VELNOR_THROW(FileInputException, path.string() + " cannot be read: it is damaged: it has no size.");
    FileFacts facts;
    facts.fileBytes = content.size();
    facts.pixelBits = 8 * PIXEL_BYTES;
    std::uint64_t const pixels = std::uint64_t{frame.width} * frame.height;
    std::uint64_t const memory = pixels * (PIXEL_BYTES + DECODER_BYTES);
    RequireLimits(path, frame, memory, ReadKind::Bmp, facts, options);
    if (options.onHeader) options.onHeader({pixels, memory});
    BmpDecoderFunction const decode = LoadDecoder(path);
    LoadedPicture loaded;
    try {
        decode(content, frame, options.acceptDamaged, context, loaded.picture);
    } catch (EffectException const& error) {
        VELNOR_THROW(FileInputException, path.string() + " cannot be read: " + DescribeException(error));
    }
    return loaded;
}

} // namespace Velnor::Proc::Files
