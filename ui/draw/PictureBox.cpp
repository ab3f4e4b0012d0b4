#include "ui/draw/PictureBox.h"

#include "ui/draw/Look.h"

#include <QEvent>
#include <QFocusEvent>
#include <QFontMetricsF>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QRegion>
#include <QResizeEvent>

#include <algorithm>
#include <cmath>

namespace {

// 96 dots per inch, whatever the screen: a chart drawn off screen (the
// command-line tool) must match the window's pixel for pixel.
constexpr int kDotsPerMeter = 3780;

// A surface shows a few thousand pixels; far-off coordinates are pulled in so
// the rasteriser never sees values it cannot hold. Only straight lines are
// drawn here, so clamping keeps their visible part.
constexpr double kFar = 1 << 20;

double Near(double v) {
    return std::clamp(v, -kFar, kFar);
}

long long RoundPixel(double v) {
    return static_cast<long long>(std::floor(Near(v) + 0.5));
}

// One row of bars: the kept pixels stay, the others take their colour. Plain
// masks, and out of line, so that the compiler writes several pixels at a time.
[[gnu::noinline]] void PaintRow(QRgb* __restrict line, const QRgb* __restrict colour,
                                const QRgb* __restrict keep, int count) {
    for (int c = 0; c < count; ++c)
        line[c] = (line[c] & keep[c]) | colour[c];
}

bool Finite(double a, double b, double c, double d) {
    return std::isfinite(a) && std::isfinite(b) && std::isfinite(c) && std::isfinite(d);
}

} // namespace

int VbButton(Qt::MouseButtons buttons) {
    int code = 0;
    if (buttons & Qt::LeftButton) code |= 1;
    if (buttons & Qt::RightButton) code |= 2;
    if (buttons & Qt::MiddleButton) code |= 4;
    return code;
}

int VbShift(Qt::KeyboardModifiers modifiers) {
    int code = 0;
    if (modifiers & Qt::ShiftModifier) code |= 1;
    if (modifiers & Qt::ControlModifier) code |= 2;
    if (modifiers & Qt::AltModifier) code |= 4;
    return code;
}

PictureBox::PictureBox(QWidget* parent) : QWidget(parent), fontName_(look::AppFontFamily()) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    ResizeImage(width(), height(), devicePixelRatioF());
}

PictureBox::~PictureBox() {
    EndPainting();
}

void PictureBox::SetPictureSize(int width, int height) {
    ResizeImage(width, height, ratio_);
    resize(std::max(width, 0), std::max(height, 0));
}

void PictureBox::SetPixelRatio(double ratio) {
    if (!(ratio >= 0.25 && ratio <= 16)) return;
    ratioSet_ = true;
    ResizeImage(width_, height_, ratio);
}

bool PictureBox::FollowScreen() {
    const double screen = devicePixelRatioF();
    if (ratioSet_ || screen == ratio_ || !(screen > 0)) return false;
    ResizeImage(width_, height_, screen);
    return true;
}

long long PictureBox::Device(double v) const {
    return RoundPixel(v * ratio_);
}

QFont PictureBox::DrawFont() const {
    QFont font = look::AppFont(fontSize_);
    if (!fontName_.isEmpty()) font.setFamily(fontName_);
    return font;
}

const QFontMetricsF& PictureBox::Metrics() const {
    if (!metrics_) metrics_ = std::make_unique<QFontMetricsF>(DrawFont(), &image_);
    return *metrics_;
}

QPainter& PictureBox::Painter() {
    Touch();
    if (!painter_) {
        painter_ = std::make_unique<QPainter>(&image_);
        painter_->setRenderHint(QPainter::Antialiasing, false);
        painter_->setRenderHint(QPainter::TextAntialiasing, true);
        if (clipped_) painter_->setClipRect(clip_);
    }
    return *painter_;
}

void PictureBox::Touch() {
    static uint64_t last = 0;
    generation_ = ++last;
}

void PictureBox::SetClip(const QRect& logical) {
    EndPainting();
    clipped_ = true;
    clip_ = logical;
    const auto device = [&](int v) { return static_cast<int>(std::lround(v * ratio_)); };
    deviceClip_ = QRect(QPoint(device(logical.left()), device(logical.top())),
                        QPoint(device(logical.left() + logical.width()) - 1,
                               device(logical.top() + logical.height()) - 1))
                      .intersected(image_.rect());
}

