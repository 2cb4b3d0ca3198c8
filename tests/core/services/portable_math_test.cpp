// Portable transcendental functions: error against a 64-bit reference, the special values of
// the C library's rules, and the same bits on every build.
#include "core/services/portable_math.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iomanip>
#include <iostream>
#include <limits>
#include <map>
#include <numbers>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/cross_build.h"

namespace {

using LD = long double;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kPi = std::numbers::pi;

// The reference is the C library's long double function: with a 64-bit significand it is
// 2^11 times finer than a double, fine enough to tell 1 ulp from 0.5.
const char* NoReference() {
#if defined(_WIN32)
    return "the MinGW runtime's long double functions cannot judge a double's last bit (its "
           "sine misses by dozens of ulps near multiples of pi, its arc cosine by 10^5 near 1); "
           "the Linux build measures the error, and PortableMathBits.SameOnEveryBuild shows "
           "that this build gives the same bits";
#else
    if (std::numeric_limits<LD>::digits < 64) return "long double is no wider than double here";
    return nullptr;
#endif
}

// Fixed arguments, the same on every platform.
class Draw : public SplitMix64 {
public:
    using SplitMix64::SplitMix64;

    // Magnitude spread evenly over the binades 2^lo .. 2^hi, either sign.
    double Binades(int lo, int hi, bool negativeToo = true) {
        // One draw per statement: the order of a call's arguments is the compiler's choice.
        const int e = Integer(lo, hi - 1);
        const double v = std::ldexp(1.0 + Unit(), e);
        return negativeToo && (Bits() & 1) ? -v : v;
    }
};

// Error of `got` in units of the last place of a double at the exact value.
double UlpError(double got, LD exact) {
    if (std::isnan(exact)) return std::isnan(got) ? 0.0 : kInf;
    int e = 0;
    std::frexp(exact, &e);
    const LD ulp = std::ldexp(1.0L, std::max(e - 53, -1074));
    return static_cast<double>(std::fabs(static_cast<LD>(got) - exact) / ulp);
}

// The largest error of one function over its sample, printed into the test log.
class Worst {
public:
    explicit Worst(std::string name) : name_(std::move(name)) {}

    void Add(double error, double x, double y = 0) {
        ++count_;
        if (error <= ulps_) return;
        ulps_ = error;
        x_ = x;
        y_ = y;
    }
    void CheckWithinOneUlp() const {
        std::ostringstream s;
        s << std::setprecision(4) << ulps_ << " ulp at " << std::hexfloat << x_;
        if (y_ != 0) s << ", " << y_;
        std::cout << "worst error of " << name_ << " over " << count_ << " arguments: " << s.str()
                  << "\n";
        testing::Test::RecordProperty(name_ + "_worst_ulp", s.str());
        EXPECT_LE(ulps_, 1.0) << name_ << ": " << s.str();
    }

private:
    std::string name_;
    double ulps_ = 0, x_ = 0, y_ = 0;
    long count_ = 0;
};

using Function = double (*)(double);
using Exact = LD (*)(LD);

void Measure(Worst& w, const std::vector<double>& xs, Function f, Exact exact) {
    for (double x : xs) w.Add(UlpError(f(x), exact(x)), x);
}

// Doubles next to the multiples of pi/2, where the reduced argument loses most of its bits,
// the double nearest a multiple of pi/2 of them all (6381956970095103 * 2^797), and the ends
// of the ranges of each way of reducing.
std::vector<double> NearQuarterTurns(Draw& d, int count) {
    std::vector<double> xs = {0x1.6ac5b262ca1ffp+849,
                              -0x1.6ac5b262ca1ffp+849,
                              DBL_MAX,
                              0x1p19,
                              std::nextafter(0x1p19, 0.0),
                              0x1p-27,
                              0x1p-1074};
    constexpr LD kHalfPi = 1.5707963267948966192313216916397514L;
    for (int i = 0; i < count; ++i) {
        const double k = d.Integer(1, 1 << 24);
        const double x = static_cast<double>(k * kHalfPi);
        for (double y : {std::nextafter(x, 0.0), x, std::nextafter(x, kInf)}) xs.push_back(y);
    }
    return xs;
}

std::vector<double> Sample(Draw& d, int count, const std::function<double(Draw&)>& one) {
    std::vector<double> xs(count);
    for (double& x : xs) x = one(d);
    return xs;
}

} // namespace

