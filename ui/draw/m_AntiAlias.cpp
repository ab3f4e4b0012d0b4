#include "ui/draw/m_AntiAlias.h"

#include "support/ErrorTrap.h"
#include "ui/draw/m_GetDIBBits.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace m_AntiAlias {

namespace {
constexpr const char* kModule = "Pondera.m_AntiAlias";

// Beyond this a position cannot be a pixel of any surface and the whole-number
// conversion of the old runtime overflowed.
constexpr double kLargest = 9.0e15;

long long Floor(double x) {
    if (!(std::fabs(x) <= kLargest)) support::Raise(support::kErrOverflow, support::kAppTitle, "");
    if (x == std::trunc(x)) return static_cast<long long>(x);
    // Round to nearest (halves to even), then step down when that went up.
    double r = std::nearbyint(x);
    if (r > x) r -= 1.0;
    return static_cast<long long>(r);
}

// Pixel coordinates that fit an int; anything beyond misses every surface.
int Pixel(long long v) {
    if (v < -(1LL << 30)) return -(1 << 30);
    if (v > (1LL << 30)) return 1 << 30;
    return static_cast<int>(v);
}

// A logical position in the buffer's device pixels: the column scales; the
// row keeps the buffer's rule that pixel y is screen row y - 1, one logical
// row as at ratio 1.
double DeviceX(const m_GetDIBBits::PixelBuffer& b, double x) {
    return x * b.Ratio;
}
double DeviceY(const m_GetDIBBits::PixelBuffer& b, double y) {
    return (y - 1) * b.Ratio + 1;
}

// A dot one logical pixel square, ratio device pixels a side, shares its
// colour among the device pixels it covers by the area it covers of each.
void ScaledDot(m_GetDIBBits::PixelBuffer& buffer, double x, double y, int red, int green,
               int blue) {
    const double s = buffer.Ratio;
    const double left = DeviceX(buffer, x), top = DeviceY(buffer, y);
    const long long c0 = Floor(left), r0 = Floor(top);
    const long long c1 = Floor(std::ceil(left + s)) - 1, r1 = Floor(std::ceil(top + s)) - 1;
    for (long long r = r0; r <= r1; ++r) {
        const double wy =
            std::min(static_cast<double>(r + 1), top + s) - std::max(static_cast<double>(r), top);
        for (long long c = c0; c <= c1; ++c) {
            const double wx = std::min(static_cast<double>(c + 1), left + s) -
                              std::max(static_cast<double>(c), left);
            const double w = std::clamp(wx * wy, 0.0, 1.0);
            if (w > 0) buffer.Blend(Pixel(c), Pixel(r), red, green, blue, w);
        }
    }
}

// A dot of one buffer pixel, split over the four pixels around it.
void UnitDot(m_GetDIBBits::PixelBuffer& buffer, double x, double y, int red, int green, int blue) {
    const long long ix = Floor(x);
    const long long iy = Floor(y);
    const double fx = x - static_cast<double>(ix);
    const double fy = y - static_cast<double>(iy);
    if (fx == 0.0 && fy == 0.0) {
        buffer.Set(Pixel(ix), Pixel(iy), red, green, blue);
        return;
    }
    buffer.Blend(Pixel(ix), Pixel(iy), red, green, blue, (1 - fx) * (1 - fy));
    buffer.Blend(Pixel(ix + 1), Pixel(iy), red, green, blue, fx * (1 - fy));
    buffer.Blend(Pixel(ix), Pixel(iy + 1), red, green, blue, (1 - fx) * fy);
    buffer.Blend(Pixel(ix + 1), Pixel(iy + 1), red, green, blue, fx * fy);
}

void Dot(m_GetDIBBits::PixelBuffer& buffer, double x, double y, int red, int green, int blue) {
    if (buffer.Ratio == 1)
        UnitDot(buffer, x, y, red, green, blue);
    else
        ScaledDot(buffer, x, y, red, green, blue);
}
} // namespace

long long IntPart(double x) {
    return support::TrapValue({kModule, __func__}, 0LL, [&] { return Floor(x); });
}

void AADot(double x, double y, int red, int green, int blue) {
    support::Trap({kModule, __func__}, [&] {
        if (!m_GetDIBBits::IsOpen()) return;
        Dot(m_GetDIBBits::Current(), x, y, red, green, blue);
    });
}

// Xiaolin Wu's line: one step per pixel along the longer axis; at each step the
// colour is shared between the two pixels that straddle the line.
// At a ratio above 1 the line is one device pixel wide, at device resolution.
void AALine(double x1, double y1, double x2, double y2, int red, int green, int blue) {
    support::Trap({kModule, __func__}, [&] {
        if (!m_GetDIBBits::IsOpen()) return;
        m_GetDIBBits::PixelBuffer& buffer = m_GetDIBBits::Current();
        if (buffer.Ratio != 1) {
            x1 = DeviceX(buffer, x1), x2 = DeviceX(buffer, x2);
            y1 = DeviceY(buffer, y1), y2 = DeviceY(buffer, y2);
        }
        const double dx = x2 - x1, dy = y2 - y1;
        if (!std::isfinite(dx) || !std::isfinite(dy))
            support::Raise(support::kErrOverflow, support::kAppTitle, "");
        const bool steep = std::fabs(dy) > std::fabs(dx);
        // Work along the major axis as "a", across it as "b".
        double a1 = steep ? y1 : x1, b1 = steep ? x1 : y1;
        double a2 = steep ? y2 : x2, b2 = steep ? x2 : y2;
        if (a1 > a2) {
            std::swap(a1, a2);
            std::swap(b1, b2);
        }
        if (a1 == a2) {
            UnitDot(buffer, x1, y1, red, green, blue);
            return;
        }
        const double slope = (b2 - b1) / (a2 - a1);
        // Only the part that can touch the buffer is walked.
        const double extent = static_cast<double>(steep ? buffer.Height : buffer.Width) + 2.0;
        const long long first = Floor(std::ceil(std::max(a1, -1.0)));
        const long long last = Floor(std::floor(std::min(a2, extent)));
        for (long long a = first; a <= last; ++a) {
            const double b = b1 + (static_cast<double>(a) - a1) * slope;
            const long long ib = Floor(b);
            const double f = b - static_cast<double>(ib);
            if (steep) {
                buffer.Blend(Pixel(ib), Pixel(a), red, green, blue, 1 - f);
                buffer.Blend(Pixel(ib + 1), Pixel(a), red, green, blue, f);
            } else {
                buffer.Blend(Pixel(a), Pixel(ib), red, green, blue, 1 - f);
                buffer.Blend(Pixel(a), Pixel(ib + 1), red, green, blue, f);
            }
        }
    });
}

} // namespace m_AntiAlias
