// The small filled shapes of the design (sh_LSL, sh_USL, sh_SkewKurt): a child
// of a drawing surface placed in its parent's pixels. The shape lets mouse
// events through to its parent, which decides what a press means. A shape made
// focusable takes the keyboard (a ring round it then shows the focus, as plain
// to see as a text box's) and reports
// the keys as the old runtime numbered them (37 left, 39 right).
#pragma once

#include <QWidget>

#include <cstdint>

class MarkerShape : public QWidget {
    Q_OBJECT

  public:
    enum class Kind { TriangleDown, TriangleUp, Circle };

    explicit MarkerShape(QWidget* parent = nullptr, Kind kind = Kind::TriangleDown, int width = 11,
                         int height = 11);

    // Position and size in the parent's pixels. Left and Top keep fractions
    // (hit tests use them); the widget itself sits at the rounded position.
    double Left() const { return left_; }
    double Top() const { return top_; }
    int Width() const { return width() - 2 * kRing; }
    int Height() const { return height() - 2 * kRing; }
    void SetLeft(double left);
    void SetTop(double top);
    void Move(double left, double top);

    // 0x00BBGGRR; the outline is always black.
    uint32_t FillColor() const { return fillColor_; }
    void SetFillColor(uint32_t bgr);

    bool Visible() const { return visible_; }
    // Unlike QWidget::setVisible this is remembered even while the parent is hidden.
    void SetVisible(bool visible);

  signals:
    void KeyDown(int key, int shift);
    // Auto-repeated presses and releases of a held key are not reported.
    void KeyUp(int key, int shift);
    void LostFocus();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    // Room around the shape for the focus ring, outside the extent that hit
    // tests and placement use.
    static constexpr int kRing = 3;
    void Place();

    Kind kind_;
    double left_ = 0;
    double top_ = 0;
    uint32_t fillColor_ = 0x000000;
    bool visible_ = true;
};
