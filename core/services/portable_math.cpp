// Transcendental functions from IEEE double arithmetic alone, so every build gives the same bits.
//
// Each function reduces its argument exactly or in double-double arithmetic, evaluates a
// polynomial whose leading terms are also carried in double-double, and rounds once at the end;
// that keeps the error a little above half an ulp (0.75 ulp for subnormal results of Exp and
// Pow, which are rounded twice). The file must be compiled
// without contraction of a * b + c into fused multiply-adds: the exact products below rely on
// every operation being rounded on its own.
#include "core/services/portable_math.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace q5math {
namespace {

// An unevaluated sum hi + lo with |lo| at most half an ulp of hi: about 106 bits.
struct DD {
    double hi;
    double lo;
};

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// pi and pi/2 in double-double; pi/4 and 3 pi/4 rounded to double.
constexpr DD kPi = {0x1.921fb54442d18p+1, 0x1.1a62633145c07p-53};
constexpr DD kHalfPi = {0x1.921fb54442d18p+0, 0x1.1a62633145c07p-54};
constexpr double kQuarterPi = 0x1.921fb54442d18p-1;
constexpr double kThreeQuarterPi = 0x1.2d97c7f3321d2p+1;

// ---- exact building blocks -------------------------------------------------------------

DD TwoSum(double a, double b) {
    const double s = a + b;
    const double bb = s - a;
    return {s, (a - (s - bb)) + (b - bb)};
}

// Needs |a| >= |b| (or a == 0).
DD FastTwoSum(double a, double b) {
    const double s = a + b;
    return {s, b - (s - a)};
}

// Veltkamp's split into two parts of at most 26 bits, so that their products are exact.
DD Split(double a) {
    const double c = 134217729.0 * a; // 2^27 + 1
    const double hi = c - (c - a);
    return {hi, a - hi};
}

// Dekker's exact product; |a|, |b| below 2^996 and the product far from underflow.
DD TwoProd(double a, double b) {
    const double p = a * b;
    const DD x = Split(a), y = Split(b);
    return {p, ((x.hi * y.hi - p) + x.hi * y.lo + x.lo * y.hi) + x.lo * y.lo};
}

DD Neg(DD a) {
    return {-a.hi, -a.lo};
}

DD Add(DD a, DD b) {
    DD s = TwoSum(a.hi, b.hi);
    const DD t = TwoSum(a.lo, b.lo);
    s = TwoSum(s.hi, s.lo + t.hi);
    return TwoSum(s.hi, s.lo + t.lo);
}

DD Mul(DD a, DD b) {
    DD p = TwoProd(a.hi, b.hi);
    p.lo += a.hi * b.lo + a.lo * b.hi;
    return FastTwoSum(p.hi, p.lo);
}

DD Div(DD a, DD b) {
    const double q = a.hi / b.hi;
    const DD p = TwoProd(q, b.hi);
    const double rest = (((a.hi - p.hi) - p.lo) + a.lo) - q * b.lo;
    return FastTwoSum(q, rest / b.hi);
}

DD Sqrt(DD a) {
    // IEEE square root is correctly rounded on every platform; one Newton step adds the rest.
    const double h = std::sqrt(a.hi);
    const DD sq = TwoProd(h, h);
    return FastTwoSum(h, (((a.hi - sq.hi) - sq.lo) + a.lo) / (2.0 * h));
}

// Round to the nearest integer, ties to even; |v| < 2^51.
double RoundToInteger(double v) {
    constexpr double kShifter = 0x1.8p52;
    return (v + kShifter) - kShifter;
}

// 2^k for -1022 <= k <= 1023.
double Pow2(int k) {
    return std::bit_cast<double>(static_cast<std::uint64_t>(k + 1023) << 52);
}

// v * 2^k for v near 1 and -1086 <= k <= 1025. Results below 2^-1022 are rounded a second
// time, to the subnormal grid, which leaves them within 0.75 ulp.
double ScaleBy2(double v, int k) {
    if (k > 1023) return v * Pow2(1023) * Pow2(k - 1023);
    if (k < -1022) return v * Pow2(k + 64) * Pow2(-64);
    return v * Pow2(k);
}

// floor(log2 |a|) for finite non-zero a, subnormals included.
int Exponent(double a) {
    const auto bits = std::bit_cast<std::uint64_t>(a);
    const int biased = static_cast<int>((bits >> 52) & 0x7FF);
    if (biased != 0) return biased - 1023;
    return Exponent(a * 0x1p64) - 64;
}

// c[0] + z (c[1] + z (c[2] + ...)).
template <std::size_t N> double Horner(double z, const std::array<double, N>& c) {
    double p = c[N - 1];
    for (std::size_t i = N - 1; i-- > 0;) p = c[i] + z * p;
    return p;
}

// 1/n!, each rounded once: n! itself is exact in a double up to 22!.
constexpr std::array<double, 21> kInverseFactorial = [] {
    std::array<double, 21> t{};
    double f = 1.0;
    for (int n = 0; n < 21; ++n) {
        if (n > 0) f *= n;
        t[n] = 1.0 / f;
    }
    return t;
}();

// ---- sine and cosine -------------------------------------------------------------------

constexpr DD kSixth = {0x1.5555555555555p-3, 0x1.5555555555555p-57};
constexpr DD kTwentyFourth = {0x1.5555555555555p-5, 0x1.5555555555555p-59};

// (-1)^j / (2j + 5)!: the sine's Taylor series from r^5 on, in powers of r^2.
constexpr auto kSinFromFifth = [] {
    std::array<double, 8> c{};
    for (int j = 0; j < 8; ++j) c[j] = (j % 2 ? -1 : 1) * kInverseFactorial[2 * j + 5];
    return c;
}();

// -(-1)^j / (2j + 6)!: the cosine's from r^6 on.
constexpr auto kCosFromSixth = [] {
    std::array<double, 8> c{};
    for (int j = 0; j < 8; ++j) c[j] = (j % 2 ? 1 : -1) * kInverseFactorial[2 * j + 6];
    return c;
}();

// sin r for |r.hi| <= pi/4 (a little more is fine), to about 2^-61 relative. Taylor terms to
// r^19; r - r^3/6 is carried in double-double, the rest is far below the final rounding.
DD SinKernel(DD r) {
    const double x = r.hi;
    const DD x2 = TwoProd(x, x);
    DD x3 = TwoProd(x2.hi, x);
    x3.lo += x2.lo * x;
    const DD third = Mul(x3, Neg(kSixth));
    const double z = x2.hi;
    const double fifthOn = x3.hi * z * Horner(z, kSinFromFifth);
    const DD s = TwoSum(x, third.hi);
    // The low part of r moves the result by r.lo * cos(r).
    const double lo = s.lo + third.lo + fifthOn + (r.lo - 0.5 * z * r.lo);
    return FastTwoSum(s.hi, lo);
}

// cos r for |r.hi| <= pi/4, to about 2^-62: 1 - r^2/2 + r^4/24 in double-double, Taylor
// terms to r^20 in double.
DD CosKernel(DD r) {
    const double x = r.hi;
    DD x2 = TwoProd(x, x);
    x2.lo += 2.0 * x * r.lo;
    DD x4 = TwoProd(x2.hi, x2.hi);
    x4.lo += 2.0 * x2.hi * x2.lo;
    const DD fourth = Mul(x4, kTwentyFourth);
    const double z = x2.hi;
    const double sixthOn = x4.hi * z * Horner(z, kCosFromSixth);
    const DD a = TwoSum(1.0, -0.5 * x2.hi);
    const DD b = TwoSum(a.hi, fourth.hi);
    const double lo = a.lo + b.lo - 0.5 * x2.lo + fourth.lo + sixthOn;
    return FastTwoSum(b.hi, lo);
}

// x = (4k + quadrant) * pi/2 + r, |r| <= pi/4.
struct Reduced {
    DD r;
    int quadrant;
};

// Cody and Waite: pi/2 in four pieces, the first three short enough that n times each is exact
// for n < 2^20. The pieces reach 2^-152; no double below 2^19 lies nearer than 2^-61 to a
// multiple of pi/2, so r keeps more than 80 good bits.
Reduced ReduceMedium(double ax) {
    constexpr double kTwoOverPi = 0x1.45f306dc9c883p-1;
    constexpr double kPiece1 = 0x1.921fb54400000p+0;
    constexpr double kPiece2 = 0x1.0b4611a600000p-34;
    constexpr double kPiece3 = 0x1.3198a2e000000p-69;
    constexpr double kPiece4 = 0x1.b839a252049c1p-104;
    const double n = RoundToInteger(ax * kTwoOverPi);
    const double t = ax - n * kPiece1; // exact: both within a factor 2 of each other
    const DD a = TwoSum(t, -n * kPiece2);
    const DD b = TwoSum(a.hi, -n * kPiece3);
    const DD r = TwoSum(b.hi, (a.lo + b.lo) - n * kPiece4);
    return {r, static_cast<int>(static_cast<std::int64_t>(n) & 3)};
}

// Bits of 2/pi after the binary point, 32 to a word; enough for the largest double.
constexpr std::uint32_t kTwoOverPiBits[] = {
    0xA2F9836E, 0x4E441529, 0xFC2757D1, 0xF534DDC0, 0xDB629599, 0x3C439041, 0xFE5163AB, 0xDEBBC561,
    0xB7246E3A, 0x424DD2E0, 0x06492EEA, 0x09D1921C, 0xFE1DEB1C, 0xB129A73E, 0xE88235F5, 0x2EBB4484,
    0xE99C7026, 0xB45F7E41, 0x3991D639, 0x835339F4, 0x9C845F8B, 0xBDF9283B, 0x1FF897FF, 0xDE05980F,
    0xEF2F118B, 0x5A0A6D1F, 0x6D367ECF, 0x27CB09B7, 0x4F463F66, 0x9E5FEA2D, 0x7527BAC7, 0xEBE5F17B,
    0x3D0739F7, 0x8A5292EA, 0x6BFB5FB1, 0x1F8D5D08, 0x56033046, 0xFC7B6BAB};

// Payne and Hanek: x * 2/pi in integer arithmetic over a window of 2/pi wide enough that the
// bits left out change the fraction by less than 2^-138. Exact for every finite double.
Reduced ReduceLarge(double ax) {
    constexpr int kWindow = 7;
    const auto bits = std::bit_cast<std::uint64_t>(ax);
    const int e = static_cast<int>(bits >> 52) - 1075; // ax = m * 2^e
    const std::uint64_t m = (bits & ((std::uint64_t{1} << 52) - 1)) | (std::uint64_t{1} << 52);
    // Words before `first` only add multiples of 4 to x * 2/pi.
    const int first = e >= 2 ? (e - 2) / 32 : 0;
    static_assert(sizeof kTwoOverPiBits / sizeof kTwoOverPiBits[0] >= (971 - 2) / 32 + kWindow);

    // Column sums of m times the window, least significant word first.
    constexpr int kWords = kWindow + 2;
    std::uint64_t col[kWords] = {};
    const std::uint64_t mLo = m & 0xFFFFFFFF, mHi = m >> 32;
    for (int i = 0; i < kWindow; ++i) {
        const std::uint64_t w = kTwoOverPiBits[first + kWindow - 1 - i];
        const std::uint64_t a = w * mLo, b = w * mHi;
        col[i] += a & 0xFFFFFFFF;
        col[i + 1] += (a >> 32) + (b & 0xFFFFFFFF);
        col[i + 2] += b >> 32;
    }
    std::uint32_t word[kWords];
    std::uint64_t carry = 0;
    for (int i = 0; i < kWords; ++i) {
        const std::uint64_t v = col[i] + carry;
        word[i] = static_cast<std::uint32_t>(v);
        carry = v >> 32;
    }
    // The product carries `point` bits after the binary point.
    const int point = 32 * (first + kWindow) - e;
    auto bit = [&](int i) { return (word[i / 32] >> (i % 32)) & 1u; };
    int quadrant = static_cast<int>(bit(point) | (bit(point + 1) << 1));

    // Keep only the fraction; past one half, round up and take the distance from above.
    const int top = (point - 1) / 32;
    for (int i = top + 1; i < kWords; ++i) word[i] = 0;
    const int topBits = point - 32 * top;
    if (topBits < 32) word[top] &= (std::uint32_t{1} << topBits) - 1;
    const bool negative = bit(point - 1) != 0;
    if (negative) {
        ++quadrant;
        std::uint64_t c = 1;
        for (int i = 0; i <= top; ++i) {
            const std::uint64_t v = static_cast<std::uint64_t>(~word[i]) + c;
            word[i] = static_cast<std::uint32_t>(v);
            c = v >> 32;
        }
        if (topBits < 32) word[top] &= (std::uint32_t{1} << topBits) - 1;
    }
    DD f = {0.0, 0.0};
    for (int i = 0; i <= top; ++i) f = Add(f, {word[i] * Pow2(32 * i - point), 0.0});
    DD r = Mul(f, kHalfPi);
    if (negative) r = Neg(r);
    return {r, quadrant & 3};
}

Reduced Reduce(double ax) {
    if (ax <= kQuarterPi) return {{ax, 0.0}, 0};
    if (ax < 0x1p19) return ReduceMedium(ax);
    return ReduceLarge(ax);
}

// ---- arc tangent -----------------------------------------------------------------------

// atan(k/8), k = 0..8.
constexpr DD kAtanEighths[] = {
    {0.0, 0.0},
    {0x1.fd5ba9aac2f6ep-4, -0x1.cd37686760c17p-59},
    {0x1.f5b75f92c80ddp-3, 0x1.8ab6e3cf7afbdp-57},
    {0x1.6f61941e4def1p-2, -0x1.c63aae6f6e918p-56},
    {0x1.dac670561bb4fp-2, 0x1.a2b7f222f65e2p-56},
    {0x1.1e00babdefeb4p-1, -0x1.928df287a668fp-58},
    {0x1.4978fa3269ee1p-1, 0x1.2419a87f2a458p-56},
    {0x1.700a7c5784634p-1, -0x1.8c34d25aadef6p-56},
    {0x1.921fb54442d18p-1, 0x1.1a62633145c07p-55},
};

// -(-1)^j / (2j + 3): the arc tangent's Taylor series from t^3 on, in powers of t^2.
constexpr auto kAtanFromThird = [] {
    std::array<double, 8> c{};
    for (int j = 0; j < 8; ++j) c[j] = (j % 2 ? 1.0 : -1.0) / (2 * j + 3);
    return c;
}();

// atan y for 0 <= y <= 1: atan(c) + atan((y - c) / (1 + c y)) with c the nearest eighth, which
// leaves |t| <= 1/16 for a Taylor series to t^17.
DD AtanKernel(DD y) {
    const int k = static_cast<int>(y.hi * 8.0 + 0.5);
    DD t = y;
    if (k > 0) {
        const double c = k * 0.125;
        const DD num = TwoSum(y.hi - c, y.lo); // y.hi - c is exact: y.hi lies in [c/2, 2c]
        const DD cy = TwoProd(c, y.hi);
        DD den = TwoSum(1.0, cy.hi);
        den.lo += cy.lo + c * y.lo;
        t = Div(num, den);
    }
    const double z = t.hi * t.hi;
    const DD s = TwoSum(kAtanEighths[k].hi, t.hi);
    const double lo =
        s.lo + kAtanEighths[k].lo + (t.lo - z * t.lo) + t.hi * z * Horner(z, kAtanFromThird);
    return FastTwoSum(s.hi, lo);
}

// sqrt(1 - a^2) for 0 <= a < 1, with 1 - a exact where it cancels.
DD SqrtOneMinusSquare(double a) {
    DD w;
    if (a >= 0.5) {
        w = Mul({1.0 - a, 0.0}, TwoSum(1.0, a));
    } else {
        const DD sq = TwoProd(a, a);
        w = TwoSum(1.0, -sq.hi);
        w = FastTwoSum(w.hi, w.lo - sq.lo);
    }
    return Sqrt(w);
}

// ---- exponential and logarithm ---------------------------------------------------------

// ln 2 in a first piece short enough that k times it is exact for |k| < 2^13, and the rest.
constexpr double kLn2Hi = 0x1.62e42fefa2000p-1;
constexpr double kLn2Lo = 0x1.9ef35793c7673p-41;

// e^x = v * 2^k with v in [0.7, 1.42].
struct Scaled {
    double v;
    int k;
};

// 1 / (j + 4)!: the exponential's Taylor series from r^4 on.
constexpr auto kExpFromFourth = [] {
    std::array<double, 13> c{};
    for (int j = 0; j < 13; ++j) c[j] = kInverseFactorial[j + 4];
    return c;
}();

// e^x for x.hi in [-746, 710]: k = round(x / ln 2), r = x - k ln 2 in double-double, then
// 1 + r + r^2/2 + r^3/6 in double-double and Taylor terms to r^16 in double. |r| <= 0.35,
// so the result before its last rounding is good to about 2^-61.
Scaled ExpKernel(DD x) {
    constexpr double kInvLn2 = 0x1.71547652b82fep+0;
    const double k = RoundToInteger(x.hi * kInvLn2);
    const DD r0 = TwoSum(x.hi, -k * kLn2Hi);
    const DD r1 = TwoSum(r0.hi, -k * kLn2Lo);
    const DD r = TwoSum(r1.hi, r0.lo + r1.lo + x.lo);
    const double h = r.hi;
    DD sq = TwoProd(h, h);
    sq.lo += 2.0 * h * r.lo;
    const DD third = Mul(Mul(sq, r), kSixth);
    const DD a = TwoSum(1.0, h);
    const DD b = TwoSum(a.hi, 0.5 * sq.hi);
    const DD c = TwoSum(b.hi, third.hi);
    const double lo = a.lo + b.lo + c.lo + r.lo + 0.5 * sq.lo + third.lo +
                      sq.hi * sq.hi * Horner(h, kExpFromFourth);
    return {c.hi + lo, static_cast<int>(k)};
}

// 1 / (2j + 9): 2 atanh f / (2f) from f^8 on, in powers of z = f^2.
constexpr auto kAtanhFromNinth = [] {
    std::array<double, 11> c{};
    for (int j = 0; j < 11; ++j) c[j] = 1.0 / (2 * j + 9);
    return c;
}();

constexpr DD kThird = {0x1.5555555555555p-2, 0x1.5555555555555p-56};
constexpr DD kFifth = {0x1.999999999999ap-3, -0x1.999999999999ap-57};
constexpr DD kSeventh = {0x1.2492492492492p-3, 0x1.2492492492492p-57};

// ln x for finite x > 0, to about 2^-90 relative, as pow needs: x = 2^k m with m in
// [sqrt(1/2), sqrt 2], ln m = 2 atanh f with f = (m - 1) / (m + 1), |f| <= 0.172, and the
// series in z = f^2 to z^14, its first four terms in double-double.
DD LogKernel(double x) {
    int k = 0;
    if (x < 0x1p-1022) {
        x *= 0x1p54;
        k = -54;
    }
    const auto bits = std::bit_cast<std::uint64_t>(x);
    k += static_cast<int>(bits >> 52) - 1023;
    double m = std::bit_cast<double>((bits & ((std::uint64_t{1} << 52) - 1)) |
                                     (std::uint64_t{1023} << 52));
    if (m > 0x1.6a09e667f3bcdp+0) { // sqrt 2
        m *= 0.5;
        ++k;
    }
    const DD f = Div({m - 1.0, 0.0}, TwoSum(m, 1.0));
    DD z = TwoProd(f.hi, f.hi);
    z.lo += 2.0 * f.hi * f.lo;
    const double zz = z.hi;
    DD s = Add(kSeventh, {zz * Horner(zz, kAtanhFromNinth), 0.0});
    s = Add(kFifth, Mul(s, z));
    s = Add(kThird, Mul(s, z));
    s = Add({1.0, 0.0}, Mul(s, z));
    const DD lnM = Mul(s, {2.0 * f.hi, 2.0 * f.lo});
    const double kd = k;
    const DD a = TwoSum(kd * kLn2Hi, lnM.hi);
    return TwoSum(a.hi, a.lo + lnM.lo + kd * kLn2Lo);
}

} // namespace

