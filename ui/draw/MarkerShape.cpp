#include "ui/draw/MarkerShape.h"

#include "ui/draw/Look.h"

#include "ui/draw/PictureBox.h"

#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

MarkerShape::MarkerShape(QWidget* parent, Kind kind, int width, int height)
    : QWidget(parent), kind_(kind) {
    // The parent decides what a press means (it tests the marker's extent).
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_TranslucentBackground);
    resize(width + 2 * kRing, height + 2 * kRing);
}

void MarkerShape::SetLeft(double left) {
    left_ = left;
    Place();
}

void MarkerShape::SetTop(double top) {
    top_ = top;
    Place();
}

void MarkerShape::Move(double left, double top) {
    left_ = left;
    top_ = top;
    Place();
}

void MarkerShape::SetFillColor(uint32_t bgr) {
    fillColor_ = bgr;
    update();
}

void MarkerShape::SetVisible(bool visible) {
    visible_ = visible;
    QWidget::setVisible(visible);
}

void MarkerShape::Place() {
    // Far-off positions (a limit dragged off the chart) are simply out of sight.
    auto pixel = [](double v) {
        if (!std::isfinite(v)) return -100000;
        return static_cast<int>(std::lround(std::clamp(v, -100000.0, 100000.0)));
    };
    move(pixel(left_) - kRing, pixel(top_) - kRing);
}

void MarkerShape::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing, true);
    const QRectF r = QRectF(rect()).adjusted(kRing + 0.5, kRing + 0.5, -kRing - 0.5, -kRing - 0.5);
    QPainterPath path;
    switch (kind_) {
    case Kind::TriangleDown:
        path.moveTo(r.topLeft());
        path.lineTo(r.topRight());
        path.lineTo(r.center().x(), r.bottom());
        path.closeSubpath();
        break;
    case Kind::TriangleUp:
        path.moveTo(r.bottomLeft());
        path.lineTo(r.bottomRight());
        path.lineTo(r.center().x(), r.top());
        path.closeSubpath();
        break;
    case Kind::Circle:
        path.addEllipse(r);
        break;
    }
    p.fillPath(path, look::ToQColor(fillColor_));
    p.setPen(QPen(look::ToQColor(look::kBlack), 1));
    p.drawPath(path);
    if (hasFocus()) {
        p.setPen(QPen(palette().color(QPalette::Highlight), 2));
        p.setBrush(Qt::NoBrush);
        p.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 2, 2);
    }
}

namespace {
int VbKey(int key) {
    if (key == Qt::Key_Left) return 37;
    if (key == Qt::Key_Right) return 39;
    return key;
}
} // namespace

void MarkerShape::keyPressEvent(QKeyEvent* event) {
    const int key = VbKey(event->key());
    if (key != 37 && key != 39) return QWidget::keyPressEvent(event);
    emit KeyDown(key, VbShift(event->modifiers()));
}

void MarkerShape::keyReleaseEvent(QKeyEvent* event) {
    if (event->isAutoRepeat()) return;
    emit KeyUp(VbKey(event->key()), VbShift(event->modifiers()));
}

void MarkerShape::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    update();
}

void MarkerShape::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    update();
    emit LostFocus();
}
