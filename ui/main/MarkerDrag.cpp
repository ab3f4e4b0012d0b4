#include "ui/main/MarkerDrag.h"

#include "support/Format.h"
#include "support/m_Interface.h"

namespace MarkerDrag {

bool Toggles(int button, bool ticked, double x, double markerLeft, double markerWidth) {
    return button == 1 && ticked && DensityChart::MarkerHit(x, markerLeft, markerWidth);
}

int PointsFor(bool armed) {
    return armed ? kDragPoints : kAfterDragPoints;
}

Follow FollowPointer(const DensityChart::Geometry& chart, double x, double markerWidth,
                     int decPlaces) {
    const std::string pattern = m_Interface::FormatDec(static_cast<int16_t>(decPlaces));
    return {x - markerWidth / 2.0, support::Format(chart.ValueAtPixel(x), pattern)};
}

double KeyStep(int key, int shift) {
    const double pixels = (shift & 1) ? 10 : 1;
    if (key == kKeyLeft) return -pixels;
    if (key == kKeyRight) return pixels;
    return 0;
}

} // namespace MarkerDrag
