#pragma once

namespace Velnor::Tool {

/// What the command tells its caller. The numbers are documented in the help and do not change.
enum class ExitCode : int {
    Done = 0,
    SomeFailed = 1,    ///< Of several photographs some failed; the others are done.
    WrongCall = 2,     ///< Nothing was done.
    InputFailed = 3,   ///< An input is missing, damaged or no picture.
    OutputFailed = 4,  ///< An output exists already, could not be made or could not be written.
    PromiseBroken = 4, ///< A plug-in that was checked breaks a promise, or does not load.
    OverLimit = 5,     ///< More pixels or memory than allowed.
    Stopped = 130,     ///< As a shell reports a command that Ctrl-C ended.
};

} // namespace Velnor::Tool