// Sine, cosine and tangent: small and huge arguments, and those next to multiples of pi/2,
// where a reduction with too few bits of pi shows at once.
TEST(PortableMathAccuracy, SineCosineAndTangentAreWithinOneUlp) {
    if (const char* why = NoReference()) GTEST_SKIP() << why;
    Draw d(1);
    std::vector<double> xs = Sample(d, 60000, [](Draw& g) { return g.Uniform(-8, 8); });
    const std::vector<double> large =
        Sample(d, 60000, [](Draw& g) { return g.Binades(-28, 1024); });
    const std::vector<double> near = NearQuarterTurns(d, 20000);
    xs.insert(xs.end(), large.begin(), large.end());
    xs.insert(xs.end(), near.begin(), near.end());
    Worst sin("sin"), cos("cos"), tan("tan");
    Measure(sin, xs, q5math::Sin, [](LD x) { return std::sin(x); });
    Measure(cos, xs, q5math::Cos, [](LD x) { return std::cos(x); });
    Measure(tan, xs, q5math::Tan, [](LD x) { return std::tan(x); });
    sin.CheckWithinOneUlp();
    cos.CheckWithinOneUlp();
    tan.CheckWithinOneUlp();
}

// The inverse functions near their awkward points: |x| near 1 for arc sine and cosine, the
// ends of each interval of the arc tangent's table, and arc tangent quotients that overflow or
// underflow.
TEST(PortableMathAccuracy, InverseFunctionsAreWithinOneUlp) {
    if (const char* why = NoReference()) GTEST_SKIP() << why;
    Draw d(2);
    std::vector<double> unit = Sample(d, 50000, [](Draw& g) { return g.Uniform(-1, 1); });
    const std::vector<double> nearOne = Sample(d, 50000, [](Draw& g) {
        const double v = 1.0 - g.Binades(-53, -1, false);
        return g.Bits() & 1 ? -v : v;
    });
    unit.insert(unit.end(), nearOne.begin(), nearOne.end());
    unit.push_back(0x1p-30);
    Worst asin("asin"), acos("acos"), atan("atan"), atan2("atan2");
    Measure(asin, unit, q5math::Asin, [](LD x) { return std::asin(x); });
    Measure(acos, unit, q5math::Acos, [](LD x) { return std::acos(x); });

    std::vector<double> xs = Sample(d, 50000, [](Draw& g) { return g.Uniform(-4, 4); });
    const std::vector<double> wide = Sample(d, 50000, [](Draw& g) { return g.Binades(-30, 70); });
    const std::vector<double> edges = Sample(d, 20000, [](Draw& g) {
        const double eighth = g.Integer(1, 8) / 8.0;
        return eighth + g.Uniform(-1, 1) * 0x1.0000001p-4;
    });
    for (const auto* part : {&wide, &edges}) xs.insert(xs.end(), part->begin(), part->end());
    Measure(atan, xs, q5math::Atan, [](LD x) { return std::atan(x); });

    for (int i = 0; i < 100000; ++i) {
        // Every fifth pair shares its binade; the others lie up to 2^90 apart.
        const double y = d.Binades(-90, 90);
        const double x = i % 5 == 0 ? d.Binades(-1, 1) * std::fabs(y) : d.Binades(-90, 90);
        atan2.Add(UlpError(q5math::Atan2(y, x), std::atan2(static_cast<LD>(y), x)), y, x);
    }
    asin.CheckWithinOneUlp();
    acos.CheckWithinOneUlp();
    atan.CheckWithinOneUlp();
    atan2.CheckWithinOneUlp();
}

