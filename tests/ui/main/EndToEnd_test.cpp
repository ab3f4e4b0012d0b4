// The paths a user takes through menus and dialogs, driven from the event loop as
// a click is. Under xvfb-run (the EndToEndUnderX entry) they run on a real X
// server with a window manager, where the toolkit works as on a desktop.
#include "tests/helpers/Reference.h"
#include "tests/ui/main/WindowFixture.h"

#include "ui/main/SessionView.h"
#include "ui/main/frm_About2.h"
#include "ui/main/frm_Data.h"
#include "ui/options/frm_Options.h"

#include <QAction>
#include <QClipboard>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QIcon>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <filesystem>
#include <functional>

using Strings = std::vector<std::string>;

namespace {

class EndToEnd : public WindowTest {
  protected:
    // Runs a menu entry from the event loop, as a click on it does. `inDialog`
    // acts on the modal dialog it opens, from within that dialog's own loop.
    void RunMenu(QAction* item, std::function<void(QWidget*)> inDialog = {}) {
        bool done = false;
        QTimer poll;
        QObject::connect(&poll, &QTimer::timeout, [&] {
            QWidget* dialog = QApplication::activeModalWidget();
            if (!inDialog || !dialog || !dialog->isVisible()) return;
            const auto act = std::move(inDialog);
            inDialog = nullptr;
            QTest::qWait(50);
            act(dialog);
        });
        poll.start(20);
        QTimer::singleShot(0, item, [&] {
            item->trigger();
            done = true;
        });
        EXPECT_TRUE(QTest::qWaitFor([&] { return done && !inDialog; }, 10000))
            << item->text().toStdString();
        QTest::qWait(50);
    }
};

TEST_F(EndToEnd, About) {
    RunMenu(w->mnuAbout, [](QWidget* dialog) {
        auto* about = qobject_cast<frm_About2*>(dialog);
        ASSERT_TRUE(about);
        QTest::mouseClick(about->but_OK, Qt::LeftButton);
    });
    testing_support::ExpectErrorLogEmpty();
}

TEST_F(EndToEnd, OptionsApplyAndCancel) {
    RunMenu(w->mnuOptions);
    frm_Options* options = w->Options();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(options));
    options->dd_Decimal->setCurrentIndex(2);
    Click(options->but_Apply);
    EXPECT_EQ(Text(w->tb_Mean), "0.00E+00");
    RunMenu(w->mnuOptions);
    options->dd_Decimal->setCurrentIndex(4);
    Click(options->but_Cancel);
    EXPECT_FALSE(options->isVisible());
    EXPECT_EQ(Text(w->tb_Mean), "0.00E+00");
    testing_support::ExpectErrorLogEmpty();
}

TEST_F(EndToEnd, SaveChartAsSavedAndCancelled) {
    const QString folder = QString::fromStdString(std::filesystem::temp_directory_path().string());
    const QString name = QString("pondera-e2e-%1.png").arg(QCoreApplication::applicationPid());
    RunMenu(w->mnuSaveChart, [](QWidget* dialog) { qobject_cast<QDialog*>(dialog)->reject(); });
    RunMenu(w->mnuSaveChart, [&](QWidget* dialog) {
        auto* files = qobject_cast<QFileDialog*>(dialog);
        ASSERT_TRUE(files);
        files->setDirectory(folder);
        auto* edit = files->findChild<QLineEdit*>("fileNameEdit"); // typed as a person does
        ASSERT_TRUE(edit);
        edit->selectAll();
        QTest::keyClicks(edit, name);
        static_cast<QDialog*>(files)->accept(); // as its Save button does
    });
    EXPECT_EQ(QImage(folder + "/" + name).size(), w->pb_PDF->Image().size());
    QFile::remove(folder + "/" + name);
    testing_support::ExpectErrorLogEmpty();
}

