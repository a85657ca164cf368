#include "Proc/Host/OutputFile.h"

#include "Proc/Host/PictureFile.h"
#include "Proc/Host/TemporaryFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace Velnor::Proc {
namespace {

namespace fs = std::filesystem;

constexpr mode_t NEW_FILE_MODE = 0666; // less the umask
constexpr mode_t PERMISSIONS = 0777;
constexpr int MAX_NAME_TRIES = 100;

fs::path GetFolder(fs::path const& file) { return file.has_parent_path() ? file.parent_path() : fs::path("."); }

/// How the system reaches an open file by a path.
std::string GetDescriptorPath(int descriptor) { return "/proc/self/fd/" + std::to_string(descriptor); }

/// Brings the folder's names to the disk. The file is there already: what fails here is not worth a failure.
void SyncFolder(fs::path const& folder) {
    int const descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    (void)fsync(descriptor);
    close(descriptor);
}

} // namespace

OutputFile::OutputFile(fs::path const& file, bool overwriteTarget, Temporary kind)
    : path(file), overwrite(overwriteTarget) {
    ResolveTarget();
    RemoveStrays(GetFolder(target));
    if (kind == Temporary::Named || !OpenUnnamed()) OpenNamed();
    if (replacedMode >= 0 && fchmod(descriptor, static_cast<mode_t>(replacedMode)) != 0) {
        // The destructor does not run for an object that was never made.
        int const error = errno;
        close(descriptor);
        if (!temporary.empty()) unlink(temporary.c_str());
        FailBySystem(error);
    }
}

OutputFile::OutputFile(fs::path const& name, int openFile)
    : path(name), overwrite(true), descriptor(openFile), isCallers(true) {}

OutputFile::~OutputFile() {
    if (descriptor >= 0 && !isCallers) close(descriptor);
    if (!temporary.empty()) unlink(temporary.c_str());
}

void OutputFile::Fail(std::string const& reason) const {
    VELNOR_THROW(FileOutputException, path.string() + " cannot be written: " + reason + ".");
}

void OutputFile::FailBySystem(int error) const { Fail(std::generic_category().message(error)); }

void OutputFile::ResolveTarget() {
    target = path;
    if (!path.has_filename()) Fail("the path names a folder, not a file");
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return; // The folder is judged when the temporary file is opened.
    if (S_ISDIR(status.st_mode)) Fail("it is a folder");
    if (!overwrite) Fail("it exists already");
    if (S_ISLNK(status.st_mode)) {
        std::error_code error;
        target = fs::canonical(path, error);
        if (error) Fail("the link leads nowhere");
        if (stat(target.c_str(), &status) != 0) FailBySystem(errno);
    }
    if (!S_ISREG(status.st_mode)) Fail("it is no regular file, so it is not replaced");
    // A rename would replace a write-protected file all the same, against what its owner said.
    if (access(target.c_str(), W_OK) != 0) FailBySystem(errno);
    replacedMode = static_cast<int>(status.st_mode & PERMISSIONS);
}

bool OutputFile::OpenUnnamed() {
    descriptor = open(GetFolder(target).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, NEW_FILE_MODE);
    if (descriptor < 0) {
        bool const unsupported = errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL;
        if (!unsupported) FailBySystem(errno);
        return false;
    }
    if (access(GetDescriptorPath(descriptor).c_str(), F_OK) == 0) {
        (void)ClaimTemporary(descriptor); // It has a name for a moment where a file is replaced.
        return true;
    }
    close(descriptor); // Without /proc there is no way to name it later.
    descriptor = -1;
    return false;
}

void OutputFile::OpenNamed() {
    for (int i = 0; i < MAX_NAME_TRIES; ++i) {
        fs::path const name = MakeTemporaryName(GetFolder(target));
        descriptor = open(name.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, NEW_FILE_MODE);
        if (descriptor < 0 && errno != EEXIST) FailBySystem(errno);
        if (descriptor < 0) continue;
        temporary = name;
        if (ClaimTemporary(descriptor)) return;
        close(descriptor); // Somebody came between the two steps and took it for a stray.
    }
    FailBySystem(EEXIST);
}

void OutputFile::Write(void const* data, std::size_t bytes) {
    auto const* at = static_cast<char const*>(data);
    while (bytes > 0) {
        ssize_t const written = write(descriptor, at, bytes);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) FailBySystem(errno);
        at += written;
        bytes -= static_cast<std::size_t>(written);
    }
}

std::int64_t OutputFile::Read(void* data, std::size_t bytes) { return read(descriptor, data, bytes); }

std::int64_t OutputFile::Seek(std::int64_t offset, int whence) { return lseek(descriptor, offset, whence); }

void OutputFile::SetTimes(timespec const (&times)[2]) const {
    if (futimens(descriptor, times) != 0) FailBySystem(errno);
}

/// Gives the unnamed file a name that must be free. Returns 0 or the error.
int OutputFile::Link(fs::path const& name) const {
    int const result =
        linkat(AT_FDCWD, GetDescriptorPath(descriptor).c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW);
    return result == 0 ? 0 : errno;
}

void OutputFile::NameTemporary() {
    for (int i = 0; i < MAX_NAME_TRIES; ++i) {
        fs::path const name = MakeTemporaryName(GetFolder(target));
        int const error = Link(name);
        if (error == 0) {
            temporary = name;
            return;
        }
        if (error != EEXIST) FailBySystem(error);
    }
    FailBySystem(EEXIST);
}

/// Moves the named file to the target unless that exists. Returns 0 or the error.
int OutputFile::MoveToFreeName() const {
    if (renameat2(AT_FDCWD, temporary.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return errno;
    // The file system cannot refuse while it renames; it can while it links.
    if (link(temporary.c_str(), target.c_str()) != 0) return errno;
    unlink(temporary.c_str());
    return 0;
}

/// Gives the file that is replaced a second name. One that it has from a process that was killed serves again.
void OutputFile::MakeBackup() const {
    for (unsigned number = 1;; ++number) {
        std::string const name = target.string() + ".~" + std::to_string(number) + "~";
        if (link(target.c_str(), name.c_str()) == 0 || errno == ENOENT) return;
        int const failure = errno;
        std::error_code ignored;
        if (failure == EEXIST && fs::equivalent(name, target, ignored)) return;
        if (failure == EEXIST) continue;
        std::error_code error; // Where there are no links, a copy does.
        fs::copy_file(target, name, error);
        if (error && error != std::errc::file_exists)
            Fail("what it replaces cannot be kept as " + name + ": " + error.message());
        if (!error) return;
    }
}

void OutputFile::Commit() {
    if (isCallers) return;
    if (fsync(descriptor) != 0) FailBySystem(errno);
    if (keepsReplaced && replacedMode >= 0) MakeBackup();
    int error = 0;
    if (!overwrite) {
        error = temporary.empty() ? Link(target) : MoveToFreeName();
    } else {
        if (temporary.empty()) NameTemporary();
        if (rename(temporary.c_str(), target.c_str()) != 0) error = errno;
    }
    if (error == EEXIST) Fail("it exists already");
    if (error != 0) FailBySystem(error);
    temporary.clear();
    SyncFolder(GetFolder(target));
}

} // namespace Velnor::Proc
