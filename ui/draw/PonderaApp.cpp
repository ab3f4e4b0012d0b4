#include "ui/draw/PonderaApp.h"

#include "support/ErrorTrap.h"

bool PonderaApp::notify(QObject* receiver, QEvent* event) {
    const support::ToolkitCallback callback;
    return QApplication::notify(receiver, event);
}
