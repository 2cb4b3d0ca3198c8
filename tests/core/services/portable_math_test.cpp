// Portable transcendental functions: error against a 64-bit reference, the special values of
// the C library's rules, and the same bits on every build.
#include "core/services/portable_math.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
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
using Args = std::array<double, 2>; // functions of one argument take the first

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
    return std::numeric_limits<LD>::digits < 64 ? "long double is no wider than double here"
                                                : nullptr;
#endif
}

// Error of `got` in units of the last place of a double at the exact value.
double UlpError(double got, LD exact) {
    if (std::isnan(exact)) return std::isnan(got) ? 0.0 : kInf;
    int e = 0;
    std::frexp(exact, &e);
    return static_cast<double>(std::fabs(got - exact) / std::ldexp(1.0L, std::max(e - 53, -1074)));
}

// Holds the largest error of `f` over the arguments to 1 ulp and prints it into the test log.
void ExpectWithinOneUlp(const std::string& name, const std::vector<Args>& args,
                        const std::function<double(Args)>& f,
                        const std::function<LD(Args)>& exact) {
    double worst = 0;
    Args at{};
    for (const Args& a : args)
        if (const double e = UlpError(f(a), exact(a)); e > worst) worst = e, at = a;
    std::ostringstream s;
    s << std::setprecision(4) << worst << " ulp at " << std::hexfloat << at[0];
    if (at[1] != 0) s << ", " << at[1];
    std::cout << "worst error of " << name << " over " << args.size() << " arguments: " << s.str()
              << "\n";
    testing::Test::RecordProperty(name + "_worst_ulp", s.str());
    EXPECT_LE(worst, 1.0) << name << ": " << s.str();
}

struct Unary {
    const char* name;
    double (*f)(double);
    LD (*exact)(LD);
};

void ExpectWithinOneUlp(const std::vector<Args>& args, std::initializer_list<Unary> functions) {
    for (const Unary& u : functions)
        ExpectWithinOneUlp(
            u.name, args, [&u](Args a) { return u.f(a[0]); },
            [&u](Args a) { return u.exact(a[0]); });
}

void Append(std::vector<Args>& args, int count, const std::function<double()>& one) {
    for (int i = 0; i < count; ++i) args.push_back({one()});
}

// Doubles next to the multiples of pi/2, where the reduced argument loses most of its bits,
// the double nearest a multiple of pi/2 of them all (6381956970095103 * 2^797), and the ends
// of the ranges of each way of reducing.
void AppendNearQuarterTurns(std::vector<Args>& args, SplitMix64& d, int count) {
    for (double x : {0x1.6ac5b262ca1ffp+849, -0x1.6ac5b262ca1ffp+849, DBL_MAX, 0x1p19,
                     std::nextafter(0x1p19, 0.0), 0x1p-27, 0x1p-1074})
        args.push_back({x});
    for (int i = 0; i < count; ++i) {
        const double x =
            static_cast<double>(d.Integer(1, 1 << 24) * 1.5707963267948966192313216916397514L);
        for (double y : {std::nextafter(x, 0.0), x, std::nextafter(x, kInf)}) args.push_back({y});
    }
}

// The same value and sign, or both NaN.
bool Same(double got, double want) {
    return std::isnan(want) ? std::isnan(got)
                            : got == want && std::signbit(got) == std::signbit(want);
}

} // namespace

// Sine, cosine and tangent: small and huge arguments, and those next to multiples of pi/2,
// where a reduction with too few bits of pi shows at once.
TEST(PortableMathAccuracy, SineCosineAndTangentAreWithinOneUlp) {
    if (const char* why = NoReference()) GTEST_SKIP() << why;
    SplitMix64 d(1);
    std::vector<Args> xs;
    Append(xs, 60000, [&d] { return d.Uniform(-8, 8); });
    Append(xs, 60000, [&d] { return d.Binades(-28, 1024); });
    AppendNearQuarterTurns(xs, d, 20000);
    ExpectWithinOneUlp(
        xs, {{"sin", q5math::Sin, sinl}, {"cos", q5math::Cos, cosl}, {"tan", q5math::Tan, tanl}});
}

