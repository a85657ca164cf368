#include "Core/Exception.h"

#include <boost/core/demangle.hpp>
#include <boost/stacktrace.hpp>

#include <sstream>
#include <typeinfo>

namespace Velnor {

Exception::~Exception() = default;

std::string GetCallStack() {
    // Frame 0 would be this function, which tells the reader nothing.
    std::ostringstream text;
    text << boost::stacktrace::stacktrace(1, 64);
    return text.str();
}

std::string DescribeException(boost::exception const& error) {
    if (std::string const* description = boost::get_error_info<TagDescription>(error)) return *description;
    if (auto const* standard = dynamic_cast<std::exception const*>(&error)) return standard->what();
    return boost::core::demangle(typeid(error).name());
}

std::string DescribeCurrentException() {
    try {
        throw;
    } catch (boost::exception const& error) {
        return DescribeException(error);
    } catch (std::exception const& error) {
        return error.what();
    } catch (Exception const& error) {
        return boost::core::demangle(typeid(error).name());
    } catch (...) {
        return "an exception of an unknown type";
    }
}

} // namespace Velnor