// Exponential and logarithm over their whole range, subnormals included, and the power with
// exponents y ln x up to 700, where the logarithm needs about 70 good bits.
TEST(PortableMathAccuracy, ExponentialLogarithmAndPowerAreWithinOneUlp) {
    if (const char* why = NoReference()) GTEST_SKIP() << why;
    Draw d(3);
    Worst exp("exp"), log("log"), pow("pow");
    std::vector<double> xs = Sample(d, 60000, [](Draw& g) { return g.Uniform(-745.1, 709.78); });
    const std::vector<double> small = Sample(d, 40000, [](Draw& g) { return g.Binades(-60, 1); });
    xs.insert(xs.end(), small.begin(), small.end());
    Measure(exp, xs, q5math::Exp, [](LD x) { return std::exp(x); });

    xs = Sample(d, 60000, [](Draw& g) { return g.Binades(-1074, 1024, false); });
    const std::vector<double> nearOne =
        Sample(d, 40000, [](Draw& g) { return 1.0 + g.Binades(-52, -4); });
    xs.insert(xs.end(), nearOne.begin(), nearOne.end());
    Measure(log, xs, q5math::Log, [](LD x) { return std::log(x); });

    auto measurePow = [&](double x, double y) {
        const LD exact = std::pow(static_cast<LD>(x), static_cast<LD>(y));
        if (std::fabs(exact) > DBL_MAX) return;
        pow.Add(UlpError(q5math::Pow(x, y), exact), x, y);
    };
    for (int i = 0; i < 60000; ++i) {
        const double x = d.Binades(-30, 30, false);
        if (x == 1.0) continue;
        measurePow(x, d.Uniform(-1, 1) * 700 / std::fabs(std::log(x)));
    }
    for (int i = 0; i < 30000; ++i) {
        // Bases next to 1 with exponents large enough to reach the ends of the range.
        const double x = 1.0 + d.Binades(-52, -20);
        measurePow(x, d.Uniform(-1, 1) * 700 / std::fabs(std::log(x)));
    }
    for (int i = 0; i < 10000; ++i) {
        const double x = -d.Uniform(0.1, 10);
        measurePow(x, d.Integer(-300, 300));
    }
    exp.CheckWithinOneUlp();
    log.CheckWithinOneUlp();
    pow.CheckWithinOneUlp();
}

TEST(PortableMathSpecials, NaNInAndInfinitiesOut) {
    for (Function f : {Function{q5math::Sin}, q5math::Cos, q5math::Tan, q5math::Asin, q5math::Acos,
                       q5math::Atan, q5math::Exp, q5math::Log})
        EXPECT_TRUE(std::isnan(f(kNaN)));
    EXPECT_TRUE(std::isnan(q5math::Atan2(kNaN, 1)));
    EXPECT_TRUE(std::isnan(q5math::Atan2(1, kNaN)));
    for (double inf : {kInf, -kInf}) {
        EXPECT_TRUE(std::isnan(q5math::Sin(inf)));
        EXPECT_TRUE(std::isnan(q5math::Cos(inf)));
        EXPECT_TRUE(std::isnan(q5math::Tan(inf)));
    }
    EXPECT_EQ(q5math::Atan(kInf), kPi / 2);
    EXPECT_EQ(q5math::Atan(-kInf), -kPi / 2);
    EXPECT_EQ(q5math::Exp(kInf), kInf);
    EXPECT_EQ(q5math::Exp(-kInf), 0.0);
    EXPECT_EQ(q5math::Log(kInf), kInf);
    // The ends of the exponential's range: ln DBL_MAX = 709.78271289338399673 lies between
    // these two doubles, and ln 2^-1075 = -745.13321910194110842 (half the smallest subnormal,
    // where results start rounding to 0) between the other two.
    EXPECT_TRUE(std::isfinite(q5math::Exp(0x1.62e42fefa39efp+9)));
    EXPECT_EQ(q5math::Exp(0x1.62e42fefa39f0p+9), kInf);
    EXPECT_EQ(q5math::Exp(-745.2), 0.0);
    EXPECT_EQ(q5math::Exp(-745.1), std::numeric_limits<double>::denorm_min());
}

