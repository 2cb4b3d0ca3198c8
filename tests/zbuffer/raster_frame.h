// Test frames for the rasterizer: small caller-owned buffers, a context over them, pixel and
// depth access by screen position, and pictures built texel by texel.
#pragma once

#include "plugin/material.h"
#include "plugin/picture.h"
#include "zbuffer/fixed_point.h"
#include "zbuffer/izb.h"
#include "zbuffer/raster_context.h"
#include "zbuffer/screen_vertex.h"
#include "zbuffer/span_fillers.h"

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

// A run of written pixels on one scanline: columns first .. end - 1.
struct Span {
    int y, first, end;
    friend bool operator==(const Span&, const Span&) = default;
    friend std::ostream& operator<<(std::ostream& os, const Span& s) {
        return os << "row " << s.y << " [" << s.first << ", " << s.end << ")";
    }
};
using Spans = std::vector<Span>;

// Every run of written entries of a top-down depth buffer, top to bottom, left to right.
inline Spans SpansOf(const std::int32_t* depth, int width, int height) {
    Spans out;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const std::int32_t* row = depth + y * width;
            if (row[x] == kDepthEmpty || (x > 0 && row[x - 1] != kDepthEmpty)) continue;
            int end = x;
            while (end < width && row[end] != kDepthEmpty) ++end;
            out.push_back({y, x, end});
        }
    return out;
}

class Polygon;

class RasterFrame {
public:
    // Guard rows before and after each buffer catch writes just outside it.
    RasterFrame(int width, int height, Bgra background = {})
        : width_(width), height_(height), pitch_(((32 * width + 31) / 32) * 4),
          colour_(static_cast<std::size_t>(pitch_) * (height + 2 * kGuardRows), kGuardByte),
          depth_(static_cast<std::size_t>(width) * (height + 2 * kGuardRows), kDepthEmpty) {
        AttachRasterBuffers(rc, colour_.data() + kGuardRows * pitch_,
                            depth_.data() + kGuardRows * width, width, height);
        Fill(background);
    }

    void Fill(Bgra p) {
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x) Set(x, y, p);
    }
    Bgra Pixel(int x, int y) const {
        Bgra p;
        std::memcpy(&p, &colour_[Offset(x, y)], 4);
        return p;
    }
    void Set(int x, int y, Bgra p) { std::memcpy(&colour_[Offset(x, y)], &p, 4); }
    std::int32_t Depth(int x, int y) const { return depth_[(y + kGuardRows) * width_ + x]; }
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
    Spans WrittenSpans() const {
        return SpansOf(depth_.data() + kGuardRows * width_, width_, height_);
    }
    // Fills a copy of the polygon; rc points at the copy only during the call.
    inline int Draw(Polygon polygon, FillMode mode = FillMode::Flat);
    bool GuardsIntact() const {
        const std::size_t colourGuard = kGuardRows * pitch_, depthGuard = kGuardRows * width_;
        for (std::size_t i = 0; i < colourGuard; ++i)
            if (colour_[i] != kGuardByte || colour_[colour_.size() - 1 - i] != kGuardByte)
                return false;
        for (std::size_t i = 0; i < depthGuard; ++i)
            if (depth_[i] != kDepthEmpty || depth_[depth_.size() - 1 - i] != kDepthEmpty)
                return false;
        return true;
    }
    const std::vector<std::uint8_t>& Colour() const { return colour_; }
    const std::vector<std::int32_t>& DepthBuffer() const { return depth_; }

    RasterContext rc;

private:
    // Screen row y is memory row height - 1 - y.
    std::size_t Offset(int x, int y) const {
        return (height_ - 1 - y + kGuardRows) * pitch_ + x * 4;
    }
    static constexpr int kGuardRows = 2;
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
    const std::vector<ScreenVertex>& Vertices() const { return vertices_; }
    int Count() const { return static_cast<int>(vertices_.size()); }

private:
    void Relink() {
        list_.clear();
        for (ScreenVertex& v : vertices_) list_.push_back(&v);
    }
    std::vector<ScreenVertex> vertices_;
    std::vector<ScreenVertex*> list_;
};

int RasterFrame::Draw(Polygon polygon, FillMode mode) {
    polygon.Use(rc);
    return FillPolygon(rc, mode);
}

// Rectangle from (x0, y0) to (x1, y1) in pixels at one depth.
inline Polygon Rect(double x0, double y0, double x1, double y1, std::int32_t z = 100) {
    return Polygon{Vertex(x0, y0, z), Vertex(x1, y0, z), Vertex(x1, y1, z), Vertex(x0, y1, z)};
}

// A driver's surface read by screen position, as RasterFrame reads its own buffers.
inline Bgra SurfacePixel(const SurfaceRecord& s, int x, int y) {
    Bgra p;
    std::memcpy(&p, s.colourBits + (s.H - 1 - y) * s.colourStride + 4 * x, 4);
    return p;
}
inline Spans SurfaceSpans(const SurfaceRecord& s) {
    return SpansOf(s.depth, s.W, s.H);
}
inline int SurfaceWritten(const SurfaceRecord& s) {
    int n = 0;
    for (const Span& span : SurfaceSpans(s)) n += span.end - span.first;
    return n;
}

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
