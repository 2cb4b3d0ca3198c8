// Projected untextured triangles waiting for the rasterizer, which sets up short ones several at
// a time when it is handed many together.
#pragma once

#include "interface/screen_vertex.h"
#include "zbuffer/raster/raster_context.h"

#include <cstdint>

class TriangleQueue {
public:
    TriangleQueue();
    TriangleQueue(const TriangleQueue&) = delete;
    TriangleQueue& operator=(const TriangleQueue&) = delete;

    // Copies the three projected corners. A full queue is drawn first.
    void Add(RasterContext& rc, const ScreenVertex* const corners[3]);
    // Draws what waits, in the order it came, as opaque untextured triangles. Any other drawing
    // through the context, or a change to its depth state, has to come after this.
    void Flush(RasterContext& rc);

private:
    static constexpr int kCapacity = 64;
    ScreenVertex vertices_[3 * kCapacity];
    ScreenVertex* corners_[3 * kCapacity];
    int count_ = 0;
};
