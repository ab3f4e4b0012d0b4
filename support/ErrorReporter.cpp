#include "support/ErrorReporter.h"

#include "support/Version.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
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
    const LogResult logged = AppendLog(label, number, source, description);
    {
        // A worker thread (a simulation, a bootstrap) may report while the
        // window's thread is in an action: the list is shared, so it is locked.
        const std::lock_guard lock(mutex_);
        for (auto& entry : pending_) {
            if (entry.Label == label && entry.Number == number && entry.Source == source &&
                entry.Description == description) {
                ++entry.Count;
                if (!logged.Problem.empty()) { // one repeat not logged: the entry was not either
                    entry.LogPath = logged.Path;
                    entry.LogProblem = logged.Problem;
                }
                return;
            }
        }
        pending_.push_back({label, number, source, description, 1, logged.Path, logged.Problem});
        if (depth_ != 0) return;
    }
    Flush();
}

void ErrorReporter::BeginAction() {
    const std::lock_guard lock(mutex_);
    ++depth_;
}

void ErrorReporter::EndAction() {
    {
        const std::lock_guard lock(mutex_);
        if (depth_ > 0) --depth_;
        if (depth_ != 0) return;
    }
    Flush();
}

void ErrorReporter::Flush() {
    std::vector<ErrorEntry> entries;
    {
        const std::lock_guard lock(mutex_);
        if (pending_.empty()) return;
        entries.swap(pending_);
    }
    // Shown outside the lock: the face may hand the report to the window's thread.
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

namespace {

// Lines longer than this are cut; a line is never more than a small part of the log.
constexpr size_t kLineLimit = 64 * 1024;

class FileHandle {
  public:
    explicit FileHandle(int fd) : fd_(fd) {}
    ~FileHandle() {
        if (fd_ >= 0) close(fd_);
    }
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    int Fd() const { return fd_; }

  private:
    int fd_;
};

std::string Reason(int error) {
    return std::strerror(error);
}

// Opens the log for appending. Only a regular file (or a new one) is a log: a
// FIFO, a device or a directory in its place is refused without waiting on it.
int OpenLog(const std::string& path, std::string& problem) {
    struct stat st {};
    if (stat(path.c_str(), &st) == 0 && !S_ISREG(st.st_mode)) {
        problem = "not a regular file";
        return -1;
    }
    const int fd =
        open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0644);
    if (fd < 0) {
        problem = Reason(errno);
        return -1;
    }
    if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) { // swapped in since the check
        close(fd);
        problem = "not a regular file";
        return -1;
    }
    return fd;
}

// Other Pondera processes write and rotate the same log; holding the file while
// its size is checked keeps two of them from rotating at once. A holder that
// does not let go within a moment is not waited for.
void LockBriefly(int fd) {
    for (int tries = 0; tries < 50; ++tries) {
        if (flock(fd, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) return;
        usleep(1000);
    }
}

bool SameFile(const std::string& path, int fd) {
    struct stat named {
    }, held{};
    return stat(path.c_str(), &named) == 0 && fstat(fd, &held) == 0 &&
           named.st_dev == held.st_dev && named.st_ino == held.st_ino;
}

// Appends the line with one write; the problem, or empty when it was written.
std::string WriteLine(const std::string& path, const std::string& line) {
    std::error_code ec;
    fs::create_directories(fs::path(path).parent_path(), ec);
    for (int attempt = 0; attempt < 4; ++attempt) {
        std::string problem;
        const FileHandle file(OpenLog(path, problem));
        if (file.Fd() < 0) return problem;
        LockBriefly(file.Fd());
        if (!SameFile(path, file.Fd())) continue; // rotated by another writer meanwhile
        struct stat st {};
        if (fstat(file.Fd(), &st) != 0) return Reason(errno);
        if (st.st_size > 0 && st.st_size + static_cast<long>(line.size()) >= kLogLimit) {
            if (rename(path.c_str(), (path + ".1").c_str()) != 0)
                return "could not start a new log: " + Reason(errno);
            continue; // a new file takes its place
        }
        ssize_t written;
        do {
            written = write(file.Fd(), line.data(), line.size());
        } while (written < 0 && errno == EINTR);
        if (written < 0) return Reason(errno);
        if (static_cast<size_t>(written) != line.size()) return "the disk is full";
        return "";
    }
    return "other programs kept changing the log";
}

} // namespace

ErrorReporter::LogResult ErrorReporter::AppendLog(const std::string& label, int32_t number,
                                                  const std::string& source,
                                                  const std::string& description) const noexcept {
    LogResult result;
    try {
        char stamp[40] = "";
        const std::time_t now = std::time(nullptr);
        std::tm local{};
        if (localtime_r(&now, &local))
            std::strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%S%z", &local);
        char code[48];
        std::snprintf(code, sizeof code, "%d (&H%08X)", number, static_cast<uint32_t>(number));
        std::string line = std::string(stamp) + " | " + label + " | " + code + " | " + source +
                           " | " + description;
        if (line.size() > kLineLimit) {
            size_t cut = kLineLimit;
            while (cut > 0 && (static_cast<unsigned char>(line[cut]) & 0xC0) == 0x80)
                --cut; // not inside a UTF-8 character
            line.resize(cut);
            line += "\u2026";
        }
        line += '\n';

        result.Path = LogPath();
        result.Problem = WriteLine(result.Path, line);
        if (!result.Problem.empty() && !std::getenv("PONDERA_ERROR_LOG")) {
            // The program's folder looked writable but is not (a read-only mount).
            const std::string state = StateLogPath();
            if (state != result.Path && WriteLine(state, line).empty()) result = {state, ""};
        }
    } catch (...) {
        // A log that cannot be written never stops the program.
        if (result.Problem.empty()) result.Problem = "out of memory";
    }
    return result;
}

std::string LogNote(const std::vector<ErrorEntry>& entries) {
    const ErrorEntry* written = nullptr;
    const ErrorEntry* failed = nullptr;
    for (const auto& entry : entries) {
        if (!entry.LogProblem.empty())
            failed = &entry;
        else if (!entry.LogPath.empty())
            written = &entry;
    }
    if (!failed) return written ? "Details were written to " + written->LogPath : "";
    const std::string why = " (" + failed->LogPath + ": " + failed->LogProblem + ").";
    if (written)
        return "Details were written to " + written->LogPath + ", but some could not be" + why;
    return "Details could not be written to the error log" + why;
}

} // namespace support
