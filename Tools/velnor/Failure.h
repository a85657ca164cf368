#pragma once

#include "Tools/velnor/ExitCodes.h"

#include <stdexcept>
#include <string>

namespace Velnor::Tool {

/// What the command gives up for, in words for its user.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode exitCode, std::string const& text) : std::runtime_error(text), code(exitCode) {}
    ExitCode GetCode() const { return code; }

private:
    ExitCode code;
};

inline Failure WrongCall(std::string const& text) { return {ExitCode::WrongCall, text}; }

/// A failure as it is reported: in one line, without the control characters that a file name may hold.
struct Report {
    ExitCode code = ExitCode::Done;
    std::string text;
};

/// Of the exception being handled, of whatever type. Never throws but for lack of memory.
Report ReportCurrentException();

/// Every control character as a space, and without a full stop at the end.
std::string ToOneLine(std::string text);

} // namespace Velnor::Tool
