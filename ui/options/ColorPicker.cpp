#include "ui/options/ColorPicker.h"

#include "ui/draw/Look.h"

#include <QColorDialog>
#include <QPainter>
#include <QStyleOptionButton>
#include <QStylePainter>

namespace {
constexpr uint32_t kColorBits = 0xFFFFFF;
constexpr int kSwatchMargin = 6;
} // namespace

ColorPicker::ColorPicker(QWidget* parent) : QPushButton(parent) {
    setAutoDefault(false); // Enter in the dialog applies; it never opens a colour dialog
    connect(this, &QPushButton::clicked, this, &ColorPicker::ChooseColor);
    SetColor(0); // gives the tool tip
}

void ColorPicker::SetColor(uint32_t bgr) {
    bgr &= kColorBits;
    const bool changed = bgr != color_;
    color_ = bgr;
    setToolTip(look::ToQColor(color_).name(QColor::HexRgb).toUpper());
    update();
    if (changed) emit ColorChanged(color_);
}

void ColorPicker::ChooseColor() {
    const QColor chosen = QColorDialog::getColor(look::ToQColor(color_), this, title_);
    if (chosen.isValid()) SetColor(look::FromQColor(chosen));
}

QSize ColorPicker::sizeHint() const {
    return {64, QPushButton::sizeHint().height()};
}

void ColorPicker::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text.clear();
    option.icon = QIcon();
    painter.drawControl(QStyle::CE_PushButton, option);

    const QRect swatch =
        rect().adjusted(kSwatchMargin, kSwatchMargin - 1, -kSwatchMargin, -kSwatchMargin + 1);
    const QColor fill = isEnabled() ? look::ToQColor(color_) : palette().color(QPalette::Button);
    painter.setPen(palette().color(QPalette::Dark));
    painter.setBrush(fill);
    painter.drawRect(swatch.adjusted(0, 0, -1, -1));
}
