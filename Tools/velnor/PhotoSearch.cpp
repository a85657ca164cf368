#include "Tools/velnor/PhotoSearch.h"

#include "Tools/velnor/Failure.h"
#include "Tools/velnor/NameFilter.h"
#include "Tools/velnor/NameList.h"
#include "Tools/velnor/StandardStreams.h"

#include <glob.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <memory>
#include <string_view>
#include <system_error>

namespace Velnor::Tool {
namespace {

namespace fs = std::filesystem;

/// Of the files that are read.
bool HasPhotosExtension(fs::path const& file) {
    constexpr std::array<std::string_view, 39> EXTENSIONS{
        ".3fr", ".arw", ".avif", ".bmp", ".cr2", ".cr3", ".crw", ".dcr",  ".dng",  ".erf", ".gif", ".heic", ".heif",
        ".iiq", ".jpe", ".jpeg", ".jpg", ".jxl", ".kdc", ".mrw", ".nef",  ".nrw",  ".orf", ".pbm", ".pef",  ".pgm",
        ".png", ".pnm", ".ppm",  ".raf", ".rw2", ".srw", ".tif", ".tiff", ".webp", ".x3f", ".dib", ".hif",  ".pfm"};
    std::string extension = file.extension().string();
    std::ranges::transform(extension, extension.begin(), [](unsigned char c) { return std::tolower(c); });
    return std::ranges::count(EXTENSIONS, extension) > 0;
}

bool IsThere(std::string const& name) {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(name, ignored));
}

bool IsFolder(std::string const& name) {
    std::error_code ignored;
    return fs::is_directory(name, ignored);
}

/// The names in a folder, sorted, packed: a folder may hold a great many.
class FolderNames {
public:
    explicit FolderNames(fs::path const& folder) {
        std::error_code error;
        for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) Add(*at);
        if (error)
            throw Failure(ExitCode::InputFailed, "folder " + folder.string() + " cannot be read: " + error.message());
        std::ranges::sort(places, [this](Place const& a, Place const& b) { return Get(a) < Get(b); });
    }

    /// Calls visit(name, isFolder) in order.
    template <class Visit>
    void ForEach(Visit const& visit) const {
        for (Place const& place : places) visit(std::string(Get(place)), place.isFolder);
    }

private:
    struct Place {
        std::uint32_t at;
        bool isFolder;
    };

    void Add(fs::directory_entry const& entry) {
        std::string const name = entry.path().filename().string();
        std::error_code ignored;
        bool const isFolder = entry.is_directory(ignored) && !entry.is_symlink(ignored);
        if (name.starts_with('.') || (!isFolder && !entry.is_regular_file(ignored))) return;
        places.push_back({static_cast<std::uint32_t>(texts.size()), isFolder});
        texts.append(name).push_back('\0');
    }
    std::string_view Get(Place const& place) const { return texts.c_str() + place.at; }

    std::string texts;
    std::vector<Place> places;
};

/// The work of FindPhotos.
class Search {
public:
    Search(BatchOptions const& batchOptions, std::string const& output)
        : options(batchOptions), filter(options.include, options.exclude) {
        std::error_code ignored;
        if (!output.empty() && output != STANDARD_STREAM && output.find('{') == std::string::npos)
            outputFolder = fs::weakly_canonical(output, ignored);
    }

    void AddArgument(std::string const& argument) {
        if (IsThere(argument)) return AddName(argument);
        if (argument.starts_with('@') && argument.size() > 1)
            return ForEachName(argument.substr(1), [this](std::string const& name) { AddName(name); });
        if (IsGlob(argument)) return AddGlob(argument);
        Take({argument}, argument);
    }

    PhotoNames Finish() && {
        if (names.GetCount() > 0) return std::move(names);
        throw Failure(ExitCode::InputFailed, hasLeftOut ? "--include and --exclude leave no photograph"
                                                        : "there is no photograph in what is given");
    }

private:
    void AddName(std::string const& name) {
        if (options.isRecursive && IsFolder(name)) return Walk(name, {});
        Take({name}, name);
    }

    void AddGlob(std::string const& pattern) {
        glob_t found{};
        std::unique_ptr<glob_t, decltype(&globfree)> const owner(&found, &globfree);
        if (glob(pattern.c_str(), GLOB_NOCHECK, nullptr, &found) != 0) return Take({pattern}, pattern);
        for (std::size_t i = 0; i < found.gl_pathc; ++i) AddName(found.gl_pathv[i]);
    }

    /// @param below  the folder's place below the root; empty for the root itself
    void Walk(fs::path const& root, fs::path const& below) {
        fs::path const folder = below.empty() ? root : root / below;
        FolderNames(folder).ForEach([&](std::string const& name, bool isFolder) {
            fs::path const place = below / name;
            if (isFolder) {
                if (filter.EntersFolder(place.string()) && !IsOutputFolder(folder / name)) Walk(root, place);
            } else if (filter.HasIncludes() || HasPhotosExtension(name))
                Take({(folder / name).string(), below.string()}, place.string());
        });
    }

    bool IsOutputFolder(fs::path const& folder) const {
        std::error_code ignored;
        return !outputFolder.empty() && fs::weakly_canonical(folder, ignored) == outputFolder;
    }

    void Take(PhotoName const& photo, std::string const& path) {
        if (filter.TakesFile(path))
            names.Add(photo);
        else
            hasLeftOut = true;
    }

    BatchOptions const& options;
    NameFilter const filter;
    fs::path outputFolder; ///< Empty when there is none.
    PhotoNames names;
    bool hasLeftOut = false;
};

} // namespace

bool IsGlob(std::string const& name) { return name.find_first_of("*?[") != std::string::npos; }

PhotoNames FindPhotos(std::vector<std::string> const& arguments, BatchOptions const& options,
                      std::string const& output) {
    Search search(options, output);
    for (std::string const& argument : arguments) search.AddArgument(argument);
    return std::move(search).Finish();
}

} // namespace Velnor::Tool
