// pondera-cli plot does what a person does in the window and reports what it shows.
#include "tests/app/plot/PlotFixture.h"

#include <QFile>

#include <clocale>
#include <cmath>

namespace {
QString FieldText(const QJsonObject& out, const char* name) {
    return out["fields"].toObject()[name].toObject()["text"].toString();
}

// A field's text, or "focus", "message" (the first), "status" or "range" ("LOW HIGH").
QString Shown(const QJsonObject& out, const QString& what) {
    if (what == "focus" || what == "status") return out[what].toString();
    if (what == "message") return out["messages"].toArray()[0].toObject()["text"].toString();
    if (what == "range")
        return QString("%1 %2").arg(out["range"][0].toDouble()).arg(out["range"][1].toDouble());
    return FieldText(out, what.toUtf8().constData());
}
} // namespace

// One run per path: a failed check, a plot with display options and limits, moments mode.
TEST(CliPlot, ReportsWhatTheWindowShows) {
    const std::pair<QString, std::vector<std::pair<QString, QString>>> rows[] = {
        {"--dist Triangular --param1 0 --param2 2 --param3 1 --usl abc",
         {{"focus", "tb_Param2"},
          {"message",
           "Likeliest value must be between Minimum and Maximum for a Triangular distribution."}}},
        {"--dist Exponential --param1 2 --param2 1 --lsl 1.1 --usl 3 --display decimal --decimals "
         "4 --range endpoints --xmin 0 --xmax 2",
         {{"lb_Param1", "Scale:"}, {"tb_UpperPNC", "0.0183"}, {"range", "0 3"}}}, // exp(-4)
        {"--moments --mean 0 --stdev 1 --skewness 0 --kurtosis 3 --lsl -3",
         {{"dd_Distribution", "Normal"}, {"lb_Param4", "Xi:"}, {"status", "Success"}}},
    };
    for (const auto& [args, shown] : rows) {
        const QJsonObject out = RunCli(("plot " + args).split(' '));
        for (const auto& [what, text] : shown)
            EXPECT_EQ(Shown(out, what), text) << what.toStdString();
    }
    // A bad command line is a usage error.
    for (const char* args : {"plot --dist Cauchy", "plot --size 10x10",
                             "plot --data x --row Cauchy", "plot --data x --dist Normal"}) {
        int code = 0;
        RunCli(QString(args).split(' '), &code);
        EXPECT_EQ(code, 2) << args;
    }
    // The data dialog's "Use this fit": 1..8 by its Exponential row, rate 1 / 4.5,
    // so P(X > 9) = exp(-2).
    QTemporaryDir dir;
    QFile values(dir.filePath("values.txt"));
    ASSERT_TRUE(values.open(QIODevice::WriteOnly));
    values.write("1\n2\n3\n4\n5\n6\n7\n8\n");
    values.close();
    const QJsonObject out = RunCli({"plot", "--data", values.fileName(), "--row", "Exponential",
                                    "--usl", "9", "--display", "decimal", "--decimals", "4"});
    EXPECT_EQ(Shown(out, "dd_Distribution"), "Exponential");
    EXPECT_EQ(Shown(out, "tb_UpperPNC"), "0.1353");
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
        EXPECT_TRUE(SamePixels(fromCli, w->pb_PDF->Image()));
        EXPECT_EQ(FieldText(out, "tb_PNC").toStdString(), Text(w->tb_PNC));
    }
};

// At display scale 2 the file has the device pixels.
TEST_F(CliPng, AScaledChartHasDevicePixels) {
    CompareWithWindow(400, 250, 2, QSize(800, 500));
}

// Every command answers the same bytes whatever the user's locale: the JSON
// carries points, never the locale's decimal comma.
TEST(CliJson, EveryCommandIsTheSameUnderAGermanLocale) {
    const char* rows[] = {"moments Weibull 2.5 10",
                          "pdf Normal 0 1 0 0 --range -3 3 --points 7",
                          "pnc LogNormal 0.5 0.25 0 0 --lsl 1.1 --usl 3",
                          "fit 0 1 1 4",
                          "plot --dist Weibull --lsl 1.5 --display decimal",
                          "plot --moments --skewness 0.5 --kurtosis 3.5",
                          "plot --param1 1,5"}; // a comma typed
    auto run = [](const char* args, const char* locale) {
        QProcess cli;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("LANG", locale);
        env.insert("LC_ALL", locale);
        cli.setProcessEnvironment(env);
        cli.start(PONDERA_CLI, QString(args).split(' '));
        cli.closeWriteChannel();
        cli.waitForFinished(60000);
        return cli.readAllStandardOutput();
    };
    if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8"))
        GTEST_SKIP() << "de_DE.UTF-8 is not generated (scripts/install-deps.sh does it)";
    std::setlocale(LC_NUMERIC, "C");
    for (const char* args : rows) {
        const QByteArray german = run(args, "de_DE.UTF-8");
        EXPECT_EQ(german, run(args, "C")) << args;
        for (const QByteArray& line : german.trimmed().split('\n'))
            EXPECT_FALSE(QJsonDocument::fromJson(line).isNull()) << args << ": " << line.data();
    }
}

// The report is a readable page: rendered, it is not blank, and its text holds
// the figures, checked against the Weibull's closed-form tails.
TEST(CliReport, WritesAPageWithTheFigures) {
    QTemporaryDir dir;
    const QString pdf = dir.filePath("report.pdf");
    const QJsonObject out = RunCli({"report", "--dist", "Weibull", "--param1", "1.5", "--param2",
                                    "2", "--lsl", "0.2", "--usl", "4", "--out", pdf});
    ASSERT_TRUE(out["messages"].toArray().isEmpty());

    QProcess text;
    text.start("pdftotext", {"-layout", pdf, "-"});
    ASSERT_TRUE(text.waitForFinished(30000));
    const QString page = QString::fromUtf8(text.readAllStandardOutput());
    auto shown = [](double v) { return QString::asprintf("%.6E", v); };
    const double below = -std::expm1(-std::pow(0.2 / 2, 1.5)),
                 above = std::exp(-std::pow(4 / 2.0, 1.5));
    for (const QString& figure : {QString("Weibull"), QString("Total PNC"), shown(below),
                                  shown(above), shown(below + above)})
        EXPECT_TRUE(page.contains(figure)) << figure.toStdString();

    QProcess render;
    render.start("pdftoppm", {"-png", "-r", "40", "-singlefile", pdf, dir.filePath("page")});
    ASSERT_TRUE(render.waitForFinished(30000));
    const QImage image(dir.filePath("page.png"));
    ASSERT_FALSE(image.isNull());
    int inked = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            inked += image.pixel(x, y) != qRgb(255, 255, 255);
    EXPECT_GT(inked, image.width() * image.height() / 20); // the shaded chart alone is more
}
