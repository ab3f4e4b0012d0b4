// A drawing surface that keeps its picture between repaints, as the old picture
// box with persistent drawing did: all drawing goes into an RGB32 image, the
// widget only shows that image.
//
// Coordinates are the widget's (logical) pixels; the image holds device pixels
// for the screen's pixel ratio (1.5 on a 150 % display), so lines, fills, text
// and anti-aliased dots are placed at device resolution and stay sharp. At
// ratio 1 both are the same and every rule reads as in whole pixels.
//
// Colours are 0x00BBGGRR (or a system colour, see look::ToQColor). Mouse
// buttons are reported as the old runtime numbered them: 1 left, 2 right,
// 4 middle (or-ed together for a move with several held).
#pragma once

#include <QFontMetricsF>
#include <QImage>
#include <QPointF>
#include <QWidget>

#include <cstdint>
#include <memory>
#include <vector>

class QPainter;

class PictureBox : public QWidget {
    Q_OBJECT

  public:
    explicit PictureBox(QWidget* parent = nullptr);
    ~PictureBox() override;

    // Inner size in logical pixels.
    int ScaleWidth() const { return width_; }
    int ScaleHeight() const { return height_; }
    // Sets the picture's logical size directly (a surface that is not laid
    // out, e.g. off screen); the widget is resized to match.
    void SetPictureSize(int width, int height);

    // Device pixels per logical pixel. The surface follows its screen's ratio
    // until one is set here (an image rendered at a chosen scale, a test).
    double PixelRatio() const { return ratio_; }
    void SetPixelRatio(double ratio);

    uint32_t BackColor() const { return backColor_; }
    void SetBackColor(uint32_t bgr) { backColor_ = bgr; }
    uint32_t ForeColor() const { return foreColor_; }
    void SetForeColor(uint32_t bgr) { foreColor_ = bgr; }
    uint32_t FillColor() const { return fillColor_; }
    void SetFillColor(uint32_t bgr) { fillColor_ = bgr; }
    int DrawWidth() const { return drawWidth_; }
    void SetDrawWidth(int width) { drawWidth_ = width < 1 ? 1 : width; }
    // Text cells are filled with BackColor unless the font is transparent.
    bool FontTransparent() const { return fontTransparent_; }
    void SetFontTransparent(bool transparent) { fontTransparent_ = transparent; }

    QString FontName() const { return fontName_; }
    void SetFontName(const QString& name) {
        fontName_ = name;
        metrics_.reset();
    }
    double FontSize() const { return fontSize_; }
    void SetFontSize(double points) {
        fontSize_ = points;
        metrics_.reset();
    }
    QFont DrawFont() const;

    // Text cursor: the top-left corner of the next Print.
    double CurrentX = 0;
    double CurrentY = 0;

    // Clears the picture to BackColor and puts the text cursor at (0, 0).
    void Cls();
    // A line of DrawWidth in ForeColor (or the given colour); ends inclusive.
    void Line(double x1, double y1, double x2, double y2);
    void Line(double x1, double y1, double x2, double y2, uint32_t bgr);
    // A rectangle between two corners (inclusive), outlined in the given colour
    // and, when filled, filled with it.
    void Box(double x1, double y1, double x2, double y2, uint32_t bgr, bool filled);
    // Fills between the edges left..right and top..bottom (ends excluded),
    // rounded to device pixels; at least one device pixel each way.
    void FillArea(double left, double top, double right, double bottom, uint32_t bgr);
    // Many FillAreas at once, in order (a later bar covers an earlier one),
    // each from its top down to its bottom: the chart's shading, written row
    // by row with each pixel once.
    struct Bar {
        double Left, Right, Top, Bottom;
        uint32_t Bgr;
    };
    void FillBars(const std::vector<Bar>& bars);
    // As FillArea, but each pixel becomes old * (1 - weight) + colour * weight:
    // a translucent fill that lets what lies under it show.
    void BlendArea(double left, double top, double right, double bottom, uint32_t bgr,
                   double weight);
    // An anti-aliased line through the points, `width` pixels wide.
    void Polyline(const std::vector<QPointF>& points, uint32_t bgr, double width);
    // Prints text with its top-left corner at (CurrentX, CurrentY) in ForeColor;
    // afterwards CurrentX is 0 and CurrentY one text line lower.
    void Print(const QString& text);
    // Text extent in pixels in the surface's font.
    double TextWidth(const QString& text) const;
    double TextHeight(const QString& text = QStringLiteral("Ag")) const;

    // The colour of one logical pixel (x, y from the top-left, from 0) as
    // 0x00BBGGRR, read at its centre; kInvalidPixel outside the picture.
    static constexpr uint32_t kInvalidPixel = 0xFFFFFFFF;
    uint32_t GetPixel(int x, int y);

    // The picture in device pixels (its devicePixelRatio is PixelRatio()).
    // Ends any drawing in progress first.
    QImage& Image();
    // Shows the picture after drawing (the old Refresh): only the clip
    // rectangle while one is set.
    void Refresh();

    // Restricts all drawing (clearing, lines, fills, text, the pixel access of
    // m_GetDIBBits) to a rectangle in logical pixels, so that part of a picture
    // can be drawn afresh exactly as a whole drawing would draw it there. Its
    // edges must fall on whole device pixels (at ratio 1.5, even logical ones).
    void SetClip(const QRect& logical);
    void ClearClip();
    bool Clipped() const { return clipped_; }
    // The clip in device pixels (the whole picture when none is set).
    QRect DeviceClip() const;

    // Changes whenever the picture may have changed; unique across surfaces, so
    // a drawing that remembers it can tell that nobody drew over it since.
    uint64_t Generation() const { return generation_; }

    // The painter the drawing calls share; opened on first use, ended by
    // EndPainting (which every reader of the image calls).
    QPainter& Painter();
    void EndPainting();

    QSize sizeHint() const override;

  signals:
    void MouseDown(int button, int shift, double x, double y);
    void MouseMove(int button, int shift, double x, double y);
    void MouseUp(int button, int shift, double x, double y);
    void GotFocus();
    void LostFocus();
    void KeyDown(int key, int shift);
    // The pointer has left the surface.
    void MouseLeave();
    // The picture has been resized to the widget or to a new pixel ratio (it
    // keeps what fitted, scaled): time to draw it afresh.
    void Resized();
    // The picture follows a new pixel ratio (after Resized).
    void RatioChanged();

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void ResizeImage(int width, int height, double ratio);
    // Takes the screen's ratio unless one was set; true when it changed.
    bool FollowScreen();
    void RatioFollowed();
    long long Device(double v) const;
    void FillPixels(long long c0, long long r0, long long c1, long long r1, uint32_t bgr);
    const QFontMetricsF& Metrics() const;
    void Touch();

    QImage image_;
    uint64_t generation_ = 0;
    bool clipped_ = false;
    QRect clip_;       // logical
    QRect deviceClip_; // the same in device pixels
    int width_ = 0, height_ = 0;
    double ratio_ = 1;
    bool ratioSet_ = false;
    std::unique_ptr<QPainter> painter_;
    mutable std::unique_ptr<QFontMetricsF> metrics_; // of DrawFont on the picture
    uint32_t backColor_ = 0xFFFFFF;
    uint32_t foreColor_ = 0x000000;
    uint32_t fillColor_ = 0x000000;
    int drawWidth_ = 1;
    bool fontTransparent_ = false;
    QString fontName_;
    double fontSize_ = 8.25;
};

// Old-runtime mouse button and shift codes from Qt's.
int VbButton(Qt::MouseButtons buttons);
int VbShift(Qt::KeyboardModifiers modifiers);
