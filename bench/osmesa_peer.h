// The peer rasterizer: Mesa's llvmpipe through OSMesa, one thread, drawing the shared
// workloads with the same triangles, colours and depths.
#pragma once

#include <memory>

#include "bench/workloads.h"

class OsmesaPeer {
public:
    // Null when no OSMesa context can be made.
    static std::unique_ptr<OsmesaPeer> Create(int width, int height);
    ~OsmesaPeer();

    // How the random triangles are drawn besides Gouraud with the depth test.
    struct Variant {
        bool textured = false;     // the benchmark texture, nearest texel, times the colour
        bool alwaysPasses = false; // depth test always passes, depth still written
    };

    // One frame: clear colour and depth, draw every triangle, finish.
    void DrawRandomSet(const workload::RandomSet& set, Variant variant);
    void DrawMesh(const workload::Mesh& mesh, bool cullBackFaces);
    const char* Renderer() const;
    // Share of the frame's pixels that the last frame wrote (colour not black).
    double WrittenPercent() const;

private:
    OsmesaPeer() = default;
    struct State;
    std::unique_ptr<State> state_;
};
