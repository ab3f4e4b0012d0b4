// pondera-cli plot: the main window, headless, driven as a person would drive
// it: pick the distribution, type the fields, tick the limits, press Plot; then
// everything the window shows is printed as one JSON object.
#include "app/CliCommands.h"
#include "app/CliJson.h"
#include "engine/m_Distributions.h"
#include "settings/DisplayOptions.h"
#include "support/UserFace.h"
#include "ui/draw/DistributionCombo.h"
#include "ui/draw/PictureBox.h"
#include "ui/main/QtFace.h"
#include "ui/main/frm_Pondera.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <unistd.h>

namespace cli {

namespace {

// Records as the other commands do, and also puts status texts on the window's
// status panel as the window's own face does.
class PlotFace : public support::UserFace {
  public:
    frm_Pondera* Window = nullptr;
    void ShowMessage(const std::string& title, const std::string& text,
                     support::BoxIcon icon) override {
        support::Recorder().ShowMessage(title, text, icon);
    }
    void ShowErrorReport(const std::vector<support::ErrorEntry>& entries) override {
        support::Recorder().ShowErrorReport(entries);
    }
    void SetStatusText(const std::string& text) override {
        support::Recorder().SetStatusText(text);
        if (Window) Window->SetStatus(text);
    }
};

// A private settings store for the run, removed afterwards: the user's real
// settings are neither read nor written.
class TempStore {
  public:
    TempStore() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "pondera-cli-XXXXXX").string();
        if (mkdtemp(pattern.data())) {
            dir_ = pattern;
            setenv("PONDERA_REGISTRY", (dir_ / "registry.sqlite3").c_str(), 1);
        }
    }
    ~TempStore() {
        std::error_code ec;
        if (!dir_.empty()) std::filesystem::remove_all(dir_, ec);
    }

  private:
    std::filesystem::path dir_;
};

struct PlotArgs {
    std::string Dist = "Normal";
    std::optional<std::string> Param[4];
    std::optional<std::string> LSL, Target, USL;
    bool Moments = false;
    std::optional<std::string> Mean, StDev, Skewness, Kurtosis;
    std::optional<int> Decimals;
    std::optional<bool> Scientific;
    std::optional<bool> Endpoints;
    std::optional<double> NumStDev, XMin, XMax;
    std::optional<int> XTicks, YTicks;
    int Width = 0, Height = 0;
    std::optional<std::string> Png;
};

int PlotUsage() {
    std::fputs("usage: pondera-cli plot [OPTIONS]\n"
               "  --dist NAME            Normal (default), Exponential, LogNormal, Uniform,\n"
               "                         Triangular or Weibull; fills its default parameters\n"
               "  --param1..--param4 T   parameter texts, typed as into the fields\n"
               "  --lsl T --target T --usl T   spec limits (a given limit is ticked)\n"
               "  --moments              draw using Johnson distributions, with\n"
               "    --mean T --stdev T --skewness T --kurtosis T\n"
               "  --decimals N (0-6)  --display decimal|scientific\n"
               "  --range stdev|endpoints  --num-stdev K  --xmin A  --xmax B\n"
               "  --xticks N  --yticks N  --size WxH  --png FILE\n"
               "Presses Plot and prints one JSON object: fields, status, messages, errors,\n"
               "range, points, focus.\n",
               stderr);
    return 2;
}

bool WholeNumber(const std::string& text, int low, int high, int& out) {
    double v = 0;
    if (!ParseArg(text, v) || v != std::floor(v) || v < low || v > high) return false;
    out = static_cast<int>(v);
    return true;
}

