// The data dialog as a user drives it: where the keys go, the column picker, a
// big file shown by its first lines and identified in steps, the limits it hands to the window, a
// middle click with nothing to paste, and the identification table: a row's
// fit used in the window, the simulation stopped.
#include "tests/helpers/Reference.h"
#include "tests/ui/main/WindowFixture.h"
#include "ui/main/frm_Data.h"

#include <QClipboard>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QTableView>

#include <filesystem>
#include <fstream>
#include <random>

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
    // Waits for the fits of what the dialog holds, then selects the named row.
    static void Select(frm_Data* d, const std::string& row) {
        ASSERT_TRUE(QTest::qWaitFor([d] { return d->Settled(); }, 20000));
        for (int shown = 0; shown < d->Fits()->rowCount(); ++shown)
            if (d->Fits()->Fit(shown).Name == row) return d->tbl_Fits->selectRow(shown);
        FAIL() << row;
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
    // Its ranked rows are shown before their AD; the simulation starts once
    // every AD is in.
    ASSERT_TRUE(QTest::qWaitFor([d] { return d->Settled(); }, 20000));
    EXPECT_EQ(d->Fits()->rowCount(), 9);
    ASSERT_TRUE(QTest::qWaitFor([d] { return d->pg_Simulation->isVisible(); }, 20000));
    for (int r = 0; r < 9; ++r)
        EXPECT_TRUE(!d->Fits()->Usable(r) || std::isfinite(d->Fits()->Fit(r).A2));
    const QAbstractItemView* view = d->tbl_Fits; // AD is not cut to "..."
    EXPECT_GE(d->tbl_Fits->columnWidth(IdentifyTable::kAD),
              view->sizeHintForColumn(IdentifyTable::kAD));
    Click(d->but_StopSimulation);
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

// Pasted, identified, the Normal row chosen with Enter: the window draws that
// normal by its parameters over the histogram, with the dialog's limits; its
// PNC is the normal's tails at the sample mean and s.
TEST_F(EndToEndData, PastedValuesTheNormalRowUsedInTheWindow) {
    const std::vector<double> x = {0.12, -0.85, 1.31, 0.44, -0.27, 0.98, -1.42, 0.05, 0.63, -0.31};
    QString text;
    for (double v : x)
        text += QString::number(v) + "\n";
    frm_Data* d = Open();
    d->tb_Data->setPlainText(text);
    Type(d->tb_LSL, "-2");
    Type(d->tb_USL, "1.5");
    Select(d, "Normal");
    EXPECT_TRUE(d->but_UseFit->isEnabled());
    QTest::keyClick(d->tbl_Fits, Qt::Key_Return);
    EXPECT_FALSE(d->isVisible());

    double mean = 0, ss = 0;
    for (double v : x)
        mean += v / 10;
    for (double v : x)
        ss += (v - mean) * (v - mean);
    const double s = std::sqrt(ss / 9);
    EXPECT_FALSE(w->cb_DrawbyMoments->isChecked());
    EXPECT_EQ(w->dd_Distribution->Text(), "Normal");
    EXPECT_LT(testing_support::RelErr(Num(w->tb_Param1), mean), 1e-6);
    EXPECT_LT(testing_support::RelErr(Num(w->tb_Param2), s), 1e-6);
    EXPECT_TRUE(w->cb_LSL->isChecked() && w->cb_USL->isChecked() && !w->cb_Target->isChecked());
    EXPECT_LT(testing_support::RelErr(Num(w->tb_LowerPNC), reference::NormalCdf((-2 - mean) / s)),
              1e-5);
    EXPECT_LT(testing_support::RelErr(Num(w->tb_UpperPNC), reference::NormalCdf((mean - 1.5) / s)),
              1e-5);
    EXPECT_FALSE(w->HistogramHeights.empty());
    EXPECT_TRUE(w->sh_DataPoint->Visible());
    testing_support::ExpectErrorLogEmpty();
}

// A long simulation stopped: the rows still waiting say so, nothing runs on;
// the Johnson fit by moments then goes the way OK goes, into moments mode.
TEST_F(EndToEndData, TheSimulationStopsWhenAsked) {
    std::mt19937 gen(3);
    std::lognormal_distribution<> skewed(0, 0.3);
    QString text;
    for (int i = 1; i <= 3000; ++i)
        text += QString::number(9 + skewed(gen)) + "\n";
    frm_Data* d = Open();
    d->tb_Data->setPlainText(text);
    ASSERT_TRUE(QTest::qWaitFor([d] { return d->Settled(); }, 20000));
    ASSERT_TRUE(d->pg_Simulation->isVisible() && d->Simulating());
    Click(d->but_StopSimulation);
    EXPECT_FALSE(d->Simulating() || d->pg_Simulation->isVisible());
    const IdentifyTable& t = *d->Fits();
    int stopped = 0;
    for (int r = 0; r < t.rowCount(); ++r)
        stopped += t.data(t.index(r, IdentifyTable::kP)).toString() == "stopped";
    EXPECT_GT(stopped, 0);
    Select(d, "Johnson (moments)");
    Click(d->but_UseFit);
    EXPECT_TRUE(w->cb_DrawbyMoments->isChecked());
    EXPECT_NEAR(w->Current.Mean, 9 + std::exp(0.045), 0.02);
    testing_support::ExpectErrorLogEmpty();
}

// Two columns: the picker chooses, the table follows the column, and a double
// click on the Johnson row by percentiles draws that curve by its parameters.
TEST_F(EndToEndData, TheColumnPickedIsTheOneIdentified) {
    std::string text = "Part,Diameter\n";
    for (int i = 1; i <= 40; ++i)
        text += std::to_string(i) + "," + std::to_string(20 + std::exp(std::sin(1.3 * i))) + "\n";
    frm_Data* d = Open();
    d->OpenFile(QString::fromStdString(File("two.csv", text)));
    d->dd_Column->setCurrentIndex(d->dd_Column->findText("Diameter"));
    emit d->dd_Column->activated(d->dd_Column->currentIndex());
    Select(d, "Normal");
    EXPECT_NEAR(d->Fits()->Fit(d->tbl_Fits->currentIndex().row()).F.C.P[0], 21.2, 0.2);
    Select(d, "Johnson (percentiles)");
    const m_Identify::RowResult chosen = d->Fits()->Fit(d->tbl_Fits->currentIndex().row());
    ASSERT_EQ(chosen.Status, "ok");
    const QRect cell = d->tbl_Fits->visualRect(d->tbl_Fits->currentIndex());
    QTest::mouseClick(d->tbl_Fits->viewport(), Qt::LeftButton, {}, cell.center());
    QTest::mouseDClick(d->tbl_Fits->viewport(), Qt::LeftButton, {}, cell.center());
    EXPECT_FALSE(d->isVisible());
    EXPECT_EQ(w->dd_Distribution->Text().toStdString(), "Johnson " + chosen.F.Type);
    EXPECT_EQ(w->lb_Param4->text().remove('&'), "Xi:");
    EXPECT_LT(testing_support::RelErr(Num(w->tb_Param1), chosen.F.C.P[0]), 1e-6);
    EXPECT_LT(testing_support::RelErr(Num(w->tb_Param4), chosen.F.C.P[3]), 1e-6);
    EXPECT_FALSE(w->but_Plot->isEnabled()); // drawn
    testing_support::ExpectErrorLogEmpty();
}

} // namespace