TEST(PortableMathSpecials, SignedZerosSurvive) {
    for (Function f : {Function{q5math::Sin}, q5math::Tan, q5math::Asin, q5math::Atan}) {
        EXPECT_TRUE(f(-0.0) == 0 && std::signbit(f(-0.0)));
        EXPECT_TRUE(f(0.0) == 0 && !std::signbit(f(0.0)));
    }
    EXPECT_EQ(q5math::Cos(-0.0), 1.0);
    EXPECT_EQ(q5math::Exp(-0.0), 1.0);
    EXPECT_FALSE(std::signbit(q5math::Log(1.0)));
    EXPECT_FALSE(std::signbit(q5math::Acos(1.0)));
    EXPECT_EQ(q5math::Acos(-1.0), kPi);
    EXPECT_EQ(q5math::Acos(0.0), kPi / 2);
}

TEST(PortableMathSpecials, OutsideTheDomainIsNaN) {
    const double above = std::nextafter(1.0, 2.0);
    EXPECT_TRUE(std::isnan(q5math::Asin(above)));
    EXPECT_TRUE(std::isnan(q5math::Asin(-above)));
    EXPECT_TRUE(std::isnan(q5math::Acos(above)));
    EXPECT_TRUE(std::isnan(q5math::Acos(-kInf)));
    EXPECT_TRUE(std::isnan(q5math::Log(-1e-300)));
    EXPECT_TRUE(std::isnan(q5math::Log(-kInf)));
    EXPECT_EQ(q5math::Log(0.0), -kInf);
    EXPECT_EQ(q5math::Log(-0.0), -kInf);
}

// The table of the C standard's annex on IEEE arithmetic.
TEST(PortableMathSpecials, ArcTangentOfTwoFollowsTheCRules) {
    struct Row {
        double y, x, want;
    };
    const Row rows[] = {
        {0.0, -0.0, kPi},          {-0.0, -0.0, -kPi},         {0.0, 0.0, 0.0},
        {-0.0, 0.0, -0.0},         {0.0, -3.0, kPi},           {-0.0, -3.0, -kPi},
        {0.0, 3.0, 0.0},           {-0.0, 3.0, -0.0},          {-3.0, 0.0, -kPi / 2},
        {3.0, -0.0, kPi / 2},      {3.0, -kInf, kPi},          {-3.0, -kInf, -kPi},
        {3.0, kInf, 0.0},          {-3.0, kInf, -0.0},         {kInf, 3.0, kPi / 2},
        {-kInf, -3.0, -kPi / 2},   {kInf, -kInf, 3 * kPi / 4}, {-kInf, -kInf, -3 * kPi / 4},
        {kInf, kInf, kPi / 4},     {-kInf, kInf, -kPi / 4},    {1.0, 1.0, kPi / 4},
        {-1.0, -1.0, -3 * kPi / 4}};
    for (const Row& r : rows) {
        const double got = q5math::Atan2(r.y, r.x);
        EXPECT_EQ(got, r.want) << r.y << ", " << r.x;
        EXPECT_EQ(std::signbit(got), std::signbit(r.want)) << r.y << ", " << r.x;
    }
}

