#pragma once

#include <filesystem>

namespace Velnor::Proc {

/// A name in the folder that this process has not given before: hidden, with the machine's name and the process's
/// number.
std::filesystem::path MakeTemporaryName(std::filesystem::path const& folder);

/// Marks the file as one that a living process works on, until it is closed, in whatever way the process ends. False
/// when somebody has taken the file for a stray meanwhile and removed it.
bool ClaimTemporary(int descriptor);

/// Removes temporary files that killed processes left in the folder; the first time that it is asked about a folder.
/// What a living process works on is locked. Where locks are not seen by other machines, the name tells whose file it
/// is: another's is left alone until it has not been written to for a day.
void RemoveStrays(std::filesystem::path const& folder);

} // namespace Velnor::Proc