// A titled SVG chart and the report, through their save dialogs; Print cancelled.
TEST_F(EndToEnd, SaveTitledSvgAndReportAndCancelPrint) {
    QTemporaryDir dir;
    auto save = [&](QAction* menu, const QString& name, const QString& filter) {
        RunMenu(menu, [&](QWidget* dialog) {
            auto* files = qobject_cast<QFileDialog*>(dialog);
            ASSERT_TRUE(files);
            files->setDirectory(dir.path());
            if (!filter.isEmpty()) files->selectNameFilter(filter);
            auto* edit = files->findChild<QLineEdit*>("fileNameEdit");
            ASSERT_TRUE(edit);
            edit->selectAll();
            QTest::keyClicks(edit, name);
            static_cast<QDialog*>(files)->accept();
        });
    };
    save(w->mnuSaveChart, "chart", "SVG images with titles (*.svg)");
    QFile svg(dir.filePath("chart.svg"));
    ASSERT_TRUE(svg.open(QIODevice::ReadOnly));
    const QByteArray xml = svg.readAll();
    for (const char* text : {"<svg", "Normal: Mean 0, Std. Deviation 1", "Density", "Value"})
        EXPECT_TRUE(xml.contains(text)) << text;
    save(w->mnuSaveReport, "report", "");
    QFile pdf(dir.filePath("report.pdf"));
    ASSERT_TRUE(pdf.open(QIODevice::ReadOnly));
    EXPECT_TRUE(pdf.read(5) == "%PDF-");
    RunMenu(w->mnuPrint, [](QWidget* dialog) { qobject_cast<QDialog*>(dialog)->reject(); });
    testing_support::ExpectErrorLogEmpty();
}

TEST_F(EndToEnd, FitToDataAcceptedAndCancelled) {
    RunMenu(w->mnuFitToData);
    frm_Data* data = w->DataDialog();
    ASSERT_TRUE(data && QTest::qWaitForWindowExposed(data));
    Click(data->but_Buttons->button(QDialogButtonBox::Cancel));
    EXPECT_FALSE(data->isVisible() || w->cb_DrawbyMoments->isChecked());
    RunMenu(w->mnuFitToData);
    data->tb_Data->setPlainText("9.98\n10.01\n10.03\n9.99\n10.02\n10.00\n9.97\n10.05\n");
    Click(data->but_Buttons->button(QDialogButtonBox::Ok));
    EXPECT_FALSE(data->isVisible());
    EXPECT_TRUE(w->cb_DrawbyMoments->isChecked());
    RunMenu(w->mnuCopyResults);
    EXPECT_TRUE(QGuiApplication::clipboard()->text().contains("\nn\t8\n"));
    testing_support::ExpectErrorLogEmpty();
}

TEST_F(EndToEnd, CopyImageAndResults) {
    RunMenu(w->mnuCopytoClipboard);
    EXPECT_EQ(QGuiApplication::clipboard()->image().size(), w->pb_PDF->Image().size());
    // With titles on, the copy is the chart with its title band and axis titles around it.
    DisplayOptions::AppChartTitles = true;
    RunMenu(w->mnuCopytoClipboard);
    DisplayOptions::AppChartTitles = false;
    const QSize titled = QGuiApplication::clipboard()->image().size();
    EXPECT_GT(titled.width(), w->pb_PDF->Image().width());
    EXPECT_GT(titled.height(), w->pb_PDF->Image().height());
    Tick(w->cb_LSL, w->tb_LSL, "-3");
    Tick(w->cb_USL, w->tb_USL, "3");
    RunMenu(w->mnuCopyResults);
    // The capability figures as their boxes show them; Ppl and Ppu as Ppk.
    const QString copied = QGuiApplication::clipboard()->text();
    for (const QString& row :
         {"Pp\t" + w->tb_Pp->text(), "Ppk\t" + w->tb_Ppk->text(), "Ppl\t" + w->tb_Ppk->text(),
          "Ppu\t" + w->tb_Ppk->text(), "ppm\t" + w->tb_PPM->text()})
        EXPECT_TRUE(copied.contains(row + "\n")) << row.toStdString();
    EXPECT_FALSE(copied.contains("\nn\t"));
    testing_support::ExpectErrorLogEmpty();
}