// ---- the functions -----------------------------------------------------------------------

double Sin(double x) {
    if (!std::isfinite(x)) return x - x;
    const double ax = std::fabs(x);
    if (ax < 0x1p-27) return x; // x^3/6 is below a quarter ulp
    const Reduced red = Reduce(ax);
    double v = ((red.quadrant & 1) ? CosKernel(red.r) : SinKernel(red.r)).hi;
    if (red.quadrant & 2) v = -v;
    return x < 0 ? -v : v;
}

double Cos(double x) {
    if (!std::isfinite(x)) return x - x;
    const double ax = std::fabs(x);
    if (ax < 0x1p-27) return 1.0;
    const Reduced red = Reduce(ax);
    const double v = ((red.quadrant & 1) ? SinKernel(red.r) : CosKernel(red.r)).hi;
    return ((red.quadrant + 1) & 2) ? -v : v;
}

double Tan(double x) {
    if (!std::isfinite(x)) return x - x;
    const double ax = std::fabs(x);
    if (ax < 0x1p-27) return x;
    const Reduced red = Reduce(ax);
    const DD s = SinKernel(red.r), c = CosKernel(red.r);
    const double v = (red.quadrant & 1) ? -Div(c, s).hi : Div(s, c).hi;
    return x < 0 ? -v : v;
}

