#include "Core/Exception.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace Velnor {
namespace {

template <class Throw>
std::string Described(Throw const& raise) {
    try {
        raise();
    } catch (...) {
        return DescribeCurrentException();
    }
    return "nothing thrown";
}

class Silent : public Exception {};
class SilentBoost : public Exception, public boost::exception {};
class Both : public std::runtime_error, public boost::exception {
public:
    Both() : std::runtime_error("what") {}
};

TEST(Exception, DescriptionIsTheTagElseWhatElseTheType) {
    EXPECT_EQ(Described([] { throw Both() << TagDescription("the tag"); }), "the tag");
    EXPECT_EQ(Described([] { throw Both(); }), "what");
    EXPECT_EQ(Described([] { boost::throw_exception(std::logic_error("wrapped")); }), "wrapped");
    EXPECT_EQ(Described([] { throw std::runtime_error("plain"); }), "plain");
    EXPECT_NE(Described([] { throw SilentBoost(); }).find("SilentBoost"), std::string::npos);
    EXPECT_NE(Described([] { throw Silent(); }).find("Silent"), std::string::npos);
    EXPECT_EQ(Described([] { throw 5; }), "an exception of an unknown type");
}

TEST(Exception, SourceNamesLoseTheirExtensionOnly) {
    using Details::SOURCE_NAME;
    EXPECT_STREQ(SOURCE_NAME<"Proc/Host/Image.cpp">, "Proc/Host/Image");
    EXPECT_STREQ(SOURCE_NAME<"Proc.d/Host">, "Proc.d/Host");
    EXPECT_STREQ(SOURCE_NAME<"a.b.h">, "a.b");
    EXPECT_STREQ(SOURCE_NAME<"">, "");
    EXPECT_STREQ(SOURCE_NAME<"../../Proc/Host.h">, "Proc/Host");
    EXPECT_STREQ(VELNOR_LOCATION.file_name(), "Tests/Core/ExceptionTest");
}

TEST(Exception, CallStackBeginsAtItsCaller) {
    std::string const stack = GetCallStack();
    EXPECT_EQ(stack.rfind(" 0# ", 0), 0U) << stack;
    EXPECT_EQ(stack.substr(0, stack.find('\n')).find("GetCallStack"), std::string::npos) << stack;
    EXPECT_NE(stack.find("\n 1# "), std::string::npos) << stack;
}

} // namespace
} // namespace Velnor
