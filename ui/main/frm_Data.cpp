#include "ui/main/frm_Data.h"

#include "settings/DisplayOptions.h"
#include "stats/m_Fits.h"
#include "support/ErrorTrap.h"
#include "support/Format.h"
#include "support/UserFace.h"
#include "ui/main/PlotPipeline.h"
#include "ui/main/ProbabilityChart.h"
#include "ui/main/QtFace.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMimeData>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>
#include <QTextBlock>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <atomic>
#include <limits>
#include <stdexcept>

namespace {

constexpr const char* ktb_Data_Change = "Pondera.frm_Data.tb_Data_Change";
constexpr const char* kdd_Column_Click = "Pondera.frm_Data.dd_Column_Click";
constexpr const char* kbut_Open_Click = "Pondera.frm_Data.but_Open_Click";
constexpr const char* kOpenFile = "Pondera.frm_Data.OpenFile";
constexpr const char* kaccept = "Pondera.frm_Data.accept";
constexpr const char* kbut_UseFit_Click = "Pondera.frm_Data.but_UseFit_Click";
constexpr const char* kbut_StopSimulation_Click = "Pondera.frm_Data.but_StopSimulation_Click";
constexpr const char* ktbl_Fits_RowChange = "Pondera.frm_Data.tbl_Fits_RowChange";
constexpr const char* kIdentifyNow = "Pondera.frm_Data.IdentifyNow";
constexpr const char* kShowFits = "Pondera.frm_Data.ShowFits";

// Text fields longer than this are read again only once typing pauses.
constexpr int kQuickText = 200000;

constexpr std::size_t kPreviewBytes = 64 * 1024;
constexpr const char* kLimitNames[3] = {"LSL", "Target", "USL"};

// Long words (a quoted line of digits, a path) get break opportunities, so a
// message wraps inside the dialog instead of widening it.
QString Breakable(const QString& text) {
    QString out;
    int run = 0;
    for (const QChar c : text) {
        run = c.isSpace() ? 0 : run + 1;
        if (run > 24 && run % 12 == 1) out += QChar(0x200B); // a zero-width space
        out += c;
    }
    return out;
}

m_SampleData::ReadOptions Options(const std::string& column) {
    return {support::DecimalSeparator(), column};
}

} // namespace

struct frm_Data::Job {
    std::atomic<bool> Cancel{false};
    std::atomic<bool> Finished{false};
    std::atomic<long> Drawn{0}, Total{0}; // simulated samples
};

