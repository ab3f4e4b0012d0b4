// The window's face: message boxes and the error report.
#include "tests/helpers/TestSupport.h"
#include "ui/main/QtFace.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>

namespace {

// Closes the next modal window once it is up, after letting inspect() read it.
template <class Inspect> void CloseNextModal(Inspect inspect) {
    QTimer::singleShot(0, [inspect] {
        QWidget* modal = QApplication::activeModalWidget();
        ASSERT_NE(modal, nullptr);
        inspect(modal);
        if (auto* dialog = qobject_cast<QDialog*>(modal))
            dialog->accept();
        else
            modal->close();
    });
}

} // namespace

TEST(QtFace, ShowsAnInformationBoxWithTheGivenTitle) {
    QtFace face;
    QString title, text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    CloseNextModal([&](QWidget* modal) {
        auto* box = qobject_cast<QMessageBox*>(modal);
        ASSERT_NE(box, nullptr);
        title = box->windowTitle();
        text = box->text();
        icon = box->icon();
    });
    face.ShowMessage("Pondera Warning", "LSL must be a number.");
    EXPECT_EQ(title, "Pondera Warning");
    EXPECT_EQ(text, "LSL must be a number.");
    EXPECT_EQ(icon, QMessageBox::Information);
}

TEST(QtFace, OneReportDialogListsEveryError) {
    QtFace face;
    QString lines;
    CloseNextModal([&](QWidget* modal) {
        auto* list = modal->findChild<QPlainTextEdit*>("ErrorLines");
        ASSERT_NE(list, nullptr);
        lines = list->toPlainText();
    });
    face.ShowErrorReport({{"Pondera.frm_Pondera.DrawPDF", 11, "Pondera", "Division by zero", 1},
                          {"Pondera.m_Distributions.mean", 6, "Pondera", "Overflow", 2}});
    EXPECT_EQ(lines, QString::fromUtf8("Pondera.frm_Pondera.DrawPDF \u2014 Division by zero\n"
                                       "Pondera.m_Distributions.mean \u2014 Overflow (\u00d72)"));
}

TEST(QtFace, WhileTheWindowIsBuiltEachWarningWaitsAndShowsOnceAfter) {
    QtFace face;
    face.Hold();
    for (int twice = 0; twice < 2; ++twice)
        face.ShowMessage("Pondera Warning", "Nothing to draw"); // would block if shown now
    QStringList shown;
    CloseNextModal([&](QWidget* modal) { shown << qobject_cast<QMessageBox*>(modal)->text(); });
    face.Release();
    EXPECT_EQ(shown, QStringList{"Nothing to draw"});
}
