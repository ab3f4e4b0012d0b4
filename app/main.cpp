// Pondera: program start and exit.
#include "settings/CAppSettings.h"
#include "settings/DisplayOptions.h"
#include "support/ErrorTrap.h"
#include "support/Format.h"
#include "support/MExceptionHandler.h"
#include "support/UserFace.h"
#include "support/m_Interface.h"
#include "ui/draw/Look.h"
#include "ui/main/QtFace.h"
#include "ui/main/frm_Pondera.h"

#include <QApplication>
#include <QFont>

#include <memory>
#include <string>
#include <variant>

namespace {

constexpr const char* kMain = "Pondera.m_Main.Main";

// The decimal places stored in the settings, read before any window exists;
// an empty or missing value leaves the current value.
void ReadDecimalPlaces() {
    support::TrapIgnore([&] {
        const CAppSettings::Value v =
            AppSettings().GetSetting(DisplayOptions::kSection, "AppDecPlaces", std::string());
        if (const auto* text = std::get_if<std::string>(&v)) {
            if (const auto number = support::ParseNumber(*text))
                DisplayOptions::AppDecPlaces = static_cast<int16_t>(*number);
        } else if (const auto* n = std::get_if<int64_t>(&v)) {
            DisplayOptions::AppDecPlaces = static_cast<int16_t>(*n);
        } else if (const auto* d = std::get_if<double>(&v)) {
            DisplayOptions::AppDecPlaces = static_cast<int16_t>(*d);
        }
    });
}

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

    support::Trap(kMain, [&] {
        AppSettings().Init("Qarvanto Labs, LLC\\Qarv Tools 3", "Pondera");
    });
    ReadDecimalPlaces();
    m_Interface::SetupErrorHandling();
    MExceptionHandler::InstallExceptionFilter();

    std::unique_ptr<frm_Pondera> window;
    RunAsAction([&] { window = std::make_unique<frm_Pondera>(); });
    face.SetParent(window.get());
    face.SetStatusSink([w = window.get()](const std::string& text) { w->SetStatus(text); });
    window->show();
    const int rc = app.exec();

    // Exit: the window unloads the options dialog and removes the filter.
    face.SetStatusSink(nullptr);
    face.SetParent(nullptr);
    window.reset();
    MExceptionHandler::RemoveExceptionFilter();
    support::SetFace(nullptr);
    return rc;
}
