// The program's application object. Every event the toolkit delivers runs as a
// toolkit callback: the floating-point flags raised around it stay the
// toolkit's, and the handler it reaches is trapped as a window procedure. This
// holds in every event loop, the nested ones of dialogs, menus and message
// boxes included.
#pragma once

#include <QApplication>

class PonderaApp : public QApplication {
  public:
    PonderaApp(int& argc, char** argv) : QApplication(argc, argv) {}
    bool notify(QObject* receiver, QEvent* event) override;
};
