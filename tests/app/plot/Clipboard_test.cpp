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
    auto paste = [](const QString& target) {
        QProcess xclip;
        QEventLoop loop;
        QObject::connect(&xclip, &QProcess::finished, &loop, &QEventLoop::quit);
        QTimer::singleShot(20000, &loop, &QEventLoop::quit);
        xclip.start("xclip", {"-selection", "clipboard", "-t", target, "-o"});
        loop.exec();
        EXPECT_EQ(xclip.exitCode(), 0) << xclip.readAllStandardError().toStdString();
        return xclip.readAllStandardOutput();
    };
    // PNG is the first image form offered, the bitmap forms follow.
    QList<QByteArray> targets = paste("TARGETS").split('\n');
    targets.removeIf([](const QByteArray& t) { return !t.startsWith("image/"); });
    ASSERT_FALSE(targets.isEmpty());
    EXPECT_EQ(targets.front(), "image/png");
    EXPECT_TRUE(targets.contains("image/bmp"));

    QImage pasted;
    ASSERT_TRUE(pasted.loadFromData(paste("image/png"), "PNG"));
    EXPECT_TRUE(SamePixels(pasted, w->pb_PDF->Image()));
}