// The inverse functions near their awkward points: |x| near 1 for arc sine and cosine, the
// ends of each interval of the arc tangent's table, and arc tangent quotients that overflow or
// underflow.
TEST(PortableMathAccuracy, InverseFunctionsAreWithinOneUlp) {
    if (const char* why = NoReference()) GTEST_SKIP() << why;
    SplitMix64 d(2);
    std::vector<Args> xs{{0x1p-30}};
    Append(xs, 50000, [&d] { return d.Uniform(-1, 1); });
    Append(xs, 50000, [&d] {
        const double v = 1.0 - d.Binades(-53, -1, false);
        return d.Bits() & 1 ? -v : v;
    });
    ExpectWithinOneUlp(xs, {{"asin", q5math::Asin, asinl}, {"acos", q5math::Acos, acosl}});

    xs.clear();
    Append(xs, 50000, [&d] { return d.Uniform(-4, 4); });
    Append(xs, 50000, [&d] { return d.Binades(-30, 70); });
    Append(xs, 20000, [&d] {
        const double eighth = d.Integer(1, 8) / 8.0;
        return eighth + d.Uniform(-1, 1) * 0x1.0000001p-4;
    });
    ExpectWithinOneUlp(xs, {{"atan", q5math::Atan, atanl}});

    xs.clear();
    for (int i = 0; i < 100000; ++i) {
        // Every fifth pair shares its binade; the others lie up to 2^90 apart.
        const double y = d.Binades(-90, 90);
        xs.push_back({y, i % 5 == 0 ? d.Binades(-1, 1) * std::fabs(y) : d.Binades(-90, 90)});
    }
    ExpectWithinOneUlp(
        "atan2", xs, [](Args a) { return q5math::Atan2(a[0], a[1]); },
        [](Args a) { return atan2l(a[0], a[1]); });
}

// Exponential and logarithm over their whole range, subnormals included, and the power with
// exponents y ln x up to 700, where the logarithm needs about 70 good bits.
TEST(PortableMathAccuracy, ExponentialLogarithmAndPowerAreWithinOneUlp) {
    if (const char* why = NoReference()) GTEST_SKIP() << why;
    SplitMix64 d(3);
    std::vector<Args> xs;
    Append(xs, 60000, [&d] { return d.Uniform(-745.1, 709.78); });
    Append(xs, 40000, [&d] { return d.Binades(-60, 1); });
    ExpectWithinOneUlp(xs, {{"exp", q5math::Exp, expl}});

    xs.clear();
    Append(xs, 60000, [&d] { return d.Binades(-1074, 1024, false); });
    Append(xs, 40000, [&d] { return 1.0 + d.Binades(-52, -4); });
    ExpectWithinOneUlp(xs, {{"log", q5math::Log, logl}});

    xs.clear();
    const auto add = [&xs](double x, double y) {
        if (!(std::fabs(powl(x, y)) > DBL_MAX)) xs.push_back({x, y});
    };
    for (int i = 0; i < 90000; ++i) {
        // The last 30000 bases lie next to 1, with exponents that reach the ends of the range.
        const double x = i < 60000 ? d.Binades(-30, 30, false) : 1.0 + d.Binades(-52, -20);
        if (x != 1.0) add(x, d.Uniform(-1, 1) * 700 / std::fabs(std::log(x)));
    }
    for (int i = 0; i < 10000; ++i) {
        const double x = -d.Uniform(0.1, 10);
        add(x, d.Integer(-300, 300));
    }
    ExpectWithinOneUlp(
        "pow", xs, [](Args a) { return q5math::Pow(a[0], a[1]); },
        [](Args a) { return powl(a[0], a[1]); });
}

