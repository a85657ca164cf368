#pragma once

#include "Proc/Effects/Kit/ByteTables.h"

#include <cstddef>

#ifdef VELNOR_X86

// One entry for each instruction set, all with MapBytes' meaning; the arguments are checked and the planes not empty.
// Each must only be called where the processor has what its name says.
#define VELNOR_BYTE_TABLES_ENTRY                                                                                       \
    void MapRows(ConstPlane const& source, MutablePlane const& target, std::span<Table const> tables,                  \
                 unsigned int pixelBytes);

namespace Velnor::Proc::Kernels {
namespace Sse4 {
VELNOR_BYTE_TABLES_ENTRY
} // namespace Sse4
namespace Avx2 {
VELNOR_BYTE_TABLES_ENTRY
} // namespace Avx2
namespace Avx512 {
VELNOR_BYTE_TABLES_ENTRY
} // namespace Avx512
namespace Avx512Vbmi {
VELNOR_BYTE_TABLES_ENTRY
} // namespace Avx512Vbmi
} // namespace Velnor::Proc::Kernels

#undef VELNOR_BYTE_TABLES_ENTRY
#endif
