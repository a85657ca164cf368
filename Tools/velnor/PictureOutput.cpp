#include "Tools/velnor/PictureOutput.h"

#include "Tools/velnor/Conversion.h"
#include "Tools/velnor/Failure.h"

#include <algorithm>
#include <array>
#include <system_error>

namespace Velnor::Tool {
namespace {

bool IsPaletteOpaque(Proc::IDataVideo const& picture) {
    constexpr int ENTRY_SIZE = 4;
    constexpr int OPACITY = 3;
    Proc::ConstPlane const indices = picture.GetPlane(0);
    Proc::FrameFormat const& frame = picture.GetFrameFormat();
    std::array<bool, 256> isUsed{};
    for (std::uint32_t y = 0; y < frame.height; ++y)
        for (std::uint32_t x = 0; x < frame.width; ++x) isUsed[indices.GetRow(y)[x]] = true;
    unsigned char const* const palette = picture.GetPlane(1).GetRow(0);
    for (std::size_t i = 0; i < isUsed.size(); ++i)
        if (isUsed[i] && palette[i * ENTRY_SIZE + OPACITY] != 255) return false;
    return true;
}

} // namespace

bool HasAlpha(PixFmt format) { return format != PixFmt::PAL8 && PixFmtDescription::Find(format)->hasAlpha; }

bool IsOpaque(Proc::IDataVideo const& picture) {
    PixFmtDescription const& description = picture.GetDescription();
    if (description.model == ColorModel::Palette) return IsPaletteOpaque(picture);
    if (!description.hasAlpha) return true;
    Proc::ConstPlane const plane = picture.GetPlane(description.alpha.plane);
    std::size_t const step = description.planes[description.alpha.plane].bytes;
    Proc::FrameFormat const& frame = picture.GetFrameFormat();
    for (std::uint32_t y = 0; y < frame.height; ++y) {
        unsigned char const* const row = plane.GetRow(y) + description.alpha.offset;
        for (std::uint32_t x = 0; x < frame.width; ++x)
            if (row[x * step] != 255) return false;
    }
    return true;
}

Proc::DataHandle PrepareForFile(Proc::DataHandle picture, std::filesystem::path const& file, bool inputHadAlpha,
                                Proc::IEffectFactory& factory) {
    std::vector<PixFmt> formats = Proc::GetWritableFormats(file);
    bool const keepsAlpha = inputHadAlpha || !IsOpaque(Proc::AsVideo(picture));
    if (!keepsAlpha)
        std::erase_if(formats, HasAlpha);
    else if (std::ranges::none_of(formats, HasAlpha))
        // The writer lays such pictures over a background, which is better than dropping the alpha alone.
        formats.insert(formats.end(), {PixFmt::RGBA, PixFmt::YA8});
    if (std::ranges::count(formats, picture->GetPixFmt()) > 0) return picture;
    std::erase(formats, PixFmt::PAL8);
    Convert(picture, formats, factory);
    return picture;
}

void RequireOptions(std::filesystem::path const& file, Proc::WriteOptions const& options) {
    Proc::GetWritableFormats(file); // An unknown kind of file is no matter of options.
    try {
        Proc::RequireWriteOptions(file, options);
    } catch (Proc::FileException const& error) {
        throw WrongCall(ToOneLine(DescribeException(error)));
    }
}

std::vector<std::string> SavePicture(Proc::DataHandle picture, std::filesystem::path const& file, bool inputHadAlpha,
                                     Proc::PictureMetadata const* metadata, Proc::WriteOptions const& options,
                                     Proc::IEffectFactory& factory) {
    picture = PrepareForFile(std::move(picture), file, inputHadAlpha, factory);
    std::filesystem::path const folder = file.parent_path();
    std::error_code error;
    if (!folder.empty()) std::filesystem::create_directories(folder, error);
    if (error)
        throw Failure(ExitCode::OutputFailed, "folder " + folder.string() + " cannot be made: " + error.message());
    return Proc::WritePicture(file, Proc::AsVideo(picture), metadata, options);
}

} // namespace Velnor::Tool
