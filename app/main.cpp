// Pondera: program start and exit.
#include "settings/CAppSettings.h"
#include "settings/DisplayOptions.h"
#include "support/ErrorTrap.h"
#include "support/Format.h"
#include "support/MExceptionHandler.h"
#include "support/UserFace.h"
#include "support/Version.h"
#include "support/m_Interface.h"
#include "ui/draw/Look.h"
#include "ui/draw/PonderaApp.h"
#include "ui/main/QtFace.h"
#include "ui/main/SessionView.h"
#include "ui/main/frm_Pondera.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFont>
#include <QIcon>
#include <QTimer>

#include <cstdio>

#include <memory>
#include <string>

namespace {
constexpr const char* kMain = "Pondera.m_Main.Main";

// Reads the command line before any window exists, so that --help and
// --version work without a display. Qt's own options (-platform, -style, ...)
// are known to the parser but left for QApplication. Returns the exit status
// when the program is to stop here, else -1.
int ReadCommandLine(int argc, char** argv, bool& fresh) {
    QStringList args;
    for (int i = 0; i < argc; ++i)
        args << QString::fromLocal8Bit(argv[i]);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Draws a probability density against specification limits and shows its moments and "
        "the fraction nonconforming.");
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption freshOption(
        "fresh", "Start as a first start: the last session is not restored.");
    parser.addOption(freshOption);
    for (const char* name : {"platform", "platformpluginpath", "platformtheme", "plugin",
                             "qwindowgeometry", "qwindowicon", "qwindowtitle", "session", "style",
                             "stylesheet", "display", "geometry", "name"}) {
        QCommandLineOption qt(name, "", "value");
        qt.setFlags(QCommandLineOption::HiddenFromHelp);
        parser.addOption(qt);
    }
    for (const char* name : {"reverse", "widgetcount", "nograb", "dograb", "sync"}) {
        QCommandLineOption qt(name);
        qt.setFlags(QCommandLineOption::HiddenFromHelp);
        parser.addOption(qt);
    }
    QString problem;
    if (!parser.parse(args))
        problem = parser.errorText();
    else if (!parser.positionalArguments().isEmpty())
        problem = "Unexpected argument '" + parser.positionalArguments().first() + "'.";
    if (!problem.isEmpty()) {
        std::fprintf(stderr, "pondera: %s\nRun 'pondera --help' for the usage.\n",
                     problem.toLocal8Bit().constData());
        return 2;
    }
    if (parser.isSet(help) || parser.isSet("help-all")) {
        QCoreApplication core(argc, argv); // the help names the program from it
        std::fputs(parser.helpText().toLocal8Bit().constData(), stdout);
        return 0;
    }
    if (parser.isSet(version)) {
        std::printf("pondera %s\n", support::kVersion);
        return 0;
    }
    fresh = parser.isSet(freshOption);
    return -1;
}

QIcon AppIcon() {
    QIcon icon;
    for (int size : {16, 32, 48, 64, 128, 256})
        icon.addFile(QString(":/icons/pondera-%1.png").arg(size), QSize(size, size));
    return icon;
}
} // namespace

int main(int argc, char** argv) {
    QApplication::setApplicationName("Pondera");
    QApplication::setOrganizationName("Qarvanto Labs, LLC");
    QApplication::setApplicationVersion(support::kVersion);
    bool fresh = false;
    if (const int status = ReadCommandLine(argc, argv, fresh); status >= 0) return status;

    PonderaApp app(argc, argv);
    // Qt has set the C library's locale from the environment: numbers are read
    // and shown with the user's decimal separator.
    support::SetDecimalSeparator(support::LocaleDecimalSeparator());
    // The desktop entry names the program to the desktop (task bar, Wayland).
    QGuiApplication::setDesktopFileName(support::kAppId);
    QApplication::setWindowIcon(AppIcon());
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
    RunAsAction([&] {
        window = std::make_unique<frm_Pondera>();
        if (!fresh) SessionView::Restore(*window);
    });
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
