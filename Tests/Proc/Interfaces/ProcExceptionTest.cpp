#include "Proc/Interfaces/ProcException.h"

#include <gtest/gtest.h>

#include <exception>
#include <string>

namespace Velnor::Proc {
namespace {

class LensException : public ProcException {};

void Fail(int) { VELNOR_THROW(LensException, "the lens is dirty"); }
constexpr int FAILING_LINE = __LINE__ - 1;

template <class Type>
bool IsCaughtAs() {
    try {
        Fail(1);
    } catch (Type const&) {
        return true;
    } catch (...) {
    }
    return false;
}

TEST(ProcException, EachBaseAloneCatchesIt) {
    EXPECT_TRUE(IsCaughtAs<std::exception>());
    EXPECT_TRUE(IsCaughtAs<boost::exception>());
    EXPECT_TRUE(IsCaughtAs<Velnor::Exception>());
    EXPECT_TRUE(IsCaughtAs<ProcException>());
    EXPECT_TRUE(IsCaughtAs<LensException>());
    EXPECT_TRUE(IsCaughtAs<boost::exception_detail::clone_base>());
}

void ExpectEverything(boost::exception const& error) {
    ASSERT_NE(boost::get_error_info<TagDescription>(error), nullptr);
    EXPECT_EQ(*boost::get_error_info<TagDescription>(error), "the lens is dirty");
    ASSERT_NE(boost::get_error_info<TagCallStack>(error), nullptr);
    EXPECT_EQ(boost::get_error_info<TagCallStack>(error)->rfind(" 0# ", 0), 0U);
    ASSERT_NE(boost::get_error_info<boost::throw_file>(error), nullptr);
    EXPECT_STREQ(*boost::get_error_info<boost::throw_file>(error), "Tests/Proc/Interfaces/ProcExceptionTest");
    EXPECT_EQ(*boost::get_error_info<boost::throw_line>(error), FAILING_LINE);
    std::string const function = *boost::get_error_info<boost::throw_function>(error);
    EXPECT_NE(function.find("void Velnor::Proc::"), std::string::npos) << function;
    EXPECT_NE(function.find("Fail(int)"), std::string::npos) << function;
    EXPECT_EQ(DescribeException(error), "the lens is dirty");
}

TEST(ProcException, CarriesDescriptionStackAndPlace) {
    try {
        Fail(1);
    } catch (boost::exception const& error) {
        ExpectEverything(error);
    }
}

TEST(ProcException, CopyRethrownElsewhereKeepsEverything) {
    std::exception_ptr kept;
    boost::exception_detail::clone_base const* clone = nullptr;
    try {
        Fail(1);
    } catch (boost::exception_detail::clone_base const& error) {
        kept = std::current_exception();
        clone = error.clone();
    }
    try {
        std::rethrow_exception(kept);
    } catch (LensException const& error) {
        ExpectEverything(error);
        LensException const sliced = error;
        ExpectEverything(sliced);
    }
    try {
        clone->rethrow();
    } catch (LensException const& error) {
        ExpectEverything(error);
    }
    delete clone;
}

TEST(ProcException, BeforeTheThrowNothingIsKnownOfThePlace) {
    ProcException const fresh;
    EXPECT_EQ(boost::get_error_info<boost::throw_line>(fresh), nullptr);
    EXPECT_EQ(boost::get_error_info<TagDescription>(fresh), nullptr);
    ProcException coded;
    coded << TagTranscodingErrorCode(TranscodingErrors::FilterFailed);
    EXPECT_EQ(static_cast<int>(*boost::get_error_info<TagTranscodingErrorCode>(coded)), 17);
}

} // namespace
} // namespace Velnor::Proc
