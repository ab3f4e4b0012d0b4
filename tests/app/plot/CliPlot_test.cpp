// pondera-cli plot does what a person does in the window and reports what it shows.
#include "tests/app/plot/PlotFixture.h"

#include <clocale>

namespace {
QString FieldText(const QJsonObject& out, const char* name) {
    return out["fields"].toObject()[name].toObject()["text"].toString();
}
std::pair<double, double> Range(const QJsonObject& out) {
    return {out["range"].toArray()[0].toDouble(), out["range"].toArray()[1].toDouble()};
}
} // namespace

TEST(CliPlot, AFailedCheckReportsItsMessageAndFocus) {
    const QJsonObject out = RunCli({"plot", "--dist", "Triangular", "--param1", "0", "--param2",
                                    "2", "--param3", "1", "--usl", "abc"});
    const QJsonArray messages = out["messages"].toArray();
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(messages[0].toObject()["text"].toString(),
              "Likeliest value must be between Minimum and Maximum for a Triangular distribution.");
    EXPECT_EQ(out["focus"].toString(), "tb_Param2");
}

TEST(CliPlot, DisplayOptionsAndLimits) {
    const QJsonObject out = RunCli(
        {"plot",  "--dist",  "Exponential", "--param1", "2",         "--param2", "1",
         "--lsl", "1.1",     "--usl",       "3",        "--display", "decimal",  "--decimals",
         "4",     "--range", "endpoints",   "--xmin",   "0",         "--xmax",   "2"});
    EXPECT_EQ(FieldText(out, "lb_Param1"), "Scale:");
    EXPECT_EQ(FieldText(out, "tb_UpperPNC"), "0.0183"); // exp(-4) to four places
    EXPECT_EQ(Range(out), std::make_pair(0.0, 3.0));
}

TEST(CliPlot, MomentsModeFitsAndShowsTheFit) {
    const QJsonObject out = RunCli({"plot", "--moments", "--mean", "0", "--stdev", "1",
                                    "--skewness", "0", "--kurtosis", "3", "--lsl", "-3"});
    EXPECT_EQ(FieldText(out, "dd_Distribution"), "Normal");
    EXPECT_EQ(FieldText(out, "lb_Param4"), "Xi:");
    EXPECT_EQ(out["status"].toString(), "Success");
}

TEST(CliPlot, BadCommandLinesAreUsageErrors) {
    for (const QStringList& args :
         {QStringList{"plot", "--dist", "Cauchy"}, QStringList{"plot", "--size", "10x10"},
          QStringList{"plot", "--bogus", "1"}}) {
        int code = 0;
        RunCli(args, &code);
        EXPECT_EQ(code, 2) << args.join(' ').toStdString();
    }
}

class CliPng : public WindowTest {
  protected:
    // The PNG pondera-cli writes against the same steps by hand in a window of
    // our own whose chart has the given logical size and pixel ratio.
    void CompareWithWindow(int width, int height, double scale, QSize pixels) {
        QTemporaryDir dir;
        const QString file = dir.filePath("chart.png");
        const QString size = QString("%1x%2").arg(width).arg(height);
        const QJsonObject out =
            RunCli({"plot", "--dist", "Weibull", "--param1", "1.5", "--lsl", "4", "--target", "8",
                    "--usl", "20", "--xticks", "4", "--size", size, "--scale",
                    QString::number(scale), "--png", file});
        ASSERT_TRUE(out["messages"].toArray().isEmpty());
        QImage fromCli(file);
        ASSERT_EQ(fromCli.size(), pixels);

        w->pb_PDF->setFixedSize(width, height);
        w->pb_PDF->SetPixelRatio(scale);
        QApplication::processEvents();
        DisplayOptions::AppXTicks = 4;
        Choose("Weibull");
        Type(w->tb_Param1, "1.5");
        Tick(w->cb_LSL, w->tb_LSL, "4");
        Tick(w->cb_Target, w->tb_Target, "8");
        Tick(w->cb_USL, w->tb_USL, "20");
        EXPECT_EQ(ImageDiff(fromCli.convertToFormat(QImage::Format_RGB32), w->pb_PDF->Image()), "");
        EXPECT_EQ(FieldText(out, "tb_PNC").toStdString(), Text(w->tb_PNC));
    }
};

TEST_F(CliPng, TheChartFileIsTheWindowsChart) {
    CompareWithWindow(800, 500, 1, QSize(800, 500));
}

TEST_F(CliPng, AScaledChartHasDevicePixels) {
    CompareWithWindow(400, 250, 2, QSize(800, 500));
}

// Every command answers the same bytes whatever the user's locale: the JSON
// carries points, never the locale's decimal comma.
TEST(CliJson, EveryCommandIsTheSameUnderAGermanLocale) {
    struct Row {
        const char* Name;
        QStringList Args;
    };
    const Row rows[] = {
        {"moments", {"moments", "Weibull", "2.5", "10"}},
        {"pdf", {"pdf", "Normal", "0", "1", "0", "0", "--range", "-3", "3", "--points", "7"}},
        {"pnc", {"pnc", "LogNormal", "0.5", "0.25", "0", "0", "--lsl", "1.1", "--usl", "3"}},
        {"fit", {"fit", "0", "1", "1", "4"}},
        {"plot", {"plot", "--dist", "Weibull", "--lsl", "1.5", "--display", "decimal"}},
        {"plot moments", {"plot", "--moments", "--skewness", "0.5", "--kurtosis", "3.5"}},
        {"plot comma typed", {"plot", "--param1", "1,5"}},
    };
    auto run = [](const Row& row, const char* locale) {
        QProcess cli;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("LANG", locale);
        env.insert("LC_ALL", locale);
        cli.setProcessEnvironment(env);
        cli.start(PONDERA_CLI, row.Args);
        cli.closeWriteChannel();
        cli.waitForFinished(60000);
        return cli.readAllStandardOutput();
    };
    if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8"))
        GTEST_SKIP() << "de_DE.UTF-8 is not generated (scripts/install-deps.sh does it)";
    std::setlocale(LC_NUMERIC, "C");
    for (const Row& row : rows) {
        const QByteArray german = run(row, "de_DE.UTF-8");
        EXPECT_EQ(german, run(row, "C")) << row.Name;
        for (const QByteArray& line : german.trimmed().split('\n'))
            EXPECT_FALSE(QJsonDocument::fromJson(line).isNull()) << row.Name << ": " << line.data();
    }
}
