#include "support/UserFace.h"

namespace support {

void RecordingFace::ShowMessage(const std::string& title, const std::string& text, BoxIcon icon) {
    Messages.push_back({title, text, icon});
}

void RecordingFace::ShowErrorReport(const std::vector<ErrorEntry>& entries) {
    Reports.push_back(entries);
}

void RecordingFace::SetStatusText(const std::string& text) {
    Status = text;
}

void RecordingFace::Clear() {
    Messages.clear();
    Reports.clear();
    Status.clear();
}

std::vector<ErrorEntry> RecordingFace::AllErrors() const {
    std::vector<ErrorEntry> all;
    for (const auto& report : Reports)
        all.insert(all.end(), report.begin(), report.end());
    return all;
}

namespace {
UserFace* installed = nullptr;
}

RecordingFace& Recorder() {
    static RecordingFace recorder;
    return recorder;
}

UserFace& Face() {
    return installed ? *installed : Recorder();
}

void SetFace(UserFace* face) {
    installed = face;
}

void MsgBox(const std::string& text, const std::string& title) {
    Face().ShowMessage(title, text, BoxIcon::Information);
}

} // namespace support