void PictureBox::ClearClip() {
    EndPainting();
    clipped_ = false;
}

QRect PictureBox::DeviceClip() const {
    return clipped_ ? deviceClip_ : image_.rect();
}

void PictureBox::Refresh() {
    if (clipped_)
        update(clip_);
    else
        update();
}

void PictureBox::EndPainting() {
    if (painter_) {
        painter_->end();
        painter_.reset();
    }
}

QImage& PictureBox::Image() {
    EndPainting();
    Touch();
    return image_;
}

void PictureBox::ResizeImage(int width, int height, double ratio) {
    // A zero-sized widget keeps a 1 x 1 picture so drawing never has to ask.
    width = std::max(width, 1);
    height = std::max(height, 1);
    if (width == width_ && height == height_ && ratio == ratio_ && !image_.isNull()) return;
    EndPainting();
    Touch();
    clipped_ = false;
    metrics_.reset();
    QImage resized(std::max(1, static_cast<int>(std::lround(width * ratio))),
                   std::max(1, static_cast<int>(std::lround(height * ratio))),
                   QImage::Format_RGB32);
    resized.setDotsPerMeterX(kDotsPerMeter);
    resized.setDotsPerMeterY(kDotsPerMeter);
    resized.setDevicePixelRatio(ratio);
    resized.fill(look::ToQColor(backColor_));
    if (!image_.isNull()) {
        QPainter p(&resized);
        p.drawImage(QPointF(0, 0), image_);
    }
    image_ = resized;
    width_ = width;
    height_ = height;
    ratio_ = ratio;
}

void PictureBox::Cls() {
    EndPainting();
    Touch();
    if (clipped_) {
        const QRect r = deviceClip_;
        FillPixels(r.left(), r.top(), r.right(), r.bottom(), backColor_);
    } else {
        image_.fill(look::ToQColor(backColor_));
    }
    CurrentX = 0;
    CurrentY = 0;
}

void PictureBox::Line(double x1, double y1, double x2, double y2) {
    Line(x1, y1, x2, y2, foreColor_);
}

void PictureBox::Line(double x1, double y1, double x2, double y2, uint32_t bgr) {
    if (!Finite(x1, y1, x2, y2)) return;
    // Upright and level lines, the charts' whole diet, are filled as pixel
    // rectangles: at ratio 1 coordinates round to the nearest pixel, ends
    // included, and a width of w covers w pixels across, centred on the line.
    // At other ratios the same edges are rounded to device pixels, and every
    // line of one width is equally many device pixels wide.
    if (x1 == x2 || y1 == y2) {
        const double half = drawWidth_ / 2;
        const long long across = std::max(1LL, RoundPixel(drawWidth_ * ratio_));
        if (x1 == x2) {
            const long long c0 = Device(x1 - half);
            const long long r0 = Device(std::min(y1, y2));
            const long long r1 = std::max(r0, Device(std::max(y1, y2) + 1) - 1);
            FillPixels(c0, r0, c0 + across - 1, r1, bgr);
        } else {
            const long long r0 = Device(y1 - half);
            const long long c0 = Device(std::min(x1, x2));
            const long long c1 = std::max(c0, Device(std::max(x1, x2) + 1) - 1);
            FillPixels(c0, r0, c1, r0 + across - 1, bgr);
        }
        return;
    }
    QPainter& p = Painter();
    QPen pen(look::ToQColor(bgr));
    pen.setWidth(drawWidth_);
    pen.setCapStyle(drawWidth_ > 1 ? Qt::FlatCap : Qt::SquareCap);
    p.setPen(pen);
    p.drawLine(QPointF(Near(x1), Near(y1)), QPointF(Near(x2), Near(y2)));
}

