#pragma once

#include "Proc/Effects/Lumetta/Kernels/Blur/BokehCore.h"

#ifdef VELNOR_X86

namespace Velnor::Proc::Kernels {

/// Rows of the picture that are summed side by side: each sample that is loaded serves them all.
constexpr std::size_t BOKEH_ROWS = 3;

/// A run of columns, in one row of samples, that carry a weight for at least one of the BOKEH_ROWS rows.
struct BokehRun {
    std::size_t row;         ///< Of samples, counted from the first row's first.
    std::size_t column;      ///< First kernel column.
    std::size_t count;       ///< Of columns.
    std::size_t firstWeight; ///< BOKEH_ROWS weights a column, one for each row summed; 0 where a row has none.
};

struct BokehRuns {
    std::vector<BokehRun> runs; ///< By row, then by column.
    std::vector<float> weights;
};

// One entry for each instruction set. The picture is at least one block large; samples are finite and not negative, so
// that a weight of 0 adds nothing. Each must only be called where the processor has what its name says.
#define VELNOR_BOKEH_ENTRY                                                                                             \
    extern std::size_t const BLOCK_SAMPLES;                                                                            \
    void SumRows(PaddedPicture const& picture, BokehRuns const& runs, float* sums);

namespace BokehSse2 {
VELNOR_BOKEH_ENTRY
} // namespace BokehSse2
namespace BokehAvx2 {
VELNOR_BOKEH_ENTRY
} // namespace BokehAvx2
namespace BokehAvx512 {
VELNOR_BOKEH_ENTRY
} // namespace BokehAvx512

#undef VELNOR_BOKEH_ENTRY

} // namespace Velnor::Proc::Kernels
#endif
