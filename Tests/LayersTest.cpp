// What stands on what: the includes of every source against the map in the README.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace Velnor {
namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

fs::path const ROOT = VELNOR_SOURCE_DIR;

std::vector<std::string> ReadLines(fs::path const& file) {
    std::ifstream stream(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    EXPECT_FALSE(lines.empty()) << file;
    return lines;
}

/// The folders of a cell, such as "`Core/`, `Proc/Host/`".
std::vector<std::string> GetFolders(std::string const& cell) {
    std::vector<std::string> folders;
    for (std::size_t at = cell.find('`'); at != std::string::npos; at = cell.find('`', cell.find('`', at + 1) + 1))
        folders.push_back(cell.substr(at + 1, cell.find('`', at + 1) - at - 1));
    return folders;
}

/// What each folder stands on, directly or not. Rows name the folders above them only; "all" is everything above.
std::map<std::string, Names> ReadMap() {
    std::map<std::string, Names> below;
    for (std::string const& line : ReadLines(ROOT / "README.md")) {
        std::size_t const cell = line.find("/` |");
        if (!line.starts_with("| `") || cell == std::string::npos) continue;
        std::string const basis = line.substr(line.rfind('|', line.size() - 2));
        Names known;
        for (std::string const& folder : GetFolders(basis)) {
            EXPECT_TRUE(below.contains(folder)) << "the map names " << folder << " below: " << line;
            known.insert(folder);
            known.insert(below[folder].begin(), below[folder].end());
        }
        if (basis.find(" all ") != std::string::npos)
            for (auto const& [folder, basisOf] : below) known.insert(folder);
        for (std::string const& folder : GetFolders(line.substr(0, cell + 2))) below[folder] = known;
    }
    return below;
}

/// The folder of the map that a file lies in, the innermost one; empty where there is none.
std::string FindFolder(std::map<std::string, Names> const& map, std::string const& file) {
    std::string found;
    for (auto const& [folder, basis] : map)
        if (file.starts_with(folder) && folder.size() > found.size()) found = folder;
    return found;
}

std::vector<std::string> ListFiles(std::string const& folder, Names const& names) {
    std::vector<std::string> files;
    for (fs::directory_entry const& entry : fs::recursive_directory_iterator(ROOT / folder))
        if (names.contains(entry.path().extension()) || names.contains(entry.path().filename()))
            files.push_back(fs::relative(entry.path(), ROOT));
    return files;
}

TEST(Layers, AreThoseOfTheMap) {
    std::map<std::string, Names> const map = ReadMap();
    std::size_t checked = 0;
    Names tops;
    for (auto const& [folder, basis] : map) tops.insert(folder.substr(0, folder.find('/')));
    for (std::string const& top : tops) {
        for (std::string const& file : ListFiles(top, {".h", ".cpp"})) {
            std::string const folder = FindFolder(map, file);
            EXPECT_FALSE(folder.empty()) << file << " lies in no folder of the map";
            for (std::string const& line : ReadLines(ROOT / file)) {
                if (!line.starts_with("#include \"")) continue;
                std::string const other = FindFolder(map, line.substr(10));
                EXPECT_TRUE(other == folder || map.at(folder).contains(other)) << file << ": " << line;
                ++checked;
            }
        }
    }
    EXPECT_GT(checked, 1000U);
}

// A library that compiles a source of another folder would stand on it without an include.
TEST(Layers, EachLibraryCompilesItsOwnFolder) {
    for (std::string const& file : ListFiles("Proc", {"CMakeLists.txt"}))
        for (std::string const& line : ReadLines(ROOT / file))
            EXPECT_FALSE(line.find(".cpp") != std::string::npos && line.find("../") < line.find(".cpp"))
                << file << line;
}

} // namespace
} // namespace Velnor