// false on a malformed command line.
bool Parse(const Args& args, PlotArgs& p, std::string& error) {
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& flag = args[i];
        if (flag == "--moments") {
            p.Moments = true;
            continue;
        }
        static const char* const kValued[] = {
            "--dist",     "--param1",  "--param2", "--param3",    "--param4",   "--lsl",
            "--target",   "--usl",     "--mean",   "--stdev",     "--skewness", "--kurtosis",
            "--decimals", "--display", "--range",  "--num-stdev", "--xmin",     "--xmax",
            "--xticks",   "--yticks",  "--size",   "--png"};
        if (std::find(std::begin(kValued), std::end(kValued), flag) == std::end(kValued)) {
            error = "unknown option " + flag;
            return false;
        }
        if (i + 1 >= args.size()) {
            error = "missing value after " + flag;
            return false;
        }
        const std::string& value = args[++i];
        double number = 0;
        int whole = 0;
        if (flag == "--dist") {
            if (!m_Distributions::FindDistribution(value))
                return error = "unknown distribution " + value, false;
            p.Dist = value;
        } else if (flag.rfind("--param", 0) == 0 && flag.size() == 8 && flag[7] >= '1' &&
                   flag[7] <= '4')
            p.Param[flag[7] - '1'] = value;
        else if (flag == "--lsl")
            p.LSL = value;
        else if (flag == "--target")
            p.Target = value;
        else if (flag == "--usl")
            p.USL = value;
        else if (flag == "--mean")
            p.Mean = value;
        else if (flag == "--stdev")
            p.StDev = value;
        else if (flag == "--skewness")
            p.Skewness = value;
        else if (flag == "--kurtosis")
            p.Kurtosis = value;
        else if (flag == "--decimals") {
            if (!WholeNumber(value, 0, 6, whole)) return error = "--decimals takes 0 to 6", false;
            p.Decimals = whole;
        } else if (flag == "--display") {
            if (value != "decimal" && value != "scientific")
                return error = "--display takes decimal or scientific", false;
            p.Scientific = value == "scientific";
        } else if (flag == "--range") {
            if (value != "stdev" && value != "endpoints")
                return error = "--range takes stdev or endpoints", false;
            p.Endpoints = value == "endpoints";
        } else if (flag == "--num-stdev") {
            if (!ParseArg(value, number) || !(number > 0))
                return error = "--num-stdev takes a number greater than zero", false;
            p.NumStDev = number;
        } else if (flag == "--xmin" || flag == "--xmax") {
            if (!ParseArg(value, number)) return error = flag + " takes a number", false;
            (flag == "--xmin" ? p.XMin : p.XMax) = number;
        } else if (flag == "--xticks" || flag == "--yticks") {
            if (!WholeNumber(value, 1, 1000, whole))
                return error = flag + " takes a whole number from 1 to 1000", false;
            (flag == "--xticks" ? p.XTicks : p.YTicks) = whole;
        } else if (flag == "--size") {
            const auto x = value.find('x');
            int w = 0, h = 0;
            if (x == std::string::npos || !WholeNumber(value.substr(0, x), 50, 4000, w) ||
                !WholeNumber(value.substr(x + 1), 50, 4000, h))
                return error = "--size takes WxH, each 50 to 4000", false;
            p.Width = w;
            p.Height = h;
        } else if (flag == "--png") {
            p.Png = value;
        } else {
            error = "unknown option " + flag;
            return false;
        }
    }
    return true;
}

std::string Field(const QWidget* w, const QString& text) {
    JsonObject o;
    o.AddString("text", text.toStdString());
    o.AddRaw("visible", w->isVisibleTo(w->window()) ? "true" : "false");
    return o.Str();
}

} // namespace