// Straight into the picture's memory: the raster painter, when open, writes
// to the same memory at once, so both can be mixed freely. A picture shared
// with a copy someone holds is detached first, with the painter closed.
void PictureBox::FillPixels(long long c0, long long r0, long long c1, long long r1, uint32_t bgr) {
    const QRect clip = DeviceClip();
    c0 = std::max<long long>(c0, clip.left());
    r0 = std::max<long long>(r0, clip.top());
    c1 = std::min<long long>(c1, clip.right());
    r1 = std::min<long long>(r1, clip.bottom());
    if (c0 > c1 || r0 > r1) return;
    if (!image_.isDetached()) EndPainting();
    Touch();
    const QRgb value = look::ToQColor(bgr).rgb();
    uchar* bits = image_.bits();
    const qsizetype stride = image_.bytesPerLine();
    for (long long r = r0; r <= r1; ++r) {
        auto* line = reinterpret_cast<QRgb*>(bits + r * stride);
        std::fill(line + c0, line + c1 + 1, value);
    }
}

void PictureBox::Box(double x1, double y1, double x2, double y2, uint32_t bgr, bool filled) {
    if (!Finite(x1, y1, x2, y2)) return;
    if (filled) {
        // Corners inclusive, as the old box fill.
        FillArea(std::min(x1, x2), std::min(y1, y2), std::max(x1, x2) + 1, std::max(y1, y2) + 1,
                 bgr);
        return;
    }
    Line(x1, y1, x2, y1, bgr);
    Line(x2, y1, x2, y2, bgr);
    Line(x2, y2, x1, y2, bgr);
    Line(x1, y2, x1, y1, bgr);
}

void PictureBox::FillArea(double left, double top, double right, double bottom, uint32_t bgr) {
    if (!Finite(left, top, right, bottom)) return;
    const long long c0 = Device(left), r0 = Device(top);
    FillPixels(c0, r0, std::max(c0, Device(right) - 1), std::max(r0, Device(bottom) - 1), bgr);
}

void PictureBox::BlendArea(double left, double top, double right, double bottom, uint32_t bgr,
                           double weight) {
    if (!Finite(left, top, right, bottom) || !(weight >= 0 && weight <= 1)) return;
    const QRect clip = DeviceClip();
    const long long c0 = std::max<long long>(Device(left), clip.left());
    const long long r0 = std::max<long long>(Device(top), clip.top());
    const long long c1 =
        std::min<long long>(std::max(Device(left), Device(right) - 1), clip.right());
    const long long r1 =
        std::min<long long>(std::max(Device(top), Device(bottom) - 1), clip.bottom());
    if (c0 > c1 || r0 > r1) return;
    if (!image_.isDetached()) EndPainting();
    Touch();
    const QColor colour = look::ToQColor(bgr);
    const auto mix = [weight](int old, int add) {
        return static_cast<int>(std::lround(old * (1 - weight) + add * weight));
    };
    uchar* bits = image_.bits();
    const qsizetype stride = image_.bytesPerLine();
    for (long long r = r0; r <= r1; ++r) {
        auto* line = reinterpret_cast<QRgb*>(bits + r * stride);
        for (long long c = c0; c <= c1; ++c) {
            const QRgb old = line[c];
            line[c] = qRgb(mix(qRed(old), colour.red()), mix(qGreen(old), colour.green()),
                           mix(qBlue(old), colour.blue()));
        }
    }
}

void PictureBox::Polyline(const std::vector<QPointF>& points, uint32_t bgr, double width) {
    std::vector<QPointF> near;
    near.reserve(points.size());
    for (const QPointF& p : points)
        if (std::isfinite(p.x()) && std::isfinite(p.y()))
            near.emplace_back(Near(p.x()), Near(p.y()));
    if (near.size() < 2) return;
    QPainter& p = Painter();
    p.save();
    p.setRenderHint(QPainter::Antialiasing, true);
    QPen pen(look::ToQColor(bgr));
    pen.setWidthF(width);
    pen.setJoinStyle(Qt::RoundJoin);
    pen.setCapStyle(Qt::RoundCap);
    p.setPen(pen);
    p.drawPolyline(near.data(), static_cast<int>(near.size()));
    p.restore();
}

