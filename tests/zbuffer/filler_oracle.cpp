// The naive fill: scanline by scanline and pixel by pixel, each value from its closed form.
#include "filler_oracle.h"

#include "interface/bitmap_info.h"
#include "interface/picture.h"
#include "interface/screen_vertex.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace {

bool Gouraud(FillMode m) {
    return m == FillMode::Gouraud || m == FillMode::GouraudBlended ||
           m == FillMode::GouraudTextured || m == FillMode::GouraudTexturedBlended ||
           m == FillMode::GouraudTextureAlpha;
}
bool Textured(FillMode m) {
    return m == FillMode::FlatTextured || m == FillMode::GouraudTextured ||
           m == FillMode::FlatTexturedBlended || m == FillMode::GouraudTexturedBlended ||
           m == FillMode::FlatTextureAlpha || m == FillMode::GouraudTextureAlpha;
}
bool TextureAlpha(FillMode m) {
    return m == FillMode::FlatTextureAlpha || m == FillMode::GouraudTextureAlpha;
}
// Texture-alpha drawing weighs its colour by the texel instead.
bool Premultiplied(FillMode m) {
    return m == FillMode::GouraudBlended || m == FillMode::GouraudTexturedBlended;
}

// What a 32-bit field holds of a wider result.
std::int32_t Low32(std::int64_t v) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(v));
}

// Rounds toward minus infinity; d > 0.
std::int64_t FloorDiv(std::int64_t n, std::int64_t d) {
    return n / d - (n % d < 0 ? 1 : 0);
}

std::int64_t ScanlineOf(std::int32_t y) {
    return y >> 8; // floors: y may be negative
}

struct Fill {
    FillMode mode;
    std::int64_t depthBias;
    std::uint32_t opacity, inverseOpacity;
    std::uint32_t flat[3]; // blue, green, red
    bool depthAlwaysPasses;
    const TPicture* texture; // null unless textured
};

struct Edge {
    const ScreenVertex* top; // the end with the smaller y
    const ScreenVertex* bottom;
    int order; // in the polygon
    std::int64_t topScanline, bottomScanline;
};

// Interpolants at one scanline of an edge or one column of a span.
struct Sample {
    std::int32_t x = 0;             // 16.16, edges only
    std::int32_t z = 0;             // bias included
    std::uint32_t c[3] = {0, 0, 0}; // 16.16 blue, green, red, modulo 2^32
    std::int32_t u = 0, v = 0;      // 20.12 texels
};

std::uint32_t Colour16(const Fill& f, const ScreenVertex& p, int channel) {
    const std::uint32_t bytes[3] = {p.blue, p.green, p.red};
    return bytes[channel] * (Premultiplied(f.mode) ? f.opacity : 1u) << 16;
}

// trunc(c * 4096 * size), exact in double: a float's 24-bit mantissa times 2^12 times a size.
// Large positions are limited to 2^29; below 32 bits the processor's truncating conversion
// answers its lowest value.
std::int32_t TexelPosition(float c, std::int32_t size) {
    const double p = std::trunc(static_cast<double>(c) * 4096.0 * size);
    if (p > 536870912.0) return 536870912;
    if (!(p >= -2147483648.0)) return INT32_MIN;
    return static_cast<std::int32_t>(p);
}

// k steps of a 32-bit quantity from `from` towards `to` over `count`: the step is the signed
// 32-bit difference of the ends truncated by the count, and the sum wraps as the field does.
std::uint32_t Stepped(std::uint32_t from, std::uint32_t to, std::int64_t count, std::int64_t k) {
    return from + static_cast<std::uint32_t>(k * (static_cast<std::int32_t>(to - from) / count));
}

// An edge k steps after its start. x, colour and texture add k steps, each step the difference
// of the ends truncated by the scanline count, so after k steps they have added k times that
// (colours and texture positions modulo 2^32, as their fields wrap). Depth steps by quotient q
// and remainder r of dz / n and keeps its running remainder in [0, n), so value * n + remainder
// grows by q * n + r = dz a step: after k steps it has added exactly floor(k * dz / n).
Sample EdgeAt(const Fill& f, const Edge& e, std::int64_t k) {
    const ScreenVertex& t = *e.top;
    const ScreenVertex& b = *e.bottom;
    const std::int64_t n = e.bottomScanline - e.topScanline;
    Sample s;
    s.x = Low32((std::int64_t{t.x} << 8) + k * ((std::int64_t{b.x} - t.x) * 256 / n));
    s.z = Low32(t.z + f.depthBias + FloorDiv(k * (std::int64_t{b.z} - t.z), n));
    for (int i = 0; i < 3; ++i) s.c[i] = Stepped(Colour16(f, t, i), Colour16(f, b, i), n, k);
    if (f.texture) {
        const std::int32_t w = f.texture->header->biWidth, h = f.texture->header->biHeight;
        s.u =
            static_cast<std::int32_t>(Stepped(TexelPosition(t.u, w), TexelPosition(b.u, w), n, k));
        s.v =
            static_cast<std::int32_t>(Stepped(TexelPosition(t.v, h), TexelPosition(b.v, h), n, k));
    }
    return s;
}

