#pragma once

#include <string>
#include <vector>

namespace Velnor::Proc::Testing {

/// A small file that unpacks to what no computer should be made to take.
struct Bomb {
    std::string name; ///< With the extension of its kind.
    std::string bytes;
};

/// One of every kind of file and of every way to hide much in little that its format has. What the header promises is
/// there: the pixels follow as far as the kind can be written by hand, of the others as much as their readers ask for
/// before they decode.
std::vector<Bomb> MakeBombs();

/// A chunk of a PNG file with its length and checksum.
std::string MakePngChunk(std::string const& type, std::string const& data);

} // namespace Velnor::Proc::Testing
