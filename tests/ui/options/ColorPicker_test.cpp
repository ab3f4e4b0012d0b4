#include "ui/options/ColorPicker.h"

#include "tests/helpers/TestSupport.h"

#include <QImage>
#include <QSignalSpy>

TEST(ColorPickerTest, HoldsAColourInBlueGreenRedOrderAndSignalsChanges) {
    ColorPicker picker;
    QSignalSpy changed(&picker, &ColorPicker::ColorChanged);
    picker.SetColor(0x0000FF);
    picker.SetColor(0x0000FF);   // same colour: no second signal
    picker.SetColor(0xFF00FF00); // only 24 bits are a colour
    ASSERT_EQ(changed.count(), 2);
    EXPECT_EQ(changed[0][0].value<uint32_t>(), 0x0000FFu);
    EXPECT_EQ(changed[1][0].value<uint32_t>(), 0x00FF00u);
    EXPECT_EQ(picker.Color(), 0x00FF00u);
}

TEST(ColorPickerTest, TheSwatchShowsTheColour) {
    ColorPicker picker;
    picker.resize(64, 28);
    picker.SetColor(0x0000FF); // red in the platform layout
    QImage image(picker.size(), QImage::Format_ARGB32);
    picker.render(&image);
    EXPECT_EQ(image.pixelColor(32, 14), QColor(255, 0, 0));
}
