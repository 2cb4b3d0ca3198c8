// Span loops, polygon walks and triangle batches in 8 lanes of AVX2. Only the functions here carry
// the AVX2 target, and only once the processor check has passed are they called.
#include "zbuffer/raster/span_kernels.h"

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>

#define TESSERA_LANES 8
#define TESSERA_LANE_TARGET __attribute__((target("avx2")))
#define TESSERA_LANE_BITS(mask) _mm256_movemask_ps((__m256)(mask))
#define TESSERA_LANE_GATHER(base, index)                                                           \
    ((Vi)_mm256_i32gather_epi32(reinterpret_cast<const int*>(base), (__m256i)(index), 4))
#include "zbuffer/raster/triangle_batch_lanes.h"

const SpanKernelSet* Avx2SpanKernels() {
    return &kLaneKernels;
}
#else
const SpanKernelSet* Avx2SpanKernels() {
    return nullptr;
}
#endif
