#pragma once

#include "Proc/Host/Files/MetadataBlocks.h"
#include "Proc/Interfaces/Plane.h"

#include <cstdint>
#include <string>

namespace Velnor::Proc::Files {

enum class HeifCodec : std::uint8_t { Av1, Hevc };

struct EncoderOptions {
    int quality; ///< 1 to 100.
    bool isLossless;
    bool isChromaHalved; ///< Of HEIC and AVIF.
};

/// The encoders of HEIC, AVIF and JPEG XL, with metadata byte for byte: a module of its own, since what it stands on
/// takes 20 ms to load. Each makes a whole file of a packed picture and throws FileException, the reason alone.
struct EncodersModule {
    /// The plane is in RGB24 or RGBA.
    std::string (*encodeHeif)(ConstPlane const& plane, MetadataBlocks const& metadata, HeifCodec codec,
                              EncoderOptions const& options);
    /// The plane has 1 to 4 bytes a pixel: grey or RGB, without and with alpha.
    std::string (*encodeJxl)(ConstPlane const& plane, MetadataBlocks const& metadata, EncoderOptions const& options);
};

using EncodersModuleFunction = EncodersModule const* (*)();
inline constexpr char const* ENCODERS_MODULE_FILE = "libVelnorEncoders.so";
inline constexpr char const* ENCODERS_MODULE_ENTRY = "GetVelnorEncoders";

std::string EncodeHeif(ConstPlane const& plane, MetadataBlocks const& metadata, HeifCodec codec,
                       EncoderOptions const& options);
std::string EncodeJxl(ConstPlane const& plane, MetadataBlocks const& metadata, EncoderOptions const& options);

} // namespace Velnor::Proc::Files
