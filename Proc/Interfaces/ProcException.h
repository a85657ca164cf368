#pragma once

#include "Core/Exception.h"

#include <exception>

namespace Velnor::Proc {

/// Error codes that an effect may attach to its exception.
enum class TranscodingErrors : int {
    None = 0,
    OutOfMemory = 1,
    UnsupportedFormat = 2,
    BadInput = 3,
    OverLimit = 4,
    Stopped = 5,
    FilterFailed = 17,
};

struct VELNOR_API TagTranscodingErrorCodeKey {};
using TagTranscodingErrorCode = boost::error_info<TagTranscodingErrorCodeKey, TranscodingErrors>;

/// A failure in processing. The text for a person is its TagDescription; what() says nothing of its own. Thrown through
/// Boost's clonable wrapper, so that std::current_exception keeps the information attached.
class VELNOR_API ProcException : public std::exception, public boost::exception, public virtual Velnor::Exception {
public:
    ProcException() = default;
    ProcException(ProcException const&) = default;
    ProcException& operator=(ProcException const&) = default;
    ~ProcException() override;
};

} // namespace Velnor::Proc

// What a throw takes is much to compile for every source that may throw: compiled once.
extern template void Velnor::Details::ThrowDescribed(Velnor::Proc::ProcException, std::string const&,
                                                     boost::source_location const&);
