#include "ui/main/frm_Data.h"

#include "settings/DisplayOptions.h"
#include "support/ErrorTrap.h"
#include "support/Format.h"
#include "support/UserFace.h"
#include "ui/main/PlotPipeline.h"
#include "ui/main/QtFace.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextBlock>
#include <QVBoxLayout>

namespace {

constexpr const char* ktb_Data_Change = "Pondera.frm_Data.tb_Data_Change";
constexpr const char* kbut_Open_Click = "Pondera.frm_Data.but_Open_Click";
constexpr const char* kOpenFile = "Pondera.frm_Data.OpenFile";
constexpr const char* kaccept = "Pondera.frm_Data.accept";

// A text field holding more than this would stall the window; such files are
// for pondera-cli data.
constexpr qint64 kLargestFile = 8 * 1024 * 1024;

DataStep::Sample ReadField(const QPlainTextEdit* field) {
    return DataStep::Read(field->toPlainText().toStdString(), {support::DecimalSeparator(), {}});
}

} // namespace

frm_Data::frm_Data(QWidget* parent) : QDialog(parent) {
    setObjectName("frm_Data");
    setWindowTitle("Fit to Data");
    auto* layout = new QVBoxLayout(this);
    auto* hint = new QLabel("Paste measurements, one per line (tabs, semicolons or spaces may "
                            "separate several on a line; a first line of titles is skipped), or "
                            "open a text or CSV file.");
    hint->setWordWrap(true);
    layout->addWidget(hint);
    tb_Data = new QPlainTextEdit;
    tb_Data->setObjectName("tb_Data");
    tb_Data->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    tb_Data->setLineWrapMode(QPlainTextEdit::NoWrap);
    layout->addWidget(tb_Data, 1);
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
    row->addWidget(but_Open, 0, Qt::AlignTop);
    layout->addLayout(row);
    but_Buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    but_Buttons->setObjectName("but_Buttons");
    layout->addWidget(but_Buttons);
    resize(420, 480);

    connect(tb_Data, &QPlainTextEdit::textChanged, this,
            [this] { RunAsAction([&] { tb_Data_Change(); }); });
    connect(but_Open, &QPushButton::clicked, this,
            [this] { RunAsAction([&] { but_Open_Click(); }); });
    connect(but_Buttons, &QDialogButtonBox::accepted, this, &frm_Data::accept);
    connect(but_Buttons, &QDialogButtonBox::rejected, this, &frm_Data::reject);
    tb_Data_Change();
}

void frm_Data::tb_Data_Change() {
    support::Trap(ktb_Data_Change, [&] {
        if (tb_Data->toPlainText().trimmed().isEmpty()) {
            lb_Summary->setText("No values yet.");
            return;
        }
        const DataStep::Sample s = ReadField(tb_Data);
        lb_Summary->setText(QString::fromStdString(
            s.Ok() ? DataStep::SummaryText(s.Summary, DisplayOptions::Pattern()) : s.Problem));
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
        QFile file(path);
        const QString name = QFileInfo(path).fileName();
        if (QFileInfo(path).size() > kLargestFile) {
            support::MsgBox("\"" + name.toStdString() + "\" is too large to show here.",
                            PlotPipeline::kWarningTitle);
            return;
        }
        if (!file.open(QIODevice::ReadOnly)) {
            support::MsgBox("\"" + name.toStdString() + "\" cannot be read.",
                            PlotPipeline::kWarningTitle);
            return;
        }
        const QString text = QString::fromUtf8(file.readAll());
        const ToolkitWork toolkit;
        tb_Data->setPlainText(text);
    });
}

void frm_Data::accept() {
    bool done = false;
    support::Trap(kaccept, [&] {
        DataStep::Sample s = ReadField(tb_Data);
        if (!s.Ok()) {
            support::MsgBox(s.Problem, PlotPipeline::kWarningTitle);
            // The line that failed, selected, so it can be mended at once.
            const ToolkitWork toolkit;
            if (const QTextBlock line = tb_Data->document()->findBlockByNumber(s.Line - 1);
                s.Line > 0 && line.isValid()) {
                QTextCursor c(line);
                c.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
                tb_Data->setTextCursor(c);
            }
            tb_Data->setFocus();
            return;
        }
        result_ = std::move(s);
        done = true;
    });
    if (done) QDialog::accept();
}
