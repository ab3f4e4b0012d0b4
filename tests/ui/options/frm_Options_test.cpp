// The options dialog driven as a person does: text typed into the real boxes,
// focus moved with Tab, buttons clicked; what it stored is read back from a
// private settings file.
#include "ui/options/frm_Options.h"

#include "settings/CAppSettings.h"
#include "settings/DisplayOptions.h"
#include "tests/settings/StoreFixture.h"
#include "ui/options/ColorPicker.h"
#include "ui/options/SpinButton.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

using namespace DisplayOptions;

namespace {

class OptionsDialogTest : public settings_test::OptionsStoreTest {
  protected:
    static std::string Stored(const char* key) {
        const auto v = AppSettings().GetSetting(kSection, key, std::string("<none>"));
        return std::holds_alternative<std::string>(v) ? std::get<std::string>(v) : "<number>";
    }
    // Shows the dialog as the active window, so focus moves as on a desktop.
    static void ShowActive(frm_Options& dialog) {
        dialog.show();
        dialog.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    }
    static void Type(QLineEdit* box, const QString& text) {
        box->setFocus(Qt::OtherFocusReason);
        box->selectAll();
        QTest::keyClick(box, Qt::Key_Delete);
        QTest::keyClicks(box, text);
    }
    static void Settle() {
        for (int i = 0; i < 3; ++i)
            QApplication::processEvents();
    }
};

const std::string kTicksMessage = "Number of X Ticks must be an integer greater or equal to one.";
const std::string kStDevMessage = "Number of standard deviations must greater than zero.";

} // namespace