frm_Data::frm_Data(QWidget* parent) : QDialog(parent) {
    setObjectName("frm_Data");
    setWindowTitle("Fit to Data");
    auto* layout = new QVBoxLayout(this);
    // Above: the data, its column, limits and summary, and the probability
    // plot; below, across the whole width, the table of fits.
    auto* top = new QHBoxLayout;
    layout->addLayout(top, 1);
    auto* left = new QVBoxLayout;
    top->addLayout(left, 1);
    auto* hint = new QLabel("Paste measurements, one per line, or a table whose columns are "
                            "separated by tabs, semicolons, commas or spaces (a first line of "
                            "titles names them); or open a text or CSV file.");
    hint->setWordWrap(true);
    left->addWidget(hint);
    tb_Data = new QPlainTextEdit;
    tb_Data->setObjectName("tb_Data");
    tb_Data->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    tb_Data->setLineWrapMode(QPlainTextEdit::NoWrap);
    tb_Data->viewport()->installEventFilter(this);
    left->addWidget(tb_Data, 1);
    lb_File = new QLabel;
    lb_File->setObjectName("lb_File");
    lb_File->setWordWrap(true);
    lb_File->setTextFormat(Qt::RichText);
    lb_File->hide();
    left->addWidget(lb_File);

    auto* middle = new QVBoxLayout;
    top->addLayout(middle, 0);
    auto* fields = new QGridLayout;
    lb_Column = new QLabel("Co&lumn:");
    dd_Column = new QComboBox;
    dd_Column->setObjectName("dd_Column");
    dd_Column->setPlaceholderText("Choose the column to fit");
    dd_Column->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    dd_Column->setMinimumContentsLength(16);
    lb_Column->setBuddy(dd_Column);
    lb_Column->hide();
    dd_Column->hide();
    fields->addWidget(lb_Column, 0, 0);
    fields->addWidget(dd_Column, 0, 1);
    QLineEdit** limits[3] = {&tb_LSL, &tb_Target, &tb_USL};
    const char* captions[3] = {"L&SL:", "&Target:", "&USL:"};
    for (int i = 0; i < 3; ++i) {
        QLineEdit*& box = *limits[i];
        box = new QLineEdit;
        box->setObjectName(QString("tb_") + kLimitNames[i]);
        box->setPlaceholderText("none");
        auto* label = new QLabel(captions[i]);
        label->setBuddy(box);
        fields->addWidget(label, i + 1, 0);
        fields->addWidget(box, i + 1, 1);
    }
    middle->addLayout(fields);
    lb_Summary = new QLabel;
    lb_Summary->setObjectName("lb_Summary");
    lb_Summary->setTextInteractionFlags(Qt::TextSelectableByMouse);
    lb_Summary->setWordWrap(true);
    lb_Summary->setMinimumHeight(5 * lb_Summary->fontMetrics().lineSpacing());
    lb_Summary->setMinimumWidth(lb_Summary->fontMetrics().horizontalAdvance(QString(30, 'x')));
    lb_Summary->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    middle->addWidget(lb_Summary, 1);
    but_Open = new QPushButton("Open File...");
    but_Open->setObjectName("but_Open");
    // Enter after a file is opened presses OK, not this button again.
    but_Open->setAutoDefault(false);
    middle->addWidget(but_Open, 0, Qt::AlignLeft);

    pic_ProbabilityPlot = new ProbabilityChart;
    pic_ProbabilityPlot->setObjectName("pic_ProbabilityPlot");
    pic_ProbabilityPlot->setFixedSize(420, 320);
    top->addWidget(pic_ProbabilityPlot, 0, Qt::AlignTop);

    lb_Fits = new QLabel("&Candidate distributions, best first (ranked by AICc):");
    layout->addWidget(lb_Fits);
    fits_ = new IdentifyTable(this);
    tbl_Fits = new QTableView;
    tbl_Fits->setObjectName("tbl_Fits");
    tbl_Fits->setModel(fits_);
    tbl_Fits->setSelectionBehavior(QAbstractItemView::SelectRows);
    tbl_Fits->setSelectionMode(QAbstractItemView::SingleSelection);
    tbl_Fits->setEditTriggers(QAbstractItemView::NoEditTriggers);
    tbl_Fits->setTabKeyNavigation(false);
    tbl_Fits->setWordWrap(false);
    tbl_Fits->verticalHeader()->hide();
    tbl_Fits->verticalHeader()->setDefaultSectionSize(tbl_Fits->fontMetrics().height() + 6);
    tbl_Fits->horizontalHeader()->setStretchLastSection(false);
    // Room for ten rows: the nine and the header.
    tbl_Fits->setMinimumHeight(10 * (tbl_Fits->fontMetrics().height() + 6) + 8);
    tbl_Fits->installEventFilter(this);
    lb_Fits->setBuddy(tbl_Fits);
    layout->addWidget(tbl_Fits);
    auto* simulation = new QHBoxLayout;
    pg_Simulation = new QProgressBar;
    pg_Simulation->setObjectName("pg_Simulation");
    pg_Simulation->setFormat("Simulating p: %p%");
    but_StopSimulation = new QPushButton("St&op");
    but_StopSimulation->setObjectName("but_StopSimulation");
    but_StopSimulation->setAutoDefault(false);
    simulation->addWidget(pg_Simulation, 1);
    simulation->addWidget(but_StopSimulation);
    layout->addLayout(simulation);
    // Hidden, they keep their room: the table does not jump when they come.
    for (QWidget* w :
         {static_cast<QWidget*>(pg_Simulation), static_cast<QWidget*>(but_StopSimulation)}) {
        QSizePolicy keep = w->sizePolicy();
        keep.setRetainSizeWhenHidden(true);
        w->setSizePolicy(keep);
    }
    pg_Simulation->hide();
    but_StopSimulation->hide();

    but_Buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    but_Buttons->setObjectName("but_Buttons");
    but_Buttons->button(QDialogButtonBox::Ok)->setDefault(true);
    but_UseFit = but_Buttons->addButton("Use t&his fit", QDialogButtonBox::ActionRole);
    but_UseFit->setObjectName("but_UseFit");
    but_UseFit->setAutoDefault(false);
    but_UseFit->setEnabled(false);
    layout->addWidget(but_Buttons);
    resize(1180, 760);

    settle_ = new QTimer(this);
    settle_->setSingleShot(true);
    settle_->setInterval(kSettleMs);
    progress_ = new QTimer(this);
    progress_->setInterval(100);
    sorted_ = std::make_shared<const std::vector<double>>();

    connect(tb_Data, &QPlainTextEdit::textChanged, this,
            [this] { RunAsAction([&] { tb_Data_Change(); }); });
    connect(dd_Column, &QComboBox::activated, this,
            [this] { RunAsAction([&] { dd_Column_Click(); }); });
    connect(but_Open, &QPushButton::clicked, this,
            [this] { RunAsAction([&] { but_Open_Click(); }); });
    connect(lb_File, &QLabel::linkActivated, this, [this] {
        RunAsAction([&] {
            LeaveFile();
            tb_Data->clear();
            tb_Data->setFocus();
        });
    });
    connect(but_UseFit, &QPushButton::clicked, this,
            [this] { RunAsAction([&] { but_UseFit_Click(); }); });
    connect(but_StopSimulation, &QPushButton::clicked, this,
            [this] { RunAsAction([&] { but_StopSimulation_Click(); }); });
    connect(tbl_Fits, &QTableView::doubleClicked, this,
            [this] { RunAsAction([&] { but_UseFit_Click(); }); });
    connect(tbl_Fits->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& now) {
                RunAsAction([&] { tbl_Fits_RowChange(now.isValid() ? now.row() : -1); });
            });
    connect(settle_, &QTimer::timeout, this, [this] { RunAsAction([&] { IdentifyNow(); }); });
    connect(progress_, &QTimer::timeout, this, [this] { ShowProgress(); });
    connect(but_Buttons, &QDialogButtonBox::accepted, this, &frm_Data::accept);
    connect(but_Buttons, &QDialogButtonBox::rejected, this, &frm_Data::reject);
    // A closed dialog simulates nothing.
    connect(this, &QDialog::finished, this, [this] {
        StopJob();
        fits_->StopWaiting();
    });
    tb_Data_Change();
}

