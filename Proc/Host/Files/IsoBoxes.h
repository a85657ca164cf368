#pragma once

#include "Proc/Host/Files/FileBytes.h"

#include <cstdint>
#include <string>

namespace Velnor::Proc::Files {

/// A box of ISO/IEC 14496-12, of which HEIF and JPEG XL files are made: where its content is.
struct IsoBox {
    std::string type; ///< Four letters; empty: there is no whole box.
    std::uint64_t content = 0;
    std::uint64_t end = 0;
};

/// The box at a place, within what is before `end`.
IsoBox ReadIsoBox(FileBytes const& file, std::uint64_t at, std::uint64_t end);

/// What is wrong where boxes end before their file does, as part of a sentence. Empty when what follows is no box at
/// all: some programs put things of their own after a picture.
std::string DescribeBrokenBox(FileBytes const& file, std::uint64_t at);

} // namespace Velnor::Proc::Files
