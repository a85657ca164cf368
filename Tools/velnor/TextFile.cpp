#include "Tools/velnor/TextFile.h"

#include "Proc/Host/OutputFile.h"
#include "Tools/velnor/Failure.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <system_error>

namespace Velnor::Tool {

namespace fs = std::filesystem;

void WriteTextFile(fs::path const& file, std::string_view text, bool replace) {
    std::error_code error;
    if (file.has_parent_path()) fs::create_directories(file.parent_path(), error);
    if (error)
        throw Failure(ExitCode::OutputFailed,
                      "the folder " + file.parent_path().string() + " cannot be made: " + error.message());
    Proc::OutputFile output(file, replace);
    output.Write(text.data(), text.size());
    output.Commit();
}

std::string ReadTextFile(fs::path const& file) {
    constexpr std::uintmax_t LARGEST = 16 << 20;
    std::error_code error;
    auto const refuse = [&](std::string const& why) {
        return Failure(ExitCode::InputFailed, file.string() + " cannot be read: " + why);
    };
    if (!fs::exists(file, error)) throw refuse(std::strerror(ENOENT));
    if (!fs::is_regular_file(file, error)) throw refuse("it is no regular file");
    if (fs::file_size(file, error) > LARGEST) throw refuse("it has more than 16 megabytes");
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    if (!stream) throw refuse(std::strerror(errno));
    return text.str();
}

} // namespace Velnor::Tool
