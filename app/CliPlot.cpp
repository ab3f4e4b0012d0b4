// pondera-cli plot: the main window, headless, driven as a person would drive
// it: pick the distribution, type the fields, tick the limits, press Plot; or,
// with --data, open the file in the data dialog, pick the column and the row
// of the identification table and press "Use this fit". Then everything the
// window shows is printed as one JSON object.
#include "app/CliArgs.h"
#include "app/CliCommands.h"
#include "app/CliJson.h"
#include "engine/Families.h"
#include "settings/DisplayOptions.h"
#include "stats/m_Fits.h"
#include "support/UserFace.h"
#include "ui/draw/DistributionCombo.h"
#include "ui/draw/PictureBox.h"
#include "ui/main/ChartExport.h"
#include "ui/main/QtFace.h"
#include "ui/main/frm_Data.h"
#include "ui/main/frm_Pondera.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>

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
    std::optional<std::string> Display, Range;
    std::optional<double> NumStDev, XMin, XMax;
    std::optional<int> XTicks, YTicks;
    int Width = 0, Height = 0;
    std::optional<double> Scale;
    std::optional<std::string> Png;
    std::optional<std::string> Data, Column, Row;
    std::optional<std::string> Report; // report: the PDF to write
};

bool WholeNumber(const std::string& text, int low, int high, int& out) {
    double v = 0;
    if (!ParseArg(text, v) || v != std::floor(v) || v < low || v > high) return false;
    out = static_cast<int>(v);
    return true;
}

// The options of `plot`, in the order the window offers them.
void AddOptions(CLI::App* c, PlotArgs& p) {
    c->add_option_function<std::string>(
         "--dist",
         [&p](const std::string& name) {
             if (!Families::ByName(name))
                 BadValue("--dist", "takes a distribution name, not \"" + name + "\"");
             p.Dist = name;
         },
         "Normal (default), Exponential, LogNormal, Uniform, Triangular or Weibull; fills its "
         "default parameters")
        ->type_name("NAME");
    for (int i = 0; i < 4; ++i)
        AddText(c, "--param" + std::to_string(i + 1), p.Param[i],
                "parameter text, typed as into the field");
    AddText(c, "--lsl", p.LSL, "lower spec limit (a given limit is ticked)");
    AddText(c, "--target", p.Target, "target (ticked)");
    AddText(c, "--usl", p.USL, "upper spec limit (ticked)");
    c->add_flag("--moments", p.Moments, "draw using Johnson distributions, from the moments below");
    AddText(c, "--mean", p.Mean, "mean text");
    AddText(c, "--stdev", p.StDev, "standard deviation text");
    AddText(c, "--skewness", p.Skewness, "skewness text");
    AddText(c, "--kurtosis", p.Kurtosis, "kurtosis text");
    AddWhole(c, "--decimals", 0, 6, p.Decimals, "decimal places");
    AddChoice(c, "--display", {"decimal", "scientific"}, p.Display, "number display");
    AddChoice(c, "--range", {"stdev", "endpoints"}, p.Range, "x range mode");
    c->add_option_function<std::string>(
         "--num-stdev",
         [&p](const std::string& text) {
             double v = 0;
             if (!ParseArg(text, v) || !(v > 0))
                 BadValue("--num-stdev", "takes a number greater than zero");
             p.NumStDev = v;
         },
         "standard deviations on each side of the mean")
        ->type_name("K");
    AddNumber(c, "--xmin", p.XMin, "fixed x minimum");
    AddNumber(c, "--xmax", p.XMax, "fixed x maximum");
    AddWhole(c, "--xticks", 1, 1000, p.XTicks, "x-axis ticks");
    AddWhole(c, "--yticks", 1, 1000, p.YTicks, "y-axis ticks");
    c->add_option_function<std::string>(
         "--size",
         [&p](const std::string& value) {
             const auto x = value.find('x');
             if (x == std::string::npos || !WholeNumber(value.substr(0, x), 50, 4000, p.Width) ||
                 !WholeNumber(value.substr(x + 1), 50, 4000, p.Height))
                 BadValue("--size", "takes WxH, each 50 to 4000");
         },
         "size of the chart in pixels")
        ->type_name("WxH");
    c->add_option_function<std::string>(
         "--scale",
         [&p](const std::string& text) {
             double v = 0;
             if (!ParseArg(text, v) || !(v >= 0.5 && v <= 8))
                 BadValue("--scale", "takes a number from 0.5 to 8");
             p.Scale = v;
         },
         "device pixels per pixel (0.5 to 8): the PNG is F times the size, as on a screen of "
         "that scale")
        ->type_name("F");
    AddText(c, "--png", p.Png, "save the chart as a PNG file")->type_name("FILE");
    CLI::Option* data =
        AddText(c, "--data", p.Data,
                "open FILE in the data dialog and press \"Use this fit\" on --row; the limits "
                "go into the dialog")
            ->type_name("FILE");
    AddText(c, "--column", p.Column, "the data's column, by number from 1 or by its name")
        ->needs(data);
    c->add_option_function<std::string>(
         "--row",
         [&p](const std::string& name) {
             for (int i = 0; i < m_Fits::kRowCount; ++i)
                 if (name == m_Fits::Info(i).Name) return void(p.Row = name);
             BadValue("--row", "takes a row of the identification table (\"Weibull 3P\", "
                               "\"Johnson (percentiles)\", ...), not \"" +
                                   name + "\"");
         },
         "the row of the identification table whose fit is used (default: the first)")
        ->type_name("NAME")
        ->needs(data);
    data->excludes("--moments")->excludes("--dist");
}

