// Sub-pixel dots and lines on the pixel buffer opened by m_GetDIBBits: a dot
// at a fractional position is split over the four pixels around it with
// bilinear weights, so a chain of dots draws a smooth curve.
#pragma once

namespace m_AntiAlias {

// The largest whole number not above x, also for negative numbers.
// Kept: built from round-to-nearest and a step down.
long long IntPart(double x);

// A dot of colour (red, green, blue) at (x, y) in pixel units (the pixel rule
// of m_GetDIBBits). Whole coordinates set exactly one pixel.
void AADot(double x, double y, int red, int green, int blue);

// An anti-aliased line from (x1, y1) to (x2, y2): along its longer axis one
// step per pixel, each step split over the two pixels across the line.
void AALine(double x1, double y1, double x2, double y2, int red, int green, int blue);

} // namespace m_AntiAlias