frm_Data::~frm_Data() {
    StopJob();
    for (auto& [worker, job] : workers_)
        worker.join();
}

std::array<QString, 3> frm_Data::Limits() const {
    return {tb_LSL->text().trimmed(), tb_Target->text().trimmed(), tb_USL->text().trimmed()};
}

void frm_Data::SetLimits(const std::array<QString, 3>& texts) {
    tb_LSL->setText(texts[0]);
    tb_Target->setText(texts[1]);
    tb_USL->setText(texts[2]);
}

void frm_Data::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    // Ready for Ctrl+V at once.
    tb_Data->setFocus(Qt::OtherFocusReason);
    // The simulation stopped when the dialog closed goes on from the start.
    if (fits_->rowCount() > 0 && !fits_->Complete()) settle_->start();
}

// A middle click pastes the primary selection; with no program owning it, Qt
// 6.4's text widgets end the program. Such a click is ignored here.
bool frm_Data::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    // Enter on a row uses its fit; elsewhere it presses OK.
    if (watched == tbl_Fits && type == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            RunAsAction([&] { but_UseFit_Click(); });
            return true;
        }
    }
    if (watched == tb_Data->viewport() &&
        (type == QEvent::MouseButtonPress || type == QEvent::MouseButtonRelease ||
         type == QEvent::MouseButtonDblClick) &&
        static_cast<QMouseEvent*>(event)->button() == Qt::MiddleButton) {
        const QMimeData* offer = QApplication::clipboard()->mimeData(QClipboard::Selection);
        if (!offer || !offer->hasText() || offer->text().isEmpty() || tb_Data->isReadOnly())
            return true;
    }
    return QDialog::eventFilter(watched, event);
}

