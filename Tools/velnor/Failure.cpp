#include "Tools/velnor/Failure.h"

#include "Proc/Host/PictureFile.h"

#include <algorithm>
#include <new>
#include <system_error>

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

/// "; --option raises it", empty for a limit that stands.
std::string NameRaisingOption(Proc::FileLimitException const& error) {
    char const* option = nullptr;
    if (dynamic_cast<Proc::FilePixelsException const*>(&error) != nullptr) option = "--max-megapixels";
    if (dynamic_cast<Proc::FileMemoryException const*>(&error) != nullptr) option = "--max-memory";
    if (dynamic_cast<Proc::FileExpansionException const*>(&error) != nullptr) option = "--max-expansion";
    return option == nullptr ? "" : std::string("; ") + option + " raises it";
}

/// What reads a damaged input all the same; empty for what is no damage.
std::string NameAcceptingOption(Proc::ProcException const& error) {
    bool const isDamaged = dynamic_cast<Proc::FileDamageException const*>(&error) != nullptr;
    return isDamaged ? "; --accept-damaged keeps what can be read" : "";
}

} // namespace

Report ReportCurrentException() {
    std::string const text = ToOneLine(DescribeCurrentException());
    try {
        throw;
    } catch (Failure const& failure) {
        return {failure.GetCode(), text};
    } catch (Proc::FileLimitException const& error) {
        return {ExitCode::OverLimit, text + NameRaisingOption(error)};
    } catch (Proc::ProcException const& error) {
        return {CodeOf(error), text + NameAcceptingOption(error)};
    } catch (std::bad_alloc const&) {
        return {ExitCode::OverLimit, "there is not enough memory"};
    } catch (std::system_error const& error) {
        // A thread, which is refused when there is no memory for its stack or there are too many.
        if (error.code() != std::errc::resource_unavailable_try_again && error.code() != std::errc::not_enough_memory)
            return {ExitCode::OutputFailed, text};
        return {ExitCode::OverLimit, "there is not enough memory to start a thread"};
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
