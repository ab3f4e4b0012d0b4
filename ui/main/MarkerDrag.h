// The spec-limit marker drag without widgets: which press arms or releases a
// marker, the sample counts of the armed and idle states, and the value under
// the pointer. A marker is idle -> armed (press on it) -> idle (a second press,
// or any release). A focused marker is dragged by the arrow keys the same way:
// a step arms it and moves a pointer of its own, the key's release ends it.
#pragma once

#include "ui/main/DensityChart.h"

#include <string>

namespace MarkerDrag {

// Curve points while a marker is armed, and after a drag (start-up has 300).
inline constexpr int kDragPoints = 75, kAfterDragPoints = 500;

// A left press toggles a marker when its limit is ticked and the pointer lies
// on the marker's horizontal extent.
bool Toggles(int button, bool ticked, double x, double markerLeft, double markerWidth);

// The sample count after a toggle left the marker armed or idle.
int PointsFor(bool armed);

// An armed marker follows the pointer: its left edge, and the limit's new
// text (the value under the pointer, in FormatDec of the chosen places).
struct Follow {
    double Left = 0;
    std::string Text;
};
Follow FollowPointer(const DensityChart::Geometry& chart, double x, double markerWidth,
                     int decPlaces);

// The pixels an arrow key moves a focused marker: Left/Right one pixel of the
// chart, ten with Shift; 0 for any other key. Keys and shift as the old
// runtime numbered them (37 left, 39 right; shift bit 1).
inline constexpr int kKeyLeft = 37, kKeyRight = 39;
double KeyStep(int key, int shift);

} // namespace MarkerDrag
