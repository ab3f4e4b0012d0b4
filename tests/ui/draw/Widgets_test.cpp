// The reusable widgets: titled frame looks, marker placement and visibility,
// the locked distribution list.
#include "ui/draw/DistributionCombo.h"
#include "ui/draw/Look.h"
#include "ui/draw/MarkerShape.h"
#include "ui/draw/PictureBox.h"
#include "ui/draw/TitledFrame.h"

#include "tests/helpers/TestSupport.h"

#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>

TEST(Look, ColoursConvertBothWays) {
    EXPECT_EQ(look::ToQColor(0x0000FF), QColor(255, 0, 0));
    EXPECT_EQ(look::FromQColor(QColor(1, 2, 3)), 0x030201u);
    // System colours resolve to light greys, the shadow darker than the face.
    EXPECT_GT(look::ToQColor(look::kButtonFace).lightness(),
              look::ToQColor(look::kButtonShadow).lightness());
    EXPECT_EQ(look::Resolve(look::kButtonShadow) & 0x80000000u, 0u);
}

TEST(TitledFrame, FocusSwitchesTheCaptionBarColour) {
    TitledFrame frame("Spec Limits");
    auto* layout = new QVBoxLayout(&frame);
    layout->addWidget(new QLineEdit);
    frame.resize(220, 120);
    const QImage inactive = frame.grab().toImage();
    frame.Focus(true);
    EXPECT_TRUE(frame.IsActive());
    const QImage active = frame.grab().toImage();
    // A point in the caption bar, right of the caption text.
    const QPoint p(200, frame.CaptionHeight() / 2);
    EXPECT_EQ(QColor(active.pixel(p)), look::AccentColor());
    EXPECT_EQ(QColor(inactive.pixel(p)), look::InactiveCaptionColor());
    // The children sit below the caption bar.
    EXPECT_GT(frame.contentsMargins().top(), frame.CaptionHeight());
}

TEST(MarkerShape, KeepsFractionalPositionAndItsVisibleFlag) {
    PictureBox strip;
    strip.SetPictureSize(300, 20);
    MarkerShape marker(&strip, MarkerShape::Kind::TriangleDown, 11, 9);
    marker.Move(100.4, 3.6);
    EXPECT_DOUBLE_EQ(marker.Left(), 100.4);
    EXPECT_DOUBLE_EQ(marker.Top(), 3.6);
    marker.SetVisible(true);
    EXPECT_TRUE(marker.Visible()); // though the strip itself is hidden
    marker.SetLeft(1e300);         // a limit dragged far off: out of sight, no failure
    EXPECT_TRUE(marker.testAttribute(Qt::WA_TransparentForMouseEvents));
}

class DistributionComboTest : public testing_support::RecordingTest {};

TEST_F(DistributionComboTest, LockedListRefusesTheUserButNotTheProgram) {
    DistributionCombo combo;
    combo.SetDistributions({"Johnson SB", "Johnson SL", "Johnson SU", "Normal"});
    combo.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&combo));
    EXPECT_EQ(combo.Text(), "Johnson SB");
    combo.SetLocked(true);
    EXPECT_EQ(combo.palette().color(QPalette::Button), look::ToQColor(look::kButtonFace));
    QTest::keyClick(&combo, Qt::Key_Down);
    QTest::keyClick(&combo, Qt::Key_End);
    QTest::mouseClick(&combo, Qt::LeftButton);
    EXPECT_EQ(combo.currentIndex(), 0);
    EXPECT_TRUE(combo.SelectText("Normal"));
    EXPECT_EQ(combo.Text(), "Normal");
    EXPECT_FALSE(combo.SelectText("Weibull"));

    combo.SetLocked(false);
    EXPECT_EQ(combo.palette().color(QPalette::Base), QColor(Qt::white));
    combo.setCurrentIndex(0);
    QTest::keyClick(&combo, Qt::Key_Down);
    EXPECT_EQ(combo.currentIndex(), 1);
}
