#include "support/ErrorReporter.h"

#include "support/Version.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace support {

namespace fs = std::filesystem;

ErrorReporter& ErrorReporter::Instance() {
    static ErrorReporter reporter;
    return reporter;
}

void ErrorReporter::SetApplication(std::string title, std::string path, std::string version) {
    title_ = std::move(title);
    path_ = std::move(path);
    version_ = std::move(version);
}

void ErrorReporter::Report(const std::string& label, int32_t number, const std::string& source,
                           const std::string& description) {
    AppendLog(label, number, source, description);
    for (auto& entry : pending_) {
        if (entry.Label == label && entry.Number == number && entry.Source == source &&
            entry.Description == description) {
            ++entry.Count;
            return;
        }
    }
    pending_.push_back({label, number, source, description, 1});
    if (depth_ == 0) Flush();
}

void ErrorReporter::BeginAction() {
    ++depth_;
}

void ErrorReporter::EndAction() {
    if (depth_ > 0) --depth_;
    if (depth_ == 0) Flush();
}

void ErrorReporter::Flush() {
    if (pending_.empty()) return;
    std::vector<ErrorEntry> entries;
    entries.swap(pending_);
    Face().ShowErrorReport(entries);
}

std::string ErrorReporter::ProgramFolder() {
    std::error_code ec;
    const fs::path exe = fs::read_symlink("/proc/self/exe", ec);
    return ec ? std::string() : exe.parent_path().string();
}

std::string ErrorReporter::LogPath() const {
    if (const char* env = std::getenv("PONDERA_ERROR_LOG"); env && *env) return env;
    const std::string folder = path_.empty() ? ProgramFolder() : path_;
    if (IsBuildFolder(folder)) return (fs::path(folder) / kLogFileName).string();
    return StateLogPath();
}

bool ErrorReporter::IsBuildFolder(const std::string& folder) {
    if (folder.empty() || access(folder.c_str(), W_OK) != 0) return false;
    std::error_code ec;
    // CMake leaves its CMakeFiles folder beside every program it builds.
    if (!fs::is_directory(fs::path(folder) / "CMakeFiles", ec)) return false;
    const fs::path inPrefix =
        fs::weakly_canonical(folder, ec).lexically_relative(fs::path(kInstallPrefix));
    return inPrefix.empty() || *inPrefix.begin() == "..";
}

std::string ErrorReporter::StateLogPath() {
    fs::path state;
    if (const char* xdg = std::getenv("XDG_STATE_HOME"); xdg && *xdg)
        state = xdg;
    else if (const char* home = std::getenv("HOME"); home && *home)
        state = fs::path(home) / ".local" / "state";
    else
        state = fs::temp_directory_path();
    return (state / "Pondera" / kLogFileName).string();
}

void ErrorReporter::AppendLog(const std::string& label, int32_t number, const std::string& source,
                              const std::string& description) const noexcept {
    try {
        std::string path = LogPath();
        std::error_code ec;
        fs::create_directories(fs::path(path).parent_path(), ec);

        char stamp[40] = "";
        const std::time_t now = std::time(nullptr);
        std::tm local{};
        if (localtime_r(&now, &local))
            std::strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%S%z", &local);
        char code[48];
        std::snprintf(code, sizeof code, "%d (&H%08X)", number, static_cast<uint32_t>(number));
        const std::string line = std::string(stamp) + " | " + label + " | " + code + " | " +
                                 source + " | " + description + "\n";

        // One write per line, appended, so concurrent writers never interleave a line.
        int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
        if (fd < 0 && !std::getenv("PONDERA_ERROR_LOG")) {
            // The program's folder looked writable but is not (a read-only mount).
            path = StateLogPath();
            fs::create_directories(fs::path(path).parent_path(), ec);
            fd = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
        }
        if (fd < 0) return;
        ssize_t written;
        do {
            written = write(fd, line.data(), line.size());
        } while (written < 0 && errno == EINTR);
        close(fd);
    } catch (...) {
        // A log that cannot be written never stops the program.
    }
}

} // namespace support