TEST_F(EndToEnd, KeyboardHasNoTraps) {
    EXPECT_EQ(QApplication::focusWidget(), w->tb_Param1);
    // Alt+L ticks the limit and leaves its value selected, ready to be typed over.
    QTest::keyClick(w.get(), Qt::Key_L, Qt::AltModifier);
    EXPECT_TRUE(w->cb_LSL->isChecked());
    EXPECT_EQ(QApplication::focusWidget(), w->tb_LSL);
    EXPECT_EQ(w->tb_LSL->selectedText(), w->tb_LSL->text());
    QTest::keyClicks(w->tb_LSL, "-1.5");
    QTest::keyClick(w->tb_LSL, Qt::Key_Return);
    EXPECT_EQ(Text(w->tb_LSL), "-1.5");
    // A whole Tab cycle stops only at controls that show the focus.
    std::vector<QWidget*> stops;
    do {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        stops.push_back(QApplication::focusWidget());
    } while (stops.back() != w->tb_LSL && stops.size() < 40);
    EXPECT_LT(stops.size(), 40u);
    for (QWidget* stop : stops)
        EXPECT_TRUE(qobject_cast<QLineEdit*>(stop) || qobject_cast<QAbstractButton*>(stop) ||
                    qobject_cast<QComboBox*>(stop) || stop == w->sh_LSL)
            << stop->objectName().toStdString() << " " << stop->metaObject()->className();
    // A marker dragged with the mouse keeps the keyboard.
    const QPoint on(static_cast<int>(w->sh_LSL->Left() + w->sh_LSL->Width() / 2.0), 8);
    PressMove(w->pb_Slider, on);
    Release(w->pb_Slider, on + QPoint(5, 0));
    EXPECT_EQ(QApplication::focusWidget(), w->sh_LSL);
    const std::string dragged = Text(w->tb_LSL);
    QTest::keyClick(w->sh_LSL, Qt::Key_Right);
    EXPECT_NE(Text(w->tb_LSL), dragged);
    testing_support::ExpectErrorLogEmpty();
}

// The window a user quits comes back at the next start; a parameter set the
// distribution does not accept comes back as its defaults, without a message.
TEST_F(EndToEnd, TheSessionComesBackAfterARestart) {
    Choose("Weibull");
    Type(w->tb_Param1, "1.5");
    Tick(w->cb_USL, w->tb_USL, "9");
    w.reset();
    w = std::make_unique<frm_Pondera>();
    SessionView::Restore(*w);
    EXPECT_EQ(w->dd_Distribution->Text(), "Weibull");
    EXPECT_EQ(Texts({w->tb_Param1, w->tb_Param2, w->tb_USL}), (Strings{"1.5", "10", "9"}));
    EXPECT_TRUE(w->cb_USL->isChecked() && !w->cb_LSL->isChecked());
    EXPECT_FALSE(w->but_Plot->isEnabled()); // plotted

    Type(w->tb_Param2, "-4"); // typed, never plotted
    w.reset();
    w = std::make_unique<frm_Pondera>();
    SessionView::Restore(*w);
    EXPECT_EQ(Texts({w->tb_Param1, w->tb_Param2}), (Strings{"2", "10"}));
    EXPECT_TRUE(Rec().Messages.empty());
    testing_support::ExpectErrorLogEmpty();
}

// A Johnson SU a supplier reports by its parameters: typed, plotted, its
// fraction outside the limits from z = gamma + delta asinh((x - xi) / lamda).
TEST_F(EndToEnd, AJohnsonSUTypedByItsParameters) {
    Choose("Johnson SU");
    EXPECT_EQ(w->lb_Param4->text().remove('&'), "Xi:");
    Type(w->tb_Param1, "2");
    Type(w->tb_Param2, "1");
    Type(w->tb_Param3, "3");
    Type(w->tb_Param4, "10");
    PressPlot();
    EXPECT_GT(*std::max_element(w->PlotY.begin(), w->PlotY.end()), 0.2); // peak near 0.24
    Tick(w->cb_LSL, w->tb_LSL, "5");
    Tick(w->cb_USL, w->tb_USL, "12");
    auto z = [](double x) { return 1 + 2 * std::asinh((x - 10) / 3); };
    EXPECT_LT(testing_support::RelErr(Num(w->tb_LowerPNC), reference::NormalCdf(z(5))), 1e-6);
    EXPECT_LT(testing_support::RelErr(Num(w->tb_UpperPNC), reference::NormalCdf(-z(12))), 1e-6);
    EXPECT_FALSE(w->but_Plot->isEnabled());

    Type(w->tb_Param3, "-1"); // Lamda refused with the calculator's message
    PressPlot();
    EXPECT_EQ(LastMessage(), "Lamda must be greater than zero for a Johnson SU distribution.");
    testing_support::ExpectErrorLogEmpty();
}

} // namespace
