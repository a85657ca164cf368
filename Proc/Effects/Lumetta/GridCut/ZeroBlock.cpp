#include "Proc/Effects/Lumetta/GridCut/ZeroBlock.h"

#include <new>

#include <sys/mman.h>

namespace Velnor::Proc::Kernels {

ZeroBlock::ZeroBlock(std::size_t size) : bytes(static_cast<std::byte*>(std::calloc(size, 1))), next(bytes.get()) {
    if (!bytes) throw std::bad_alloc();
    constexpr std::uintptr_t HUGE_PAGE = std::uintptr_t{2} << 20;
    auto const address = reinterpret_cast<std::uintptr_t>(bytes.get());
    std::uintptr_t const begin = (address + HUGE_PAGE - 1) / HUGE_PAGE * HUGE_PAGE;
    std::uintptr_t const end = (address + size) / HUGE_PAGE * HUGE_PAGE;
    // A refusal does no harm.
    if (begin < end) (void)madvise(bytes.get() + (begin - address), end - begin, MADV_HUGEPAGE);
}

} // namespace Velnor::Proc::Kernels
