#include "Proc/Effects/Photo/MagickSupport.h"
#include "Proc/Host/Files/BmpReader.h"
#include "Proc/Interfaces/EffectExceptions.h"

namespace Velnor::Proc::Files {
namespace {

void Decode(std::string const& content, FrameFormat const& frame, bool acceptDamaged, IEffectContext& context,
            VideoHandle& picture) {
    ::Magick::Image image;
    image.magick("BMP"); // Else the library would look for itself what the file is.
    try {
        image.read(::Magick::Blob(content.data(), content.size()));
    } catch (::Magick::Warning const&) {
        if (!acceptDamaged) throw;
    }
    if (image.columns() != frame.width || image.rows() != frame.height)
        VELNOR_THROW(EffectException, "It is damaged: its header promises another size.");
    bool const hasAlpha = image.matte();
    VideoHandle const read = context.CreateImage(hasAlpha ? PixFmt::RGBA : PixFmt::RGB24, frame);
    MutablePlane const plane = read->GetMutablePlane(0);
    for (std::uint32_t y = 0; y < frame.height; ++y)
        image.write(0, static_cast<ssize_t>(y), frame.width, 1, hasAlpha ? "RGBA" : "RGB", MagickCore::CharPixel,
                    plane.GetRow(y));
    picture = read;
}

} // namespace
} // namespace Velnor::Proc::Files

extern "C" VELNOR_API void DecodeVelnorBmp(std::string const& content, Velnor::Proc::FrameFormat const& frame,
                                           bool acceptDamaged, Velnor::Proc::IEffectContext& context,
                                           Velnor::Proc::VideoHandle& picture) {
    using namespace Velnor::Proc;
    MagickSupport::RequireRoom(frame, 1, "The decoder of BMP");
    MagickSupport::Run("The decoder of BMP", [&] { Files::Decode(content, frame, acceptDamaged, context, picture); });
}
