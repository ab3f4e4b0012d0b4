// A colour button: shows a swatch of its colour and opens the colour dialog,
// titled as set, when pressed. Colours are 0x00BBGGRR (0x0000FF is red).
#pragma once

#include <QPushButton>
#include <QString>

#include <cstdint>

class ColorPicker : public QPushButton {
    Q_OBJECT

  public:
    explicit ColorPicker(QWidget* parent = nullptr);

    uint32_t Color() const { return color_; }
    // Takes the low 24 bits; emits ColorChanged when the colour differs.
    void SetColor(uint32_t bgr);
    // Caption of the colour selection dialog.
    QString Title() const { return title_; }
    void SetTitle(const QString& title) { title_ = title; }

    QSize sizeHint() const override;

  signals:
    void ColorChanged(uint32_t bgr);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void ChooseColor();

    uint32_t color_ = 0;
    QString title_;
};
