// The titled frame of the design (qarvFrameControl3): a rounded panel with a
// caption bar that is accent-coloured when the frame is active and grey when
// not. Children are laid out below the caption with an ordinary layout:
//
//     auto* frame = new TitledFrame("Spec Limits", parent);
//     auto* grid = new QGridLayout(frame);
#pragma once

#include <QString>
#include <QWidget>

class TitledFrame : public QWidget {
    Q_OBJECT

  public:
    explicit TitledFrame(const QString& caption = {}, QWidget* parent = nullptr);

    QString Caption() const { return caption_; }
    void SetCaption(const QString& caption);

    // The frame's method of the design: true gives the active look.
    void Focus(bool active);
    bool IsActive() const { return active_; }

    // Height of the caption bar in pixels.
    int CaptionHeight() const;

    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void UpdateMargins();

    QString caption_;
    bool active_ = false;
};