// NaN in gives NaN out, zeros keep their sign, arguments outside the domain give NaN.
TEST(PortableMathSpecials, FunctionsOfOneArgumentFollowTheCRules) {
    const double above = std::nextafter(1.0, 2.0), tiny = std::numeric_limits<double>::denorm_min();
    const struct {
        const char* name;
        double (*f)(double);
        std::vector<Args> inOut;
    } cases[] = {
        // clang-format off
        {"sin", q5math::Sin, {{kNaN, kNaN}, {kInf, kNaN}, {-kInf, kNaN}, {0.0, 0.0}, {-0.0, -0.0}}},
        {"cos", q5math::Cos, {{kNaN, kNaN}, {kInf, kNaN}, {-kInf, kNaN}, {-0.0, 1.0}}},
        {"tan", q5math::Tan, {{kNaN, kNaN}, {kInf, kNaN}, {-kInf, kNaN}, {0.0, 0.0}, {-0.0, -0.0}}},
        {"asin", q5math::Asin, {{kNaN, kNaN}, {0.0, 0.0}, {-0.0, -0.0}, {above, kNaN},
                                {-above, kNaN}}},
        {"acos", q5math::Acos, {{kNaN, kNaN}, {1.0, 0.0}, {-1.0, kPi}, {0.0, kPi / 2},
                                {above, kNaN}, {-kInf, kNaN}}},
        {"atan", q5math::Atan, {{kNaN, kNaN}, {0.0, 0.0}, {-0.0, -0.0}, {kInf, kPi / 2},
                                {-kInf, -kPi / 2}}},
        // ln DBL_MAX = 709.78271289338399673 lies just below 0x1.62e42fefa39f0p+9, and ln 2^-1075 =
        // -745.13321910194110842 (half the smallest subnormal, where results start rounding to 0)
        // between -745.2 and -745.1.
        {"exp", q5math::Exp, {{kNaN, kNaN}, {kInf, kInf}, {-kInf, 0.0}, {-0.0, 1.0},
                              {0x1.62e42fefa39f0p+9, kInf}, {-745.2, 0.0}, {-745.1, tiny}}},
        {"log", q5math::Log, {{kNaN, kNaN}, {kInf, kInf}, {1.0, 0.0}, {0.0, -kInf}, {-0.0, -kInf},
                              {-1e-300, kNaN}, {-kInf, kNaN}}}};
    // clang-format on
    for (const auto& c : cases)
        for (const auto& [x, want] : c.inOut)
            EXPECT_TRUE(Same(c.f(x), want)) << c.name << '(' << x << ") = " << c.f(x);
    EXPECT_TRUE(std::isfinite(q5math::Exp(0x1.62e42fefa39efp+9)));
}

// The tables of the C standard's annex on IEEE arithmetic.
TEST(PortableMathSpecials, ArcTangentOfTwoAndPowerFollowTheCRules) {
    // clang-format off
    const std::array<double, 3> atan2[] = {
        {0.0, -0.0, kPi},          {-0.0, -0.0, -kPi},         {0.0, 0.0, 0.0},
        {-0.0, 0.0, -0.0},         {0.0, -3.0, kPi},           {-0.0, -3.0, -kPi},
        {0.0, 3.0, 0.0},           {-0.0, 3.0, -0.0},          {-3.0, 0.0, -kPi / 2},
        {3.0, -0.0, kPi / 2},      {3.0, -kInf, kPi},          {-3.0, -kInf, -kPi},
        {3.0, kInf, 0.0},          {-3.0, kInf, -0.0},         {kInf, 3.0, kPi / 2},
        {-kInf, -3.0, -kPi / 2},   {kInf, -kInf, 3 * kPi / 4}, {-kInf, -kInf, -3 * kPi / 4},
        {kInf, kInf, kPi / 4},     {-kInf, kInf, -kPi / 4},    {1.0, 1.0, kPi / 4},
        {-1.0, -1.0, -3 * kPi / 4}, {kNaN, 1.0, kNaN},         {1.0, kNaN, kNaN}};
    const std::array<double, 3> pow[] = {
        {kNaN, 0.0, 1.0},    {kNaN, -0.0, 1.0},     {1.0, kNaN, 1.0},      {1.0, -kInf, 1.0},
        {-1.0, kInf, 1.0},   {-1.0, -kInf, 1.0},    {0.0, -3.0, kInf},     {-0.0, -3.0, -kInf},
        {0.0, -2.0, kInf},   {-0.0, -2.5, kInf},    {-0.0, -kInf, kInf},   {0.0, 3.0, 0.0},
        {-0.0, 3.0, -0.0},   {-0.0, 2.0, 0.0},      {-0.0, 0.5, 0.0},      {0.5, -kInf, kInf},
        {-0.5, kInf, 0.0},   {2.0, -kInf, 0.0},     {-2.0, kInf, kInf},    {-kInf, -3.0, -0.0},
        {-kInf, -2.0, 0.0},  {-kInf, 3.0, -kInf},   {-kInf, 2.5, kInf},    {kInf, -0.5, 0.0},
        {kInf, 0.5, kInf},   {-3.0, 3.0, -27.0},    {-2.0, -1.0, -0.5},    {10.0, 400.0, kInf},
        {10.0, -400.0, 0.0}, {-10.0, 401.0, -kInf}, {-10.0, -401.0, -0.0}, {3.0, 1e30, kInf},
        {-0.5, 1e30, 0.0},   {3.0, DBL_MAX, kInf},  {3.0, -DBL_MAX, 0.0},  {-0.5, -DBL_MAX, kInf},
        {-8.0, 1.0 / 3, kNaN}, {kNaN, 1.0, kNaN},   {2.0, kNaN, kNaN}};
    // clang-format on
    for (const auto& [y, x, want] : atan2)
        EXPECT_TRUE(Same(q5math::Atan2(y, x), want)) << "atan2(" << y << ", " << x << ")";
    for (const auto& [x, y, want] : pow)
        EXPECT_TRUE(Same(q5math::Pow(x, y), want)) << x << " ^ " << y << " = " << q5math::Pow(x, y);
    // Exact powers come out exact, subnormal ones included.
    for (int k = -1074; k <= 1023; ++k) ASSERT_EQ(q5math::Pow(2.0, k), std::ldexp(1.0, k)) << k;
}

