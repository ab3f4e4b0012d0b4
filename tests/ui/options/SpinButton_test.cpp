#include "ui/options/SpinButton.h"

#include "tests/helpers/TestSupport.h"

#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

TEST(SpinButtonTest, StaysInItsRangeAndDisablesTheArrowAtEachEnd) {
    SpinButton spin;
    spin.SetRange(1, 3);
    QSignalSpy changed(&spin, &SpinButton::ValueChanged);
    EXPECT_EQ(spin.Value(), 1);
    EXPECT_FALSE(spin.DownArrow()->isEnabled());
    QTest::mouseClick(spin.UpArrow(), Qt::LeftButton);
    QTest::mouseClick(spin.UpArrow(), Qt::LeftButton);
    QTest::mouseClick(spin.UpArrow(), Qt::LeftButton); // already at the top
    EXPECT_EQ(spin.Value(), 3);
    EXPECT_EQ(changed.count(), 2);
    EXPECT_FALSE(spin.UpArrow()->isEnabled());
    spin.SetValue(-50);
    EXPECT_EQ(spin.Value(), 1);
    spin.SetRange(5, 2); // an inverted range collapses to its minimum
    EXPECT_EQ(spin.Value(), 5);
    EXPECT_EQ(spin.Maximum(), 5);
    EXPECT_EQ(spin.focusPolicy(), Qt::NoFocus);
}
