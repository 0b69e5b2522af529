// Not installed.
#pragma once

#include "core/Clones.h"
#include "core/Forms.h"
#include "core/quantity/MarkedFloat.h"
#include "core/quantity/Relation.h"
#include "core/quantity/Temperature.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace velmo::exp {

/// What the humidity at a surface depends on besides the saturation pressure at that surface.
struct MoistAir
{
    /// @throws Exception  for an air temperature that is not finite or a humidity outside 0..100
    MoistAir(const quantity::Temperature<MarkedFloat>& airTemperature,
             const quantity::Relation<MarkedFloat>& humidity);

    double celsius;
    double percent;
    double saturation; ///< pressure in hPa
};

/// Surface humidity in percent for `count` surface temperatures.
using SurfaceMoisture = void(const MoistAir& air, const float* celsius, float* moisture, std::size_t count);
SurfaceMoisture surfaceMoisturePlain;
extern const Forms<SurfaceMoisture> surfaceMoisture;

/// Coefficients of the Magnus form.
struct Magnus
{
    static constexpr double pressureAtZero = 6.112;
    static constexpr double slope = 17.62;
    static constexpr double pole = -243.12;

    /// What the form raises e to.
    static VELMO_INLINE double exponent(double celsius) { return slope * celsius / (celsius - pole); }
};

/// e to the power of x, to within two units in the last place; limited to what a double holds without loss.
/// Own, because it is to give the same bits on every machine and because loops of it become vectors.
VELMO_INLINE double exponential(double x)
{
    const double notLow = x < -708.0 ? -708.0 : x;
    const double limited = notLow > 709.0 ? 709.0 : notLow;
    // x = k ln 2 + r. The sum has no room for a fraction, and its last bits are k.
    constexpr double shift = 0x1.8p52;
    const double shifted = limited * 1.4426950408889634 + shift;
    const double k = shifted - shift;
    const double r = (limited - k * 0x1.62e42fee00000p-1) - k * 0x1.a39ef35793c76p-33;
    // The series up to 13, in pairs: they do not wait for each other.
    const double r2 = r * r, r4 = r2 * r2;
    const double low = (1.0 + r) + r2 * (1.0 / 2 + r * (1.0 / 6));
    const double middle = (1.0 / 24 + r * (1.0 / 120)) + r2 * (1.0 / 720 + r * (1.0 / 5040));
    const double high = (1.0 / 40320 + r * (1.0 / 362880)) + r2 * (1.0 / 3628800 + r * (1.0 / 39916800));
    const double highest = 1.0 / 479001600 + r * (1.0 / 6227020800);
    const double series = low + r4 * (middle + r4 * (high + r4 * highest));
    std::uint64_t bits;
    std::memcpy(&bits, &shifted, sizeof bits);
    bits = (bits + 1023) << 52;
    double power;
    std::memcpy(&power, &bits, sizeof power);
    return series * power;
}

/// Saturation vapour pressure in hPa; at the pole the limit from above, without the division by zero.
VELMO_INLINE double saturationPressure(double celsius)
{
    const double pressure = Magnus::pressureAtZero * exponential(Magnus::exponent(celsius));
    return celsius == Magnus::pole ? 0.0 : pressure;
}

/// The one place that limits surface humidity. Past the pole of the pressure formula it meets infinities and
/// what is not a number: the first comparison makes 0 of the latter.
VELMO_INLINE float surfacePercent(const MoistAir& air, float celsius)
{
    const double percent = air.percent * (air.saturation / saturationPressure(celsius));
    const double atLeastDry = percent > 0.0 ? percent : 0.0;
    return static_cast<float>(atLeastDry < 100.0 ? atLeastDry : 100.0);
}

} // namespace velmo::exp
