#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace Velnor::Proc::Kernels {

/// One allocation of zeros that is handed out in parts, each at the start of a cache line.
class ZeroBlock {
public:
    static constexpr std::size_t LINE = 64;

    /// Asks the system for huge pages, which come in faster and are found faster. Throws std::bad_alloc.
    /// @param size  bytes, with room for LINE - 1 bytes of alignment a part
    explicit ZeroBlock(std::size_t size);

    /// The next part of the block.
    template <class Element>
    Element* Take(std::size_t count) {
        auto const address = reinterpret_cast<std::uintptr_t>(next);
        std::byte* const begin = next + ((address + LINE - 1) / LINE * LINE - address);
        next = begin + count * sizeof(Element);
        return reinterpret_cast<Element*>(begin);
    }

private:
    struct Free {
        void operator()(std::byte* block) const { std::free(block); }
    };
    std::unique_ptr<std::byte, Free> bytes;
    std::byte* next;
};

} // namespace Velnor::Proc::Kernels
