// Rotated text, the clipboard copy and the saved picture.
#include "ui/draw/PictureBox.h"
#include "ui/draw/m_PictureBoxCopy.h"
#include "ui/draw/m_TextRotate.h"

#include "tests/helpers/TestSupport.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QTemporaryDir>

namespace {
class DrawModulesTest : public testing_support::RecordingTest {};
} // namespace

// In logical pixels at every ratio: the ink's box scales with the ratio.
TEST_F(DrawModulesTest, AngleNineHundredReadsUpwardFromThePoint) {
    for (double ratio : {1.0, 1.5}) {
        PictureBox box;
        box.SetPictureSize(60, 160);
        box.SetPixelRatio(ratio);
        box.Cls();
        m_TextRotate::PrintRotatedText(box, "Kurtosis", 10, 140, 900, "Tahoma", 13, false, false);
        const QImage& image = box.Image();
        QRect ink;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if ((image.pixel(x, y) & 0xFFFFFF) != 0xFFFFFF) ink |= QRect(x, y, 1, 1);
        ASSERT_TRUE(ink.isValid());
        EXPECT_GT(ink.height(), 2 * ink.width()); // upright
        EXPECT_LE(ink.bottom(), 141 * ratio);     // it rises from y
        EXPECT_GE(ink.left(), 9 * ratio);         // the cell's top is toward the left
        EXPECT_LE(ink.right(), (10 + 13) * ratio);
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

// Both carry the device picture.
TEST_F(DrawModulesTest, CopyPutsTheDevicePictureOnTheClipboardAsPngFirstAndSaveWritesIt) {
    PictureBox box;
    box.SetPictureSize(50, 30);
    box.SetPixelRatio(2);
    box.Cls();
    box.Box(5, 5, 20, 20, 0x0000FF, true);
    m_PictureBoxCopy::CopyEntirePicture(box);
    QTemporaryDir dir;
    const QString path = dir.filePath("chart.png");
    ASSERT_TRUE(m_PictureBoxCopy::SavePicture(box, path));
    EXPECT_FALSE(m_PictureBoxCopy::SavePicture(box, "/nonexistent-dir/chart.png"));
    box.Cls(); // the clipboard keeps its own copy
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    ASSERT_TRUE(data);
    EXPECT_EQ(data->formats().value(0), "image/png");
    for (const QImage& image : {QGuiApplication::clipboard()->image(), QImage(path, "PNG")}) {
        ASSERT_EQ(image.size(), QSize(100, 60));
        EXPECT_EQ(QColor(image.pixel(20, 20)), QColor(255, 0, 0));
        EXPECT_EQ(QColor(image.pixel(60, 20)), QColor(255, 255, 255));
    }
    EXPECT_TRUE(ErrorLabels().empty());
}
