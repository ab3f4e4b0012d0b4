// Text printed at an angle, as the moments chart's upright axis title needs.
#pragma once

#include <QString>

class PictureBox;
class QImage;

namespace m_TextRotate {

// Prints text with the top-left corner of its first character at (x, y),
// turned counter-clockwise by angle tenths of a degree (900 reads upward).
// size is the character cell height in pixels; bold and italic as named. The
// background stays as it is.
void PrintRotatedText(PictureBox& surface, const QString& text, double x, double y, int angle,
                      const QString& fontName, int size, bool bold, bool italic);
void PrintRotatedText(QImage& image, const QString& text, double x, double y, int angle,
                      const QString& fontName, int size, bool bold, bool italic);

} // namespace m_TextRotate
