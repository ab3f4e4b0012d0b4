// "Copy Image to Clipboard", read back by another program (xclip) as a person's
// other application would. Needs an X server: CTest runs it under xvfb-run.
#include "tests/app/plot/PlotFixture.h"

#include <QAction>
#include <QClipboard>
#include <QEventLoop>
#include <QGuiApplication>
#include <QTimer>

#include <cstdlib>

class Clipboard : public WindowTest {
  protected:
    void SetUp() override {
        if (QGuiApplication::platformName() != "xcb") {
            if (std::getenv("PONDERA_REQUIRE_X")) FAIL() << "no X display";
            GTEST_SKIP() << "needs an X display; CTest runs it under xvfb-run";
        }
        WindowTest::SetUp();
    }
};

TEST_F(Clipboard, CopyIsReadBackByAnotherProgram) {
    Click(w->cb_LSL);
    Type(w->tb_LSL, "-1");
    PressPlot();
    w->mnuCopytoClipboard->trigger();

    // xclip asks this process for the data: keep the event loop running meanwhile.
    QProcess xclip;
    QEventLoop loop;
    QObject::connect(&xclip, &QProcess::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(20000, &loop, &QEventLoop::quit);
    xclip.start("xclip", {"-selection", "clipboard", "-t", "image/png", "-o"});
    loop.exec();
    ASSERT_EQ(xclip.state(), QProcess::NotRunning);
    ASSERT_EQ(xclip.exitCode(), 0) << xclip.readAllStandardError().toStdString();

    QImage pasted;
    ASSERT_TRUE(pasted.loadFromData(xclip.readAllStandardOutput(), "PNG"));
    EXPECT_EQ(ImageDiff(pasted.convertToFormat(QImage::Format_RGB32), w->pb_PDF->Image()), "");
}
