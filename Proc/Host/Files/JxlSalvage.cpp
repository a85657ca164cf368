#include "Proc/Host/Files/EncodersModule.h"

#include <jxl/decode_cxx.h>
#include <jxl/resizable_parallel_runner_cxx.h>

#include <algorithm>
#include <new>

namespace Velnor::Proc::Files {
namespace {

/// A decoder that has the whole file, and takes what there is of it. It is not told that the file ends: it would print
/// that something is missing.
class Decoding {
public:
    explicit Decoding(std::string_view file)
        : runner(JxlResizableParallelRunnerMake(nullptr)), decoder(JxlDecoderMake(nullptr)) {
        if (runner == nullptr || decoder == nullptr) throw std::bad_alloc();
        JxlDecoderSetParallelRunner(decoder.get(), JxlResizableParallelRunner, runner.get());
        JxlDecoderSubscribeEvents(decoder.get(), JXL_DEC_BASIC_INFO | JXL_DEC_FULL_IMAGE);
        JxlDecoderSetInput(decoder.get(), reinterpret_cast<std::uint8_t const*>(file.data()), file.size());
    }

    SalvagedJxl Run() {
        JxlDecoderStatus status = JxlDecoderProcessInput(decoder.get());
        while (status == JXL_DEC_BASIC_INFO || status == JXL_DEC_NEED_IMAGE_OUT_BUFFER) {
            if (status == JXL_DEC_BASIC_INFO ? !TakeInfo() : !ProvideBuffer()) return {};
            status = JxlDecoderProcessInput(decoder.get());
        }
        salvaged.isWhole = status == JXL_DEC_FULL_IMAGE || status == JXL_DEC_SUCCESS;
        if (!salvaged.isWhole && JxlDecoderFlushImage(decoder.get()) != JXL_DEC_SUCCESS) return {};
        return std::move(salvaged);
    }

private:
    bool TakeInfo() {
        JxlBasicInfo info;
        if (JxlDecoderGetBasicInfo(decoder.get(), &info) != JXL_DEC_SUCCESS) return false;
        salvaged.width = info.xsize;
        salvaged.height = info.ysize;
        salvaged.bands = std::min(info.num_color_channels, 3U) + (info.alpha_bits > 0 ? 1 : 0);
        JxlResizableParallelRunnerSetThreads(runner.get(),
                                             JxlResizableParallelRunnerSuggestThreads(info.xsize, info.ysize));
        return true;
    }

    bool ProvideBuffer() {
        JxlPixelFormat const format{salvaged.bands, JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN, 0};
        std::size_t bytes = 0;
        if (JxlDecoderImageOutBufferSize(decoder.get(), &format, &bytes) != JXL_DEC_SUCCESS) return false;
        salvaged.samples.resize(bytes);
        return JxlDecoderSetImageOutBuffer(decoder.get(), &format, salvaged.samples.data(), bytes) == JXL_DEC_SUCCESS;
    }

    JxlResizableParallelRunnerPtr runner;
    JxlDecoderPtr decoder;
    SalvagedJxl salvaged;
};

} // namespace

SalvagedJxl SalvageJxl(std::string_view file) { return Decoding(file).Run(); }

} // namespace Velnor::Proc::Files
