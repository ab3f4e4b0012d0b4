#include "ui/draw/m_PictureBoxCopy.h"

#include "support/ErrorTrap.h"
#include "ui/draw/PictureBox.h"

#include <QBuffer>
#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>

namespace m_PictureBoxCopy {

namespace {
constexpr const char* kModule = "Pondera.m_PictureBoxCopy";
}

void CopyImage(const QImage& image) {
    support::Trap({kModule, __func__}, [&] {
        QClipboard* clipboard = QGuiApplication::clipboard();
        if (!clipboard) support::Raise(support::kErrInvalidCall, support::kAppTitle, "");
        // PNG is offered first (lossless, what most programs paste best), the
        // bitmap forms after it.
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG");
        auto* data = new QMimeData;
        data->setData(QStringLiteral("image/png"), png);
        data->setImageData(image);
        clipboard->setMimeData(data, QClipboard::Clipboard);
    });
}

void CopyEntirePicture(PictureBox& surface) {
    // A copy of its own: the clipboard keeps it after the surface redraws.
    support::Trap({kModule, __func__}, [&] { CopyImage(surface.Image().copy()); });
}

bool SavePicture(PictureBox& surface, const QString& path) {
    return support::TrapValue({kModule, __func__}, false,
                              [&] { return surface.Image().save(path, "PNG"); });
}

} // namespace m_PictureBoxCopy