// Row by row from the top: each column remembers the colour of the latest
// bar (in the given order) that covers it on the current row, and every row
// is written once from that list. The picture is the same as filling the bars
// one after another, with each pixel written once however much they overlap.
void PictureBox::FillBars(const std::vector<Bar>& bars) {
    struct Span {
        int C0, C1, R0, R1;
        QRgb Value;
    };
    const QRect clip = DeviceClip();
    std::vector<Span> spans;
    spans.reserve(bars.size());
    for (const Bar& b : bars) {
        if (!Finite(b.Left, b.Top, b.Right, b.Bottom)) continue;
        const long long c0 = Device(b.Left), r0 = Device(b.Top);
        const long long c1 = std::max(c0, Device(b.Right) - 1);
        const long long r1 = std::max(r0, Device(b.Bottom) - 1);
        const Span s{static_cast<int>(std::max<long long>(c0, clip.left())),
                     static_cast<int>(std::min<long long>(c1, clip.right())),
                     static_cast<int>(std::max<long long>(r0, clip.top())),
                     static_cast<int>(std::min<long long>(r1, clip.bottom())),
                     look::ToQColor(b.Bgr).rgb()};
        if (s.C0 <= s.C1 && s.R0 <= s.R1) spans.push_back(s);
    }
    if (spans.empty()) return;
    if (!image_.isDetached()) EndPainting();
    Touch();

    const int n = static_cast<int>(spans.size());
    // Spans by their first row and by their last.
    std::vector<int> byStart(n), byEnd(n);
    for (int i = 0; i < n; ++i)
        byStart[i] = byEnd[i] = i;
    std::stable_sort(byStart.begin(), byStart.end(),
                     [&](int a, int b) { return spans[a].R0 < spans[b].R0; });
    std::stable_sort(byEnd.begin(), byEnd.end(),
                     [&](int a, int b) { return spans[a].R1 < spans[b].R1; });
    std::vector<bool> active(n, false);
    // The latest covering span of each column (-1: none) and its colour, or
    // a colour of 0 and a mask that keeps the pixel.
    const int width = image_.width();
    std::vector<int> owner(width, -1);
    std::vector<QRgb> colour(width, 0), keep(width, ~QRgb(0));
    const auto own = [&](int c, int i) {
        owner[c] = i;
        colour[c] = i < 0 ? 0 : spans[i].Value;
        keep[c] = i < 0 ? ~QRgb(0) : 0;
    };
    const auto reown = [&](int c) {
        int best = -1;
        for (int j = 0; j < n; ++j)
            if (active[j] && spans[j].C0 <= c && c <= spans[j].C1) best = j;
        own(c, best);
    };
    const int lastRow = spans[byEnd[n - 1]].R1;

    uchar* bits = image_.bits();
    const qsizetype stride = image_.bytesPerLine();
    int nextStart = 0, nextEnd = 0, live = 0;
    int left = width, right = -1; // columns any span has touched so far
    for (int r = spans[byStart[0]].R0; r <= lastRow; ++r) {
        for (; nextEnd < n && spans[byEnd[nextEnd]].R1 < r; ++nextEnd) {
            const int i = byEnd[nextEnd];
            active[i] = false;
            --live;
            for (int c = spans[i].C0; c <= spans[i].C1; ++c)
                if (owner[c] == i) reown(c);
        }
        if (live == 0 && nextStart < n) r = std::max(r, spans[byStart[nextStart]].R0);
        for (; nextStart < n && spans[byStart[nextStart]].R0 <= r; ++nextStart) {
            const int i = byStart[nextStart];
            const Span& s = spans[i];
            active[i] = true;
            ++live;
            left = std::min(left, s.C0);
            right = std::max(right, s.C1);
            for (int c = s.C0; c <= s.C1; ++c)
                if (owner[c] < i) own(c, i);
        }
        if (live == 0) continue;
        PaintRow(reinterpret_cast<QRgb*>(bits + r * stride) + left, colour.data() + left,
                 keep.data() + left, right - left + 1);
    }
}