DataStep::Sample frm_Data::Refresh() {
    std::string column;
    if (dd_Column->currentIndex() >= 0)
        column = dd_Column->currentData().toByteArray().toStdString();
    DataStep::Sample s;
    if (!file_.isEmpty()) {
        // The file is read again only for another column.
        if (!fileColumn_ || *fileColumn_ != column) {
            QApplication::setOverrideCursor(Qt::WaitCursor);
            fileSample_ = DataStep::Read(
                m_SampleData::ReadFile(QFile::encodeName(file_).toStdString(), Options(column)));
            QApplication::restoreOverrideCursor();
            fileColumn_ = column;
        }
        s = fileSample_;
    } else if (tb_Data->toPlainText().trimmed().isEmpty()) {
        s.Problem = "No values yet.";
    } else {
        s = DataStep::Read(tb_Data->toPlainText().toStdString(), Options(column));
    }
    ShowColumns(s.ColumnNames);
    lb_Summary->setText(Breakable(QString::fromStdString(
        s.Ok() ? DataStep::SummaryText(s.Summary, DisplayOptions::Pattern()) : s.Problem)));
    return s;
}

// The picker offers the columns when there are several; the choice stays while
// the same names are read.
void frm_Data::ShowColumns(const std::vector<std::string>& names) {
    QStringList shown;
    for (const std::string& name : names)
        shown << QString::fromStdString(name);
    const bool several = names.size() > 1;
    dd_Column->setVisible(several);
    lb_Column->setVisible(several);
    QStringList current;
    for (int i = 0; i < dd_Column->count(); ++i)
        current << dd_Column->itemText(i);
    if (current == shown) return;
    const QString chosen = dd_Column->currentText();
    const QSignalBlocker quiet(dd_Column);
    dd_Column->clear();
    if (!several) return;
    for (std::size_t i = 0; i < names.size(); ++i)
        dd_Column->addItem(shown[static_cast<int>(i)], QByteArray::fromStdString(names[i]));
    dd_Column->setCurrentIndex(dd_Column->findText(chosen));
}

void frm_Data::LeaveFile() {
    file_.clear();
    fileColumn_.reset();
    fileSample_ = {};
    lb_File->hide();
    tb_Data->setReadOnly(false);
}

void frm_Data::Warn(const std::string& text) {
    support::Face().ShowMessage(PlotPipeline::kWarningTitle,
                                Breakable(QString::fromStdString(text)).toStdString(),
                                support::BoxIcon::Warning);
}

// A short text is read at every key; a long one, like the table, once typing pauses.
void frm_Data::tb_Data_Change() {
    support::Trap(ktb_Data_Change, [&] {
        if (loading_) return;
        tableCurrent_ = false;
        if (tb_Data->document()->characterCount() < kQuickText) Refresh();
        settle_->start();
    });
}

void frm_Data::dd_Column_Click() {
    support::Trap(kdd_Column_Click, [&] {
        settle_->stop();
        IdentifyNow();
    });
}

void frm_Data::but_Open_Click() {
    support::Trap(kbut_Open_Click, [&] {
        QString path;
        {
            const ToolkitWork toolkit;
            path = QFileDialog::getOpenFileName(
                this, "Open Data", folder_.isEmpty() ? QDir::homePath() : folder_,
                "Text and CSV files (*.txt *.csv *.dat *.tsv);;All files (*)");
        }
        if (path.isEmpty()) return;
        folder_ = QFileInfo(path).absolutePath();
        OpenFile(path);
    });
}

void frm_Data::OpenFile(const QString& path) {
    support::Trap(kOpenFile, [&] {
        const std::string local = QFile::encodeName(path).toStdString();
        const m_SampleData::Head head =
            m_SampleData::ReadHead(local, std::numeric_limits<std::size_t>::max(), kWholeFile);
        if (!head.Problem.empty()) return Warn(head.Problem);
        const std::string_view start = std::string_view(head.Text).substr(0, kPreviewBytes);
        if (start.find('\0') != std::string_view::npos) // UTF-16, or not text at all
            return Warn(m_SampleData::Parse(start).Problem);
        const ToolkitWork toolkit;
        LeaveFile();
        if (head.Whole) {
            tb_Data->setPlainText(
                QString::fromUtf8(head.Text.data(), static_cast<qsizetype>(head.Text.size())));
        } else {
            // The first lines to look at; every value is read from the file.
            const m_SampleData::Head first =
                m_SampleData::ReadHead(local, kPreviewLines, kPreviewBytes);
            file_ = path;
            loading_ = true;
            tb_Data->setPlainText(
                QString::fromUtf8(first.Text.data(), static_cast<qsizetype>(first.Text.size())));
            loading_ = false;
            tb_Data->setReadOnly(true);
            const auto lines = std::count(first.Text.begin(), first.Text.end(), '\n');
            lb_File->setText(
                QString("The first %1 lines of \"%2\" (%3) are shown; all of its lines are read. "
                        "<a href=\"paste\">Paste values instead</a>")
                    .arg(lines)
                    .arg(QFileInfo(path).fileName().toHtmlEscaped())
                    .arg(QLocale().formattedDataSize(static_cast<qint64>(head.Size))));
            lb_File->show();
            IdentifyNow();
        }
        but_Buttons->button(QDialogButtonBox::Ok)->setFocus();
    });
}

