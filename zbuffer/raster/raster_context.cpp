// Setting up a rasterizer context: its surface and its start state.
#include "zbuffer/raster/raster_context.h"

#include "interface/bitmap_info.h"
#include "zbuffer/raster/fixed_point.h"

#include <algorithm>
#include <cstring>

void AttachRasterBuffers(RasterContext& rc, std::uint8_t* colourBits, std::int32_t* depthBits,
                         std::int32_t width, std::int32_t height) {
    rc.colourBase = colourBits;
    rc.depthBase = depthBits;
    rc.clipMinX = 0;
    rc.clipMinY = 0;
    rc.clipMaxX = width - 1;
    rc.clipMaxY = height - 1;
    rc.clipWidth = width;
    rc.clipHeight = height;
    rc.rowBias = height - 1;
    rc.colourPitch = q5DibRowStride(32, width);
    rc.depthPitch = width * 4;
}

void ClearDepthEntries(std::int32_t* entries, std::size_t count) {
    // A loop of single stores is slow at this size; copies of a first, cached block are not.
    constexpr std::size_t kBlock = 1024;
    const std::size_t block = std::min(count, kBlock);
    std::fill_n(entries, block, kDepthEmpty);
    for (std::size_t done = block; done < count; done += kBlock)
        std::memcpy(entries + done, entries, std::min(kBlock, count - done) * sizeof *entries);
}

void ClearTextureBinding(RasterContext& rc) {
    rc.boundMaterial = nullptr;
    rc.sampleTexel = nullptr;
    rc.texHeader = nullptr;
    rc.texRow0 = nullptr;
    rc.texels = TexelGrid{};
}

void ResetRasterState(RasterContext& rc) {
    ClearTextureBinding(rc);
    rc.texPitch = rc.texWidth = rc.texHeight = rc.texMaxX = rc.texMaxY = 0;
    rc.textureIs32Bit = rc.textureIs8Bit = rc.texelBytes = 0;
    rc.vertexList = nullptr;
    rc.vertexCount = 0;
    rc.opacity = 255;
    rc.inverseOpacity = 0;
    rc.depthBias = 0;
    rc.flatColour = RgbBytes{};
    rc.depthAlwaysPasses = 0;
}
