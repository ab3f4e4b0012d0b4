#include "ui/draw/m_GetDIBBits.h"

#include "support/ErrorTrap.h"
#include "ui/draw/PictureBox.h"

#include <QImage>

#include <algorithm>
#include <cmath>

namespace m_GetDIBBits {

namespace {

constexpr const char* kModule = "Pondera.m_GetDIBBits";

struct Access {
    PixelBuffer View;              // over a surface's picture
    PixelBuffer* Target = nullptr; // what the pixel calls write to
    PixelBuffer Empty;
};

Access& State() {
    static Access access;
    return access;
}

uint8_t Clamp(int v) {
    return static_cast<uint8_t>(std::clamp(v, 0, 255));
}

// A blended component as a byte.
// Kept: rounded half to even as the old byte conversion did; a value beyond a
// byte is an overflow, as it was there.
uint8_t ToByte(double v) {
    const double r = std::nearbyint(v);
    if (!(r >= 0.0 && r <= 255.0)) support::Raise(support::kErrOverflow, support::kAppTitle, "");
    return static_cast<uint8_t>(r);
}

bool OpenOn(QImage& image) {
    if (image.isNull() || image.width() < 1 || image.height() < 1) return false;
    if (image.format() != QImage::Format_RGB32 && image.format() != QImage::Format_ARGB32 &&
        image.format() != QImage::Format_ARGB32_Premultiplied)
        image.convertTo(QImage::Format_RGB32);
    Access& s = State();
    s.View = PixelBuffer::View(image.bits(), image.width(), image.height(), image.bytesPerLine());
    s.View.Ratio = image.devicePixelRatio();
    s.Target = &s.View;
    return true;
}

void Close() {
    Access& s = State();
    s.Target = nullptr;
    s.View = PixelBuffer();
}

} // namespace

// ---- PixelBuffer -------------------------------------------------------------

PixelBuffer PixelBuffer::Make(int width, int height) {
    PixelBuffer b;
    if (width < 1 || height < 1) return b;
    b.Width = width;
    b.Height = height;
    b.Owned.assign(static_cast<std::size_t>(width) * height * 4, 0);
    b.Bits = b.Owned.data();
    b.RowStride = static_cast<std::ptrdiff_t>(width) * 4;
    return b;
}

PixelBuffer PixelBuffer::View(uint8_t* topLine, int width, int height,
                              std::ptrdiff_t bytesPerLine) {
    PixelBuffer b;
    if (!topLine || width < 1 || height < 1) return b;
    b.Width = width;
    b.Height = height;
    // Bottom-up: entry 0 is the first pixel of the image's last line.
    b.Bits = topLine + (height - 1) * bytesPerLine;
    b.RowStride = -bytesPerLine;
    return b;
}

PixelBuffer::PixelBuffer(PixelBuffer&& other) noexcept {
    *this = std::move(other);
}

PixelBuffer& PixelBuffer::operator=(PixelBuffer&& other) noexcept {
    if (this == &other) return *this;
    const bool owns = other.Bits && other.Bits == other.Owned.data();
    Width = other.Width;
    Height = other.Height;
    RowStride = other.RowStride;
    Ratio = other.Ratio;
    Clipped = other.Clipped;
    ClipLeft = other.ClipLeft, ClipTop = other.ClipTop;
    ClipRight = other.ClipRight, ClipBottom = other.ClipBottom;
    Owned = std::move(other.Owned);
    Bits = owns ? Owned.data() : other.Bits;
    other.Width = other.Height = 0;
    other.Bits = nullptr;
    other.RowStride = 0;
    other.Owned.clear();
    return *this;
}

uint8_t* PixelBuffer::Entry(long long index) {
    return const_cast<uint8_t*>(static_cast<const PixelBuffer*>(this)->Entry(index));
}

const uint8_t* PixelBuffer::Entry(long long index) const {
    if (!Bits || index < 0 || index >= static_cast<long long>(EntryCount())) return nullptr;
    return EntryAt(index / Width, index % Width);
}

const uint8_t* PixelBuffer::EntryAt(long long row, long long column) const {
    if (Clipped) {
        const long long screenRow = Height - 1 - row;
        if (column < ClipLeft || column > ClipRight || screenRow < ClipTop ||
            screenRow > ClipBottom)
            return nullptr;
    }
    return Bits + row * RowStride + column * 4;
}

long long PixelBuffer::IndexOf(int x, int y) const {
    if (x < 1 || x > Width || y < 1 || y > Height) return -1;
    return static_cast<long long>(Height - y) * Width + x;
}

uint8_t* PixelBuffer::At(int x, int y) {
    return const_cast<uint8_t*>(static_cast<const PixelBuffer*>(this)->At(x, y));
}

// Entry(IndexOf(x, y)) without dividing: row height - y, column x, except
// that x = width is column 0 of the next row (none above the top row).
const uint8_t* PixelBuffer::At(int x, int y) const {
    if (!Bits || x < 1 || x > Width || y < 1 || y > Height) return nullptr;
    if (x < Width) return EntryAt(Height - y, x);
    return y > 1 ? EntryAt(Height - y + 1, 0) : nullptr;
}

void PixelBuffer::Set(int x, int y, int red, int green, int blue) {
    uint8_t* p = At(x, y);
    if (!p) return;
    p[0] = Clamp(blue);
    p[1] = Clamp(green);
    p[2] = Clamp(red);
}

void PixelBuffer::Blend(int x, int y, int red, int green, int blue, double weight) {
    uint8_t* p = At(x, y);
    if (!p) return;
    // A weight is a share of the pixel; anything else is a caller's mistake.
    if (!(weight >= 0.0 && weight <= 1.0))
        support::Raise(support::kErrInvalidCall, support::kAppTitle, "");
    const double keep = 1.0 - weight;
    const uint8_t b = ToByte(p[0] * keep + blue * weight);
    const uint8_t g = ToByte(p[1] * keep + green * weight);
    const uint8_t r = ToByte(p[2] * keep + red * weight);
    p[0] = b;
    p[1] = g;
    p[2] = r;
}

uint32_t PixelBuffer::Get(int x, int y) const {
    const uint8_t* p = At(x, y);
    if (!p) return 0xFFFFFFFF;
    return static_cast<uint32_t>(p[2]) | (static_cast<uint32_t>(p[1]) << 8) |
           (static_cast<uint32_t>(p[0]) << 16);
}

// ---- Pixel access --------------------------------------------------------------

bool InitSetDIBPixel(QImage& image) {
    return support::TrapValue({kModule, __func__}, false, [&] {
        Close();
        return OpenOn(image);
    });
}

bool InitSetDIBPixel(PictureBox& surface) {
    if (!InitSetDIBPixel(surface.Image())) return false;
    if (surface.Clipped()) {
        PixelBuffer& view = State().View;
        const QRect clip = surface.DeviceClip();
        view.Clipped = true;
        view.ClipLeft = clip.left(), view.ClipTop = clip.top();
        view.ClipRight = clip.right(), view.ClipBottom = clip.bottom();
    }
    return true;
}

bool InitSetDIBPixel(PixelBuffer& buffer) {
    return support::TrapValue({kModule, __func__}, false, [&] {
        Close();
        if (!buffer.Bits) return false;
        State().Target = &buffer;
        return true;
    });
}

void SetDIBPixel(int x, int y, int red, int green, int blue) {
    support::Trap({kModule, __func__}, [&] {
        if (PixelBuffer* target = State().Target) target->Set(x, y, red, green, blue);
    });
}

void BlendDIBPixel(int x, int y, int red, int green, int blue, double weight) {
    support::Trap({kModule, __func__}, [&] {
        if (PixelBuffer* target = State().Target) target->Blend(x, y, red, green, blue, weight);
    });
}

// The pixels were written in place, so writing back is showing the surface.
void FinishSetDIBPixel(PictureBox& surface) {
    support::Trap({kModule, __func__}, [&] {
        Close();
        surface.Refresh();
    });
}

void FinishSetDIBPixel(QImage&) {
    support::Trap({kModule, __func__}, [&] { Close(); });
}

void FinishSetDIBPixel(PixelBuffer&) {
    support::Trap({kModule, __func__}, [&] { Close(); });
}

bool IsOpen() {
    return State().Target != nullptr;
}

PixelBuffer& Current() {
    Access& s = State();
    return s.Target ? *s.Target : s.Empty;
}

} // namespace m_GetDIBBits