int RunPlot(const Args& args) {
    PlotArgs p;
    std::string error;
    if (!Parse(args, p, error)) {
        std::fprintf(stderr, "pondera-cli plot: %s\n", error.c_str());
        return PlotUsage();
    }

    TempStore store;
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    // Qt's own chatter (platform notes) is not part of the answer.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtCriticalMsg || type == QtFatalMsg)
            std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
    });
    static int argc = 1;
    static char name[] = "pondera-cli";
    static char* argv[] = {name, nullptr};
    QApplication app(argc, argv);

    PlotFace face;
    support::SetFace(&face);
    support::Recorder().Clear();

    std::unique_ptr<frm_Pondera> window;
    RunAsAction([&] { window = std::make_unique<frm_Pondera>(); });
    frm_Pondera& w = *window;
    face.Window = &w;
    if (p.Width > 0) w.pb_PDF->setFixedSize(p.Width, p.Height);
    w.show();
    QApplication::processEvents();

    // Choosing the distribution runs the list's change event (labels, defaults).
    // The list holds every catalogue name, so the name checked above is in it.
    w.dd_Distribution->SelectText(QString::fromStdString(p.Dist));
    RunAsAction([&] { w.dd_Distribution_Click(); });

    if (p.Moments) {
        w.cb_DrawbyMoments->setChecked(true);
        RunAsAction([&] { w.cb_DrawbyMoments_Click(); });
        QLineEdit* boxes[] = {w.tb_Mean, w.tb_StDev, w.tb_Skewness, w.tb_Kurtosis};
        const std::optional<std::string>* values[] = {&p.Mean, &p.StDev, &p.Skewness, &p.Kurtosis};
        for (int i = 0; i < 4; ++i)
            if (*values[i]) boxes[i]->setText(QString::fromStdString(**values[i]));
    } else {
        QLineEdit* boxes[] = {w.tb_Param1, w.tb_Param2, w.tb_Param3, w.tb_Param4};
        for (int i = 0; i < 4; ++i)
            if (p.Param[i]) boxes[i]->setText(QString::fromStdString(*p.Param[i]));
    }
    // A given limit is a ticked one: what its click does, with one Plot below.
    struct Limit {
        const std::optional<std::string>& Text;
        QCheckBox* Check;
        QLineEdit* Box;
    };
    for (const Limit& l :
         {Limit{p.LSL, w.cb_LSL, w.tb_LSL}, Limit{p.Target, w.cb_Target, w.tb_Target},
          Limit{p.USL, w.cb_USL, w.tb_USL}}) {
        if (!l.Text) continue;
        l.Box->setText(QString::fromStdString(*l.Text));
        l.Check->setChecked(true);
        l.Box->setEnabled(true);
    }

    // Display options, as the options dialog would set them, just before Plot is
    // pressed: the plot that choosing the distribution runs keeps the defaults, so an
    // option's warning (a range with no width) comes once, from the press.
    if (p.Decimals) DisplayOptions::AppDecPlaces = static_cast<int16_t>(*p.Decimals);
    if (p.Scientific) DisplayOptions::AppDisplay = *p.Scientific;
    if (p.Endpoints) {
        DisplayOptions::AppXRange = *p.Endpoints ? 1 : 0;
        DisplayOptions::AppRangeMode = *p.Endpoints;
    }
    if (p.NumStDev) DisplayOptions::AppNumStDev = *p.NumStDev;
    if (p.XMin) DisplayOptions::AppXMin = *p.XMin;
    if (p.XMax) DisplayOptions::AppXMax = *p.XMax;
    if (p.XTicks) DisplayOptions::AppXTicks = static_cast<int16_t>(*p.XTicks);
    if (p.YTicks) DisplayOptions::AppYTicks = static_cast<int16_t>(*p.YTicks);

    // Press Plot.
    const std::size_t messagesBefore = support::Recorder().Messages.size();
    RunAsAction([&] { w.but_Plot_Click(); });
    QApplication::processEvents();
    const bool failedCheck = support::Recorder().Messages.size() > messagesBefore;

    if (p.Png && !w.pb_PDF->Image().save(QString::fromStdString(*p.Png), "PNG"))
        support::Recorder().Messages.push_back(
            {"pondera-cli", "Could not write " + *p.Png, support::BoxIcon::Critical});

    JsonObject fields;
    fields.AddRaw("dd_Distribution", Field(w.dd_Distribution, w.dd_Distribution->Text()));
    const std::pair<const char*, QLabel*> labels[] = {{"lb_Param1", w.lb_Param1},
                                                      {"lb_Param2", w.lb_Param2},
                                                      {"lb_Param3", w.lb_Param3},
                                                      {"lb_Param4", w.lb_Param4}};
    for (const auto& [key, label] : labels)
        fields.AddRaw(key, Field(label, label->text()));
    const std::pair<const char*, QLineEdit*> boxes[] = {{"tb_Param1", w.tb_Param1},
                                                        {"tb_Param2", w.tb_Param2},
                                                        {"tb_Param3", w.tb_Param3},
                                                        {"tb_Param4", w.tb_Param4},
                                                        {"tb_Mean", w.tb_Mean},
                                                        {"tb_StDev", w.tb_StDev},
                                                        {"tb_Skewness", w.tb_Skewness},
                                                        {"tb_Kurtosis", w.tb_Kurtosis},
                                                        {"tb_LowerPNC", w.tb_LowerPNC},
                                                        {"tb_UpperPNC", w.tb_UpperPNC},
                                                        {"tb_PNC", w.tb_PNC}};
    for (const auto& [key, box] : boxes)
        fields.AddRaw(key, Field(box, box->text()));

    JsonObject out;
    out.AddRaw("fields", fields.Str());
    out.AddString("status", w.StatusPanel1->text().toStdString());
    out.AddRaw("range", NumberArray({w.RangeLow, w.RangeHigh}));
    out.Add("points", w.NumPoints);
    QWidget* focus = failedCheck ? w.focusWidget() : nullptr;
    if (focus && !focus->objectName().isEmpty())
        out.AddString("focus", focus->objectName().toStdString());
    else
        out.AddRaw("focus", "null");
    out.AddRecorded();
    PrintLine(out);

    face.Window = nullptr;
    window.reset();
    support::SetFace(nullptr);
    return 0;
}

} // namespace cli
