// The span loops in lanes of 32-bit integers, written once for every vector width. A file that
// includes this defines TESSERA_LANES (4 or 8), TESSERA_LANE_TARGET (the attribute that
// enables the instructions) and TESSERA_LANE_BITS(mask) (one bit per lane), and may define
// TESSERA_LANE_GATHER(base, index) (32-bit loads at base + index). Everything here
// has internal linkage, so code built for wide lanes never stands in for a narrower path.
#pragma once

#include "zbuffer/raster/edge_setup.h"
#include "zbuffer/raster/span_kernels.h"

#include <cstring>

namespace {

constexpr int kLanes = TESSERA_LANES;
typedef std::int32_t Vi __attribute__((vector_size(4 * kLanes)));
typedef std::uint32_t Vu __attribute__((vector_size(4 * kLanes)));
typedef float Vf __attribute__((vector_size(4 * kLanes)));

#define LANES_FN TESSERA_LANE_TARGET inline

LANES_FN Vu LaneNumbers() {
    Vu n{};
    for (int k = 0; k < kLanes; ++k) n[k] = static_cast<std::uint32_t>(k);
    return n;
}

// x / 255 for 0 <= x < 2^24: the float quotient is off by at most one there.
LANES_FN Vi Div255(Vi x) {
    Vi q = __builtin_convertvector(__builtin_convertvector(x, Vf) * (1.0f / 255.0f), Vi);
    const Vi r = x - ((q << 8) - q);
    q += r < 0;
    q -= r >= 255;
    return q;
}

// WrapTexelIndex in lanes, the same float operations, or the same mask.
LANES_FN Vi WrapLanes(Vi n, std::int32_t size, float inverse, std::int32_t mask) {
    if (mask >= 0) return n & mask;
    const Vi q = __builtin_convertvector(__builtin_convertvector(n, Vf) * inverse, Vi);
    Vi r =
        n - __builtin_convertvector(__builtin_convertvector(q, Vf) * static_cast<float>(size), Vi);
    r += (r < 0) & size;
    r -= (r >= size) & size;
    return r;
}

LANES_FN Vi FetchLanes(const TexelGrid& g, Vu u, Vu v) {
    const Vi x = WrapLanes((Vi)((u >> kTexelFracBits) & kTexelIndexMask), g.width, g.inverseWidth,
                           g.widthMask);
    const Vi y = WrapLanes((Vi)((v >> kTexelFracBits) & kTexelIndexMask), g.height, g.inverseHeight,
                           g.heightMask);
    const Vi index = y * g.pitch + x;
#ifdef TESSERA_LANE_GATHER
    return TESSERA_LANE_GATHER(g.top, index);
#else
    Vi texel;
    for (int k = 0; k < kLanes; ++k) {
        std::int32_t t;
        std::memcpy(&t, g.top + index[k], sizeof t);
        texel[k] = t;
    }
    return texel;
#endif
}

LANES_FN Vi ByteOf(Vi x, int k) {
    return (x >> (8 * k)) & 0xFF;
}

// Channel k of the polygon's colour: stepped, or flat.
template <bool Gouraud>
LANES_FN Vi ColourLanes(const PolygonConstants& pc, const Vu (&c)[3], int k) {
    if constexpr (Gouraud)
        return (Vi)((c[k] >> kEdgeFracBits) & 0xFFFF);
    else
        return Vi{} + static_cast<std::int32_t>(pc.flat[k]);
}

// Interpolants of kLanes neighbouring columns; `write` starts as the depth test's result and
// loses the lanes a texel of alpha 0 leaves alone. Returns the pixels to write.
template <FillMode M>
LANES_FN Vu ShadeLanes(const PolygonConstants& pc, Vu dst, const Vu (&c)[3], Vu u, Vu v,
                       Vi& write) {
    constexpr ModeTraits T = TraitsOf(M);
    Vi texel{};
    if constexpr (T.textured) texel = FetchLanes(pc.texels, u, v);
    const auto inv = static_cast<std::int32_t>(pc.inverseOpacity);
    Vi ch[3];
    Vi alpha = Vi{} + kAlphaOpaque;
    if constexpr (T.textureAlpha) {
        const Vi texelAlpha = (Vi)((Vu)texel >> 24);
        write &= texelAlpha != 0;
        const Vi a = Div255(texelAlpha * static_cast<std::int32_t>(pc.opacity));
        const Vi opaque = a == 255;
        for (int k = 0; k < 3; ++k) {
            const Vi own = Div255(((a * ColourLanes<T.gouraud>(pc, c, k)) >> 8) * ByteOf(texel, k));
            const Vi d = ByteOf((Vi)dst, k);
            const Vi mixed = Div255(d * (255 - a)) + own;
            ch[k] = (own & opaque) | (mixed & ~opaque);
        }
        alpha = a;
    } else {
        for (int k = 0; k < 3; ++k) {
            const Vi d = ByteOf((Vi)dst, k);
            if constexpr (T.textured && T.blended && T.gouraud)
                ch[k] =
                    Div255(Div255(ColourLanes<T.gouraud>(pc, c, k) * ByteOf(texel, k)) + d * inv);
            else if constexpr (T.textured && T.blended)
                ch[k] = Div255(
                    Div255(static_cast<std::int32_t>(pc.flatTimesOpacity[k]) * ByteOf(texel, k)) +
                    d * inv);
            else if constexpr (T.textured && T.gouraud) {
                const Vi x = (ByteOf(texel, k) * ColourLanes<T.gouraud>(pc, c, k)) >> 8;
                const Vi over = x > 255;
                ch[k] = (x & ~over) | (255 & over);
            } else if constexpr (T.textured)
                ch[k] = (ByteOf(texel, k) * ColourLanes<T.gouraud>(pc, c, k)) >> 8;
            else if constexpr (T.blended && T.gouraud)
                ch[k] = (ColourLanes<T.gouraud>(pc, c, k) + d * inv) >> 8;
            else if constexpr (T.blended)
                ch[k] = (static_cast<std::int32_t>(pc.flatTimesOpacity[k]) + d * inv) >> 8;
            else
                ch[k] = ColourLanes<T.gouraud>(pc, c, k);
        }
        if constexpr (T.blended && !(T.textured && T.gouraud))
            alpha = Div255(kFullCoverage - (255 - (Vi)(dst >> 24)) * inv);
    }
    return (Vu)((ch[0] & 0xFF) | (ch[1] & 0xFF) << 8 | (ch[2] & 0xFF) << 16 | alpha << 24);
}

// A Gouraud channel `columns` columns on from `base`; nothing for flat drawing.
template <bool Gouraud, typename Columns>
LANES_FN Vu ColourAt(Vu base, std::int32_t step, Columns columns) {
    if constexpr (Gouraud)
        return base + columns * static_cast<std::uint32_t>(step);
    else
        return Vu{};
}

// The pixels of the block `done` columns into the span where `write` holds, shaded and merged
// into `dst` and `depth`. Colours and texture positions step by whole additions modulo 2^32,
// so a column's are the span's first plus its offset times the step: made here, only for
// blocks that write, which keeps the loop over hidden blocks short.
template <FillMode M>
LANES_FN void WriteBlock(const PolygonConstants& pc, const SpanRun& s, std::int32_t done, Vu z,
                         Vu& dst, Vi& depth, Vi write) {
    constexpr ModeTraits T = TraitsOf(M);
    const Vu columns = LaneNumbers() + static_cast<std::uint32_t>(done);
    // Named one by one, so that they stay in registers.
    const Vu c[3] = {ColourAt<T.gouraud>(Vu{} + s.c[0], s.cStep[0], columns),
                     ColourAt<T.gouraud>(Vu{} + s.c[1], s.cStep[1], columns),
                     ColourAt<T.gouraud>(Vu{} + s.c[2], s.cStep[2], columns)};
    Vu u{}, v{};
    if constexpr (T.textured) {
        u = static_cast<std::uint32_t>(s.u) + columns * static_cast<std::uint32_t>(s.uStep);
        v = static_cast<std::uint32_t>(s.v) + columns * static_cast<std::uint32_t>(s.vStep);
    }
    const Vu out = ShadeLanes<M>(pc, dst, c, u, v, write);
    dst = (out & (Vu)write) | (dst & ~(Vu)write);
    depth = ((Vi)z & write) | (depth & ~write);
}

// Depths of the first kLanes columns, and their remainders; `inverseWidth` is 1 / s.width, which
// callers with many spans divide for in lanes. Column k carries
// floor((remainder + k * step remainder) / width), at most kLanes either way: the float
// quotient is within one of it, and one correction each way makes it exact.
LANES_FN void FirstDepths(std::int32_t z0, std::int32_t zRemainder, std::int32_t zStep,
                          std::int32_t zStepRemainder, std::int32_t width, float inverseWidth,
                          Vu& z, Vi& remainders) {
    const Vi k = (Vi)LaneNumbers();
    const Vi t = zRemainder + k * zStepRemainder;
    Vi carry = __builtin_convertvector(__builtin_convertvector(t, Vf) * inverseWidth, Vi);
    Vi r = t - carry * width;
    const Vi under = r < 0, over = r >= width;
    carry += under - over;
    r += (width & under) - (width & over);
    // Steps wrap modulo 2^32, as the scalar loop's additions do.
    z = static_cast<std::uint32_t>(z0) + (Vu)k * static_cast<std::uint32_t>(zStep) + (Vu)carry;
    remainders = r;
}

LANES_FN void FirstDepths(const SpanRun& s, float inverseWidth, Vu& z, Vi& remainders) {
    FirstDepths(s.z, s.zRemainder, s.zStep, s.zStepRemainder, s.width, inverseWidth, z, remainders);
}

template <FillMode M>
[[gnu::always_inline]] LANES_FN void LanePixels(const PolygonConstants& pc, const SpanRun& s,
                                                float inverseWidth) {
    // Lane k starts k columns on; each block of lanes then steps kLanes columns at once, the
    // depth by the quotient and remainder of kLanes times its difference.
    Vu z;
    Vi zr;
    FirstDepths(s, inverseWidth, z, zr);
    const Vu lanes = LaneNumbers();
    const Vi always = Vi{} - (pc.depthAlwaysPasses ? 1 : 0);

    std::uint8_t* px = s.colour;
    std::int32_t* dp = s.depth;
    std::int32_t done = 0;
    if (s.count >= kLanes) {
        const std::int32_t t = s.zStepRemainder * kLanes;
        std::int32_t rBlock = t % s.width;
        auto zBlock =
            static_cast<std::uint32_t>(s.zStep) * kLanes + static_cast<std::uint32_t>(t / s.width);
        if (rBlock < 0) {
            rBlock += s.width;
            --zBlock;
        }
        const Vi width = Vi{} + s.width;
        for (; s.count - done >= kLanes; done += kLanes, px += 4 * kLanes, dp += kLanes) {
            Vu dst;
            Vi depth;
            std::memcpy(&dst, px, sizeof dst);
            std::memcpy(&depth, dp, sizeof depth);
            const Vi write = ((Vi)z <= depth) | always;
            if (TESSERA_LANE_BITS(write) != 0) {
                WriteBlock<M>(pc, s, done, z, dst, depth, write);
                std::memcpy(px, &dst, sizeof dst);
                std::memcpy(dp, &depth, sizeof depth);
            }
            z += zBlock;
            zr += rBlock;
            const Vi carry = zr >= width;
            z -= (Vu)carry;
            zr -= carry & width;
        }
    }
    const std::int32_t left = s.count - done;
    if (left == 0) return;
    const Vi inSpan = (Vi)lanes < left;
    if (s.room - done >= kLanes) {
        // The whole block lies in the clip: read and written whole, the columns past the span
        // unchanged.
        Vu dst;
        Vi depth;
        std::memcpy(&dst, px, sizeof dst);
        std::memcpy(&depth, dp, sizeof depth);
        const Vi write = (((Vi)z <= depth) | always) & inSpan;
        if (TESSERA_LANE_BITS(write) == 0) return;
        WriteBlock<M>(pc, s, done, z, dst, depth, write);
        std::memcpy(px, &dst, sizeof dst);
        std::memcpy(dp, &depth, sizeof depth);
        return;
    }
    Vu dst{};
    Vi depth{};
    for (int k = 0; k < left; ++k) {
        std::uint32_t p;
        std::memcpy(&p, px + 4 * k, sizeof p);
        dst[k] = p;
        depth[k] = dp[k];
    }
    const Vi write = (((Vi)z <= depth) | always) & inSpan;
    if (TESSERA_LANE_BITS(write) == 0) return;
    WriteBlock<M>(pc, s, done, z, dst, depth, write);
    for (int k = 0; k < left; ++k) {
        const std::uint32_t p = dst[k];
        std::memcpy(px + 4 * k, &p, sizeof p);
        dp[k] = depth[k];
    }
}

// A span by itself, which divides for its own inverse width.
template <FillMode M>
[[gnu::always_inline]] LANES_FN void LanePixels(const PolygonConstants& pc, const SpanRun& s) {
    LanePixels<M>(pc, s, 1.0f / static_cast<float>(s.width));
}

template <FillMode M>
TESSERA_LANE_TARGET void LaneSpan(const PolygonConstants& pc, const SpanRun& s) {
    LanePixels<M>(pc, s);
}

} // namespace