// The digests in portable_math_digests.txt come from the Linux build; every other build must
// match them bit for bit. TESSERA_UPDATE_GOLDEN=1 writes the file instead.
TEST(PortableMathBits, SameOnEveryBuild) {
    SplitMix64 d(5);
    // Spread over the binades 2^-1074 .. 2^1023, a fifth of them near 1.
    auto arg = [&d](int i) { return i % 5 == 0 ? d.Uniform(-2, 2) : d.Binades(-1074, 1024); };
    std::map<std::string, std::uint64_t> digests;
    // Every path of every function; the draws run on from one function to the next.
    auto digest = [&](const char* name, const std::function<double(double, double)>& f) {
        std::uint64_t h = kFnv1aStart;
        for (int i = 0; i < 30000; ++i) {
            const double x = arg(i), y = arg(i), r = f(x, y);
            h = Fnv1a(&r, sizeof r, h);
        }
        digests[name] = h;
    };
    const std::pair<const char*, double (*)(double)> unary[] = {
        {"sin", q5math::Sin},   {"cos", q5math::Cos},   {"tan", q5math::Tan},
        {"asin", q5math::Asin}, {"acos", q5math::Acos}, {"atan", q5math::Atan}};
    for (const auto& [name, f] : unary) digest(name, [f = f](double x, double) { return f(x); });
    digest("atan2", [](double y, double x) { return q5math::Atan2(y, x); });
    digest("exp", [](double x, double) { return q5math::Exp(std::fmod(x, 746.0)); });
    digest("log", [](double x, double) { return q5math::Log(std::fabs(x)); });
    digest("pow", [](double x, double y) { return q5math::Pow(std::fabs(x), std::fmod(y, 64.0)); });

    std::ostringstream got;
    for (const auto& [name, h] : digests)
        got << name << ' ' << std::hex << std::setw(16) << std::setfill('0') << h << '\n';
    if (std::getenv("TESSERA_UPDATE_GOLDEN") != nullptr) {
        std::ofstream out(TESSERA_MATH_DIGESTS);
        out << got.str();
        ASSERT_TRUE(out.good()) << TESSERA_MATH_DIGESTS;
        return;
    }
    std::ostringstream want;
    want << std::ifstream(TESSERA_MATH_DIGESTS).rdbuf();
    EXPECT_EQ(got.str(), want.str()) << "other bits than the Linux build";
}
