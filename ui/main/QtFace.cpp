#include "ui/main/QtFace.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QStyle>
#include <QThread>
#include <QVBoxLayout>

namespace {
QWidget* Owner(QWidget* parent) {
    if (parent) return parent->window();
    return QApplication::activeWindow();
}
} // namespace

namespace {
// A report from a worker thread (the data dialog fits off the window's thread)
// is shown by the window's thread, where widgets live.
bool OffGuiThread() {
    return QCoreApplication::instance() &&
           QThread::currentThread() != QCoreApplication::instance()->thread();
}
} // namespace

void QtFace::ShowMessage(const std::string& title, const std::string& text, support::BoxIcon icon) {
    if (OffGuiThread())
        return void(QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [this, title, text, icon] { ShowMessage(title, text, icon); }, Qt::QueuedConnection));
    if (holding_) {
        for (const auto& held : heldMessages_)
            if (held.Title == title && held.Text == text) return;
        heldMessages_.push_back({title, text, icon});
        return;
    }
    QMessageBox box(icon == support::BoxIcon::Critical  ? QMessageBox::Critical
                    : icon == support::BoxIcon::Warning ? QMessageBox::Warning
                                                        : QMessageBox::Information,
                    QString::fromStdString(title), QString::fromStdString(text), QMessageBox::Ok,
                    Owner(parent_));
    box.setObjectName("PonderaMessageBox");
    const ToolkitWork toolkit;
    box.exec();
}

QString QtFace::ReportLine(const support::ErrorEntry& entry) {
    QString line = QString::fromStdString(entry.Label) + QStringLiteral(" \u2014 ") +
                   QString::fromStdString(entry.Description);
    if (entry.Count > 1) line += QStringLiteral(" (\u00d7%1)").arg(entry.Count);
    return line;
}

void QtFace::ShowErrorReport(const std::vector<support::ErrorEntry>& entries) {
    if (entries.empty()) return;
    if (OffGuiThread())
        return void(QMetaObject::invokeMethod(
            QCoreApplication::instance(), [this, entries] { ShowErrorReport(entries); },
            Qt::QueuedConnection));
    if (holding_) {
        heldReports_.push_back(entries);
        return;
    }
    QDialog dialog(Owner(parent_));
    dialog.setObjectName("PonderaErrorReport");
    dialog.setWindowTitle(QString::fromStdString(support::ErrorReporter::Instance().Title()) +
                          " Error Report");
    auto* layout = new QVBoxLayout(&dialog);

    auto* header = new QHBoxLayout;
    auto* icon = new QLabel;
    icon->setPixmap(dialog.style()->standardIcon(QStyle::SP_MessageBoxCritical).pixmap(32, 32));
    header->addWidget(icon, 0, Qt::AlignTop);
    auto* intro =
        new QLabel(entries.size() == 1
                       ? QStringLiteral("An error occurred while carrying out your last action.")
                       : QStringLiteral("%1 errors occurred while carrying out your last action.")
                             .arg(entries.size()));
    intro->setWordWrap(true);
    header->addWidget(intro, 1);
    layout->addLayout(header);

    QStringList lines;
    for (const auto& e : entries)
        lines << ReportLine(e);
    auto* list = new QPlainTextEdit(lines.join('\n'));
    list->setObjectName("ErrorLines");
    list->setReadOnly(true);
    list->setLineWrapMode(QPlainTextEdit::NoWrap);
    list->setMinimumSize(560, 120);
    layout->addWidget(list);

    auto* where = new QLabel(QString::fromStdString(support::LogNote(entries)));
    where->setObjectName("LogNote");
    where->setWordWrap(true);
    where->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(where);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    layout->addWidget(buttons);
    dialog.exec();
}

void QtFace::Release() {
    holding_ = false;
    const auto messages = std::move(heldMessages_);
    const auto reports = std::move(heldReports_);
    heldMessages_.clear();
    heldReports_.clear();
    for (const auto& m : messages)
        ShowMessage(m.Title, m.Text, m.Icon);
    for (const auto& r : reports)
        ShowErrorReport(r);
}

void QtFace::SetStatusText(const std::string& text) {
    if (OffGuiThread())
        return void(QMetaObject::invokeMethod(
            QCoreApplication::instance(), [this, text] { SetStatusText(text); },
            Qt::QueuedConnection));
    if (status_) status_(text);
}
