// What the error path and the engine show to the person: information boxes,
// the error report and the status-bar text. The window installs a Qt face; tests
// and the command-line tool use the recording face and read what would have shown.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace support {

struct ErrorEntry {
    std::string Label;
    int32_t Number = 0;
    std::string Source;
    std::string Description;
    int Count = 1; // repeats of the same error within one user action
    // The log file the error went to (or was meant for) and, when it could not be
    // written there, why.
    std::string LogPath = {};
    std::string LogProblem = {};
};

enum class BoxIcon { Information, Critical, Warning };

class UserFace {
  public:
    virtual ~UserFace() = default;
    virtual void ShowMessage(const std::string& title, const std::string& text,
                             BoxIcon icon = BoxIcon::Information) = 0;
    virtual void ShowErrorReport(const std::vector<ErrorEntry>& entries) = 0;
    virtual void SetStatusText(const std::string& text) = 0;
};

class RecordingFace : public UserFace {
  public:
    struct Message {
        std::string Title;
        std::string Text;
        BoxIcon Icon = BoxIcon::Information;
    };

    void ShowMessage(const std::string& title, const std::string& text, BoxIcon icon) override;
    void ShowErrorReport(const std::vector<ErrorEntry>& entries) override;
    void SetStatusText(const std::string& text) override;
    void Clear();

    std::vector<Message> Messages;
    std::vector<std::vector<ErrorEntry>> Reports; // one element per report window
    std::string Status;

    // Every reported error of every report, in order.
    std::vector<ErrorEntry> AllErrors() const;
};

// The face in use. Starts as a process-wide RecordingFace.
UserFace& Face();
// Installs a face (not owned); nullptr goes back to the default recording face.
void SetFace(UserFace* face);
// The default recording face, for tests and the command-line tool.
RecordingFace& Recorder();

// Shows an information box titled with the application title.
void MsgBox(const std::string& text, const std::string& title = "Pondera");

} // namespace support
