#pragma once

#include "Proc/Host/Files/FilesModule.h"
#include "Proc/Host/Files/MetadataBlocks.h"
#include "Proc/Host/Files/VipsSupport.h"

#include <sys/stat.h>

#include <memory>
#include <string>
#include <vector>

namespace Velnor::Proc::Files {

/// The metadata of a picture file, and its times.
class FileMetadata : public PictureMetadata {
public:
    /// Takes all there is: from the image, whose header was read, and from the file where the library leaves some.
    /// @param isSrgb  the pixels have become sRGB, whatever the file says of its colours
    static std::shared_ptr<FileMetadata const> Take(VipsImage* image, int descriptor, bool isSrgb);

    /// Takes EXIF and IPTC of a camera's raw file, as far as it is built like a TIFF file.
    static std::shared_ptr<FileMetadata const> TakeRaw(int descriptor);

    /// What a file of a kind can hold of it, changed to fit a picture that stands upright and shows other pixels.
    struct Fitted {
        MetadataBlocks blocks;
        std::vector<std::string> losses; ///< What it cannot hold, each a clause.
    };
    Fitted Fit(FileKind kind, IDataVideo const& picture, Strip strip) const;

    /// What is wrong with it, as part of a sentence; empty for nothing.
    std::string const& GetDamage() const { return damage; }

    std::string const& GetProfile() const { return blocks.profile; }
    timespec const (&GetTimes() const)[2] { return times; } ///< Last access and change.

private:
    void TakeTimes(int descriptor);
    void FindDamage(); ///< Of the blocks themselves.

    MetadataBlocks blocks;
    std::string damage;
    bool isSrgb = false;
    timespec times[2]{};
};

char const* GetKindName(FileKind kind);

} // namespace Velnor::Proc::Files
