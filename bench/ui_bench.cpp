// The window's speed where a person feels it: one Plot while a marker is
// dragged (N = 75) and after (N = 500) on an 800 x 500 chart, the same and a
// marker drag step on a display at scale 2 (1600 x 1000 device pixels), the
// readout of one pointer move over the chart, one step of a
// drag on the skewness-kurtosis chart (fit, 50 points, redraw, PNC), and the
// start-up to the first drawn chart, ten million values opened in the data
// dialog, and writing the one-page report. Runs off screen with its own settings
// store and error log, never the user's.
// Built only where Qt is (the GUI build).
#if __has_include(<QApplication>)
#include "settings/DisplayOptions.h"
#include "support/UserFace.h"
#include "ui/draw/MarkerShape.h"
#include "ui/draw/PictureBox.h"
#include "ui/main/ChartExport.h"
#include "ui/main/frm_Data.h"
#include "ui/main/frm_Pondera.h"

#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QLineEdit>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <unistd.h>

namespace {

QApplication& App() {
    static std::filesystem::path dir;
    // Kept to the end of the process: destroyed among the static objects it
    // would outlive Qt's own and crash on the way out.
    static QApplication* app = [] {
        dir =
            std::filesystem::temp_directory_path() / ("pondera-bench-" + std::to_string(getpid()));
        std::atexit([] {
            std::error_code ec;
            std::filesystem::remove_all(dir, ec);
        });
        std::filesystem::create_directories(dir);
        setenv("PONDERA_REGISTRY", (dir / "registry.sqlite3").c_str(), 1);
        setenv("PONDERA_ERROR_LOG", (dir / "errorlog.txt").c_str(), 1);
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        static int argc = 1;
        static char name[] = "pondera_bench";
        static char* argv[] = {name, nullptr};
        return new QApplication(argc, argv);
    }();
    return *app;
}

// A shown window with an 800 x 500 chart and both spec limits ticked.
std::unique_ptr<frm_Pondera> MakeWindow(double ratio = 1) {
    App();
    support::SetFace(nullptr);
    auto w = std::make_unique<frm_Pondera>();
    w->pb_PDF->setFixedSize(800, 500);
    w->pb_PDF->SetPixelRatio(ratio);
    w->pb_Slider->SetPixelRatio(ratio);
    w->show();
    QApplication::processEvents();
    w->tb_LSL->setText("-2");
    w->cb_LSL->setChecked(true);
    w->tb_USL->setText("2.5");
    w->cb_USL->setChecked(true);
    w->Plot();
    return w;
}

void PlotAt(benchmark::State& state, int n, double ratio = 1) {
    auto w = MakeWindow(ratio);
    w->NumPoints = n;
    for (auto _ : state)
        w->Plot();
    state.counters["width"] = w->pb_PDF->ScaleWidth();
    support::Recorder().Clear();
}

void BM_Plot_N75_800x500(benchmark::State& state) {
    PlotAt(state, 75);
}
void BM_Plot_N500_800x500(benchmark::State& state) {
    PlotAt(state, 500);
}

void BM_Plot_N500_800x500_Ratio2(benchmark::State& state) {
    PlotAt(state, 500, 2);
}

// One mouse move with the LSL marker armed: the marker follows, the limit's
// field is written and the chart is drawn with 75 points.
void BM_MarkerDragStep_Ratio2(benchmark::State& state) {
    auto w = MakeWindow(2);
    const double centre = w->sh_LSL->Left() + w->sh_LSL->Width() / 2.0;
    w->pb_Slider_MouseDown(1, 0, centre, 5);
    int step = 0;
    for (auto _ : state)
        w->pb_Slider_MouseMove(1, 0, centre + (step++ % 40), 5);
    state.counters["armed"] = w->DragLSL;
    w->pb_Slider_MouseUp(1, 0, centre, 5);
    support::Recorder().Clear();
}

// One mouse move over the chart with nothing armed: the readout in the
// status bar (density and both tails from the engine), no drawing.
void BM_PointerReadout(benchmark::State& state) {
    auto w = MakeWindow();
    const DensityChart::Geometry g = w->ChartGeometry;
    int step = 0;
    for (auto _ : state)
        w->pb_PDF_MouseMove(0, 0, g.X0 + (step++ % 300), 100);
    support::Recorder().Clear();
}

void BM_MomentsDragStep_SB(benchmark::State& state) {
    auto w = MakeWindow();
    w->cb_DrawbyMoments->setChecked(true);
    w->cb_DrawbyMoments_Click();
    w->tb_Mean->setText("0");
    w->tb_StDev->setText("1");
    w->tb_Skewness->setText("0.5");
    w->tb_Kurtosis->setText("2.8"); // bounded: an SB fit
    w->NumPoints = 50;
    for (auto _ : state)
        w->PlotbyMoments();
    support::Recorder().Clear();
}

void BM_StartUpToFirstChart(benchmark::State& state) {
    App();
    support::SetFace(nullptr);
    for (auto _ : state) {
        auto w = std::make_unique<frm_Pondera>();
        w->show();
        QApplication::processEvents();
        state.PauseTiming();
        w.reset();
        QApplication::processEvents();
        state.ResumeTiming();
    }
}

// Ten million values opened in the data dialog: the time to the first rows of
// the identification table, to the whole table (no simulation at that size),
// and the peak resident memory of the process.
void BM_DataDialogOpens10M(benchmark::State& state) {
    const std::string path = (std::filesystem::temp_directory_path() /
                              ("pondera-bench-dialog-" + std::to_string(getpid()) + ".txt"))
                                 .string();
    constexpr int n = 10'000'000;
    {
        std::FILE* out = std::fopen(path.c_str(), "w");
        for (int i = 1; i <= n; ++i) // Weibull shape 2, scale 10, threshold 5, shuffled
            std::fprintf(out, "%.6f\n",
                         5 + 10 * std::sqrt(-std::log1p(-(double((i * 7919LL) % n) + 0.5) / n)));
        std::fclose(out);
    }
    App();
    support::SetFace(nullptr);
    double firstRows = 0, table = 0, withAD = 0;
    for (auto _ : state) {
        auto w = std::make_unique<frm_Pondera>();
        w->show();
        w->mnuFitToData_Click();
        frm_Data& d = *w->DataDialog();
        QElapsedTimer clock;
        clock.start();
        d.OpenFile(QString::fromStdString(path));
        // Asleep between events, as the window's own loop is: a spinning wait
        // would take a core from the fits.
        while (d.Fits()->rowCount() == 0)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        firstRows = double(clock.elapsed()) / 1000.0;
        while (!d.Settled())
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        table = double(clock.elapsed()) / 1000.0;
        while (!d.Fits()->Complete()) // AD filled in (no simulation at this size)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        withAD = double(clock.elapsed()) / 1000.0;
        d.reject();
        w.reset();
    }
    state.counters["first_rows_s"] = firstRows;
    state.counters["table_s"] = table;
    state.counters["with_AD_s"] = withAD;
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("VmHWM:", 0) == 0)
            state.counters["peak_MB"] = std::atof(line.c_str() + 6) / 1024;
    std::remove(path.c_str());
}

} // namespace

// File > Save Report...: the whole page, chart drawn for print, written as PDF.
void BM_WriteReport(benchmark::State& state) {
    auto w = MakeWindow();
    const QString path =
        QString::fromStdString((std::filesystem::temp_directory_path() /
                                ("pondera-bench-report-" + std::to_string(getpid()) + ".pdf"))
                                   .string());
    for (auto _ : state)
        benchmark::DoNotOptimize(ChartExport::WriteReport(*w, path));
    std::filesystem::remove(path.toStdString());
}

BENCHMARK(BM_Plot_N75_800x500)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Plot_N500_800x500)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Plot_N500_800x500_Ratio2)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MarkerDragStep_Ratio2)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_PointerReadout)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MomentsDragStep_SB)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_WriteReport)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StartUpToFirstChart)->Unit(benchmark::kMillisecond)->Iterations(20);
BENCHMARK(BM_DataDialogOpens10M)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();
#endif