// Column `left + k` of a span of `width` columns, by the same closed forms as along an edge.
Sample SpanAt(const Sample& l, const Sample& r, std::int64_t width, std::int64_t k) {
    Sample s;
    s.z = Low32(l.z + FloorDiv(k * (std::int64_t{r.z} - l.z), width));
    for (int i = 0; i < 3; ++i) s.c[i] = Stepped(l.c[i], r.c[i], width, k);
    s.u = static_cast<std::int32_t>(Stepped(l.u, r.u, width, k));
    s.v = static_cast<std::int32_t>(Stepped(l.v, r.v, width, k));
    return s;
}

// Nearest texel at a 20.12 position as 0xAARRGGBB. Row 0 is the image's top whichever way
// the bitmap stores its rows; positions past the last texel wrap.
std::uint32_t TexelAt(const TPicture& p, std::int32_t u, std::int32_t v) {
    const q5_BITMAPINFOHEADER& h = *p.header;
    std::int64_t x = static_cast<std::uint32_t>(u) >> 12 & 0xFFFFF;
    std::int64_t y = static_cast<std::uint32_t>(v) >> 12 & 0xFFFFF;
    if (x > h.biWidth - 1) x %= h.biWidth;
    if (y > h.biHeight - 1) y %= h.biHeight;
    const std::int64_t stride = (std::int64_t{h.biBitCount} * h.biWidth + 31) / 32 * 4;
    const std::int64_t row = p.rowsTopDown ? y : h.biHeight - 1 - y;
    const std::uint8_t* t =
        static_cast<const std::uint8_t*>(p.bits) + row * stride + x * (h.biBitCount / 8);
    if (h.biBitCount == 24) return t[0] | t[1] << 8 | t[2] << 16;
    if (h.biBitCount == 8) t = reinterpret_cast<const std::uint8_t*>(&h) + 40 + 4 * t[0];
    return t[0] | t[1] << 8 | t[2] << 16 | static_cast<std::uint32_t>(t[3]) << 24;
}

// New bytes of a pixel that passed the depth test; false where a texel of alpha 0 leaves the
// pixel, depth included, alone. Untextured blends divide by 256, textured ones by 255.
bool Shade(const Fill& f, const Sample& s, std::uint8_t* px) {
    const std::uint32_t texel = f.texture ? TexelAt(*f.texture, s.u, s.v) : 0;
    const std::uint32_t op = f.opacity, inv = f.inverseOpacity;
    const std::uint32_t coverage = (65025 - (255 - px[3]) * inv) / 255;
    std::uint32_t out[4];
    if (TextureAlpha(f.mode)) {
        if (texel >> 24 == 0) return false;
        const std::uint32_t a = (texel >> 24) * op / 255;
        for (int i = 0; i < 3; ++i) {
            // Not premultiplied here.
            const std::uint32_t c = Gouraud(f.mode) ? s.c[i] >> 16 & 0xFFFF : f.flat[i];
            const std::uint32_t own = (a * c >> 8) * (texel >> 8 * i & 0xFF) / 255;
            out[i] = a == 255 ? own : px[i] * (255 - a) / 255 + own;
        }
        out[3] = a; // 255 when opaque
    } else {
        for (int i = 0; i < 3; ++i) {
            const std::uint32_t dst = px[i], flat = f.flat[i], t = texel >> 8 * i & 0xFF;
            const std::uint32_t c = s.c[i] >> 16 & 0xFFFF; // premultiplied where blended
            switch (f.mode) {
            case FillMode::Flat:
                out[i] = flat;
                break;
            case FillMode::Gouraud:
                out[i] = c;
                break;
            case FillMode::FlatBlended:
                out[i] = (flat * op + dst * inv) / 256;
                break;
            case FillMode::GouraudBlended:
                out[i] = (c + dst * inv) / 256;
                break;
            case FillMode::GouraudTextured:
                out[i] = std::min(t * c >> 8, 255u);
                break;
            case FillMode::FlatTextured:
                out[i] = t * flat >> 8;
                break;
            case FillMode::GouraudTexturedBlended:
                out[i] = (c * t / 255 + dst * inv) / 255;
                break;
            case FillMode::FlatTexturedBlended:
                out[i] = (flat * op * t / 255 + dst * inv) / 255;
                break;
            default:
                return false;
            }
        }
        const bool covers = f.mode == FillMode::FlatBlended || f.mode == FillMode::GouraudBlended ||
                            f.mode == FillMode::FlatTexturedBlended;
        out[3] = covers ? coverage : 255;
    }
    // A wrapped premultiplied colour can overflow a byte; the byte keeps the low bits.
    for (int i = 0; i < 4; ++i) px[i] = static_cast<std::uint8_t>(out[i]);
    return true;
}

