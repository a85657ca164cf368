#include "Proc/Host/Files/ColorProfile.h"
#include "Proc/Host/Files/FilesModule.h"
#include "Proc/Host/Files/Metadata.h"
#include "Proc/Host/Files/RawReader.h"
#include "Proc/Host/Files/Reader.h"
#include "Proc/Host/Files/VipsSupport.h"
#include "Proc/Host/Files/Writer.h"

namespace Velnor::Proc::Files {
namespace {

LoadedPicture Read(std::filesystem::path const& path, IEffectContext& context, ReadOptions const& options) {
    return IsRawName(path) ? ReadRawPicture(path, context, options) : ReadVipsPicture(path, context, options);
}

Color ToPhotosColor(Color const& color, PictureMetadata const& metadata) {
    auto const* const read = dynamic_cast<FileMetadata const*>(&metadata);
    return read == nullptr ? color : FromSrgb(color, read->GetProfile());
}

} // namespace
} // namespace Velnor::Proc::Files

extern "C" VELNOR_API Velnor::Proc::Files::FilesModule const* GetVelnorFiles() {
    using namespace Velnor::Proc::Files;
    StartVips();
    static constexpr FilesModule MODULE{&Read, &WriteVipsPicture, &ToPhotosColor};
    return &MODULE;
}
