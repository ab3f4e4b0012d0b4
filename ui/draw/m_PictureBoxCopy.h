// "Copy Image to Clipboard": the whole picture of a drawing surface goes to the
// system clipboard as an image (Qt offers it as PNG and as a bitmap).
#pragma once

class PictureBox;
class QImage;
class QString;

namespace m_PictureBoxCopy {

void CopyEntirePicture(PictureBox& surface);
// Any image to the clipboard, offered as CopyEntirePicture offers a surface's.
void CopyImage(const QImage& image);

// "Save Chart As...": the whole picture, at device resolution, as a PNG file.
// False when the file could not be written.
bool SavePicture(PictureBox& surface, const QString& path);

} // namespace m_PictureBoxCopy