bool frm_Data::Checked(DataStep::Sample& s) {
    s = Refresh();
    if (!s.Ok()) {
        Warn(s.Problem);
        // The line that failed, selected, so it can be mended at once.
        const ToolkitWork toolkit;
        if (const QTextBlock line = tb_Data->document()->findBlockByNumber(s.Line - 1);
            file_.isEmpty() && s.Line > 0 && line.isValid()) {
            QTextCursor c(line);
            c.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
            tb_Data->setTextCursor(c);
        }
        (dd_Column->isVisible() && dd_Column->currentIndex() < 0 ? static_cast<QWidget*>(dd_Column)
                                                                 : tb_Data)
            ->setFocus();
        return false;
    }
    QLineEdit* const boxes[3] = {tb_LSL, tb_Target, tb_USL};
    const std::array<QString, 3> limits = Limits();
    for (int i = 0; i < 3; ++i) {
        if (limits[i].isEmpty() || support::ParseNumber(limits[i].toStdString())) continue;
        Warn(std::string("The ") + kLimitNames[i] + " must be a number, or empty for none.");
        boxes[i]->setFocus();
        boxes[i]->selectAll();
        return false;
    }
    return true;
}

void frm_Data::accept() {
    bool done = false;
    support::Trap(kaccept, [&] {
        DataStep::Sample s;
        if (!Checked(s)) return;
        chosen_.reset();
        result_ = std::move(s);
        done = true;
    });
    if (done) QDialog::accept();
}

void frm_Data::but_UseFit_Click() {
    bool done = false;
    support::Trap(kbut_UseFit_Click, [&] {
        DataStep::Sample s;
        if (!Checked(s)) return;
        const QModelIndex at = tbl_Fits->currentIndex();
        if (!at.isValid()) return;
        const int fitRow = fits_->FitRow(at.row());
        // Typed since the table was filled: the fits of what is there now. (A big
        // sample's rows shown so far are its own, final.)
        if (!tableCurrent_ && (settle_->isActive() || partial_.empty())) {
            settle_->stop();
            StopJob();
            QApplication::setOverrideCursor(Qt::WaitCursor);
            m_Identify::Options quick;
            quick.Replicates = 0;
            auto rows = m_Identify::Identify(s.Values, quick);
            QApplication::restoreOverrideCursor();
            fits_->SetRows(std::move(rows), DisplayOptions::Pattern());
            tableCurrent_ = true;
        }
        int shown = 0;
        while (shown < fits_->rowCount() && fits_->FitRow(shown) != fitRow)
            ++shown;
        if (shown == fits_->rowCount()) return;
        if (!fits_->Usable(shown))
            return Warn("\"" + fits_->Fit(shown).Name +
                        "\" has no fit to use: " + fits_->Fit(shown).Status + ".");
        chosen_ = fits_->Fit(shown);
        result_ = std::move(s);
        done = true;
    });
    if (done) QDialog::accept();
}

void frm_Data::but_StopSimulation_Click() {
    support::Trap(kbut_StopSimulation_Click, [&] {
        StopJob();
        fits_->StopWaiting();
        tbl_Fits->setFocus();
    });
}

void frm_Data::tbl_Fits_RowChange(int row) {
    support::Trap(ktbl_Fits_RowChange, [&] {
        but_UseFit->setEnabled(row >= 0 && fits_->Usable(row));
        ShowProbabilityPlot(row >= 0 ? fits_->FitRow(row) : -1);
    });
}