double Atan(double x) {
    if (std::isnan(x)) return x;
    const double ax = std::fabs(x);
    if (ax < 0x1p-27) return x;
    if (ax > 0x1p60) return std::copysign(kHalfPi.hi, x); // 1/x is far below an ulp of pi/2
    const DD v = ax <= 1.0 ? AtanKernel({ax, 0.0})
                           : Add(kHalfPi, Neg(AtanKernel(Div({1.0, 0.0}, {ax, 0.0}))));
    return x < 0 ? -v.hi : v.hi;
}

double Atan2(double y, double x) {
    if (std::isnan(x) || std::isnan(y)) return x + y;
    if (y == 0) return std::signbit(x) ? std::copysign(kPi.hi, y) : y;
    if (x == 0) return std::copysign(kHalfPi.hi, y);
    if (std::isinf(x)) {
        if (std::isinf(y)) return std::copysign(x > 0 ? kQuarterPi : kThreeQuarterPi, y);
        return x > 0 ? std::copysign(0.0, y) : std::copysign(kPi.hi, y);
    }
    if (std::isinf(y)) return std::copysign(kHalfPi.hi, y);

    const double ay = std::fabs(y), ax = std::fabs(x);
    const int ey = Exponent(ay), ex = Exponent(ax);
    DD angle; // atan(ay / ax)
    if (ey - ex > 60) {
        angle = Add(kHalfPi, {-(ax / ay), 0.0});
    } else if (ex - ey > 60) {
        angle = {ay / ax, 0.0}; // atan q = q (1 - q^2/3): the difference is far below an ulp
    } else {
        // Bring the larger near 1 so that the exact products cannot overflow or underflow.
        const int e = ey > ex ? ey : ex;
        const double s1 = Pow2(-e / 2), s2 = Pow2(-e - (-e / 2));
        const double sy = ay * s1 * s2, sx = ax * s1 * s2;
        angle = sy <= sx ? AtanKernel(Div({sy, 0.0}, {sx, 0.0}))
                         : Add(kHalfPi, Neg(AtanKernel(Div({sx, 0.0}, {sy, 0.0}))));
    }
    const DD v = x > 0 ? angle : Add(kPi, Neg(angle));
    return y < 0 ? -v.hi : v.hi;
}

