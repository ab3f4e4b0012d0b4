// The error-reporting component: logs every error at once and gathers the errors
// of one user action into a single report, shown when the action ends.
#pragma once

#include "support/UserFace.h"

#include <string>
#include <vector>

namespace support {

class ErrorReporter {
  public:
    static ErrorReporter& Instance();

    // The application object the component is given: title, folder and version.
    void SetApplication(std::string title, std::string path, std::string version);
    const std::string& Title() const { return title_; }

    // Logs the error and either shows it at once (no user action running) or
    // keeps it until the outermost action ends.
    void Report(const std::string& label, int32_t number, const std::string& source,
                const std::string& description);

    void BeginAction();
    void EndAction();
    // Shows what has been gathered now.
    void Flush();

    // The folder of the running program.
    static std::string ProgramFolder();
    // Where the log goes: PONDERA_ERROR_LOG, else the program's folder when it is
    // a build folder, else $XDG_STATE_HOME/Pondera (default ~/.local/state/Pondera).
    // An installed program so never writes into a system folder.
    std::string LogPath() const;
    // A writable folder CMake built the program in, outside the install prefix.
    static bool IsBuildFolder(const std::string& folder);
    static std::string StateLogPath();
    // Appends one line with a single write; never throws, never stops the program.
    void AppendLog(const std::string& label, int32_t number, const std::string& source,
                   const std::string& description) const noexcept;

  private:
    std::string title_ = "Pondera";
    std::string path_;
    std::string version_;
    int depth_ = 0;
    std::vector<ErrorEntry> pending_;
};

// Brackets one user action (an event handler run): errors raised inside it are
// shown together, once, when the outermost scope ends.
class ActionScope {
  public:
    ActionScope() { ErrorReporter::Instance().BeginAction(); }
    ~ActionScope() { ErrorReporter::Instance().EndAction(); }
    ActionScope(const ActionScope&) = delete;
    ActionScope& operator=(const ActionScope&) = delete;
};

inline constexpr const char* kLogFileName = "qarvPonderaErrorLog.txt";

} // namespace support
