// pondera-cli plot does what a person does in the window and reports what it shows.
#include "tests/app/plot/PlotFixture.h"

namespace {
QString FieldText(const QJsonObject& out, const char* name) {
    return out["fields"].toObject()[name].toObject()["text"].toString();
}
std::pair<double, double> Range(const QJsonObject& out) {
    return {out["range"].toArray()[0].toDouble(), out["range"].toArray()[1].toDouble()};
}
} // namespace

TEST(CliPlot, DefaultsAreTheWindowsStartUp) {
    const QJsonObject out = RunCli({"plot"});
    ASSERT_FALSE(out.isEmpty());
    EXPECT_EQ(FieldText(out, "dd_Distribution"), "Normal");
    EXPECT_EQ(FieldText(out, "lb_Param1"), "Mean:");
    EXPECT_FALSE(out["fields"].toObject()["tb_Param3"].toObject()["visible"].toBool());
    EXPECT_EQ(FieldText(out, "tb_StDev"), "1.000000E+00");
    EXPECT_EQ(FieldText(out, "tb_PNC"), "0.000000E+00");
    EXPECT_EQ(out["points"].toInt(), 300);
    EXPECT_EQ(Range(out), std::make_pair(-2.6, 2.6));
    EXPECT_TRUE(out["focus"].isNull());
    EXPECT_TRUE(out["messages"].toArray().isEmpty() && out["errors"].toArray().isEmpty());
}

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
    // Rate 2 above 1: P(X < 1.1) = 1 - exp(-0.2), P(X > 3) = exp(-4).
    EXPECT_EQ(FieldText(out, "tb_LowerPNC").toStdString(),
              support::Format(-std::expm1(-0.2), "0.0000"));
    EXPECT_EQ(FieldText(out, "tb_UpperPNC").toStdString(),
              support::Format(std::exp(-4.0), "0.0000"));
    EXPECT_EQ(Range(out), std::make_pair(0.0, 3.0));
}

TEST(CliPlot, MomentsModeFitsAndShowsTheFit) {
    const QJsonObject out = RunCli({"plot", "--moments", "--mean", "0", "--stdev", "1",
                                    "--skewness", "0", "--kurtosis", "3", "--lsl", "-3"});
    EXPECT_EQ(FieldText(out, "dd_Distribution"), "Normal");
    EXPECT_EQ(FieldText(out, "lb_Param4"), "Xi:");
    EXPECT_EQ(out["status"].toString(), "Success");

    const QJsonObject bad = RunCli({"plot", "--moments", "--mean", "0", "--stdev", "1",
                                    "--skewness", "1", "--kurtosis", "1.5"});
    EXPECT_EQ(bad["status"].toString(), "Error: Kurtosis < SQRT(Skewness) + 1");
}

TEST(CliPlot, BadCommandLinesAreUsageErrors) {
    for (const QStringList& args :
         {QStringList{"plot", "--dist", "Cauchy"}, QStringList{"plot", "--decimals", "7"},
          QStringList{"plot", "--size", "10x10"}, QStringList{"plot", "--xticks", "0"},
          QStringList{"plot", "--bogus", "1"}, QStringList{"plot", "--lsl"}}) {
        int code = 0;
        RunCli(args, &code);
        EXPECT_EQ(code, 2) << args.join(' ').toStdString();
    }
}

class CliPng : public WindowTest {};

TEST_F(CliPng, TheChartFileIsTheWindowsChart) {
    QTemporaryDir dir;
    const QString file = dir.filePath("chart.png");
    const QJsonObject out =
        RunCli({"plot", "--dist", "Weibull", "--param1", "1.5", "--lsl", "4", "--target", "8",
                "--usl", "20", "--xticks", "4", "--size", "800x500", "--png", file});
    ASSERT_TRUE(out["messages"].toArray().isEmpty());
    QImage fromCli(file);
    ASSERT_FALSE(fromCli.isNull());

    // The same steps by hand in a window of our own.
    w->pb_PDF->setFixedSize(800, 500);
    QApplication::processEvents();
    DisplayOptions::AppXTicks = 4;
    Choose("Weibull");
    Type(w->tb_Param1, "1.5");
    Tick(w->cb_LSL, w->tb_LSL, "4");
    Tick(w->cb_Target, w->tb_Target, "8");
    Tick(w->cb_USL, w->tb_USL, "20");
    const QImage& inWindow = w->pb_PDF->Image();
    ASSERT_EQ(inWindow.size(), QSize(800, 500));
    EXPECT_EQ(ImageDiff(fromCli.convertToFormat(QImage::Format_RGB32), inWindow), "");
    EXPECT_EQ(FieldText(out, "tb_PNC").toStdString(), Text(w->tb_PNC));
}