double Asin(double x) {
    if (std::isnan(x)) return x;
    const double ax = std::fabs(x);
    if (ax > 1.0) return kNaN;
    if (ax < 0x1p-27) return x;
    if (ax == 1.0) return std::copysign(kHalfPi.hi, x);
    // asin a = atan(a / sqrt(1 - a^2)), taken from pi/2 where the ratio passes 1.
    const DD s = SqrtOneMinusSquare(ax);
    const DD v = ax <= s.hi ? AtanKernel(Div({ax, 0.0}, s))
                            : Add(kHalfPi, Neg(AtanKernel(Div(s, {ax, 0.0}))));
    return x < 0 ? -v.hi : v.hi;
}

double Acos(double x) {
    if (std::isnan(x)) return x;
    const double ax = std::fabs(x);
    if (ax > 1.0) return kNaN;
    if (x == 1.0) return 0.0;
    if (x == -1.0) return kPi.hi;
    // Near |x| = 1 the angle (or pi minus it) is atan(sqrt(1 - x^2) / |x|), small and exact
    // to the last bit; elsewhere pi/2 - asin x.
    const DD s = SqrtOneMinusSquare(ax);
    DD v;
    if (ax <= s.hi) {
        const DD a = AtanKernel(Div({ax, 0.0}, s));
        v = Add(kHalfPi, x < 0 ? a : Neg(a));
    } else {
        const DD a = AtanKernel(Div(s, {ax, 0.0}));
        v = x > 0 ? a : Add(kPi, Neg(a));
    }
    return v.hi;
}

