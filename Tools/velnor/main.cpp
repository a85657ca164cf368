#include "Tools/velnor/CommandLine.h"

#include <malloc.h>
#include <sys/resource.h>

namespace {

/// Lets the heap grow in large steps, keep what it has, and serve the buffers of decoders and encoders. To grow it
/// changes the process's memory map, which waits while another thread has the pages of a picture provided.
void GrowHeapInLargeSteps() {
#ifdef M_TOP_PAD
    mallopt(M_TOP_PAD, 16 << 20);
    mallopt(M_MMAP_THRESHOLD, 4 << 20);
    mallopt(M_TRIM_THRESHOLD, 64 << 20);
#endif
}

/// Where the process's addresses are limited, threads share one heap: each of their own would reserve 64 megabytes.
void ShareHeapWhereAddressesAreFew() {
#ifdef M_ARENA_MAX
    rlimit limit{};
    if (getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY) mallopt(M_ARENA_MAX, 1);
#endif
}

} // namespace

int main(int argumentsCount, char** arguments) {
    GrowHeapInLargeSteps();
    ShareHeapWhereAddressesAreFew();
    return Velnor::Tool::RunCommandLine(argumentsCount, arguments);
}
