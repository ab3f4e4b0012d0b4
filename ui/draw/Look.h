// The program's look: the "Tahoma" face, the old colour values (0x00BBGGRR and
// the system colours) and the accent of the titled frames.
#pragma once

#include <QColor>
#include <QFont>
#include <QString>

#include <cstdint>

namespace look {

// System colours as the design names them; everything else is 0x00BBGGRR.
inline constexpr uint32_t kButtonFace = 0x8000000F;
inline constexpr uint32_t kButtonShadow = 0x80000010;
inline constexpr uint32_t kWindowBackground = 0x80000005;
inline constexpr uint32_t kWindowText = 0x80000008;

inline constexpr uint32_t kWhite = 0xFFFFFF;
inline constexpr uint32_t kBlack = 0x000000;
inline constexpr uint32_t kRed = 0x0000FF;

// 0x00BBGGRR (or a system colour) to a QColor; system colours come from the
// application palette (fixed fallbacks when there is no application yet).
QColor ToQColor(uint32_t bgr);
// A QColor back to 0x00BBGGRR.
uint32_t FromQColor(const QColor& color);
// Component helpers for 0x00BBGGRR.
inline int RedOf(uint32_t bgr) {
    return static_cast<int>(bgr & 0xFF);
}
inline int GreenOf(uint32_t bgr) {
    return static_cast<int>((bgr >> 8) & 0xFF);
}
inline int BlueOf(uint32_t bgr) {
    return static_cast<int>((bgr >> 16) & 0xFF);
}
inline uint32_t RGB(int r, int g, int b) {
    return static_cast<uint32_t>(r & 0xFF) | (static_cast<uint32_t>(g & 0xFF) << 8) |
           (static_cast<uint32_t>(b & 0xFF) << 16);
}
// System colours resolved to their 0x00BBGGRR value; others returned as given.
uint32_t Resolve(uint32_t bgr);

// Registers /usr/share/wine/fonts/tahoma.ttf (and its bold face) once when
// present and returns the family to use: "Tahoma", else the system sans face.
// Needs a QGuiApplication.
QString RegisterAppFont();
// The family RegisterAppFont chose (registers on first use).
QString AppFontFamily();
// The application font at a point size.
QFont AppFont(double pointSize, bool bold = false, bool italic = false);

// Accent of an active titled frame, and the frame colours.
QColor AccentColor();
QColor InactiveCaptionColor();

} // namespace look
