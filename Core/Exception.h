#pragma once

#include "Core/Export.h"

#include <boost/exception/error_info.hpp>
#include <boost/exception/exception.hpp>
#include <boost/exception/get_error_info.hpp>
#include <boost/exception/info.hpp>
#include <boost/throw_exception.hpp>

#include <cstddef>
#include <string>
#include <string_view>

namespace Velnor {

/// Base of all exceptions of the framework. It does not derive from std::exception: the concrete types do, once, so
/// that `catch (std::exception const&)` stays unambiguous. What happened travels as error information (below).
class VELNOR_API Exception {
public:
    Exception() = default;
    Exception(Exception const&) = default;
    Exception& operator=(Exception const&) = default;
    virtual ~Exception();
};

struct VELNOR_API TagDescriptionKey {};
struct VELNOR_API TagCallStackKey {};
using TagDescription = boost::error_info<TagDescriptionKey, std::string>; ///< The message for a person.
using TagCallStack = boost::error_info<TagCallStackKey, std::string>;     ///< GetCallStack() at the throw.

/// The calling thread's stack, innermost frame first, one line a frame: " 0# function in module".
VELNOR_API std::string GetCallStack();

/// The message of any exception: its TagDescription, else what(), else the type's name. Never throws.
VELNOR_API std::string DescribeException(boost::exception const& error);
VELNOR_API std::string DescribeCurrentException();

namespace Details {

/// A source path cut at its extension, as text with static storage: "Proc/Host/Image.cpp" is "Proc/Host/Image". Steps
/// up at its beginning go too: a compiler cache may hand the compiler paths relative to the build directory.
template <std::size_t N>
struct SourceName {
    char text[N]{};
    consteval SourceName(char const (&path)[N]) { // NOLINT(google-explicit-constructor): a template argument
        std::string_view whole(path, N - 1);
        while (whole.starts_with("../")) whole.remove_prefix(3);
        std::size_t const slash = whole.rfind('/');
        std::size_t const dot = whole.rfind('.');
        bool const hasExtension = dot != std::string_view::npos && (slash == std::string_view::npos || dot > slash);
        std::size_t const length = hasExtension ? dot : whole.size();
        for (std::size_t i = 0; i < length; ++i) text[i] = whole[i];
    }
};
template <SourceName Name>
inline constexpr char const* SOURCE_NAME = Name.text;

template <class Error>
[[noreturn]] VELNOR_API void ThrowDescribed(Error error, std::string const& description,
                                            boost::source_location const& where) {
    error << TagDescription(description) << TagCallStack(GetCallStack());
    boost::throw_exception(error, where);
}

} // namespace Details
} // namespace Velnor

/// Where this line stands, as it is recorded in exceptions: full function signature, source without extension, line.
#define VELNOR_LOCATION                                                                                                \
    ::boost::source_location(::Velnor::Details::SOURCE_NAME<__FILE__>, __LINE__, BOOST_CURRENT_FUNCTION)

/// Throws `Type` with a description, the call stack and this location, through Boost's clonable wrapper.
#define VELNOR_THROW(Type, description) ::Velnor::Details::ThrowDescribed(Type(), (description), VELNOR_LOCATION)
