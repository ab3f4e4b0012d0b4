// The drawing surface: colours in 0x00BBGGRR, lines and boxes where asked,
// text cursor, the picture kept across a resize, and the mouse signals.
#include "ui/draw/PictureBox.h"

#include "tests/helpers/TestSupport.h"

#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

PictureBox* MakeBox(int w, int h, uint32_t back = 0xFFFFFF) {
    auto* box = new PictureBox;
    box->SetPictureSize(w, h);
    box->SetBackColor(back);
    box->Cls();
    return box;
}

int CountNot(PictureBox& box, uint32_t colour) {
    int n = 0;
    for (int y = 0; y < box.ScaleHeight(); ++y)
        for (int x = 0; x < box.ScaleWidth(); ++x)
            n += box.GetPixel(x, y) != colour;
    return n;
}

} // namespace

TEST(PictureBox, ColoursAreBlueGreenRedAndLinesAndBoxesCoverTheirEnds) {
    std::unique_ptr<PictureBox> box(MakeBox(30, 30, 0x0000FF)); // red
    EXPECT_EQ(box->Image().pixel(3, 3), qRgb(255, 0, 0));
    EXPECT_EQ(box->GetPixel(3, 3), 0x0000FFu);
    EXPECT_EQ(box->GetPixel(-1, 0), PictureBox::kInvalidPixel);
    EXPECT_EQ(box->GetPixel(30, 0), PictureBox::kInvalidPixel);
    box->SetBackColor(0xFFFFFF);
    box->Cls();
    box->SetForeColor(0xFF0000); // blue
    box->Line(5, 2, 5, 8);
    EXPECT_EQ(box->Image().pixel(5, 8), qRgb(0, 0, 255));
    EXPECT_EQ(CountNot(*box, 0xFFFFFF), 7);
    box->Cls();
    box->Box(2, 3, 6, 9, 0x00FF00, true);
    EXPECT_EQ(CountNot(*box, 0xFFFFFF), 5 * 7); // corners inclusive
    box->Cls();
    box->SetDrawWidth(3);
    box->Line(10, 5, 10, 25, 0x000000);
    EXPECT_EQ(CountNot(*box, 0xFFFFFF), 3 * 21);
}

TEST(PictureBox, ClsResetsTextCursorAndPrintMovesDownOneLine) {
    std::unique_ptr<PictureBox> box(MakeBox(120, 60));
    box->CurrentX = 30;
    box->CurrentY = 7;
    box->Print("0.00");
    EXPECT_EQ(box->CurrentX, 0);
    EXPECT_NEAR(box->CurrentY, 7 + box->TextHeight(), 1e-9);
    // Ink only right of and below the cursor, inside one text line.
    bool inked = false;
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 120; ++x)
            if (box->GetPixel(x, y) != 0xFFFFFFu) {
                inked = true;
                EXPECT_GE(x, 30);
                EXPECT_GE(y, 7);
                EXPECT_LT(y, 7 + box->TextHeight() + 1);
            }
    EXPECT_TRUE(inked);
    box->Cls();
    EXPECT_EQ(box->CurrentX, 0);
    EXPECT_EQ(box->CurrentY, 0);
    EXPECT_EQ(CountNot(*box, 0xFFFFFF), 0);
}

TEST(PictureBox, OpaqueTextFillsItsCellWithTheBackColour) {
    std::unique_ptr<PictureBox> box(MakeBox(80, 40, 0xFFFFFF));
    box->Box(0, 0, 79, 39, 0x00FF00, true); // green picture, white back colour
    box->CurrentX = 5;
    box->CurrentY = 5;
    box->Print("LSL");
    // The cell's last row lies below the baseline: no ink from these capitals.
    const int below = static_cast<int>(box->TextHeight()) - 1;
    EXPECT_EQ(box->GetPixel(6, 5 + below), 0xFFFFFFu);
    box->SetFontTransparent(true);
    box->CurrentX = 5;
    box->CurrentY = 22;
    box->Print("LSL");
    EXPECT_EQ(box->GetPixel(6, 22 + below), 0x00FF00u);
}

TEST(PictureBox, ResizeKeepsWhatFitsAndFillsTheRestWithBackColour) {
    std::unique_ptr<PictureBox> box(MakeBox(20, 10, 0xFFFFFF));
    box->Box(0, 0, 19, 9, 0x0000FF, true);
    box->SetPictureSize(30, 15);
    EXPECT_EQ(box->ScaleWidth(), 30);
    EXPECT_EQ(box->ScaleHeight(), 15);
    EXPECT_EQ(box->GetPixel(19, 9), 0x0000FFu);
    EXPECT_EQ(box->GetPixel(25, 5), 0xFFFFFFu);
    EXPECT_EQ(box->GetPixel(5, 12), 0xFFFFFFu);
    box->SetPictureSize(0, 0); // never an empty picture to draw on
    EXPECT_EQ(box->ScaleWidth(), 1);
    box->Line(0, 0, 100, 100);
}

TEST(PictureBox, FarOrNoNumberCoordinatesDrawNothingHarmful) {
    std::unique_ptr<PictureBox> box(MakeBox(20, 20));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    box->Line(nan, 1, 5, 5);
    box->Line(1, 1, inf, 5);
    box->Box(nan, 0, 3, 3, 0, true);
    EXPECT_EQ(CountNot(*box, 0xFFFFFF), 0);
    box->Line(10, -1e300, 10, 1e300, 0x000000); // a vertical line through everything
    EXPECT_EQ(box->GetPixel(10, 0), 0u);
    EXPECT_EQ(box->GetPixel(10, 19), 0u);
    box->CurrentX = nan;
    box->Print("x");
}

TEST(PictureBox, MouseSignalsCarryOldButtonCodesAndPixelPositions) {
    PictureBox box;
    box.resize(100, 80);
    box.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&box));
    QSignalSpy down(&box, &PictureBox::MouseDown);
    QSignalSpy up(&box, &PictureBox::MouseUp);
    QTest::mousePress(&box, Qt::LeftButton, Qt::ShiftModifier, QPoint(12, 34));
    QTest::mouseRelease(&box, Qt::RightButton, Qt::NoModifier, QPoint(40, 50));
    ASSERT_EQ(down.count(), 1);
    EXPECT_EQ(down[0][0].toInt(), 1);
    EXPECT_EQ(down[0][1].toInt(), 1);
    EXPECT_DOUBLE_EQ(down[0][2].toDouble(), 12);
    EXPECT_DOUBLE_EQ(down[0][3].toDouble(), 34);
    ASSERT_EQ(up.count(), 1);
    EXPECT_EQ(up[0][0].toInt(), 2);
    EXPECT_EQ(VbButton(Qt::LeftButton | Qt::MiddleButton), 5);
    EXPECT_EQ(VbShift(Qt::ControlModifier | Qt::AltModifier), 6);
}
