#include "ui/draw/m_PictureBoxCopy.h"

#include "support/ErrorTrap.h"
#include "ui/draw/PictureBox.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QImage>

namespace m_PictureBoxCopy {

namespace {
constexpr const char* kCopyEntirePicture = "Pondera.m_PictureBoxCopy.CopyEntirePicture";
}

void CopyEntirePicture(PictureBox& surface) {
    support::Trap(kCopyEntirePicture, [&] {
        QClipboard* clipboard = QGuiApplication::clipboard();
        if (!clipboard) support::Raise(support::kErrInvalidCall, support::kAppTitle, "");
        // A copy of its own: the clipboard keeps it after the surface redraws.
        clipboard->setImage(surface.Image().copy(), QClipboard::Clipboard);
    });
}

} // namespace m_PictureBoxCopy
