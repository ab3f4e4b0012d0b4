// The window's face: information boxes as QMessageBox, one error report per
// user action as a small dialog, and the status bar's first panel.
#pragma once

#include "support/ErrorReporter.h"
#include "support/ErrorTrap.h"
#include "support/UserFace.h"

#include <QString>

#include <functional>
#include <string>
#include <vector>

class QWidget;

class QtFace : public support::UserFace {
  public:
    using StatusSink = std::function<void(const std::string&)>;

    explicit QtFace(QWidget* parent = nullptr) : parent_(parent) {}

    // Where status texts go (the main window's status panel); may be set later.
    void SetParent(QWidget* parent) { parent_ = parent; }
    void SetStatusSink(StatusSink sink) { status_ = std::move(sink); }

    void ShowMessage(const std::string& title, const std::string& text,
                     support::BoxIcon icon = support::BoxIcon::Information) override;
    void ShowErrorReport(const std::vector<support::ErrorEntry>& entries) override;
    void SetStatusText(const std::string& text) override;

    // While the window is being built, boxes and reports wait (each distinct one
    // once) and Release shows them over the finished window.
    void Hold() { holding_ = true; }
    void Release();

    // One line of the report: "label — description (×count)".
    static QString ReportLine(const support::ErrorEntry& entry);

  private:
    struct HeldMessage {
        std::string Title, Text;
        support::BoxIcon Icon;
    };
    QWidget* parent_ = nullptr;
    StatusSink status_;
    bool holding_ = false;
    std::vector<HeldMessage> heldMessages_;
    std::vector<std::vector<support::ErrorEntry>> heldReports_;
};

// The toolkit's own work inside a procedure (a message box shown from a plot's
// check): the flags it raises are not the procedure's.
using ToolkitWork = support::ForeignCode;

// Runs one event handler as one user action, so that the errors it raises are
// gathered into a single report shown when it ends.
template <class Handler> void RunAsAction(Handler&& handler) {
    support::ActionScope scope;
    handler();
}
