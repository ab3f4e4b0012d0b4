// The probability chart paints into a plain image at display scales 1 and 2:
// the points in their colour inside the frame, and a failed row's reason alone.
#include "ui/main/ProbabilityChart.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

#include <cmath>

namespace {

int CountColour(const QImage& image, QColor colour) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += image.pixelColor(x, y) == colour;
    return count;
}

QImage Painted(const m_ProbabilityPlot::Plot& plot, double ratio) {
    QImage image(static_cast<int>(300 * ratio), static_cast<int>(240 * ratio),
                 QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    QPainter painter(&image);
    ProbabilityChart::Style style;
    style.PointColor = 0x00C000; // a green nothing else is drawn in
    ProbabilityChart::Paint(painter, QRectF(0, 0, 300, 240), plot, style);
    return image;
}

TEST(ProbabilityChart, PaintsPointsAtEachScaleAndAFailedRowAsItsReason) {
    std::vector<double> x;
    for (int i = 1; i <= 30; ++i)
        x.push_back(10 + std::tan((i - 15.5) / 31.0 * 2.5));
    const m_Fits::Sample s = m_Fits::Prepare(x);
    const auto plot =
        m_ProbabilityPlot::Make(s.X, m_Fits::kNormal, m_Fits::FitRow(m_Fits::kNormal, s));
    for (double ratio : {1.0, 2.0}) {
        SCOPED_TRACE(ratio);
        const QImage image = Painted(plot, ratio);
        EXPECT_GT(CountColour(image, QColor(0, 0xC0, 0)), 30 * ratio * ratio);
    }
    m_ProbabilityPlot::Plot failed;
    failed.Status = m_Fits::kNoThreshold;
    const QImage image = Painted(failed, 1);
    EXPECT_EQ(CountColour(image, QColor(0, 0xC0, 0)), 0);
    EXPECT_LT(CountColour(image, Qt::white), image.width() * image.height());
}

} // namespace
