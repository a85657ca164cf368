#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace Velnor::Tool::Testing {

struct CommandResult {
    int code = -1; ///< The exit code; minus the signal's number when one ended the command.
    std::string out;
    std::string error;
};

/// The built `velnor`, at work in a folder.
class RunningCommand {
public:
    RunningCommand(std::vector<std::string> const& arguments, std::filesystem::path const& folder);
    ~RunningCommand();
    RunningCommand(RunningCommand const&) = delete;
    RunningCommand& operator=(RunningCommand const&) = delete;

    void Signal(int signal) const;
    CommandResult Wait();

private:
    std::filesystem::path scratch; ///< Holds what the command prints.
    int process = -1;
};

inline CommandResult RunCommand(std::vector<std::string> const& arguments, std::filesystem::path const& folder) {
    return RunningCommand(arguments, folder).Wait();
}

/// What a shell prints and returns for a line in which $VELNOR is the command.
CommandResult RunShell(std::string const& line, std::filesystem::path const& folder);

std::filesystem::path MakeScratchFolder();

} // namespace Velnor::Tool::Testing
