// The density chart with its meaning written on it, for exports: a title (the
// distribution and its parameters), axis titles, the limits named at their
// lines and the PNC and Ppk in a corner. The chart itself is the picture the
// window draws; everything added around it is painted as text and lines, so a
// PDF or SVG keeps it as vectors.
#pragma once

#include "ui/main/DensityChart.h"

#include <QImage>
#include <QRectF>

#include <string>
#include <vector>

class QPainter;

namespace TitledChart {

struct Chart {
    QImage Image;                // the chart as drawn, in device pixels with their ratio
    DensityChart::Geometry Geom; // its geometry, in the picture's logical pixels
    std::string Title;           // empty: none (the report has its own heading)
    struct Mark {
        std::string Name; // "LSL", "Target", "USL"
        double X = 0;
    };
    std::vector<Mark> Limits;        // limits to name (none when the chart names them itself)
    std::vector<std::string> Corner; // a few figures, one per line
};

// Paints the whole titled chart into `area`. Text sizes follow `fontSize`, in
// the painter's units (points on a page, pixels on an image).
void Paint(QPainter& painter, const QRectF& area, const Chart& chart, double fontSize);

// The size `area` must have for the chart picture to be drawn at its own size.
QSizeF SizeFor(const Chart& chart, double fontSize);

// The titled chart as an image at the picture's own pixel ratio.
QImage Render(const Chart& chart, double fontSize);

} // namespace TitledChart
