// A pair of small up/down arrows holding a whole number, standing for the
// vertical scroll bar the dialog uses as a spin button beside a text box.
// Takes no focus, so pressing it never triggers the text box's check.
#pragma once

#include <QWidget>

class QToolButton;

class SpinButton : public QWidget {
    Q_OBJECT

  public:
    explicit SpinButton(QWidget* parent = nullptr);

    int Value() const { return value_; }
    // Clamps to the range; emits ValueChanged when the value moves.
    void SetValue(int value);
    void SetRange(int minimum, int maximum);
    int Minimum() const { return minimum_; }
    int Maximum() const { return maximum_; }
    // One step up (+1) or down (-1), as the arrows do.
    void Step(int direction) { SetValue(value_ + direction); }

    QToolButton* UpArrow() const { return up_; }
    QToolButton* DownArrow() const { return down_; }

    QSize sizeHint() const override;

  signals:
    void ValueChanged(int value);

  private:
    void UpdateArrows();

    QToolButton* up_;
    QToolButton* down_;
    int value_ = 0;
    int minimum_ = 0;
    int maximum_ = 100;
};
