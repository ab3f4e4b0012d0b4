// The reusable widgets: titled frame looks, marker placement and visibility,
// the locked distribution list.
#include "ui/draw/DistributionCombo.h"
#include "ui/draw/Look.h"
#include "ui/draw/MarkerShape.h"
#include "ui/draw/PictureBox.h"
#include "ui/draw/TitledFrame.h"

#include "tests/helpers/TestSupport.h"

#include <QFile>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>

TEST(Look, ColoursConvertBothWays) {
    EXPECT_EQ(look::ToQColor(0x0000FF), QColor(255, 0, 0));
    EXPECT_EQ(look::FromQColor(QColor(1, 2, 3)), 0x030201u);
    // System colours resolve to light greys, the shadow darker than the face.
    const QColor face = look::ToQColor(look::kButtonFace);
    const QColor shadow = look::ToQColor(look::kButtonShadow);
    EXPECT_GT(face.lightness(), shadow.lightness());
    EXPECT_GE(shadow.lightness(), 110);
    EXPECT_LT(shadow.lightness(), 250);
    EXPECT_EQ(look::Resolve(look::kButtonShadow) & 0x80000000u, 0u);
}

TEST(Look, TahomaIsUsedWhenTheFontIsInstalled) {
    const QString family = look::RegisterAppFont();
    EXPECT_FALSE(family.isEmpty());
    if (QFile::exists("/usr/share/wine/fonts/tahoma.ttf")) {
        EXPECT_EQ(family, "Tahoma");
    }
    EXPECT_EQ(look::AppFontFamily(), family);
}

TEST(TitledFrame, FocusSwitchesTheCaptionBarColour) {
    TitledFrame frame("Spec Limits");
    auto* layout = new QVBoxLayout(&frame);
    layout->addWidget(new QLineEdit);
    frame.resize(220, 120);
    EXPECT_FALSE(frame.IsActive());
    const QImage inactive = frame.grab().toImage();
    frame.Focus(true);
    EXPECT_TRUE(frame.IsActive());
    const QImage active = frame.grab().toImage();
    // A point in the caption bar, right of the caption text.
    const QPoint p(200, frame.CaptionHeight() / 2);
    EXPECT_EQ(QColor(active.pixel(p)), look::AccentColor());
    EXPECT_EQ(QColor(inactive.pixel(p)), look::InactiveCaptionColor());
    frame.Focus(false);
    EXPECT_FALSE(frame.IsActive());
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
    EXPECT_EQ(marker.pos(), QPoint(100, 4));
    marker.SetVisible(true);
    EXPECT_TRUE(marker.Visible()); // though the strip itself is hidden
    marker.SetLeft(1e300);         // a limit dragged far off: out of sight, no failure
    EXPECT_DOUBLE_EQ(marker.Left(), 1e300);
    EXPECT_TRUE(marker.testAttribute(Qt::WA_TransparentForMouseEvents));
}

class DistributionComboTest : public testing_support::RecordingTest {};

TEST_F(DistributionComboTest, EveryDistributionHasAPicture) {
    const char* names[] = {"Normal",     "LogNormal",  "Exponential", "Weibull",   "Uniform",
                           "Triangular", "Johnson SB", "Johnson SL",  "Johnson SU"};
    for (const char* name : names) {
        const QIcon icon = DistributionCombo::DistributionIcon(name);
        ASSERT_FALSE(icon.isNull()) << name;
        // Some ink in the picture: the curve was drawn.
        const QImage image = icon.pixmap(QSize(32, 18)).toImage();
        int ink = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                ink += qAlpha(image.pixel(x, y)) > 0;
        EXPECT_GT(ink, 40) << name;
    }
    EXPECT_TRUE(DistributionCombo::DistributionIcon("Gamma").isNull());
    EXPECT_TRUE(ErrorLabels().empty());
}

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
