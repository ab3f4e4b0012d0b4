// A main window per test, shown off screen and driven through its real widgets.
#pragma once

#include "settings/DisplayOptions.h"
#include "settings/RegistryStore.h"
#include "support/Format.h"
#include "tests/helpers/TestSupport.h"
#include "ui/draw/DistributionCombo.h"
#include "ui/draw/MarkerShape.h"
#include "ui/draw/PictureBox.h"
#include "ui/draw/TitledFrame.h"
#include "ui/main/frm_Pondera.h"

#include <QApplication>
#include <QCheckBox>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <cfenv>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>

class WindowTest : public testing_support::RecordingTest {
  protected:
    void SetUp() override {
        RecordingTest::SetUp();
        // The program's icon, as the desktop gives it: on X every new window
        // converts it, and that conversion raises floating-point flags.
        QIcon icon;
        for (int size : {16, 32, 48, 64, 128, 256})
            icon.addFile(QString(PONDERA_ICONS "/pondera-%1.png").arg(size), QSize(size, size));
        QApplication::setWindowIcon(icon);
        testing_support::ClearErrorLog();
        // Each test starts from the stored defaults, whatever an earlier test of
        // the same program applied (under X one process runs them all).
        RegistryStore::Reopen();
        if (const char* store = std::getenv("PONDERA_REGISTRY")) std::filesystem::remove(store);
        w = std::make_unique<frm_Pondera>();
        w->show();
        w->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(w.get(), 2000));
        QApplication::processEvents();
        // What the test does next stands for a fresh event: the toolkit's own
        // flags from showing the window are not the test's.
        std::feclearexcept(FE_ALL_EXCEPT);
        Rec().Clear();
    }
    void TearDown() override { w.reset(); }

    // Types into a field as a person does: empty it, then key in the text.
    static void Type(QLineEdit* box, const QString& text) {
        box->clear();
        QTest::keyClicks(box, text);
    }
    // Runs `act` from the event loop, as a click or a key press is delivered.
    static void FromEventLoop(const std::function<void()>& act) {
        bool done = false;
        QTimer::singleShot(0, [&] {
            act();
            done = true;
        });
        EXPECT_TRUE(QTest::qWaitFor([&] { return done; }, 10000));
    }
    static void Click(QAbstractButton* button) { QTest::mouseClick(button, Qt::LeftButton); }
    void PressPlot() { Click(w->but_Plot); }

    // Picks a distribution from the list as a person does (the activated signal).
    void Choose(const QString& name) {
        const int index = w->dd_Distribution->findText(name);
        ASSERT_GE(index, 0) << name.toStdString();
        w->dd_Distribution->setCurrentIndex(index);
        emit w->dd_Distribution->activated(index);
    }

    // Ticks a limit (its field is enabled by the tick), types its value, presses Plot.
    void Tick(QCheckBox* box, QLineEdit* field, const QString& text) {
        if (!box->isChecked()) Click(box);
        Type(field, text);
        PressPlot();
    }

    static double Num(const QLineEdit* box) { return support::Val(box->text().toStdString()); }
    static std::string Text(const QLineEdit* box) { return box->text().toStdString(); }
    // Several boxes at once, so a whole row of results compares in one line.
    static std::vector<std::string> Texts(std::initializer_list<const QLineEdit*> boxes) {
        std::vector<std::string> texts;
        for (const QLineEdit* box : boxes)
            texts.push_back(Text(box));
        return texts;
    }
    QStringList Items() const {
        QStringList items;
        for (int i = 0; i < w->dd_Distribution->count(); ++i)
            items << w->dd_Distribution->itemText(i);
        return items;
    }
    // Press, move and release the left button at one point of a surface.
    static void PressMove(QWidget* surface, QPoint p) {
        QTest::mousePress(surface, Qt::LeftButton, {}, p);
        QTest::mouseMove(surface, p);
    }
    static void Release(QWidget* surface, QPoint p) {
        QTest::mouseRelease(surface, Qt::LeftButton, {}, p);
    }
    QImage Chart() { return w->pb_PDF->Image().copy(); }
    std::string LastMessage() const {
        const auto& m = support::Recorder().Messages;
        return m.empty() ? std::string() : m.back().Text;
    }
    std::string LastTitle() const {
        const auto& m = support::Recorder().Messages;
        return m.empty() ? std::string() : m.back().Title;
    }

    std::unique_ptr<frm_Pondera> w;
};
