// The error-reporting component: logs every error at once and gathers the errors
// of one user action into a single report, shown when the action ends.
#pragma once

#include "support/UserFace.h"

#include <mutex>
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
    // What became of one line for the log: the file written, or the one that could
    // not be written and why.
    struct LogResult {
        std::string Path;
        std::string Problem; // empty when the line was written
    };
    // Appends one line with a single write; never blocks, never throws, never stops
    // the program. A log about to pass kLogLimit becomes "<log>.1" first.
    LogResult AppendLog(const std::string& label, int32_t number, const std::string& source,
                        const std::string& description) const noexcept;

  private:
    std::string title_ = "Pondera";
    std::string path_;
    std::string version_;
    std::mutex mutex_; // guards depth_ and pending_
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
// The log stays below this size; one older generation is kept beside it.
inline constexpr long kLogLimit = 1L << 20;

// The closing line of an error report: where the details of these errors were
// written, or that they could not be. Empty when nothing is known of the log.
std::string LogNote(const std::vector<ErrorEntry>& entries);

} // namespace support
