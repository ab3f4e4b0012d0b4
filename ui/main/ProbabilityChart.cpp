#include "ui/main/ProbabilityChart.h"

#include "settings/DisplayOptions.h"
#include "support/ErrorTrap.h"
#include "ui/draw/Look.h"

#include <QFontMetricsF>
#include <QPaintDevice>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>

#include <algorithm>
#include <cmath>

namespace {

using m_ProbabilityPlot::Plot;

// The density chart's grey for what only guides the eye.
const QColor kGrid(0xDC, 0xDC, 0xDC);

// Axis-parallel lines land on whole device pixels, so a one-pixel rule is one
// sharp row of pixels at every display scale (and two at scale 2).
struct Snap {
    double Scale = 1; // device pixels per painter unit
    double Width = 1; // the pen, in painter units
    double operator()(double at) const {
        const double device = std::max(1.0, std::round(Width * Scale));
        const bool odd = static_cast<long long>(device) % 2 == 1;
        return odd ? (std::floor(at * Scale) + 0.5) / Scale : std::round(at * Scale) / Scale;
    }
};

QColor WithAlpha(uint32_t bgr, int alpha) {
    QColor c = look::ToQColor(bgr);
    c.setAlpha(alpha);
    return c;
}

} // namespace

ProbabilityChart::Style ProbabilityChart::Style::FromOptions() {
    Style s;
    s.BackColor = look::Resolve(DisplayOptions::AppBackColor);
    s.PointColor = look::Resolve(DisplayOptions::AppInSpecColor);
    s.BandColor = look::Resolve(DisplayOptions::AppOutSpecColor);
    s.Font = look::AppFont(8.25);
    return s;
}

ProbabilityChart::ProbabilityChart(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("ProbabilityChart"));
}

void ProbabilityChart::Show(const std::vector<double>& ascending, int row, const m_Fits::Fit& fit) {
    // The plot is worked out in Boost's and Eigen's arithmetic, where NaN and
    // infinity are values (a point beyond a curve's end, an information matrix
    // that cannot be inverted); the flags they leave are no fault of the window.
    m_ProbabilityPlot::Plot plot;
    {
        const support::ForeignCode numerics;
        plot = m_ProbabilityPlot::Make(ascending, row, fit);
    }
    Show(std::move(plot));
}

void ProbabilityChart::Show(m_ProbabilityPlot::Plot plot) {
    plot_ = std::move(plot);
    update();
}

void ProbabilityChart::Clear(const QString& message) {
    plot_ = {};
    plot_.Status = message.toStdString();
    update();
}

QSize ProbabilityChart::sizeHint() const {
    return {420, 340};
}

QSize ProbabilityChart::minimumSizeHint() const {
    return {200, 160};
}

void ProbabilityChart::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    Paint(painter, QRectF(rect()), plot_, Style::FromOptions());
}

