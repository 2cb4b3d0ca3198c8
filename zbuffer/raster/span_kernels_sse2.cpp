// Span loops, polygon walks and triangle batches in 4 lanes of SSE2, which every x86-64 processor
// has.
#include "zbuffer/raster/span_kernels.h"

#if defined(__SSE2__)
#include <emmintrin.h>

#define TESSERA_LANES 4
#define TESSERA_LANE_TARGET
#define TESSERA_LANE_BITS(mask) _mm_movemask_ps((__m128)(mask))
#include "zbuffer/raster/triangle_batch_lanes.h"

const SpanKernelSet* Sse2SpanKernels() {
    return &kLaneKernels;
}
#else
const SpanKernelSet* Sse2SpanKernels() {
    return nullptr;
}
#endif