void ApplyDisplayOptions(const PlotArgs& p) {
    if (p.Decimals) DisplayOptions::AppDecPlaces = static_cast<int16_t>(*p.Decimals);
    if (p.Display) DisplayOptions::AppDisplay = *p.Display == "scientific";
    if (p.Range) {
        const bool endpoints = *p.Range == "endpoints";
        DisplayOptions::AppXRange = endpoints ? 1 : 0;
        DisplayOptions::AppRangeMode = endpoints;
    }
    if (p.NumStDev) DisplayOptions::AppNumStDev = *p.NumStDev;
    if (p.XMin) DisplayOptions::AppXMin = *p.XMin;
    if (p.XMax) DisplayOptions::AppXMax = *p.XMax;
    if (p.XTicks) DisplayOptions::AppXTicks = static_cast<int16_t>(*p.XTicks);
    if (p.YTicks) DisplayOptions::AppYTicks = static_cast<int16_t>(*p.YTicks);
}

// The data dialog as a person uses it: the file opened, the column picked, the
// limits typed, the row selected once the fits are shown, "Use this fit".
bool UseFitFromData(frm_Pondera& w, const PlotArgs& p) {
    ApplyDisplayOptions(p);
    const std::size_t messagesBefore = support::Recorder().Messages.size();
    RunAsAction([&] { w.mnuFitToData_Click(); });
    frm_Data& d = *w.DataDialog();
    auto settle = [&d] {
        QElapsedTimer clock;
        clock.start();
        do
            QApplication::processEvents(QEventLoop::AllEvents, 50);
        while (!d.Settled() && clock.elapsed() < 600000);
    };
    d.SetLimits({QString::fromStdString(p.LSL.value_or("")),
                 QString::fromStdString(p.Target.value_or("")),
                 QString::fromStdString(p.USL.value_or(""))});
    RunAsAction([&] { d.OpenFile(QString::fromStdString(*p.Data)); });
    settle();
    if (p.Column) {
        const QString c = QString::fromStdString(*p.Column);
        int at = d.dd_Column->findText(c);
        if (at < 0) at = d.dd_Column->findData(c.toUtf8());
        if (at < 0 && c.toInt() >= 1) at = c.toInt() - 1;
        if (at >= 0 && at < d.dd_Column->count()) {
            d.dd_Column->setCurrentIndex(at);
            RunAsAction([&] { d.dd_Column_Click(); });
            settle();
        }
    }
    RunAsAction([&] { d.but_StopSimulation_Click(); });
    for (int shown = 0; shown < d.Fits()->rowCount(); ++shown)
        if (!p.Row || d.Fits()->Fit(shown).Name == *p.Row) {
            d.tbl_Fits->selectRow(shown);
            break;
        }
    RunAsAction([&] { d.but_UseFit_Click(); });
    QApplication::processEvents();
    if (d.isVisible()) d.reject(); // refused, with its message recorded
    return support::Recorder().Messages.size() > messagesBefore;
}

