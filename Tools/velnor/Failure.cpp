#include "Tools/velnor/Failure.h"

#include "Proc/Host/PictureFile.h"

#include <algorithm>
#include <new>

namespace Velnor::Tool {
namespace {

ExitCode CodeOf(Proc::ProcException const& error) {
    if (dynamic_cast<Proc::FileInputException const*>(&error) != nullptr) return ExitCode::InputFailed;
    auto const* const code = boost::get_error_info<Proc::TagTranscodingErrorCode>(error);
    if (code == nullptr) return ExitCode::OutputFailed;
    switch (*code) {
    case Proc::TranscodingErrors::OutOfMemory:
    case Proc::TranscodingErrors::OverLimit:
        return ExitCode::OverLimit;
    case Proc::TranscodingErrors::BadInput:
        return ExitCode::InputFailed;
    case Proc::TranscodingErrors::Stopped:
        return ExitCode::Stopped;
    default:
        return ExitCode::OutputFailed;
    }
}

} // namespace

Report ReportCurrentException() {
    std::string const text = ToOneLine(DescribeCurrentException());
    try {
        throw;
    } catch (Failure const& failure) {
        return {failure.GetCode(), text};
    } catch (Proc::FileLimitException const&) {
        return {ExitCode::OverLimit, text + "; --max-megapixels raises it"};
    } catch (Proc::ProcException const& error) {
        return {CodeOf(error), text};
    } catch (std::bad_alloc const&) {
        return {ExitCode::OverLimit, "there is not enough memory"};
    } catch (...) {
        return {ExitCode::OutputFailed, text};
    }
}

std::string ToOneLine(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }, ' ');
    while (text.ends_with(' ') || text.ends_with('.')) text.pop_back();
    return text;
}

} // namespace Velnor::Tool
