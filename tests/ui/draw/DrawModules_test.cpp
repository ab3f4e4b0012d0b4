// Rotated text and the clipboard copy.
#include "ui/draw/PictureBox.h"
#include "ui/draw/m_PictureBoxCopy.h"
#include "ui/draw/m_TextRotate.h"

#include "tests/helpers/TestSupport.h"

#include <QClipboard>
#include <QGuiApplication>
#include <gtest/gtest.h>

namespace {

// Bounding box of everything not white.
QRect Ink(PictureBox& box) {
    QRect r;
    for (int y = 0; y < box.ScaleHeight(); ++y)
        for (int x = 0; x < box.ScaleWidth(); ++x)
            if (box.GetPixel(x, y) != 0xFFFFFFu) r = r.united(QRect(x, y, 1, 1));
    return r;
}

class DrawModulesTest : public testing_support::RecordingTest {};

} // namespace

TEST_F(DrawModulesTest, AngleNineHundredReadsUpwardFromThePoint) {
    PictureBox box;
    box.SetPictureSize(60, 160);
    box.SetBackColor(0xFFFFFF);
    box.Cls();
    m_TextRotate::PrintRotatedText(box, "Kurtosis", 10, 140, 900, "Tahoma", 13, false, false);
    const QRect ink = Ink(box);
    ASSERT_TRUE(ink.isValid());
    EXPECT_GT(ink.height(), 2 * ink.width()); // upright
    EXPECT_LE(ink.bottom(), 141);             // it rises from y
    EXPECT_GE(ink.left(), 9);                 // the cell's top is toward the left: x..x+13
    EXPECT_LE(ink.right(), 10 + 13);
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(DrawModulesTest, CopyPutsThePictureOnTheClipboard) {
    PictureBox box;
    box.SetPictureSize(50, 30);
    box.SetBackColor(0xFFFFFF);
    box.Cls();
    box.Box(5, 5, 20, 20, 0x0000FF, true);
    m_PictureBoxCopy::CopyEntirePicture(box);
    box.Cls(); // the clipboard keeps its own copy
    const QImage copied = QGuiApplication::clipboard()->image();
    ASSERT_EQ(copied.size(), QSize(50, 30));
    EXPECT_EQ(QColor(copied.pixel(10, 10)), QColor(255, 0, 0));
    EXPECT_EQ(QColor(copied.pixel(30, 10)), QColor(255, 255, 255));
    EXPECT_TRUE(ErrorLabels().empty());
}