void PictureBox::Print(const QString& text) {
    QPainter& p = Painter();
    p.setFont(DrawFont());
    const QFontMetricsF& fm = Metrics();
    const double x = Near(CurrentX);
    const double y = Near(CurrentY);
    const double advance = fm.horizontalAdvance(text);
    // Text wholly outside the clip is not drawn at all; a glyph may reach
    // past its advance, hence the margin of a line's height.
    const double margin = fm.height();
    const bool outside =
        clipped_ &&
        !QRectF(x - margin, y - margin, advance + 2 * margin, 3 * margin).intersects(QRectF(clip_));
    if (std::isfinite(CurrentX) && std::isfinite(CurrentY) && !outside) {
        if (!fontTransparent_)
            p.fillRect(QRectF(x, y, advance, fm.height()), look::ToQColor(backColor_));
        p.setPen(look::ToQColor(foreColor_));
        p.drawText(QPointF(x, y + fm.ascent()), text);
    }
    CurrentX = 0;
    CurrentY = y + fm.height();
}

double PictureBox::TextWidth(const QString& text) const {
    return Metrics().horizontalAdvance(text);
}

double PictureBox::TextHeight(const QString& text) const {
    Q_UNUSED(text);
    return Metrics().height();
}

uint32_t PictureBox::GetPixel(int x, int y) {
    EndPainting();
    if (x < 0 || y < 0 || x >= width_ || y >= height_) return kInvalidPixel;
    const auto at = [&](int v, int size) {
        return std::clamp(static_cast<int>(std::floor((v + 0.5) * ratio_)), 0, size - 1);
    };
    const QRgb rgb = image_.pixel(at(x, image_.width()), at(y, image_.height()));
    return look::RGB(qRed(rgb), qGreen(rgb), qBlue(rgb));
}

QSize PictureBox::sizeHint() const {
    return QSize(320, 240);
}

// A window moved to a screen of another scale gets a picture of that scale,
// drawn afresh by whoever listens to Resized. Queued, so the charts are redrawn
// from the event loop, never from inside a screen change or a paint.
bool PictureBox::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::ScreenChangeInternal:
    case QEvent::Show:
#if QT_VERSION >= QT_VERSION_CHECK(6, 6, 0)
    case QEvent::DevicePixelRatioChange:
#endif
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (FollowScreen()) RatioFollowed();
            },
            Qt::QueuedConnection);
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

void PictureBox::RatioFollowed() {
    emit Resized();
    emit RatioChanged();
}

// Only shows the picture: whatever changes it happens outside a paint.
void PictureBox::paintEvent(QPaintEvent*) {
    EndPainting();
    QPainter p(this);
    // One image pixel per device pixel.
    p.drawImage(QPointF(0, 0), image_);
    // Beyond the picture (a moment before it follows a resize) shows the background.
    const QRegion outside = QRegion(rect()).subtracted(QRegion(0, 0, width_, height_));
    for (const QRect& r : outside)
        p.fillRect(r, look::ToQColor(backColor_));
}

void PictureBox::resizeEvent(QResizeEvent* event) {
    const double before = ratio_;
    ResizeImage(event->size().width(), event->size().height(),
                ratioSet_ ? ratio_ : devicePixelRatioF());
    QWidget::resizeEvent(event);
    emit Resized();
    if (ratio_ != before) emit RatioChanged();
}

void PictureBox::mousePressEvent(QMouseEvent* event) {
    const QPointF pos = event->position();
    emit MouseDown(VbButton(event->button()), VbShift(event->modifiers()), pos.x(), pos.y());
}

void PictureBox::mouseMoveEvent(QMouseEvent* event) {
    const QPointF pos = event->position();
    emit MouseMove(VbButton(event->buttons()), VbShift(event->modifiers()), pos.x(), pos.y());
}

void PictureBox::mouseReleaseEvent(QMouseEvent* event) {
    const QPointF pos = event->position();
    emit MouseUp(VbButton(event->button()), VbShift(event->modifiers()), pos.x(), pos.y());
}

void PictureBox::leaveEvent(QEvent* event) {
    QWidget::leaveEvent(event);
    emit MouseLeave();
}

void PictureBox::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    emit GotFocus();
}

void PictureBox::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    emit LostFocus();
}

void PictureBox::keyPressEvent(QKeyEvent* event) {
    emit KeyDown(event->key(), VbShift(event->modifiers()));
    QWidget::keyPressEvent(event);
}
