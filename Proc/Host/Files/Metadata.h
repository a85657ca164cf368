#pragma once

#include "Proc/Host/Files/FilesModule.h"
#include "Proc/Host/Files/VipsSupport.h"

#include <memory>
#include <span>

namespace Velnor::Proc::Files {

/// The metadata of a picture file: an image of the file library that has only a header.
class VipsMetadata : public PictureMetadata {
public:
    /// Takes what is worth carrying from a loaded picture, for an upright copy of it that shows other pixels: without
    /// orientation and thumbnails, in whatever block they hide. Null when there is nothing.
    static std::shared_ptr<VipsMetadata const> Take(VipsImage* source);

    /// Gives it all to a picture about to be written to a file of that kind. A colour profile for another colour model than the picture's is
    /// left out: a file that carried it would be wrong.
    void Apply(VipsImage* target, FileKind kind) const;

    std::span<char const> GetRgbProfile() const; ///< Empty when there is none.

private:
    explicit VipsMetadata(OwnedImage fields) : header(std::move(fields)) {}

    OwnedImage header;
};

} // namespace Velnor::Proc::Files
