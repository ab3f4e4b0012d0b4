#include "ui/options/SpinButton.h"

#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

SpinButton::SpinButton(QWidget* parent)
    : QWidget(parent), up_(new QToolButton(this)), down_(new QToolButton(this)) {
    setFocusPolicy(Qt::NoFocus);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    const struct {
        QToolButton* button;
        Qt::ArrowType arrow;
        int step;
    } arrows[] = {{up_, Qt::UpArrow, 1}, {down_, Qt::DownArrow, -1}};
    for (const auto& a : arrows) {
        a.button->setArrowType(a.arrow);
        a.button->setFocusPolicy(Qt::NoFocus);
        a.button->setAutoRepeat(true); // holding an arrow keeps counting
        a.button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
        a.button->setFixedWidth(18);
        a.button->setIconSize(QSize(8, 8));
        layout->addWidget(a.button);
        const int step = a.step;
        connect(a.button, &QToolButton::clicked, this, [this, step] { Step(step); });
    }
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    UpdateArrows();
}

void SpinButton::SetValue(int value) {
    value = std::clamp(value, minimum_, maximum_);
    if (value == value_) return;
    value_ = value;
    UpdateArrows();
    emit ValueChanged(value_);
}

void SpinButton::SetRange(int minimum, int maximum) {
    minimum_ = minimum;
    maximum_ = std::max(minimum, maximum);
    const int old = value_;
    value_ = std::clamp(value_, minimum_, maximum_);
    UpdateArrows();
    if (value_ != old) emit ValueChanged(value_);
}

void SpinButton::UpdateArrows() {
    up_->setEnabled(value_ < maximum_);
    down_->setEnabled(value_ > minimum_);
}

QSize SpinButton::sizeHint() const {
    return {18, 24};
}