// One scanline between the active pair; the right end column is exclusive, the left one is
// where the interpolants start, on screen or not.
void FillSpan(RasterContext& rc, const Fill& f, std::int64_t y, const Sample& p, const Sample& q) {
    const Sample& l = q.x < p.x ? q : p;
    const Sample& r = q.x < p.x ? p : q;
    const std::int64_t left = l.x >> 16, right = r.x >> 16;
    const std::int64_t from = std::max<std::int64_t>(left, 0);
    const std::int64_t to = std::min<std::int64_t>(right - 1, rc.clipMaxX);
    for (std::int64_t x = from; x <= to; ++x) {
        const Sample s = SpanAt(l, r, right - left, x - left);
        std::int32_t* depth =
            rc.depthBase + (y - rc.clipMinY) * (rc.depthPitch / 4) + (x - rc.clipMinX);
        std::uint8_t* px =
            rc.colourBase + (rc.rowBias + rc.clipMinY - y) * rc.colourPitch + (x - rc.clipMinX) * 4;
        if ((s.z <= *depth || f.depthAlwaysPasses) && Shade(f, s, px)) *depth = s.z;
    }
}

} // namespace

int FillPolygonOracle(RasterContext& rc, FillMode mode, const TPicture* texture) {
    const int n = rc.vertexCount;
    if (n <= 0 || n > 8) return 0;
    ScreenVertex** v = rc.vertexList;
    if (rc.doubleResolution) {
        for (int i = 0; i < n; ++i) v[i]->x *= 2, v[i]->y *= 2;
    }
    std::vector<Edge> edges;
    for (int i = 0; i < n; ++i) {
        const ScreenVertex* a = v[i];
        const ScreenVertex* b = v[(i + 1) % n];
        if (a->y == b->y) continue;
        if (a->y > b->y) std::swap(a, b);
        if (ScanlineOf(a->y) == ScanlineOf(b->y)) continue;
        edges.push_back({a, b, i, ScanlineOf(a->y), ScanlineOf(b->y)});
    }
    if (edges.size() < 2) return 0;
    // Inserting each edge in front of the first listed one whose top is not above its own
    // orders by top and puts equal tops in reverse polygon order.
    std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) {
        return a.top->y != b.top->y ? a.top->y < b.top->y : a.order > b.order;
    });

    const Fill f{mode,
                 rc.depthBias,
                 static_cast<std::uint32_t>(rc.opacity),
                 static_cast<std::uint32_t>(rc.inverseOpacity),
                 {rc.flatColour.blue, rc.flatColour.green, rc.flatColour.red},
                 rc.depthAlwaysPasses != 0,
                 Textured(mode) ? texture : nullptr};
    const std::size_t count = edges.size();
    const std::int64_t first = edges[0].topScanline;

    // Triangles of two edges and quads leave the bottom scanline that their last two edges
    // share unfilled. The walk below hands the next listed edge to whichever of the pair has
    // passed its bottom, the first of the pair first; the pair it ends with is the pair to test.
    std::int64_t last = rc.clipMaxY;
    if ((n == 3 && count == 2) || n == 4) {
        std::size_t a = 0, b = 1, next = 2;
        for (std::int64_t y = first; next < count; ++y) {
            if (edges[a].bottomScanline <= y) a = next++;
            if (next < count && edges[b].bottomScanline <= y) b = next++;
        }
        const std::int64_t bottom = edges[a].bottomScanline;
        if (bottom == edges[b].bottomScanline && bottom <= rc.clipMaxY) last = bottom - 1;
    }

    // Each active edge with the scanline where it stood at its top values: the first pair at
    // the first scanline; a successor takes one step on the way to the scanline after the one
    // where its predecessor ended.
    std::size_t a = 0, b = 1, next = 2;
    std::int64_t startA = first, startB = first;
    for (std::int64_t y = first; y <= last; ++y) {
        if (y >= 0)
            FillSpan(rc, f, y, EdgeAt(f, edges[a], y - startA), EdgeAt(f, edges[b], y - startB));
        if (edges[a].bottomScanline <= y) {
            if (next == count) break;
            a = next++;
            startA = y;
        }
        if (edges[b].bottomScanline <= y) {
            if (next == count) break;
            b = next++;
            startB = y;
        }
    }
    return 1;
}
