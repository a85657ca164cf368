#pragma once

#include "Proc/Interfaces/ProcException.h"

#include <gmock/gmock.h>

#include <string>

namespace Velnor::Proc::Testing {

using ::testing::HasSubstr;

/// What an exception of that class says that the work throws; empty when it throws none.
template <class Exception = ProcException, class Work>
std::string RefusalOf(Work const& work) {
    try {
        work();
    } catch (Exception const& error) {
        return DescribeException(error);
    }
    return "";
}

/// The work throws an exception of that class that says all of these.
template <class Exception = ProcException, class Work>
void ExpectRefusal(Work const& work, std::initializer_list<std::string> words) {
    std::string const said = RefusalOf<Exception>(work);
    for (std::string const& each : words) EXPECT_THAT(said, HasSubstr(each));
}

} // namespace Velnor::Proc::Testing
