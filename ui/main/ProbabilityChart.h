// The probability plot of a sample against one fitted row: the points on the
// row's probability paper, its fitted line and pointwise band, the probability
// axis labelled in percent and the value axis in values. The geometry lives in
// m_ProbabilityPlot; this only paints it, through one static Paint that draws
// into any QPainter (the widget at any display scale, an image, a PDF page as
// vectors).
#pragma once

#include "stats/m_Fits.h"
#include "stats/m_ProbabilityPlot.h"

#include <QFont>
#include <QWidget>

#include <cstdint>
#include <vector>

class QPainter;

class ProbabilityChart : public QWidget {
    Q_OBJECT

  public:
    // Colours are 0x00BBGGRR, as the display options hold them.
    struct Style {
        uint32_t BackColor = 0xFFFFFF;
        uint32_t PointColor = 0xFF0000; // the data
        uint32_t BandColor = 0x0000FF;  // the band's edges, and its fill lightly
        uint32_t LineColor = 0x000000;  // the fitted line
        QFont Font;
        // The window's display options: its background, the in-spec colour for
        // the points and the out-of-spec colour for the band, the chart font.
        static Style FromOptions();
    };

    explicit ProbabilityChart(QWidget* parent = nullptr);

    // The plot of a sorted sample against a row's fit; a failed row shows its reason.
    void Show(const std::vector<double>& ascending, int row, const m_Fits::Fit& fit);
    void Show(m_ProbabilityPlot::Plot plot);
    // An empty frame with a short message (a row's failure reason, say).
    void Clear(const QString& message = {});
    const m_ProbabilityPlot::Plot& Current() const { return plot_; }

    // The whole chart inside `area` of any painter. Lengths are in the
    // device's 96-per-inch pixels and the font in points, so a page prints
    // the chart as the screen shows it.
    static void Paint(QPainter& painter, const QRectF& area, const m_ProbabilityPlot::Plot& plot,
                      const Style& style);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    m_ProbabilityPlot::Plot plot_;
};
