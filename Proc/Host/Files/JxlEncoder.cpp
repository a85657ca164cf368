#include "Core/Processors.h"
#include "Proc/Host/Files/EncodersModule.h"
#include "Proc/Host/PictureFile.h"

#include <jxl/encode_cxx.h>
#include <jxl/resizable_parallel_runner_cxx.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace Velnor::Proc::Files {
namespace {

void Require(JxlEncoderStatus status, char const* step) {
    if (status != JXL_ENC_SUCCESS)
        VELNOR_THROW(FileException, std::string("the encoder of JPEG XL fails at the ") + step);
}

/// The distance at which the eye sees a difference is 1; the scale of JPEG's qualities laid over it, as libjxl's own
/// program does it.
float GetDistance(EncoderOptions const& options) {
    if (options.isLossless) return 0;
    auto const quality = static_cast<float>(options.quality);
    if (options.quality >= 30) return 0.1F + (100 - quality) * 0.09F;
    return 53.0F / 3000 * quality * quality - 23.0F / 20 * quality + 25;
}

JxlBasicInfo Describe(ConstPlane const& plane, bool keepsSamples) {
    auto const bands = static_cast<std::uint32_t>(plane.GetSampleBytes());
    bool const hasAlpha = bands % 2 == 0;
    JxlBasicInfo info;
    JxlEncoderInitBasicInfo(&info);
    info.xsize = static_cast<std::uint32_t>(plane.GetWidth() / bands);
    info.ysize = static_cast<std::uint32_t>(plane.GetHeight());
    info.bits_per_sample = 8;
    info.num_color_channels = bands < 3 ? 1 : 3;
    info.num_extra_channels = hasAlpha ? 1 : 0;
    info.alpha_bits = hasAlpha ? 8 : 0;
    info.uses_original_profile = keepsSamples ? JXL_TRUE : JXL_FALSE;
    return info;
}

void AddBox(JxlEncoder* encoder, char const* type, std::string const& content) {
    if (content.empty()) return;
    Require(JxlEncoderAddBox(encoder, type, reinterpret_cast<std::uint8_t const*>(content.data()), content.size(),
                             JXL_FALSE),
            "metadata");
}

void SetColors(JxlEncoder* encoder, std::string const& profile, bool isGrey) {
    if (!profile.empty())
        return Require(
            JxlEncoderSetICCProfile(encoder, reinterpret_cast<std::uint8_t const*>(profile.data()), profile.size()),
            "colour profile");
    JxlColorEncoding color;
    JxlColorEncodingSetToSRGB(&color, isGrey ? JXL_TRUE : JXL_FALSE);
    Require(JxlEncoderSetColorEncoding(encoder, &color), "colours");
}

void AddFrame(JxlEncoder* encoder, ConstPlane const& plane, EncoderOptions const& options) {
    JxlEncoderFrameSettings* const settings = JxlEncoderFrameSettingsCreate(encoder, nullptr);
    if (options.isLossless) Require(JxlEncoderSetFrameLossless(settings, JXL_TRUE), "settings");
    Require(JxlEncoderSetFrameDistance(settings, GetDistance(options)), "settings");
    std::vector<unsigned char> samples;
    samples.reserve(plane.GetWidth() * plane.GetHeight());
    for (std::uint64_t y = 0; y < plane.GetHeight(); ++y)
        samples.insert(samples.end(), plane.GetRow(y), plane.GetRow(y) + plane.GetWidth());
    JxlPixelFormat const format{static_cast<std::uint32_t>(plane.GetSampleBytes()), JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN,
                                0};
    Require(JxlEncoderAddImageFrame(settings, &format, samples.data(), samples.size()), "picture");
}

std::string TakeOutput(JxlEncoder* encoder) {
    std::string file;
    std::vector<std::uint8_t> piece(1U << 20);
    JxlEncoderStatus status = JXL_ENC_NEED_MORE_OUTPUT;
    while (status == JXL_ENC_NEED_MORE_OUTPUT) {
        std::uint8_t* next = piece.data();
        std::size_t left = piece.size();
        status = JxlEncoderProcessOutput(encoder, &next, &left);
        file.append(reinterpret_cast<char const*>(piece.data()), piece.size() - left);
    }
    Require(status, "output");
    return file;
}

} // namespace

std::string EncodeJxl(ConstPlane const& plane, MetadataBlocks const& metadata, EncoderOptions const& options) {
    auto const runner = JxlResizableParallelRunnerMake(nullptr);
    auto const encoder = JxlEncoderMake(nullptr);
    if (runner == nullptr || encoder == nullptr) throw std::bad_alloc();
    // A decoder cannot bring samples that were turned into the codec's own colours back to any profile but its own few.
    JxlBasicInfo const info = Describe(plane, options.isLossless || !metadata.profile.empty());
    JxlResizableParallelRunnerSetThreads(
        runner.get(),
        std::min(JxlResizableParallelRunnerSuggestThreads(info.xsize, info.ysize), Core::GetThreadsPerPicture()));
    Require(JxlEncoderSetParallelRunner(encoder.get(), JxlResizableParallelRunner, runner.get()), "threads");
    bool const hasBoxes = !metadata.exif.empty() || !metadata.xmp.empty();
    if (hasBoxes) Require(JxlEncoderUseBoxes(encoder.get()), "metadata");
    Require(JxlEncoderSetBasicInfo(encoder.get(), &info), "size");
    SetColors(encoder.get(), metadata.profile, info.num_color_channels == 1);
    // The first four bytes tell where the TIFF structure begins after them.
    AddBox(encoder.get(), "Exif", metadata.exif.empty() ? "" : std::string(4, '\0') + metadata.exif);
    AddBox(encoder.get(), "xml ", metadata.xmp);
    AddFrame(encoder.get(), plane, options);
    JxlEncoderCloseInput(encoder.get());
    return TakeOutput(encoder.get());
}

} // namespace Velnor::Proc::Files
