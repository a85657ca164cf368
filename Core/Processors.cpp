#include "Core/Processors.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace Velnor::Core {
namespace {

std::atomic<unsigned> given{0};

} // namespace

unsigned CountProcessors() { return std::max(1U, std::thread::hardware_concurrency()); }

unsigned GetThreadsPerPicture() {
    unsigned const set = given;
    return set > 0 ? set : CountProcessors();
}

void SetThreadsPerPicture(unsigned threads) { given = std::max(1U, threads); }

} // namespace Velnor::Core
