// Pondera: program start and exit.
#include "settings/CAppSettings.h"
#include "settings/DisplayOptions.h"
#include "support/ErrorTrap.h"
#include "support/MExceptionHandler.h"
#include "support/UserFace.h"
#include "support/m_Interface.h"
#include "ui/draw/Look.h"
#include "ui/main/QtFace.h"
#include "ui/main/frm_Pondera.h"

#include <QApplication>
#include <QFont>
#include <QTimer>

#include <memory>
#include <string>

namespace {
constexpr const char* kMain = "Pondera.m_Main.Main";
} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName("Pondera");
    QApplication::setOrganizationName("Qarvanto Labs, LLC");
    QApplication::setApplicationVersion(PONDERA_VERSION);
    look::RegisterAppFont();
    QApplication::setFont(look::AppFont(9));

    QtFace face;
    support::SetFace(&face);

    support::Trap(
        kMain, [&] { AppSettings().Init(DisplayOptions::kCompanyName, DisplayOptions::kAppName); });
    DisplayOptions::LoadDecPlaces();
    m_Interface::SetupErrorHandling();
    MExceptionHandler::InstallExceptionFilter();

    // What the first plot has to say (a stored range with no width) shows over the window.
    face.Hold();
    std::unique_ptr<frm_Pondera> window;
    RunAsAction([&] { window = std::make_unique<frm_Pondera>(); });
    face.SetParent(window.get());
    face.SetStatusSink([w = window.get()](const std::string& text) { w->SetStatus(text); });
    window->show();
    QTimer::singleShot(0, window.get(), [&face] { face.Release(); });
    const int rc = app.exec();

    // Exit: the window unloads the options dialog and removes the filter.
    face.SetStatusSink(nullptr);
    face.SetParent(nullptr);
    window.reset();
    MExceptionHandler::RemoveExceptionFilter();
    support::SetFace(nullptr);
    return rc;
}
