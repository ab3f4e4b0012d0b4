#include "ui/draw/TitledFrame.h"

#include "ui/draw/Look.h"

#include <QEvent>
#include <QFontMetrics>
#include <QPainter>
#include <QPainterPath>

namespace {
constexpr int kRadius = 6;
constexpr int kPad = 10;
const QColor kPanel(0xFB, 0xFB, 0xFC);
const QColor kBorder(0xCC, 0xD1, 0xD9);
const QColor kInactiveText(0x3C, 0x42, 0x4C);
} // namespace

TitledFrame::TitledFrame(const QString& caption, QWidget* parent)
    : QWidget(parent), caption_(caption) {
    setAttribute(Qt::WA_StyledBackground, false);
    UpdateMargins();
}

void TitledFrame::SetCaption(const QString& caption) {
    caption_ = caption;
    updateGeometry();
    update();
}

void TitledFrame::Focus(bool active) {
    if (active_ == active) return;
    active_ = active;
    update();
}

int TitledFrame::CaptionHeight() const {
    QFont bold = font();
    bold.setBold(true);
    return QFontMetrics(bold).height() + 8;
}

QSize TitledFrame::minimumSizeHint() const {
    QSize hint = QWidget::minimumSizeHint();
    QFont bold = font();
    bold.setBold(true);
    const int captionWidth = QFontMetrics(bold).horizontalAdvance(caption_) + 2 * kPad;
    hint.setWidth(std::max(hint.width(), captionWidth));
    return hint;
}

void TitledFrame::UpdateMargins() {
    setContentsMargins(kPad, CaptionHeight() + 8, kPad, kPad);
}

void TitledFrame::changeEvent(QEvent* event) {
    if (event->type() == QEvent::FontChange) UpdateMargins();
    QWidget::changeEvent(event);
}

void TitledFrame::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing, true);
    const QRectF panel = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    const int captionHeight = CaptionHeight();

    QPainterPath outline;
    outline.addRoundedRect(panel, kRadius, kRadius);
    p.fillPath(outline, kPanel);

    // The caption bar: the panel's top, rounded above and square below.
    QPainterPath bar;
    bar.addRect(QRectF(panel.left(), panel.top(), panel.width(), captionHeight));
    p.fillPath(bar.intersected(outline),
               active_ ? look::AccentColor() : look::InactiveCaptionColor());

    p.setPen(QPen(active_ ? look::AccentColor() : kBorder, 1));
    p.drawPath(outline);

    QFont bold = font();
    bold.setBold(true);
    p.setFont(bold);
    p.setPen(active_ ? QColor(Qt::white) : kInactiveText);
    const QRectF textRect(panel.left() + kPad, panel.top(), panel.width() - 2 * kPad,
                          captionHeight);
    p.drawText(textRect, Qt::AlignLeft | Qt::AlignVCenter,
               QFontMetrics(bold).elidedText(caption_, Qt::ElideRight, int(textRect.width())));
}
