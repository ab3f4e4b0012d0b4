#include "ui/main/frm_Data.h"

#include "settings/DisplayOptions.h"
#include "support/ErrorTrap.h"
#include "support/Format.h"
#include "support/UserFace.h"
#include "ui/main/PlotPipeline.h"
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
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMimeData>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextBlock>
#include <QVBoxLayout>

#include <algorithm>
#include <limits>

namespace {

constexpr const char* ktb_Data_Change = "Pondera.frm_Data.tb_Data_Change";
constexpr const char* kdd_Column_Click = "Pondera.frm_Data.dd_Column_Click";
constexpr const char* kbut_Open_Click = "Pondera.frm_Data.but_Open_Click";
constexpr const char* kOpenFile = "Pondera.frm_Data.OpenFile";
constexpr const char* kaccept = "Pondera.frm_Data.accept";

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

frm_Data::frm_Data(QWidget* parent) : QDialog(parent) {
    setObjectName("frm_Data");
    setWindowTitle("Fit to Data");
    auto* layout = new QVBoxLayout(this);
    auto* hint = new QLabel("Paste measurements, one per line, or a table whose columns are "
                            "separated by tabs, semicolons, commas or spaces (a first line of "
                            "titles names them); or open a text or CSV file.");
    hint->setWordWrap(true);
    layout->addWidget(hint);
    tb_Data = new QPlainTextEdit;
    tb_Data->setObjectName("tb_Data");
    tb_Data->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    tb_Data->setLineWrapMode(QPlainTextEdit::NoWrap);
    tb_Data->viewport()->installEventFilter(this);
    layout->addWidget(tb_Data, 1);
    lb_File = new QLabel;
    lb_File->setObjectName("lb_File");
    lb_File->setWordWrap(true);
    lb_File->setTextFormat(Qt::RichText);
    lb_File->hide();
    layout->addWidget(lb_File);

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
    fields->addWidget(dd_Column, 0, 1, 1, 5, Qt::AlignLeft);
    QLineEdit** limits[3] = {&tb_LSL, &tb_Target, &tb_USL};
    const char* captions[3] = {"L&SL:", "&Target:", "&USL:"};
    for (int i = 0; i < 3; ++i) {
        QLineEdit*& box = *limits[i];
        box = new QLineEdit;
        box->setObjectName(QString("tb_") + kLimitNames[i]);
        box->setPlaceholderText("none");
        auto* label = new QLabel(captions[i]);
        label->setBuddy(box);
        fields->addWidget(label, 1, 2 * i);
        fields->addWidget(box, 1, 2 * i + 1);
    }
    layout->addLayout(fields);

    auto* row = new QHBoxLayout;
    lb_Summary = new QLabel;
    lb_Summary->setObjectName("lb_Summary");
    lb_Summary->setTextInteractionFlags(Qt::TextSelectableByMouse);
    lb_Summary->setWordWrap(true);
    lb_Summary->setMinimumHeight(5 * lb_Summary->fontMetrics().lineSpacing());
    lb_Summary->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    row->addWidget(lb_Summary, 1);
    but_Open = new QPushButton("Open File...");
    but_Open->setObjectName("but_Open");
    // Enter after a file is opened presses OK, not this button again.
    but_Open->setAutoDefault(false);
    row->addWidget(but_Open, 0, Qt::AlignTop);
    layout->addLayout(row);
    but_Buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    but_Buttons->setObjectName("but_Buttons");
    but_Buttons->button(QDialogButtonBox::Ok)->setDefault(true);
    layout->addWidget(but_Buttons);
    resize(460, 540);

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
    connect(but_Buttons, &QDialogButtonBox::accepted, this, &frm_Data::accept);
    connect(but_Buttons, &QDialogButtonBox::rejected, this, &frm_Data::reject);
    tb_Data_Change();
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
}

// A middle click pastes the primary selection; with no program owning it, Qt
// 6.4's text widgets end the program. Such a click is ignored here.
bool frm_Data::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
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

void frm_Data::tb_Data_Change() {
    support::Trap(ktb_Data_Change, [&] {
        if (!loading_) Refresh();
    });
}

void frm_Data::dd_Column_Click() {
    support::Trap(kdd_Column_Click, [&] { Refresh(); });
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
            Refresh();
        }
        but_Buttons->button(QDialogButtonBox::Ok)->setFocus();
    });
}

void frm_Data::accept() {
    bool done = false;
    support::Trap(kaccept, [&] {
        DataStep::Sample s = Refresh();
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
            (dd_Column->isVisible() && dd_Column->currentIndex() < 0
                 ? static_cast<QWidget*>(dd_Column)
                 : tb_Data)
                ->setFocus();
            return;
        }
        QLineEdit* const boxes[3] = {tb_LSL, tb_Target, tb_USL};
        const std::array<QString, 3> limits = Limits();
        for (int i = 0; i < 3; ++i) {
            if (limits[i].isEmpty() || support::ParseNumber(limits[i].toStdString())) continue;
            Warn(std::string("The ") + kLimitNames[i] + " must be a number, or empty for none.");
            boxes[i]->setFocus();
            boxes[i]->selectAll();
            return;
        }
        result_ = std::move(s);
        done = true;
    });
    if (done) QDialog::accept();
}