TEST(PortableMathSpecials, PowerFollowsTheCRules) {
    struct Row {
        double x, y, want;
    };
    const Row rows[] = {
        {kNaN, 0.0, 1.0},    {kNaN, -0.0, 1.0},     {1.0, kNaN, 1.0},      {1.0, -kInf, 1.0},
        {-1.0, kInf, 1.0},   {-1.0, -kInf, 1.0},    {0.0, -3.0, kInf},     {-0.0, -3.0, -kInf},
        {0.0, -2.0, kInf},   {-0.0, -2.5, kInf},    {-0.0, -kInf, kInf},   {0.0, 3.0, 0.0},
        {-0.0, 3.0, -0.0},   {-0.0, 2.0, 0.0},      {-0.0, 0.5, 0.0},      {0.5, -kInf, kInf},
        {-0.5, kInf, 0.0},   {2.0, -kInf, 0.0},     {-2.0, kInf, kInf},    {-kInf, -3.0, -0.0},
        {-kInf, -2.0, 0.0},  {-kInf, 3.0, -kInf},   {-kInf, 2.5, kInf},    {kInf, -0.5, 0.0},
        {kInf, 0.5, kInf},   {-3.0, 3.0, -27.0},    {-2.0, -1.0, -0.5},    {10.0, 400.0, kInf},
        {10.0, -400.0, 0.0}, {-10.0, 401.0, -kInf}, {-10.0, -401.0, -0.0}, {3.0, 1e30, kInf},
        {-0.5, 1e30, 0.0},   {3.0, DBL_MAX, kInf},  {3.0, -DBL_MAX, 0.0},  {-0.5, -DBL_MAX, kInf}};
    for (const Row& r : rows) {
        const double got = q5math::Pow(r.x, r.y);
        EXPECT_EQ(got, r.want) << r.x << " ^ " << r.y;
        EXPECT_EQ(std::signbit(got), std::signbit(r.want)) << r.x << " ^ " << r.y;
    }
    EXPECT_TRUE(std::isnan(q5math::Pow(-8.0, 1.0 / 3)));
    EXPECT_TRUE(std::isnan(q5math::Pow(kNaN, 1.0)));
    EXPECT_TRUE(std::isnan(q5math::Pow(2.0, kNaN)));
    // Exact powers come out exact, subnormal ones included.
    for (int k = -1074; k <= 1023; ++k) ASSERT_EQ(q5math::Pow(2.0, k), std::ldexp(1.0, k)) << k;
}

namespace {

// Results over fixed arguments on every path of every function, one digest per function.
std::map<std::string, std::uint64_t> Digests() {
    Draw d(5);
    // Spread over the binades 2^-1074 .. 2^1023, a fifth of them near 1.
    auto arg = [&d](int i) { return i % 5 == 0 ? d.Uniform(-2, 2) : d.Binades(-1074, 1024); };
    std::map<std::string, std::uint64_t> out;
    auto digest = [&](const char* name, const std::function<double(double, double)>& f) {
        std::uint64_t h = kFnv1aStart;
        for (int i = 0; i < 30000; ++i) {
            const double x = arg(i), y = arg(i), r = f(x, y);
            h = Fnv1a(&r, sizeof r, h);
        }
        out[name] = h;
    };
    const std::pair<const char*, Function> unary[] = {
        {"sin", q5math::Sin},   {"cos", q5math::Cos},   {"tan", q5math::Tan},
        {"asin", q5math::Asin}, {"acos", q5math::Acos}, {"atan", q5math::Atan}};
    for (const auto& [name, f] : unary) digest(name, [f = f](double x, double) { return f(x); });
    digest("atan2", [](double y, double x) { return q5math::Atan2(y, x); });
    digest("exp", [](double x, double) { return q5math::Exp(std::fmod(x, 746.0)); });
    digest("log", [](double x, double) { return q5math::Log(std::fabs(x)); });
    digest("pow", [](double x, double y) { return q5math::Pow(std::fabs(x), std::fmod(y, 64.0)); });
    return out;
}

} // namespace

// The digests in portable_math_digests.txt come from the Linux build; every other build must
// match them bit for bit. TESSERA_UPDATE_GOLDEN=1 writes the file instead.
TEST(PortableMathBits, SameOnEveryBuild) {
    const std::map<std::string, std::uint64_t> got = Digests();
    const char* path = TESSERA_MATH_DIGESTS;
    if (std::getenv("TESSERA_UPDATE_GOLDEN") != nullptr) {
        std::ofstream out(path);
        for (const auto& [name, digest] : got)
            out << name << ' ' << std::hex << std::setw(16) << std::setfill('0') << digest << '\n';
        ASSERT_TRUE(out.good()) << path;
        return;
    }
    std::ifstream in(path);
    ASSERT_TRUE(in.good()) << path;
    std::map<std::string, std::uint64_t> want;
    std::string name;
    std::uint64_t digest = 0;
    while (in >> name >> std::hex >> digest) want[name] = digest;
    ASSERT_EQ(want.size(), got.size());
    for (const auto& [fn, value] : got)
        EXPECT_EQ(value, want[fn]) << fn << " gives other bits than the Linux build";
}
