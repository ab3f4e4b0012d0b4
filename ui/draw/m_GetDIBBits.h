// Pixel access to a drawing surface's bitmap: one open, any number of pixel
// writes into one buffer, one close. The buffer has the layout of a 32-bit
// bottom-up device-independent bitmap (blue, green, red, unused per entry) and
// works without any Qt object, so it can be exercised on its own.
//
// Pixel (x, y), 1 <= x <= width and 1 <= y <= height with y counted from the
// top, is entry (height - y) * width + x, entries counted from 0. The column is
// taken as given, without subtracting 1: pixel (x, y) lands in screen column x
// (from 0) of screen row y - 1, and x = width wraps to column 0 of the row above.
// Kept: the charts have always been drawn this way, pixel for pixel.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

class PictureBox;
class QImage;

namespace m_GetDIBBits {

struct PixelBuffer {
    int Width = 0;
    int Height = 0;
    // Entry 0 (the bottom-left pixel) and the bytes from one bottom-up row to
    // the next: Width * 4 for a buffer of its own, minus the line length for a
    // view over a top-down image. Null when the buffer is empty.
    uint8_t* Bits = nullptr;
    std::ptrdiff_t RowStride = 0;
    // The bytes when the buffer owns them.
    std::vector<uint8_t> Owned;
    // Device pixels per unit of the positions the anti-aliased dots and lines
    // are given: a surface's pixel ratio, so the charts place them in logical
    // pixels and they land at device resolution. The pixel calls here work in
    // the buffer's own pixels.
    double Ratio = 1;
    // While set, only the screen columns and rows (from 0, top down) inside
    // this rectangle are written or read: a surface's clip.
    bool Clipped = false;
    int ClipLeft = 0, ClipTop = 0, ClipRight = -1, ClipBottom = -1;

    // A buffer of its own, all entries 0 (black).
    static PixelBuffer Make(int width, int height);
    // A view (no copy) over a top-down 32-bit image whose first line starts at
    // topLine; the image must outlive the view.
    static PixelBuffer View(uint8_t* topLine, int width, int height, std::ptrdiff_t bytesPerLine);

    PixelBuffer() = default;
    PixelBuffer(PixelBuffer&& other) noexcept;
    PixelBuffer& operator=(PixelBuffer&& other) noexcept;
    PixelBuffer(const PixelBuffer&) = delete;
    PixelBuffer& operator=(const PixelBuffer&) = delete;

    std::size_t EntryCount() const { return static_cast<std::size_t>(Width) * Height; }
    // The four bytes of an entry; nullptr outside the buffer.
    uint8_t* Entry(long long index);
    const uint8_t* Entry(long long index) const;
    // The entry index of pixel (x, y); -1 when (x, y) is outside 1..width, 1..height.
    long long IndexOf(int x, int y) const;
    // Pixel (x, y) by the rule above; nullptr outside.
    uint8_t* At(int x, int y);
    const uint8_t* At(int x, int y) const;
    // The entry in bottom-up row `row` and column `column` (both from 0, inside
    // the buffer); nullptr outside the clip.
    const uint8_t* EntryAt(long long row, long long column) const;

    // Stores each component clamped to 0..255; outside positions are ignored.
    void Set(int x, int y, int red, int green, int blue);
    // Each component becomes old * (1 - weight) + new * weight; outside ignored.
    // A weight outside 0..1 raises "Invalid procedure call or argument".
    void Blend(int x, int y, int red, int green, int blue, double weight);
    // 0x00BBGGRR of pixel (x, y); 0xFFFFFFFF outside.
    uint32_t Get(int x, int y) const;
};

// Opens pixel access on a surface's picture (or an image, or a buffer the
// caller owns). Pixel access stays open, module-wide, until FinishSetDIBPixel;
// opening again replaces the previous target. False when there is nothing to
// draw on (an empty picture).
bool InitSetDIBPixel(PictureBox& surface);
bool InitSetDIBPixel(QImage& image);
bool InitSetDIBPixel(PixelBuffer& buffer);

void SetDIBPixel(int x, int y, int red, int green, int blue);
void BlendDIBPixel(int x, int y, int red, int green, int blue, double weight);

// Writes the buffer back (the surface is shown anew) and ends pixel access.
void FinishSetDIBPixel(PictureBox& surface);
void FinishSetDIBPixel(QImage& image);
void FinishSetDIBPixel(PixelBuffer& buffer);

// True between an open and its close.
bool IsOpen();
// The buffer pixel access works on (empty when closed).
PixelBuffer& Current();

} // namespace m_GetDIBBits
