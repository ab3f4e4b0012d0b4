// The reusable widgets: titled frame looks and the locked distribution list.
#include "ui/draw/DistributionCombo.h"
#include "ui/draw/Look.h"
#include "ui/draw/PictureBox.h"
#include "ui/draw/TitledFrame.h"

#include "tests/helpers/TestSupport.h"

#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>

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
    QTest::keyClick(&combo, Qt::Key_Up); // from "Normal"
    EXPECT_EQ(combo.currentIndex(), 2);
}