double Exp(double x) {
    if (std::isnan(x)) return x;
    if (x > 710.0) return kInf;
    if (x < -746.0) return 0.0;
    if (std::fabs(x) < 0x1p-54) return 1.0 + x;
    const Scaled e = ExpKernel({x, 0.0});
    return ScaleBy2(e.v, e.k);
}

double Log(double x) {
    if (std::isnan(x)) return x;
    if (x < 0) return kNaN;
    if (x == 0) return -kInf;
    if (std::isinf(x)) return x;
    return LogKernel(x).hi;
}

// |x|^y = e^(y ln |x|) with the logarithm and the product in double-double: the exponent can
// reach 745, so it needs about 70 good bits for the result to keep 63.
double Pow(double x, double y) {
    if (y == 0 || x == 1.0) return 1.0;
    if (std::isnan(x) || std::isnan(y)) return x + y;
    const double ax = std::fabs(x);
    if (std::isinf(y)) {
        if (ax == 1.0) return 1.0;
        return (ax < 1.0) == (y < 0) ? kInf : 0.0;
    }
    const bool yInteger = std::floor(y) == y;
    const bool yOdd = yInteger && std::fabs(y) < 0x1p53 && (static_cast<std::int64_t>(y) & 1) != 0;
    if (x == 0) {
        if (y < 0) return yOdd ? std::copysign(kInf, x) : kInf;
        return yOdd ? x : 0.0;
    }
    if (std::isinf(x)) {
        if (x > 0) return y < 0 ? 0.0 : kInf;
        if (y < 0) return yOdd ? -0.0 : 0.0;
        return yOdd ? -kInf : kInf;
    }
    if (x < 0 && !yInteger) return kNaN;
    const double sign = x < 0 && yOdd ? -1.0 : 1.0;

    const DD l = LogKernel(ax);
    // |ln ax| >= 2^-53 for ax != 1, so beyond 2^64 the exponent is past any finite result.
    if (std::fabs(y) > 0x1p64) return sign * ((l.hi > 0) == (y > 0) ? kInf : 0.0);
    DD p = TwoProd(y, l.hi);
    p = FastTwoSum(p.hi, p.lo + y * l.lo);
    if (p.hi > 710.0) return sign * kInf;
    if (p.hi < -746.0) return sign * 0.0;
    const Scaled e = ExpKernel(p);
    return sign * ScaleBy2(e.v, e.k);
}

// The float forms round the double result once more: within 1 ulp of float.
float Sin(float x) {
    return static_cast<float>(Sin(static_cast<double>(x)));
}
float Cos(float x) {
    return static_cast<float>(Cos(static_cast<double>(x)));
}
float Tan(float x) {
    return static_cast<float>(Tan(static_cast<double>(x)));
}
float Asin(float x) {
    return static_cast<float>(Asin(static_cast<double>(x)));
}
float Acos(float x) {
    return static_cast<float>(Acos(static_cast<double>(x)));
}
float Atan(float x) {
    return static_cast<float>(Atan(static_cast<double>(x)));
}
float Atan2(float y, float x) {
    return static_cast<float>(Atan2(static_cast<double>(y), static_cast<double>(x)));
}
float Exp(float x) {
    return static_cast<float>(Exp(static_cast<double>(x)));
}
float Log(float x) {
    return static_cast<float>(Log(static_cast<double>(x)));
}
float Pow(float x, float y) {
    return static_cast<float>(Pow(static_cast<double>(x), static_cast<double>(y)));
}

} // namespace q5math
