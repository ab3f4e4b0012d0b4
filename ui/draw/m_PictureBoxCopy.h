// "Copy Image to Clipboard": the whole picture of a drawing surface goes to the
// system clipboard as an image (Qt offers it as PNG and as a bitmap).
#pragma once

class PictureBox;

namespace m_PictureBoxCopy {

void CopyEntirePicture(PictureBox& surface);

} // namespace m_PictureBoxCopy
