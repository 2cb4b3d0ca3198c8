// Transcendental functions that give the same bits on every platform and compiler.
//
// Every path that decides a pixel calls these instead of the C library, whose last bits
// differ between C runtimes. Each double function is within 1 ulp of the exact result
// (measured worst cases are printed by the tests); the float forms compute in double and
// round once more. Argument reduction of Sin, Cos and Tan is exact for every finite double.
// Special values follow the C library's rules: NaN in gives NaN out, Asin and Acos outside
// [-1, 1] and Log below 0 give NaN, Log(±0) is -inf, and Pow treats zeros, infinities, 1
// and negative bases as the C standard lists.
#pragma once

#include <cstdint>

namespace q5math {

// Nearest integer, halves away from zero: std::lround's result without its library call, which
// costs more than the projection around it. For |x| < 2^62 only.
inline std::int64_t Round(double x) {
    auto i = static_cast<std::int64_t>(x);
    const double rest = x - static_cast<double>(i); // exact: both share x's leading bits
    if (rest >= 0.5) ++i;
    else if (rest <= -0.5) --i;
    return i;
}

double Sin(double x);
double Cos(double x);
double Tan(double x);
double Asin(double x);
double Acos(double x);
double Atan(double x);
double Atan2(double y, double x);
double Exp(double x);
double Log(double x);
double Pow(double x, double y);

float Sin(float x);
float Cos(float x);
float Tan(float x);
float Asin(float x);
float Acos(float x);
float Atan(float x);
float Atan2(float y, float x);
float Exp(float x);
float Log(float x);
float Pow(float x, float y);

} // namespace q5math
