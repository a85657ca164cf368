#pragma once

#include "Proc/Host/PictureFile.h"

#include <filesystem>
#include <string>

namespace Velnor::Tool {

/// The name of standard input among photographs, and of standard output as -o.
inline constexpr char const* STANDARD_STREAM = "-";

/// What people call a photograph: its path, or "standard input".
std::string NamePhoto(std::filesystem::path const& photo);

/// As Proc::ReadPicture, and from standard input by its name; that may be read again, and by several.
Proc::LoadedPicture ReadPhoto(std::filesystem::path const& photo, Proc::IEffectContext& context,
                              Proc::ReadOptions const& options);

/// Throws Failure (wrong call) unless a picture can go to standard output in this format, an extension without its dot.
void RequireStandardOutput(std::string const& format);

/// A file of memory to write in the place of standard output, which no encoder can write to since they seek. It goes
/// with the process, in whatever way that ends.
class StandardOutput {
public:
    explicit StandardOutput(std::string const& format);
    ~StandardOutput();
    StandardOutput(StandardOutput const&) = delete;
    StandardOutput& operator=(StandardOutput const&) = delete;

    std::filesystem::path const& GetFile() const { return file; } ///< A name for messages, with the format's extension.
    int GetDescriptor() const { return descriptor; }
    void Print() const; ///< What has been written to the file. Throws Failure (output).

private:
    std::filesystem::path const file;
    int const descriptor;
};

} // namespace Velnor::Tool
