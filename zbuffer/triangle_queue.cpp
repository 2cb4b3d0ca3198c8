// The queue of untextured triangles in front of the rasterizer's batch entry.
#include "zbuffer/triangle_queue.h"

#include "zbuffer/raster/polygon_dispatch.h"

TriangleQueue::TriangleQueue() {
    for (int i = 0; i < 3 * kCapacity; ++i) corners_[i] = &vertices_[i];
}

void TriangleQueue::Add(RasterContext& rc, const ScreenVertex* const corners[3]) {
    if (count_ == kCapacity) Flush(rc);
    for (int k = 0; k < 3; ++k) vertices_[3 * count_ + k] = *corners[k];
    ++count_;
}

void TriangleQueue::Flush(RasterContext& rc) {
    if (count_ == 0) return;
    DrawUntexturedTriangles(rc, corners_, count_);
    count_ = 0;
}
