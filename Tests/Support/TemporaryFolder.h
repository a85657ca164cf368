#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace Velnor::Proc::Testing {

/// A folder of its own for a test, removed with all that is in it.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "test-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder " + name);
        path = name;
    }
    ~TemporaryFolder() {
        std::error_code error;
        std::filesystem::remove_all(path, error);
    }
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    std::filesystem::path const& GetPath() const { return path; }
    std::filesystem::path operator/(std::string const& name) const { return path / name; }
    std::size_t CountFiles() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(path), {}));
    }

    std::string Read(std::string const& name) const {
        std::ifstream file(path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void Write(std::string const& name, std::string const& bytes) const {
        std::ofstream(path / name, std::ios::binary) << bytes;
    }

private:
    std::filesystem::path path;
};

} // namespace Velnor::Proc::Testing
