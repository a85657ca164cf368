#pragma once

#include "Core/Export.h"

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace Velnor::Proc {

/// A file that appears whole or not at all, even when the process is killed or the disk is full. It is written to a
/// temporary file without a name in the same folder, which the system drops by itself, and gets its name at the end.
/// Where the file system has no such files, a hidden named one serves, as it does for a moment where a file is
/// replaced. What a killed process leaves of these, the next output into that folder removes.
class VELNOR_API OutputFile {
public:
    enum class Temporary : std::uint8_t { Unnamed, Named }; ///< Named: never try without a name.

    /// Opens the temporary file. With `overwriteTarget` an existing regular file is replaced at the end and its
    /// permissions are kept; where the path is a link, the file that it leads to. Throws FileOutputException when the
    /// target exists and may not or cannot be replaced, or when its folder cannot be written to.
    OutputFile(std::filesystem::path const& file, bool overwriteTarget, Temporary kind = Temporary::Unnamed);
    /// Writes to an open file of the caller's, which stays open, in the way of others: to commit it does nothing.
    /// @param name  for messages
    OutputFile(std::filesystem::path const& name, int openFile);
    ~OutputFile(); ///< Drops what was written, unless it was committed.
    OutputFile(OutputFile const&) = delete;
    OutputFile& operator=(OutputFile const&) = delete;

    /// Writes at the position and moves it on. Throws FileOutputException.
    void Write(void const* data, std::size_t bytes);

    std::int64_t Read(void* data, std::size_t bytes);   ///< As read(2), of what was written.
    std::int64_t Seek(std::int64_t offset, int whence); ///< As lseek(2).

    /// Gives the file times of last access and change, as futimens(2) takes them. To be called when all is written.
    void SetTimes(timespec const (&times)[2]) const;

    /// Keeps what Commit replaces under the name "FILE.~N~", N being the lowest from 1 on that is free.
    void KeepReplaced() { keepsReplaced = true; }

    /// Brings the content to the disk, gives the file its name, at once and whole, and brings that to the disk. Throws
    /// FileOutputException, the old target untouched; in particular when somebody made a file of that name meanwhile
    /// and it may not be replaced.
    void Commit();

private:
    [[noreturn]] void Fail(std::string const& reason) const;
    [[noreturn]] void FailBySystem(int error) const;
    void ResolveTarget();
    bool OpenUnnamed();
    void OpenNamed();
    int Link(std::filesystem::path const& name) const;
    void NameTemporary();
    int MoveToFreeName() const;
    void MakeBackup() const;

    std::filesystem::path const path; ///< As the caller gave it, for messages.
    bool const overwrite;
    std::filesystem::path target;    ///< What is written: the path, or where its link leads.
    std::filesystem::path temporary; ///< Empty while the temporary file has no name.
    int replacedMode = -1;           ///< Permissions of the file that is replaced.
    bool keepsReplaced = false;
    int descriptor = -1;
    bool const isCallers = false;
};

} // namespace Velnor::Proc