void ProbabilityChart::Paint(QPainter& painter, const QRectF& area, const Plot& plot,
                             const Style& style) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setRenderHint(QPainter::TextAntialiasing, true);
    painter.setClipRect(area);
    painter.fillRect(area, look::ToQColor(style.BackColor));

    // One screen pixel in painter units, and the painter's device pixels per unit.
    const QPaintDevice* device = painter.device();
    const double px = device ? device->logicalDpiY() / 96.0 : 1.0;
    const double scale = std::max(
        1e-9, std::hypot(painter.deviceTransform().m11(), painter.deviceTransform().m12()));
    const QFont font = style.Font.family().isEmpty() ? look::AppFont(8.25) : style.Font;
    painter.setFont(font);
    const QFontMetricsF fm(font, const_cast<QPaintDevice*>(device));
    const QColor ink = look::ToQColor(look::kBlack);
    const double textH = fm.height();
    const double tick = 4 * px;

    const bool drawn = plot.Status.empty() && !plot.U.empty() && plot.UHigh > plot.ULow &&
                       plot.VHigh > plot.VLow && std::isfinite(plot.UHigh - plot.ULow) &&
                       std::isfinite(plot.VHigh - plot.VLow);
    double probLabelWidth = fm.horizontalAdvance(QStringLiteral("99.9"));
    for (const auto& t : plot.ProbTicks)
        probLabelWidth =
            std::max(probLabelWidth, fm.horizontalAdvance(QString::fromStdString(t.Label)));
    const double left = area.left() + probLabelWidth + tick + 8 * px;
    const double top = area.top() + textH + 8 * px;
    const double right =
        area.right() - std::max(14 * px, 0.5 * fm.horizontalAdvance(QStringLiteral("000.00")));
    const double bottom = area.bottom() - textH - tick - 8 * px;
    if (!(right - left > 10 * px && bottom - top > 10 * px)) {
        painter.restore();
        return;
    }
    const QRectF frame(left, top, right - left, bottom - top);
    const Snap thin{scale, px};

    if (!drawn) {
        painter.setPen(QPen(ink, px));
        painter.drawRect(QRectF(QPointF(thin(frame.left()), thin(frame.top())),
                                QPointF(thin(frame.right()), thin(frame.bottom()))));
        if (!plot.Status.empty()) {
            painter.setPen(ink);
            painter.drawText(frame.adjusted(8 * px, 8 * px, -8 * px, -8 * px),
                             Qt::AlignCenter | Qt::TextWordWrap,
                             QString::fromStdString(
                                 plot.Name.empty() ? plot.Status : plot.Name + ": " + plot.Status));
        }
        painter.restore();
        return;
    }

    const double uSpan = plot.UHigh - plot.ULow, vSpan = plot.VHigh - plot.VLow;
    // Far outside the frame only the direction matters; huge coordinates would
    // strain the rasteriser.
    const double reach = 4 * (frame.width() + frame.height());
    const auto X = [&](double u) {
        return std::clamp(left + (u - plot.ULow) / uSpan * frame.width(), left - reach,
                          right + reach);
    };
    const auto Y = [&](double v) {
        return std::clamp(bottom - (v - plot.VLow) / vSpan * frame.height(), top - reach,
                          bottom + reach);
    };

    // The ticks whose labels fit: probabilities by rank (50 first, then the
    // tails inward), values from left to right.
    std::vector<m_ProbabilityPlot::Tick> probTicks, valueTicks;
    static const char* const kRank[] = {"50",  "1",    "99",   "10",    "90",    "5",
                                        "0.1", "99.9", "0.01", "0.001", "0.0001"};
    for (const char* label : kRank)
        for (const auto& t : plot.ProbTicks) {
            if (t.Label != label) continue;
            const bool clear = std::none_of(probTicks.begin(), probTicks.end(), [&](const auto& o) {
                return std::fabs(Y(o.At) - Y(t.At)) < textH;
            });
            if (clear) probTicks.push_back(t);
        }
    double lastRight = -1e300;
    for (const auto& t : plot.ValueTicks) {
        const double w = fm.horizontalAdvance(QString::fromStdString(t.Label));
        if (X(t.At) - w / 2 < lastRight + 6 * px) continue;
        valueTicks.push_back(t);
        lastRight = X(t.At) + w / 2;
    }

    // Grid at every labelled value and probability.
    painter.setPen(QPen(kGrid, px));
    for (const auto& t : valueTicks) {
        const double x = thin(X(t.At));
        painter.drawLine(QPointF(x, top), QPointF(x, bottom));
    }
    for (const auto& t : probTicks) {
        const double y = thin(Y(t.At));
        painter.drawLine(QPointF(left, y), QPointF(right, y));
    }

    // Band, line and points stay inside the frame.
    painter.save();
    painter.setClipRect(frame, Qt::IntersectClip);
    if (plot.BandV.size() >= 2) {
        QPolygonF low, high;
        for (std::size_t k = 0; k < plot.BandV.size(); ++k) {
            low << QPointF(X(plot.BandLow[k]), Y(plot.BandV[k]));
            high << QPointF(X(plot.BandHigh[k]), Y(plot.BandV[k]));
        }
        QPolygonF fill = low;
        for (auto it = high.crbegin(); it != high.crend(); ++it)
            fill << *it;
        painter.setPen(Qt::NoPen);
        painter.setBrush(WithAlpha(style.BandColor, 28));
        painter.drawPolygon(fill);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(WithAlpha(style.BandColor, 200), px));
        painter.drawPolyline(low);
        painter.drawPolyline(high);
    }
    if (plot.LineU.size() >= 2) {
        QPolygonF line;
        for (std::size_t k = 0; k < plot.LineU.size(); ++k)
            line << QPointF(X(plot.LineU[k]), Y(plot.LineV[k]));
        painter.setPen(QPen(look::ToQColor(style.LineColor), 1.5 * px));
        painter.drawPolyline(line);
    }
    // Smaller dots once they crowd, so the tails stay readable.
    const double radius = (plot.U.size() > 300 ? 1.6 : 2.6) * px;
    painter.setPen(QPen(look::ToQColor(style.PointColor).darker(130), 0.6 * px));
    painter.setBrush(look::ToQColor(style.PointColor));
    for (std::size_t i = 0; i < plot.U.size(); ++i)
        painter.drawEllipse(QPointF(X(plot.U[i]), Y(plot.V[i])), radius, radius);
    painter.restore();

    // Frame, ticks and labels.
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(ink, px));
    painter.drawRect(QRectF(QPointF(thin(frame.left()), thin(frame.top())),
                            QPointF(thin(frame.right()), thin(frame.bottom()))));
    for (const auto& t : probTicks) {
        const double y = thin(Y(t.At));
        painter.drawLine(QPointF(thin(left) - tick, y), QPointF(thin(left), y));
        const QString label = QString::fromStdString(t.Label);
        const QRectF box(area.left(), y - textH / 2, left - tick - 3 * px - area.left(), textH);
        painter.drawText(box, Qt::AlignRight | Qt::AlignVCenter, label);
    }
    for (const auto& t : valueTicks) {
        const double x = thin(X(t.At));
        painter.drawLine(QPointF(x, thin(bottom)), QPointF(x, thin(bottom) + tick));
        const QString label = QString::fromStdString(t.Label);
        const double w = fm.horizontalAdvance(label);
        painter.drawText(QRectF(x - w / 2 - 2 * px, bottom + tick + 2 * px, w + 4 * px, textH),
                         Qt::AlignHCenter | Qt::AlignTop, label);
    }
    // Captions: the probability axis' unit over its labels, the row and band on the right.
    const QString percent = QStringLiteral("Percent");
    painter.drawText(QRectF(area.left() + 2 * px, area.top() + 3 * px,
                            fm.horizontalAdvance(percent) + 2 * px, textH),
                     Qt::AlignLeft | Qt::AlignTop, percent);
    QString caption = QString::fromStdString(plot.Name);
    if (!plot.BandV.empty())
        caption += QStringLiteral("   %1 % band").arg(std::round(plot.Level * 100));
    caption += QStringLiteral("   n = %1").arg(plot.N);
    if (plot.Outside > 0) caption += QStringLiteral(" (%1 outside the curve)").arg(plot.Outside);
    painter.drawText(QRectF(left, area.top() + 3 * px, right - left, textH),
                     Qt::AlignRight | Qt::AlignTop, caption);
    painter.restore();
}