// The one place the probability plot is drawn, for the selected row or none
// (-1); a row without a curve shows its reason instead.
void frm_Data::ShowProbabilityPlot(int fitRow) {
    if (fitRow < 0 || !sorted_) return pic_ProbabilityPlot->Clear();
    const m_Identify::RowResult& r = fits_->ByFitRow(fitRow);
    if (!r.F.Status.empty() || r.Status != "ok")
        return pic_ProbabilityPlot->Clear(QString::fromStdString(r.Name + ": " + r.Status));
    pic_ProbabilityPlot->Show(*sorted_, fitRow, r.F);
}

bool frm_Data::Settled() const {
    return tableCurrent_ && !settle_->isActive();
}

bool frm_Data::Simulating() const {
    return job_ && !job_->Finished && !job_->Cancel;
}

void frm_Data::IdentifyNow() {
    support::Trap(kIdentifyNow, [&] {
        settle_->stop();
        DataStep::Sample s = Refresh();
        tableCurrent_ = !s.Ok(); // until the fits of this sample arrive
        if (!s.Ok()) {
            StopJob();
            ++generation_; // whatever is still coming is of other data
            fits_->Clear();
            sorted_ = std::make_shared<const std::vector<double>>();
            ShowProbabilityPlot(-1);
            but_UseFit->setEnabled(false);
            return;
        }
        partial_.clear();
        // A big sample's rows come one by one: the old ones must not stand meanwhile.
        if (s.Values.size() > kRowByRow) fits_->Clear();
        StartIdentify(std::move(s.Values));
    });
}

void frm_Data::StopJob() {
    if (job_) job_->Cancel = true;
    job_.reset();
    progress_->stop();
    pg_Simulation->hide();
    but_StopSimulation->hide();
}

// The fits first (no simulation: quick), shown at once; then the simulated p of
// each row in the table's order. Every answer is queued to the dialog with the
// generation it belongs to, so an answer for data since replaced is dropped.
void frm_Data::StartIdentify(std::vector<double> values) {
    StopJob();
    // Workers stopped earlier that have finished by now.
    std::erase_if(workers_, [](auto& w) {
        if (!w.second->Finished) return false;
        w.first.join();
        return true;
    });
    const int generation = ++generation_;
    auto job = std::make_shared<Job>();
    job_ = job;
    pg_Simulation->setValue(0);
    std::thread worker([this, job, generation, values = std::move(values)]() mutable {
        try {
            // Sorted once here (the probability plot wants it so); the fits' own
            // sort then finds it done.
            m_Fits::SortValues(values);
            auto sorted = std::make_shared<const std::vector<double>>(std::move(values));
            const std::size_t n = sorted->size();
            m_Identify::Options o;
            o.Replicates = 0;
            o.Seed = kSeed;
            o.Cancel = &job->Cancel;
            // A big sample shows each row as it is fitted (the quick ones at
            // once), then the ranked table, then each row's AD as it is measured.
            auto post = [this](auto show) {
                QMetaObject::invokeMethod(this, std::move(show), Qt::QueuedConnection);
            };
            if (n > kRowByRow) {
                o.RowDone = [&post, generation, this](int i, const m_Identify::RowResult& r) {
                    post([this, generation, i, r] { ShowRow(generation, i, r); });
                };
                o.Ranked = [&post, generation, sorted, this](const auto& rows) {
                    post([this, generation, rows, sorted] { ShowFits(generation, rows, sorted); });
                };
                o.Measured = [&post, generation, this](int i, const m_Identify::RowResult& r) {
                    post([this, generation, i, a2 = r.A2, pTable = r.PTable] {
                        ShowMeasured(generation, i, a2, pTable);
                    });
                };
            }
            std::vector<m_Identify::RowResult> rows = m_Identify::Identify(*sorted, o);
            if (job->Cancel) throw std::runtime_error("stopped");
            std::vector<int> order;
            for (int i = 0; i < static_cast<int>(rows.size()); ++i)
                if (rows[i].Status == "ok" && !std::isnan(rows[i].A2)) order.push_back(i);
            std::stable_sort(order.begin(), order.end(),
                             [&](int a, int b) { return rows[a].Rank < rows[b].Rank; });
            o.Replicates = n <= kMaxSimulated ? m_Identify::DefaultReplicates(n) : 0;
            job->Total = static_cast<long>(o.Replicates) * static_cast<long>(order.size());
            if (n <= kRowByRow)
                post([this, generation, rows, sorted] { ShowFits(generation, rows, sorted); });
            post([this, generation] { ShowSimulation(generation); });
            o.Progress = [job] { ++job->Drawn; };
            for (int i : order) {
                if (o.Replicates == 0) break;
                const double p = m_Identify::SimulatedP(i, rows[i].F.C, rows[i].A2, n, o);
                if (job->Cancel) break;
                post([this, generation, i, p] { ShowP(generation, i, p); });
            }
        } catch (const std::exception&) { // stopped, or out of memory: nothing more to show
        }
        job->Finished = true;
        QMetaObject::invokeMethod(
            this, [this, generation] { SimulationEnded(generation); }, Qt::QueuedConnection);
    });
    workers_.emplace_back(std::move(worker), job);
}