TEST_F(OptionsDialogTest, FormLoadShowsTheOptionsInMemory) {
    AppDecPlaces = 2;
    AppNumStDev = 3.25;
    AppXTicks = 7;
    AppYTicks = 4;
    AppXMin = -1.234;
    AppXMax = 12.5;
    AppDisplay = false;
    AppRangeMode = true;
    AppBackColor = 0x123456;
    frm_Options dialog;

    // The end points in FormatDec of the selected places.
    EXPECT_EQ((QStringList{dialog.dd_Decimal->currentText(), dialog.tb_NumStDev->text(),
                           dialog.tb_XTicks->text(), dialog.tb_YTicks->text(),
                           dialog.tb_XMin->text(), dialog.tb_XMax->text()}),
              (QStringList{"2", "3.25", "7", "4", "-1.23", "12.50"}));
    EXPECT_TRUE(dialog.ob_Decimal->isChecked());
    EXPECT_TRUE(dialog.ob_Endpoints->isChecked());
    EXPECT_EQ(dialog.cp_Background->Color(), 0x123456u);
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(OptionsDialogTest, MinimumAboveMaximumShowsTheTwoLineMessageAndStoresNothing) {
    frm_Options dialog;
    QSignalSpy applied(&dialog, &frm_Options::Applied);
    dialog.ob_Endpoints->click();
    Type(dialog.tb_XMin, "5");
    Type(dialog.tb_XMax, "4");
    dialog.cp_Background->SetColor(0x00FF00);
    QTest::mouseClick(dialog.but_Apply, Qt::LeftButton);

    ASSERT_EQ(Rec().Messages.size(), 1u);
    EXPECT_EQ(Rec().Messages[0].Title, "Pondera");
    EXPECT_EQ(Rec().Messages[0].Text,
              "Display range minimum must be less than or equal to the display range maximum.\n"
              "Please change the either the minimum or maximum value.");
    EXPECT_EQ(Stored(kAppXMin), "<none>");
    EXPECT_EQ(AppBackColor, 0xFFFFFFu);
    EXPECT_EQ(applied.count(), 0);
}

TEST_F(OptionsDialogTest, EachBoxChecksItsTextWhenItLosesTheFocus) {
    struct Case {
        const char* name;
        QLineEdit* frm_Options::*box;
        const char* text;
        std::string message; // empty: accepted
    };
    const Case cases[] = {
        {"st.dev. zero", &frm_Options::tb_NumStDev, "0", kStDevMessage},
        {"st.dev. fine", &frm_Options::tb_NumStDev, "0.5", ""},
        {"minimum text", &frm_Options::tb_XMin, "low", "Display range minimum must be a number."},
        {"maximum text", &frm_Options::tb_XMax, "1..2", "Display range maximum must be a number."},
        {"x ticks fraction", &frm_Options::tb_XTicks, "2.5", kTicksMessage},
        {"y ticks zero names X ticks", &frm_Options::tb_YTicks, "0", kTicksMessage},
    };
    AppRangeMode = true; // the end point boxes are enabled
    for (const auto& c : cases) {
        Rec().Clear();
        frm_Options dialog;
        dialog.ob_StDev->setChecked(true);
        dialog.ob_Endpoints->setChecked(c.box != &frm_Options::tb_NumStDev);
        ShowActive(dialog);
        QLineEdit* box = dialog.*c.box;
        Type(box, c.text);
        QTest::keyClick(box, Qt::Key_Tab);
        Settle();
        EXPECT_EQ(MessageTexts(), c.message.empty() ? std::vector<std::string>{}
                                                    : std::vector<std::string>{c.message})
            << c.name;
        if (c.message.empty()) {
            EXPECT_NE(QApplication::focusWidget(), box) << c.name;
        } else {
            EXPECT_EQ(Rec().Messages[0].Title, "Pondera");
            EXPECT_EQ(QApplication::focusWidget(), box) << c.name; // the focus came back
            EXPECT_EQ(box->selectedText(), c.text) << c.name;
        }
    }
}

TEST_F(OptionsDialogTest, ApplyKeepsTheDialogOpenAndCancelThenKeepsWhatWasApplied) {
    frm_Options dialog;
    ShowActive(dialog);
    Type(dialog.tb_XTicks, "9");
    QTest::mouseClick(dialog.but_Apply, Qt::LeftButton);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(dialog.but_Cancel->text(), "Close");
    EXPECT_EQ(AppXTicks, 9);

    Type(dialog.tb_XTicks, "3"); // changed, not applied
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(AppXTicks, 9);
    EXPECT_EQ(Stored(kAppXTicks), "9");
    EXPECT_EQ(dialog.sb_XTicks->Value(), 9);

    ShowActive(dialog);
    EXPECT_EQ(dialog.but_Cancel->text(), "Cancel");
}

TEST_F(OptionsDialogTest, CancelPutsBackTheFieldsTheWindowHadWritten) {
    frm_Options dialog;
    dialog.tb_XMin->setText("-2.600000"); // the main window writes the last drawn range
    dialog.tb_XMax->setText("2.600000");
    dialog.dd_Decimal->setCurrentIndex(6);
    ShowActive(dialog);
    dialog.ob_Endpoints->click();
    Type(dialog.tb_XMin, "-100");
    dialog.dd_Decimal->setCurrentIndex(1);
    dialog.cp_OutSpec->SetColor(0x00FFFF);
    Type(dialog.tb_XTicks, "x"); // a bad box left for Cancel is not checked
    QTest::mouseClick(dialog.but_Cancel, Qt::LeftButton);
    Settle();

    EXPECT_TRUE(Rec().Messages.empty());
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(dialog.tb_XTicks->text(), "5");
    EXPECT_EQ(dialog.tb_XMin->text(), "-2.600000");
    EXPECT_EQ(dialog.dd_Decimal->currentIndex(), 6);
    EXPECT_TRUE(dialog.ob_StDev->isChecked());
    EXPECT_FALSE(dialog.tb_XMin->isEnabled());
    EXPECT_EQ(dialog.cp_OutSpec->Color(), 0x0000FFu);
    EXPECT_EQ(Stored(kAppOutSpecColor), "<none>");
    EXPECT_EQ(AppOutSpecColor, 0x0000FFu);
}
