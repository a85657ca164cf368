#include "Tests/Tools/RunCommand.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace Velnor::Tool::Testing {
namespace {

namespace fs = std::filesystem;

std::string ReadAll(fs::path const& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

/// With the output in two files of `scratch`, and no signal ignored or blocked, whatever this process has inherited.
int Spawn(std::vector<std::string> words, fs::path const& folder, fs::path const& scratch) {
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, (scratch / "out").c_str(), O_CREAT | O_WRONLY, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, (scratch / "error").c_str(), O_CREAT | O_WRONLY, 0600);
    posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    for (int const signal : {SIGINT, SIGTERM, SIGPIPE}) sigaddset(&signals, signal);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);

    int process = -1;
    int const error = posix_spawn(&process, arguments[0], &actions, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw std::runtime_error(words[0] + " cannot be started");
    return process;
}

CommandResult Collect(int process, fs::path const& scratch) {
    int status = 0;
    waitpid(process, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), ReadAll(scratch / "out"),
            ReadAll(scratch / "error")};
}

} // namespace

RunningCommand::RunningCommand(std::vector<std::string> const& arguments, fs::path const& folder)
    : scratch(MakeScratchFolder()) {
    std::vector<std::string> words{VELNOR_COMMAND};
    words.insert(words.end(), arguments.begin(), arguments.end());
    process = Spawn(words, folder, scratch);
}

RunningCommand::~RunningCommand() {
    if (process > 0) {
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
    }
    fs::remove_all(scratch);
}

void RunningCommand::Signal(int signal) const { kill(process, signal); }

CommandResult RunningCommand::Wait() {
    CommandResult const result = Collect(process, scratch);
    process = -1;
    return result;
}

CommandResult RunShell(std::string const& line, fs::path const& folder) {
    fs::path const scratch = MakeScratchFolder();
    setenv("VELNOR", VELNOR_COMMAND, 1);
    CommandResult const result = Collect(Spawn({"/bin/bash", "-c", line}, folder, scratch), scratch);
    fs::remove_all(scratch);
    return result;
}

fs::path MakeScratchFolder() {
    std::string pattern = fs::temp_directory_path() / "velnor-test-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no folder can be made for the test");
    return pattern;
}

} // namespace Velnor::Tool::Testing