void frm_Data::ShowFits(int generation, std::vector<m_Identify::RowResult> rows,
                        std::shared_ptr<const std::vector<double>> sorted) {
    if (generation != generation_) return;
    RunAsAction([&] {
        support::Trap(kShowFits, [&] {
            sorted_ = std::move(sorted);
            tableCurrent_ = true;
            partial_.clear();
            const std::size_t n = sorted_->size();
            fits_->SetRows(std::move(rows), DisplayOptions::Pattern());
            if (n > kMaxSimulated)
                fits_->SkipSimulation("Not simulated for more than " +
                                      QLocale().toString(static_cast<qlonglong>(kMaxSimulated)) +
                                      " values; the table p is in the tool tip where it exists.");
            tbl_Fits->resizeColumnsToContents();
            tbl_Fits->horizontalHeader()->setSectionResizeMode(IdentifyTable::kParams,
                                                               QHeaderView::Stretch);
            // The p columns are sized for their widest text, not for "...".
            const int pWidth = tbl_Fits->fontMetrics().horizontalAdvance("stopped") + 16;
            for (int c : {IdentifyTable::kP, IdentifyTable::kLrtP})
                tbl_Fits->setColumnWidth(c, std::max(tbl_Fits->columnWidth(c), pWidth));
            if (fits_->rowCount() > 0) tbl_Fits->selectRow(0);
        });
    });
}

void frm_Data::ShowSimulation(int generation) {
    if (generation != generation_ || !job_ || job_->Cancel || job_->Total == 0) return;
    pg_Simulation->setMaximum(static_cast<int>(job_->Total));
    pg_Simulation->show();
    but_StopSimulation->show();
    progress_->start();
}

// Rows not fitted yet wait greyed in the table, in its own order.
void frm_Data::ShowRow(int generation, int fitRow, const m_Identify::RowResult& row) {
    if (generation != generation_ || tableCurrent_) return;
    if (partial_.size() != m_Fits::kRowCount) {
        partial_.assign(m_Fits::kRowCount, {});
        constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
        for (int i = 0; i < m_Fits::kRowCount; ++i) {
            m_Identify::RowResult& r = partial_[i];
            r.Name = m_Fits::Info(i).Name;
            r.Status = "fitting...";
            r.LogLik = r.A2 = r.AICc = r.Weight = r.P = r.PTable = r.LrtP = kNone;
        }
    }
    partial_[fitRow] = row;
    fits_->SetRows(partial_, DisplayOptions::Pattern());
    fits_->SkipSimulation("");
    tbl_Fits->resizeColumnsToContents();
    tbl_Fits->horizontalHeader()->setSectionResizeMode(IdentifyTable::kParams,
                                                       QHeaderView::Stretch);
}

void frm_Data::ShowP(int generation, int fitRow, double p) {
    if (generation == generation_) fits_->SetP(fitRow, p);
}

void frm_Data::ShowMeasured(int generation, int fitRow, double a2, double pTable) {
    if (generation != generation_) return;
    fits_->SetA2(fitRow, a2, pTable);
    tbl_Fits->resizeColumnToContents(IdentifyTable::kAD); // it was sized for "..."
}

void frm_Data::SimulationEnded(int generation) {
    if (generation != generation_) return;
    if (job_ && job_->Finished) {
        job_.reset();
        progress_->stop();
        pg_Simulation->hide();
        but_StopSimulation->hide();
    }
}

void frm_Data::ShowProgress() {
    if (job_) pg_Simulation->setValue(static_cast<int>(job_->Drawn));
}
