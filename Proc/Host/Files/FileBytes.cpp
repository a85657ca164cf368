#include "Proc/Host/Files/FileBytes.h"

#include <sys/stat.h>
#include <unistd.h>

namespace Velnor::Proc::Files {

FileBytes::FileBytes(int file) : descriptor(file) {
    struct stat status {};
    if (fstat(file, &status) == 0) size = static_cast<std::uint64_t>(status.st_size);
}

std::string FileBytes::Read(std::uint64_t at, std::uint64_t bytes) const {
    if (!Holds(at, bytes)) return {};
    if (descriptor < 0) return std::string(block.substr(at, bytes));
    std::string read(bytes, '\0');
    std::size_t done = 0;
    while (done < bytes) {
        ssize_t const got = pread(descriptor, read.data() + done, bytes - done, static_cast<off_t>(at + done));
        if (got <= 0) return {};
        done += static_cast<std::size_t>(got);
    }
    return read;
}

std::uint64_t ToNumber(std::string_view bytes, bool isLittleEndian) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        value = value << 8 | static_cast<unsigned char>(bytes[isLittleEndian ? bytes.size() - 1 - i : i]);
    return value;
}

} // namespace Velnor::Proc::Files
