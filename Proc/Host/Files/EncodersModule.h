#pragma once

#include "Proc/Host/Files/MetadataBlocks.h"
#include "Proc/Interfaces/Plane.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Velnor::Proc::Files {

enum class HeifCodec : std::uint8_t { Av1, Hevc };

struct EncoderOptions {
    int quality; ///< 1 to 100.
    bool isLossless;
    bool isChromaHalved; ///< Of HEIC and AVIF.
};

/// What can be read of a damaged JPEG XL file: 1 to 4 bytes a pixel, no padding. No samples when that is nothing.
struct SalvagedJxl {
    std::uint32_t width = 0, height = 0, bands = 0;
    bool isWhole = false; ///< The pixels are not damaged at all.
    std::vector<std::uint8_t> samples;
};

/// The encoders of HEIC, AVIF and JPEG XL, with metadata byte for byte: a module of its own, since what it stands on
/// takes 20 ms to load. Each makes a whole file of a packed picture and throws FileException, the reason alone.
struct EncodersModule {
    /// The plane is in RGB24 or RGBA.
    std::string (*encodeHeif)(ConstPlane const& plane, MetadataBlocks const& metadata, HeifCodec codec,
                              EncoderOptions const& options);
    /// The plane has 1 to 4 bytes a pixel: grey or RGB, without and with alpha.
    std::string (*encodeJxl)(ConstPlane const& plane, MetadataBlocks const& metadata, EncoderOptions const& options);
    /// The file is within the limits.
    SalvagedJxl (*salvageJxl)(std::string_view file);
};

using EncodersModuleFunction = EncodersModule const* (*)();
inline constexpr char const* ENCODERS_MODULE_FILE = "libVelnorEncoders.so";
inline constexpr char const* ENCODERS_MODULE_ENTRY = "GetVelnorEncoders";

/// Loads the module at the first call. Throws FileException, the reason alone.
EncodersModule const& GetEncoders();

std::string EncodeHeif(ConstPlane const& plane, MetadataBlocks const& metadata, HeifCodec codec,
                       EncoderOptions const& options);
std::string EncodeJxl(ConstPlane const& plane, MetadataBlocks const& metadata, EncoderOptions const& options);
SalvagedJxl SalvageJxl(std::string_view file);

} // namespace Velnor::Proc::Files
