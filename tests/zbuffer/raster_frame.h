// Test frames for the rasterizer: small caller-owned buffers, a context over them, pixel and
// depth access by screen position, and pictures built texel by texel.
#pragma once

#include "plugin/material.h"
#include "plugin/picture.h"
#include "zbuffer/fixed_point.h"
#include "zbuffer/raster_context.h"
#include "zbuffer/screen_vertex.h"

#include <cstdint>
#include <cstring>
#include <ostream>
#include <vector>

// One colour-buffer pixel in memory order.
struct Bgra {
    std::uint8_t b = 0, g = 0, r = 0, a = 0;
    friend bool operator==(const Bgra&, const Bgra&) = default;
    friend std::ostream& operator<<(std::ostream& os, const Bgra& p) {
        return os << "B" << int(p.b) << " G" << int(p.g) << " R" << int(p.r) << " A" << int(p.a);
    }
};

class RasterFrame {
public:
    // One guard row before and after each buffer catches writes just outside it.
    RasterFrame(int width, int height, Bgra background = {})
        : width_(width), height_(height), pitch_(((32 * width + 31) / 32) * 4),
          colour_(static_cast<std::size_t>(pitch_) * (height + 2), kGuardByte),
          depth_(static_cast<std::size_t>(width) * (height + 2), kDepthEmpty) {
        AttachRasterBuffers(rc, colour_.data() + pitch_, depth_.data() + width, width, height);
        Fill(background);
    }

    void Fill(Bgra p) {
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x) Set(x, y, p);
    }
    // Screen row y is memory row height - 1 - y.
    Bgra Pixel(int x, int y) const {
        const std::uint8_t* p = &colour_[(height_ - y) * pitch_ + x * 4];
        return Bgra{p[0], p[1], p[2], p[3]};
    }
    void Set(int x, int y, Bgra v) {
        std::uint8_t* p = &colour_[(height_ - y) * pitch_ + x * 4];
        p[0] = v.b, p[1] = v.g, p[2] = v.r, p[3] = v.a;
    }
    std::int32_t Depth(int x, int y) const { return depth_[(y + 1) * width_ + x]; }
    bool Written(int x, int y) const { return Depth(x, y) != kDepthEmpty; }
    int WrittenInRow(int y) const {
        int n = 0;
        for (int x = 0; x < width_; ++x) n += Written(x, y);
        return n;
    }
    int WrittenCount() const {
        int n = 0;
        for (int y = 0; y < height_; ++y) n += WrittenInRow(y);
        return n;
    }
    bool GuardsIntact() const {
        const std::size_t lastColour = colour_.size() - pitch_, lastDepth = depth_.size() - width_;
        for (int i = 0; i < pitch_; ++i)
            if (colour_[i] != kGuardByte || colour_[lastColour + i] != kGuardByte) return false;
        for (int i = 0; i < width_; ++i)
            if (depth_[i] != kDepthEmpty || depth_[lastDepth + i] != kDepthEmpty) return false;
        return true;
    }
    const std::vector<std::uint8_t>& Colour() const { return colour_; }
    const std::vector<std::int32_t>& DepthBuffer() const { return depth_; }

    RasterContext rc;

private:
    static constexpr std::uint8_t kGuardByte = 0xA5;
    int width_, height_, pitch_;
    std::vector<std::uint8_t> colour_;
    std::vector<std::int32_t> depth_;
};

// A vertex at a pixel position (as a double, so halves are exact).
inline ScreenVertex Vertex(double x, double y, std::int32_t z = 0, std::uint8_t red = 0,
                           std::uint8_t green = 0, std::uint8_t blue = 0) {
    ScreenVertex v{};
    v.x = static_cast<std::int32_t>(x * 256.0);
    v.y = static_cast<std::int32_t>(y * 256.0);
    v.z = z;
    v.red = red;
    v.green = green;
    v.blue = blue;
    return v;
}

// Owns a polygon's vertices and the pointer list the context takes.
class Polygon {
public:
    Polygon(std::initializer_list<ScreenVertex> vertices) : vertices_(vertices) { Relink(); }
    explicit Polygon(std::vector<ScreenVertex> vertices) : vertices_(std::move(vertices)) {
        Relink();
    }
    Polygon(const Polygon& other) : vertices_(other.vertices_) { Relink(); }
    // Points rc at this polygon.
    void Use(RasterContext& rc) {
        rc.vertexList = list_.data();
        rc.vertexCount = static_cast<std::int32_t>(list_.size());
    }
    ScreenVertex& operator[](std::size_t i) { return vertices_[i]; }
    int Count() const { return static_cast<int>(vertices_.size()); }

private:
    void Relink() {
        list_.clear();
        for (ScreenVertex& v : vertices_) list_.push_back(&v);
    }
    std::vector<ScreenVertex> vertices_;
    std::vector<ScreenVertex*> list_;
};

// A picture whose texels the test sets by image position (row 0 at the top).
class TestPicture : public TPicture {
public:
    TestPicture(int width, int height, int bitCount, bool topDown = false)
        : headerBlock_(sizeof(q5_BITMAPINFOHEADER) + 256 * 4),
          stride_(q5DibRowStride(static_cast<std::uint32_t>(bitCount), width)),
          texels_(static_cast<std::size_t>(stride_) * height) {
        q5_BITMAPINFOHEADER h{};
        h.biSize = 40;
        h.biWidth = width;
        h.biHeight = height;
        h.biPlanes = 1;
        h.biBitCount = static_cast<std::uint16_t>(bitCount);
        std::memcpy(headerBlock_.data(), &h, sizeof h);
        header = reinterpret_cast<q5_BITMAPINFOHEADER*>(headerBlock_.data());
        bits = texels_.data();
        rowsTopDown = topDown;
        texels32Ready = true;
        this->width = width;
        this->height = height;
    }
    ~TestPicture() override { converted = nullptr; }

    // texel is 0xAARRGGBB; 24-bit pictures drop alpha, 8-bit ones take the low byte as index.
    void SetTexel(int x, int y, std::uint32_t texel) {
        std::uint8_t* p = Row(y) + x * (header->biBitCount / 8);
        for (int k = 0; k < header->biBitCount / 8; ++k) p[k] = (texel >> (8 * k)) & 0xFF;
    }
    void Fill(std::uint32_t texel) {
        for (int y = 0; y < header->biHeight; ++y)
            for (int x = 0; x < header->biWidth; ++x) SetTexel(x, y, texel);
    }
    void SetPaletteEntry(int index, std::uint32_t bgrx) {
        std::uint8_t* p = headerBlock_.data() + 40 + index * 4;
        for (int k = 0; k < 4; ++k) p[k] = (bgrx >> (8 * k)) & 0xFF;
    }
    TPicture* ConvertedCopy() override { return convertTo; }
    TPicture* convertTo = nullptr; // what the conversion hands out, owned by the test

private:
    std::vector<std::uint8_t> headerBlock_;
    std::int32_t stride_;
    std::vector<std::uint8_t> texels_;
};
