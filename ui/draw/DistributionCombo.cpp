#include "ui/draw/DistributionCombo.h"

#include "engine/Families.h"
#include "support/ErrorTrap.h"
#include "ui/draw/Look.h"

#include <QAbstractItemView>
#include <QHash>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QWheelEvent>

#include <cmath>
#include <string>
#include <vector>

namespace {

constexpr const char* kModule = "Pondera.DistributionCombo";
constexpr int kSamples = 64;

// The family's density at kSamples points from the low to the high end of its
// picture, both ends included.
std::vector<double> SampleSketch(const Families::Family& f) {
    std::vector<double> y(kSamples, 0.0);
    const Families::Icon& icon = f.Picture;
    const double step = (icon.High - icon.Low) / (kSamples - 1);
    const Families::Params p = {icon.P[0], icon.P[1], icon.P[2], icon.P[3]};
    for (int i = 0; i < kSamples; ++i)
        y[i] = support::ck(f.Density(p, icon.Low + i * step));
    return y;
}

QImage DrawSketch(const std::vector<double>& y, QSize size) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    double top = 0;
    for (double v : y)
        if (std::isfinite(v) && v > top) top = v;
    if (top <= 0) return image;

    const double w = size.width() - 2.0, h = size.height() - 3.0;
    QPainterPath curve;
    for (int i = 0; i < static_cast<int>(y.size()); ++i) {
        const double v = std::isfinite(y[i]) ? y[i] : 0.0;
        const QPointF p(1 + w * i / static_cast<double>(y.size() - 1), 1 + h - h * v / top);
        if (i == 0)
            curve.moveTo(p);
        else
            curve.lineTo(p);
    }
    QPainterPath area = curve;
    area.lineTo(1 + w, 1 + h);
    area.lineTo(1, 1 + h);
    area.closeSubpath();

    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing, true);
    QColor fill = look::AccentColor();
    fill.setAlpha(70);
    p.fillPath(area, fill);
    p.setPen(QPen(look::AccentColor().darker(130), 1.4));
    p.drawPath(curve);
    p.setPen(QPen(QColor(0x80, 0x86, 0x90), 1));
    p.drawLine(QPointF(0.5, 1.5 + h), QPointF(size.width() - 0.5, 1.5 + h));
    return image;
}

} // namespace

DistributionCombo::DistributionCombo(QWidget* parent) : QComboBox(parent) {
    setIconSize(QSize(32, 18));
    ApplyLook();
}

void DistributionCombo::AddDistribution(const QString& name) {
    addItem(DistributionIcon(name, iconSize()), name);
}

void DistributionCombo::SetDistributions(const QStringList& names) {
    clear();
    for (const QString& name : names)
        AddDistribution(name);
}

bool DistributionCombo::SelectText(const QString& name) {
    const int index = findText(name, Qt::MatchExactly);
    if (index < 0) return false;
    setCurrentIndex(index);
    return true;
}

void DistributionCombo::SetLocked(bool locked) {
    locked_ = locked;
    ApplyLook();
}

QIcon DistributionCombo::DistributionIcon(const QString& name, QSize size) {
    static QHash<QString, QIcon> cache;
    const QString key = name + QLatin1Char('@') + QString::number(size.width()) + QLatin1Char('x') +
                        QString::number(size.height());
    if (auto it = cache.constFind(key); it != cache.constEnd()) return *it;
    QIcon icon;
    const Families::Family* family = Families::ByName(name.toStdString());
    if (family && family->Picture.High > family->Picture.Low) {
        support::Trap({kModule, __func__}, [&] {
            icon = QIcon(QPixmap::fromImage(DrawSketch(SampleSketch(*family), size)));
        });
    }
    cache.insert(key, icon);
    return icon;
}

void DistributionCombo::ApplyLook() {
    QPalette palette = this->palette();
    const QColor background = look::ToQColor(locked_ ? look::kButtonFace : look::kWhite);
    palette.setColor(QPalette::Button, background);
    palette.setColor(QPalette::Base, background);
    setPalette(palette);
}

void DistributionCombo::mousePressEvent(QMouseEvent* event) {
    if (locked_) {
        // A locked list takes the focus but keeps its choice.
        setFocus(Qt::MouseFocusReason);
        event->accept();
        return;
    }
    QComboBox::mousePressEvent(event);
}

void DistributionCombo::keyPressEvent(QKeyEvent* event) {
    if (locked_ && event->key() != Qt::Key_Tab && event->key() != Qt::Key_Backtab) {
        event->accept();
        return;
    }
    QComboBox::keyPressEvent(event);
}

void DistributionCombo::wheelEvent(QWheelEvent* event) {
    if (locked_) {
        event->accept();
        return;
    }
    QComboBox::wheelEvent(event);
}

// Locked: a flat button-face box without the drop-down arrow, so it reads as
// a shown value rather than a choice.
void DistributionCombo::paintEvent(QPaintEvent* event) {
    if (!locked_) {
        QComboBox::paintEvent(event);
        return;
    }
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing, true);
    const QRectF box = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    p.setPen(QColor(0xC4, 0xC8, 0xCE));
    p.setBrush(look::ToQColor(look::kButtonFace));
    p.drawRoundedRect(box, 3, 3);

    int x = 6;
    const QIcon icon = itemIcon(currentIndex());
    if (!icon.isNull()) {
        const QSize size = iconSize();
        icon.paint(&p, QRect(x, (height() - size.height()) / 2, size.width(), size.height()));
        x += size.width() + 6;
    }
    p.setPen(palette().color(QPalette::Text));
    const QRect textRect(x, 0, width() - x - 6, height());
    p.drawText(textRect, Qt::AlignLeft | Qt::AlignVCenter,
               fontMetrics().elidedText(currentText(), Qt::ElideRight, textRect.width()));
}

void DistributionCombo::showPopup() {
    if (locked_) return;
    QComboBox::showPopup();
}
