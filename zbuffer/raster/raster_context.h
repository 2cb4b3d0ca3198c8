// The rasterizer's state: target buffers, clip bounds, texture binding and per-polygon values.
#pragma once

#include "zbuffer/raster/simd_path.h"

#include <cstddef>
#include <cstdint>
#include <vector>

struct ScreenVertex;
struct RasterContext;
struct q5_BITMAPINFOHEADER;
struct q5_MATERIAL;

// Bytes of a colour as the rasterizer takes it: red, green, blue.
struct RgbBytes {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
};

// The bound texture as 32-bit texels 0xAARRGGBB, rows counted from the top of the image.
struct TexelGrid {
    const std::uint32_t* top = nullptr; // row 0
    std::int32_t pitch = 0;             // texels from one row down to the next, signed
    std::int32_t width = 0;
    std::int32_t height = 0;
    float inverseWidth = 0.0f; // wraps positions without dividing
    float inverseHeight = 0.0f;
    // size - 1 for a size that is a power of two, which wraps by masking; else -1.
    std::int32_t widthMask = -1, heightMask = -1;
};

// Returns the texel at a 20.12 position as 0xAARRGGBB.
using TexelFetch = std::uint32_t (*)(const RasterContext& rc, std::int32_t u, std::int32_t v);

// One per driver; tests make their own. One polygon at a time is drawn through a context, and
// nothing here is locked: a context belongs to one thread at a time.
struct RasterContext {
    // Target surface: a bottom-up 32-bit colour bitmap and a top-down depth buffer.
    std::uint8_t* colourBase = nullptr; // lowest address: the bottom scanline
    std::int32_t* depthBase = nullptr;  // scanline 0
    std::int32_t colourPitch = 0;       // bytes per colour row
    std::int32_t depthPitch = 0;        // bytes per depth row, width * 4
    std::int32_t clipWidth = 0;
    std::int32_t clipHeight = 0;
    std::int32_t rowBias = 0; // clipHeight - 1: scanline y is colour memory row rowBias - y
    std::int32_t clipMinX = 0;
    std::int32_t clipMinY = 0;
    std::int32_t clipMaxX = -1;
    std::int32_t clipMaxY = -1;
    std::int32_t doubleResolution = 0; // vertex x and y are doubled while rasterizing
    std::uint8_t wideLines = 0;        // lines draw two pixels wide

    // Texture binding (texture_binding.h).
    TexelFetch sampleTexel = nullptr;
    const q5_MATERIAL* boundMaterial = nullptr;
    const q5_BITMAPINFOHEADER* texHeader = nullptr; // an 8-bit palette follows it
    const std::uint8_t* texRow0 = nullptr;          // the stored row of the image's bottom
    std::int32_t texPitch = 0;                      // signed bytes from one row up to the next
    std::int32_t texWidth = 0;
    std::int32_t texHeight = 0;
    std::int32_t texMaxX = 0;
    std::int32_t texMaxY = 0;
    std::uint8_t textureIs32Bit = 0;
    std::uint8_t textureIs8Bit = 0;
    std::uint8_t texelBytes = 0;
    TexelGrid texels;                     // what the fillers read
    std::vector<std::uint32_t> texelCopy; // 8- and 24-bit pictures widened at binding

    // Per polygon, set by the caller before a dispatch.
    ScreenVertex** vertexList = nullptr;
    std::int32_t vertexCount = 0;
    std::int32_t opacity = 255;      // 0..255, constant alpha of blended drawing
    std::int32_t inverseOpacity = 0; // 255 - opacity
    std::int32_t depthBias = 0;      // added to every depth before it is tested and stored
    RgbBytes flatColour;
    std::uint8_t depthAlwaysPasses = 0;

    SimdPath simdPath = DefaultSimdPath(); // tests force each path through this
};

// Points the context at caller-owned buffers of width x height pixels: colour rows of
// ((32 * width + 31) / 32) * 4 bytes stored bottom-up, depth rows of width entries top-down.
void AttachRasterBuffers(RasterContext& rc, std::uint8_t* colourBits, std::int32_t* depthBits,
                         std::int32_t width, std::int32_t height);

// Sets `count` depth entries to the farthest depth, as a clear leaves them.
void ClearDepthEntries(std::int32_t* entries, std::size_t count);

// Forgets the bound texture, so the next bind takes effect whatever material it names.
void ClearTextureBinding(RasterContext& rc);

// Per-polygon and texture state back to the start values; the surface fields stay.
void ResetRasterState(RasterContext& rc);

// Depth bias change of the driver's depth-offset operation: positive n pulls later drawing
// nearer.
inline void OffsetDepth(RasterContext& rc, std::int32_t n) {
    rc.depthBias -= 1024 * n;
}
