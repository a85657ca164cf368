// The sums of BOKEH_ROWS x BLOCK_SAMPLES samples, kept in registers. Included once for each instruction set, with
// Vector, Load, Store, Fill, AddProduct, LANES and VECTORS; no guard, therefore.
//
// Rows of samples are taken one after the other, and each of their samples goes to the rows of the picture that have a
// weight for it: so every sum meets its products in the order of the kernel, row by row.

namespace {

VELNOR_INLINE void SumBlock(float const* samples, std::size_t stride, BokehRuns const& runs, float const* start,
                            float* sums, std::size_t sumsStride) {
    Vector total[BOKEH_ROWS][VECTORS];
    VELNOR_UNROLL for (std::size_t r = 0; r < BOKEH_ROWS; ++r) VELNOR_UNROLL for (std::size_t v = 0; v < VECTORS; ++v)
        total[r][v] = Load(start + r * stride + v * LANES);

    for (BokehRun const& run : runs.runs) {
        float const* from = samples + run.row * stride + run.column * 3;
        float const* weight = runs.weights.data() + run.firstWeight;
        for (std::size_t n = run.count; n > 0; --n, from += 3, weight += BOKEH_ROWS) {
            Vector factor[BOKEH_ROWS];
            VELNOR_UNROLL for (std::size_t r = 0; r < BOKEH_ROWS; ++r) factor[r] = Fill(weight[r]);
            VELNOR_UNROLL for (std::size_t v = 0; v < VECTORS; ++v) {
                Vector const sample = Load(from + v * LANES);
                VELNOR_UNROLL for (std::size_t r = 0; r < BOKEH_ROWS; ++r) total[r][v] =
                    AddProduct(total[r][v], factor[r], sample);
            }
        }
    }
    VELNOR_UNROLL for (std::size_t r = 0; r < BOKEH_ROWS; ++r) VELNOR_UNROLL for (std::size_t v = 0; v < VECTORS; ++v)
        Store(total[r][v], sums + r * sumsStride + v * LANES);
}

} // namespace

/// The last blocks of a row and of the picture are moved back to end with it: what they share with their neighbours is
/// computed twice, to the same floats.
void SumRows(PaddedPicture const& picture, BokehRuns const& runs, float* sums) {
    for (std::size_t y = 0; y < picture.rows; y += BOKEH_ROWS) {
        y = y + BOKEH_ROWS > picture.rows ? picture.rows - BOKEH_ROWS : y;
        for (std::size_t i = 0; i < picture.samples; i += BLOCK_SAMPLES) {
            i = i + BLOCK_SAMPLES > picture.samples ? picture.samples - BLOCK_SAMPLES : i;
            std::size_t const place = y * picture.stride + i;
            SumBlock(picture.values.data() + place, picture.stride, runs,
                     picture.values.data() + picture.origin + place, sums + y * picture.samples + i, picture.samples);
        }
    }
}
