// Test frames for the rasterizer: small caller-owned buffers, a context over them, pixel and
// depth access by screen position, and pictures built texel by texel.
#pragma once

#include "interface/driver.h"
#include "interface/material.h"
#include "interface/picture.h"
#include "interface/screen_vertex.h"
#include "zbuffer/raster/fixed_point.h"
#include "zbuffer/raster/raster_context.h"
#include "zbuffer/raster/span_fillers.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

// One colour-buffer pixel in memory order.
struct Bgra {
    std::uint8_t b = 0, g = 0, r = 0, a = 0;
    friend bool operator==(const Bgra&, const Bgra&) = default;
};

// A run of written pixels on one scanline: row, first column, end column (exclusive).
using Span = std::array<int, 3>;
using Spans = std::vector<Span>;

// Every run of written entries of a top-down depth buffer, top to bottom, left to right.
inline Spans SpansOf(const std::int32_t* depth, int width, int height) {
    Spans out;
    for (int i = 0; i < width * height; ++i) {
        const int y = i / width, x = i % width;
        if (depth[i] == kDepthEmpty) continue;
        if (!out.empty() && out.back()[0] == y && out.back()[2] == x)
            ++out.back()[2];
        else
            out.push_back({y, x, x + 1});
    }
    return out;
}
inline int PixelsIn(const Spans& spans) {
    int n = 0;
    for (const Span& s : spans) n += s[2] - s[1];
    return n;
}

// A vertex at a pixel position (as a double, so halves are exact).
inline ScreenVertex Vertex(double x, double y, std::int32_t z = 0, std::uint8_t red = 0,
                           std::uint8_t green = 0, std::uint8_t blue = 0) {
    const auto fixed = [](double p) { return static_cast<std::int32_t>(p * 256.0); };
    return ScreenVertex{fixed(x), fixed(y), z, 0, 0, 0, 0, 0, 0, red, green, blue};
}

// Owns a polygon's vertices and the pointer list the context takes.
class Polygon {
public:
    Polygon(std::initializer_list<ScreenVertex> vertices) : vertices(vertices) {}
    explicit Polygon(std::vector<ScreenVertex> vertices) : vertices(std::move(vertices)) {}
    void Use(RasterContext& rc) {
        list_.clear();
        for (ScreenVertex& v : vertices) list_.push_back(&v);
        rc.vertexList = list_.data();
        rc.vertexCount = static_cast<std::int32_t>(list_.size());
    }
    std::vector<ScreenVertex> vertices;

private:
    std::vector<ScreenVertex*> list_;
};

inline Polygon Rect(double x0, double y0, double x1, double y1, std::int32_t z = 100) {
    return Polygon{Vertex(x0, y0, z), Vertex(x1, y0, z), Vertex(x1, y1, z), Vertex(x0, y1, z)};
}

class RasterFrame {
public:
    // Guard rows before and after each buffer catch writes just outside it.
    RasterFrame(int width, int height, Bgra background = {})
        : width_(width), height_(height), pitch_(q5DibRowStride(32, width)),
          colour_(static_cast<std::size_t>(pitch_) * (height + 2 * kGuard), kGuardByte),
          depth_(static_cast<std::size_t>(width) * (height + 2 * kGuard), kDepthEmpty) {
        AttachRasterBuffers(rc, colour_.data() + kGuard * pitch_, depth_.data() + kGuard * width,
                            width, height);
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x) Set(x, y, background);
    }

    Bgra Pixel(int x, int y) const {
        Bgra p;
        std::memcpy(&p, &colour_[Offset(x, y)], 4);
        return p;
    }
    void Set(int x, int y, Bgra p) { std::memcpy(&colour_[Offset(x, y)], &p, 4); }
    std::int32_t Depth(int x, int y) const { return depth_[(y + kGuard) * width_ + x]; }
    bool Written(int x, int y) const { return Depth(x, y) != kDepthEmpty; }
    Spans WrittenSpans() const { return SpansOf(&depth_[kGuard * width_], width_, height_); }
    int WrittenCount() const { return PixelsIn(WrittenSpans()); }
    int Draw(Polygon copy, FillMode mode = FillMode::Flat,
             decltype(&FillPolygon) fill = FillPolygon) {
        copy.Use(rc);
        return fill(rc, mode);
    }
    bool GuardsIntact() const {
        const auto intact = [](const auto& b, int n, auto v) {
            return std::count(b.begin(), b.begin() + n, v) + std::count(b.end() - n, b.end(), v) ==
                   2 * n;
        };
        return intact(colour_, kGuard * pitch_, kGuardByte) &&
               intact(depth_, kGuard * width_, kDepthEmpty);
    }
    bool operator==(const RasterFrame& o) const {
        return colour_ == o.colour_ && depth_ == o.depth_;
    }

    RasterContext rc;

private:
    // Screen row y is memory row height - 1 - y.
    std::size_t Offset(int x, int y) const { return (height_ - 1 - y + kGuard) * pitch_ + x * 4; }
    static constexpr int kGuard = 2; // rows
    static constexpr std::uint8_t kGuardByte = 0xA5;
    int width_, height_, pitch_;
    std::vector<std::uint8_t> colour_;
    std::vector<std::int32_t> depth_;
};

// A driver's colour and depth surfaces as its numbered values describe them to a host.
struct DriverSurface {
    std::uint8_t* colourBits;
    std::int32_t* depth;
    int W, H, colourStride;
};
inline DriverSurface SurfaceOf(DRIVER3D& d) {
    const auto w = static_cast<int>(d.GetValue(100, 0)), h = static_cast<int>(d.GetValue(101, 0));
    return {reinterpret_cast<std::uint8_t*>(d.GetValue(102, 0)),
            reinterpret_cast<std::int32_t*>(d.GetValue(104, 0)), w, h, q5DibRowStride(32, w)};
}

// A driver's surface read by screen position, as RasterFrame reads its own buffers.
inline Bgra SurfacePixel(const DriverSurface& s, int x, int y) {
    Bgra p;
    std::memcpy(&p, s.colourBits + (s.H - 1 - y) * s.colourStride + 4 * x, 4);
    return p;
}
inline Spans SurfaceSpans(const DriverSurface& s) {
    return SpansOf(s.depth, s.W, s.H);
}

// A picture whose texels the test sets by image position (row 0 at the top).
class TestPicture : public TPicture {
public:
    TestPicture(int width, int height, int bitCount, bool topDown = false)
        : headerBlock_(sizeof(q5_BITMAPINFOHEADER) + 256 * 4),
          texels_(static_cast<std::size_t>(q5DibRowStride(bitCount, width)) * height) {
        header = reinterpret_cast<q5_BITMAPINFOHEADER*>(headerBlock_.data());
        *header = {40, width, height, 1, static_cast<std::uint16_t>(bitCount), 0, 0, 0, 0, 0, 0};
        bits = texels_.data();
        rowsTopDown = topDown;
        texels32Ready = true;
        this->width = width;
        this->height = height;
    }
    // A converted copy that a test sets is the test's own.
    ~TestPicture() override { converted = nullptr; }

    // texel is 0xAARRGGBB; 24-bit pictures drop alpha, 8-bit ones take the low byte as index.
    void SetTexel(int x, int y, std::uint32_t texel) {
        std::uint8_t* p = Row(y) + x * (header->biBitCount / 8);
        for (int k = 0; k < header->biBitCount / 8; ++k) p[k] = (texel >> (8 * k)) & 0xFF;
    }
    void Fill(std::uint32_t texel) {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) SetTexel(x, y, texel);
    }

private:
    std::vector<std::uint8_t> headerBlock_, texels_;
};
