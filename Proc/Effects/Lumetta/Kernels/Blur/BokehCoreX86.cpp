#include "Proc/Effects/Lumetta/Kernels/Blur/BokehCoreX86.h"

#ifdef VELNOR_X86

#include <immintrin.h>

namespace Velnor::Proc::Kernels {

VELNOR_TARGET_BEGIN("sse2")
namespace BokehSse2 {
namespace {
using Vector = __m128;
constexpr std::size_t LANES = 4;
constexpr std::size_t VECTORS = 3;
VELNOR_INLINE Vector Load(float const* p) { return _mm_loadu_ps(p); }
VELNOR_INLINE void Store(Vector v, float* p) { _mm_storeu_ps(p, v); }
VELNOR_INLINE Vector Fill(float value) { return _mm_set1_ps(value); }
VELNOR_INLINE Vector AddProduct(Vector sum, Vector a, Vector b) { return _mm_add_ps(sum, _mm_mul_ps(a, b)); }
} // namespace
std::size_t const BLOCK_SAMPLES = LANES * VECTORS;

#include "Proc/Effects/Lumetta/Kernels/Blur/BokehCore-inl.h"
} // namespace BokehSse2
VELNOR_TARGET_END

VELNOR_TARGET_BEGIN("avx2")
namespace BokehAvx2 {
namespace {
using Vector = __m256;
constexpr std::size_t LANES = 8;
constexpr std::size_t VECTORS = 3;
VELNOR_INLINE Vector Load(float const* p) { return _mm256_loadu_ps(p); }
VELNOR_INLINE void Store(Vector v, float* p) { _mm256_storeu_ps(p, v); }
VELNOR_INLINE Vector Fill(float value) { return _mm256_set1_ps(value); }
VELNOR_INLINE Vector AddProduct(Vector sum, Vector a, Vector b) { return _mm256_add_ps(sum, _mm256_mul_ps(a, b)); }
} // namespace
std::size_t const BLOCK_SAMPLES = LANES * VECTORS;

#include "Proc/Effects/Lumetta/Kernels/Blur/BokehCore-inl.h"
} // namespace BokehAvx2
VELNOR_TARGET_END

VELNOR_TARGET_BEGIN("avx512f")
namespace BokehAvx512 {
namespace {
using Vector = __m512;
constexpr std::size_t LANES = 16;
constexpr std::size_t VECTORS = 8;
VELNOR_INLINE Vector Load(float const* p) { return _mm512_loadu_ps(p); }
VELNOR_INLINE void Store(Vector v, float* p) { _mm512_storeu_ps(p, v); }
VELNOR_INLINE Vector Fill(float value) { return _mm512_set1_ps(value); }
VELNOR_INLINE Vector AddProduct(Vector sum, Vector a, Vector b) { return _mm512_add_ps(sum, _mm512_mul_ps(a, b)); }
} // namespace
std::size_t const BLOCK_SAMPLES = LANES * VECTORS;

#include "Proc/Effects/Lumetta/Kernels/Blur/BokehCore-inl.h"
} // namespace BokehAvx512
VELNOR_TARGET_END

} // namespace Velnor::Proc::Kernels

#endif
