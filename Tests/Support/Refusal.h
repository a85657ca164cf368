#pragma once

#include "Proc/Interfaces/ProcException.h"

#include <string>

namespace Velnor::Proc::Testing {

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

} // namespace Velnor::Proc::Testing
