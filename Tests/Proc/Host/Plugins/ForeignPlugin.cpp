// A plug-in of another contract: to run any of it is the end of the process.

#include <cstdlib>

#ifdef VELNOR_FOREIGN_CONTRACT
int GetContract(); // Of a library that goes by the name of one of ours.
#else
static int GetContract() { return 0; }
#endif

namespace {
struct Deadly {
    Deadly() { std::abort(); }
} const deadly;
} // namespace

extern "C" __attribute__((visibility("default"))) void Registrator(void*);
void Registrator(void*) {
    if (GetContract() == 0) std::abort();
}
