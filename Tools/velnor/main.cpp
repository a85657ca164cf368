#include "Tools/velnor/CommandLine.h"

#include <malloc.h>

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

} // namespace

int main(int argumentsCount, char** arguments) {
    GrowHeapInLargeSteps();
    return Velnor::Tool::RunCommandLine(argumentsCount, arguments);
}
