// The data dialog as a user drives it: where the keys go, the column picker, a
// big file shown by its first lines, the limits it hands to the window, and a
// middle click with nothing to paste.
#include "tests/ui/main/WindowFixture.h"
#include "ui/main/frm_Data.h"

#include <QClipboard>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QPlainTextEdit>

#include <filesystem>
#include <fstream>

namespace {

class EndToEndData : public WindowTest {
  protected:
    frm_Data* Open() {
        FromEventLoop([this] { w->mnuFitToData->trigger(); });
        frm_Data* d = w->DataDialog();
        EXPECT_TRUE(d && QTest::qWaitForWindowActive(d, 2000));
        return d;
    }
    std::string File(const std::string& name, const std::string& text) {
        const std::string path = testing::TempDir() + name;
        std::ofstream(path) << text;
        return path;
    }
};

TEST_F(EndToEndData, KeysGoWhereAUserExpects) {
    Tick(w->cb_LSL, w->tb_LSL, "-3");
    frm_Data* d = Open();
    // The text field has the dialog's focus, ready for Ctrl+V; the ticked limits
    // are offered.
    EXPECT_EQ(d->focusWidget(), d->tb_Data);
    EXPECT_EQ(d->Limits(), (std::array<QString, 3>{"-3", "", ""}));

    d->OpenFile(QString::fromStdString(
        File("parts.csv", "Part,Diameter\n1,10.1\n2,10.3\n3,9.8\n4,10.0\n5,10.6\n")));
    ASSERT_TRUE(d->dd_Column->isVisible());
    EXPECT_EQ(d->dd_Column->itemText(1), "Diameter");
    EXPECT_EQ(d->dd_Column->currentIndex(), -1); // asked, not guessed
    d->dd_Column->setCurrentIndex(1);
    emit d->dd_Column->activated(1);
    EXPECT_EQ(d->lb_Summary->text().left(5), "n = 5");
    Type(d->tb_USL, "11");
    d->tb_LSL->clear();
    // After a file is opened, Enter presses OK; the dialog's limits reach the window.
    QTest::keyClick(d->focusWidget(), Qt::Key_Return);
    EXPECT_FALSE(d->isVisible());
    EXPECT_NEAR(w->Current.Mean, 10.16, 1e-12);
    EXPECT_FALSE(w->cb_LSL->isChecked());
    EXPECT_TRUE(w->cb_USL->isChecked());
    EXPECT_EQ(Text(w->tb_USL), "11");
    testing_support::ExpectErrorLogEmpty();
}

TEST_F(EndToEndData, ABigFileIsShownByItsFirstLinesAndReadWhole) {
    std::string text = "Diameter\n";
    for (int i = 0; i < 150000; ++i)
        text += std::to_string(10 + (i % 100) / 1000.0) + "\n"; // over 1 MiB
    frm_Data* d = Open();
    d->OpenFile(QString::fromStdString(File("big.txt", text)));
    EXPECT_TRUE(d->tb_Data->isReadOnly());
    EXPECT_EQ(d->tb_Data->blockCount(), frm_Data::kPreviewLines + 1); // the last line is empty
    EXPECT_TRUE(d->lb_File->isVisible());
    EXPECT_EQ(d->lb_Summary->text().left(10), "n = 150000");
    Click(d->but_Buttons->button(QDialogButtonBox::Ok));
    EXPECT_EQ(d->Result().Values.size(), 150000u);
    testing_support::ExpectErrorLogEmpty();
}

TEST_F(EndToEndData, AWarningWrapsAndShowsTheWarningIcon) {
    frm_Data* d = Open();
    const int width = d->width();
    d->tb_Data->setPlainText(QString("x\n") + QString(300, '7') + "x\n");
    Click(d->but_Buttons->button(QDialogButtonBox::Ok));
    ASSERT_FALSE(Rec().Messages.empty());
    EXPECT_EQ(Rec().Messages.back().Icon, support::BoxIcon::Warning);
    EXPECT_EQ(d->width(), width);
    Type(d->tb_LSL, "abc");
    d->tb_Data->setPlainText("1\n2\n3\n5\n");
    Click(d->but_Buttons->button(QDialogButtonBox::Ok));
    EXPECT_EQ(LastMessage(), "The LSL must be a number, or empty for none.");
    EXPECT_TRUE(d->isVisible());
    testing_support::ExpectErrorLogEmpty();
}

TEST_F(EndToEndData, AMiddleClickWithNothingToPasteIsIgnored) {
    frm_Data* d = Open();
    d->tb_Data->setPlainText("1\n2\n");
    QApplication::clipboard()->clear(QClipboard::Selection);
    QTest::mouseClick(d->tb_Data->viewport(), Qt::MiddleButton);
    EXPECT_EQ(d->tb_Data->toPlainText(), "1\n2\n");
    testing_support::ExpectErrorLogEmpty();
}

} // namespace