std::string Field(const QWidget* w, const QString& text) {
    JsonObject o;
    o.AddString("text", text.toStdString());
    o.AddRaw("visible", w->isVisibleTo(w->window()) ? "true" : "false");
    return o.Str();
}

// The fields typed, the limits ticked, Plot pressed; true when a check refused.
bool TypeAndPlot(frm_Pondera& w, const PlotArgs& p) {
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
    ApplyDisplayOptions(p);

    // Press Plot.
    const std::size_t messagesBefore = support::Recorder().Messages.size();
    RunAsAction([&] { w.but_Plot_Click(); });
    QApplication::processEvents();
    return support::Recorder().Messages.size() > messagesBefore;
}

int RunPlot(const PlotArgs& p) {
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
    if (p.Scale)
        for (PictureBox* surface : w.findChildren<PictureBox*>())
            surface->SetPixelRatio(*p.Scale);
    w.show();
    QApplication::processEvents();

    const bool failedCheck = p.Data ? UseFitFromData(w, p) : TypeAndPlot(w, p);

    if (p.Png && !w.pb_PDF->Image().save(QString::fromStdString(*p.Png), "PNG"))
        support::Recorder().Messages.push_back(
            {"pondera-cli", "Could not write " + *p.Png, support::BoxIcon::Critical});

    if (p.Report && !ChartExport::WriteReport(w, QString::fromStdString(*p.Report)))
        support::Recorder().Messages.push_back(
            {"pondera-cli", "Could not write " + *p.Report, support::BoxIcon::Critical});

    JsonObject fields;
    fields.AddRaw("dd_Distribution", Field(w.dd_Distribution, w.dd_Distribution->Text()));
    const std::pair<const char*, QLabel*> labels[] = {{"lb_Param1", w.lb_Param1},
                                                      {"lb_Param2", w.lb_Param2},
                                                      {"lb_Param3", w.lb_Param3},
                                                      {"lb_Param4", w.lb_Param4}};
    for (const auto& [key, label] : labels)
        fields.AddRaw(key, Field(label, QString::fromStdString(frm_Pondera::Caption(label))));
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

} // namespace

void AddPlot(CLI::App& program, int& status) {
    auto p = std::make_shared<PlotArgs>();
    CLI::App* command = program.add_subcommand(
        "plot", "Presses Plot in the window, off screen on a temporary settings store, and "
                "prints its fields, status, messages, errors, range, points and focus.");
    AddOptions(command, *p);
    command->callback([p, &status] { status = RunPlot(*p); });
}

} // namespace cli

namespace cli {

void AddReport(CLI::App& program, int& status) {
    auto p = std::make_shared<PlotArgs>();
    CLI::App* command = program.add_subcommand(
        "report", "Presses Plot in the window as plot does, then writes the one-page report "
                  "(the chart, the parameters and every figure) as PDF; prints what plot prints.");
    AddOptions(command, *p);
    command->add_option("--out", p->Report, "the PDF file to write")->type_name("FILE")->required();
    command->callback([p, &status] { status = RunPlot(*p); });
}

} // namespace cli
