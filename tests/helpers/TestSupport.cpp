#include "tests/helpers/TestSupport.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <unistd.h>

namespace testing_support {

void IsolateUserFiles() {
    namespace fs = std::filesystem;
    static const pid_t owner = getpid();
    static const fs::path dir =
        fs::temp_directory_path() / ("pondera-test-" + std::to_string(owner));
    fs::create_directories(dir);
    setenv("PONDERA_ERROR_LOG", (dir / "errorlog.txt").c_str(), 1);
    setenv("PONDERA_REGISTRY", (dir / "registry.sqlite3").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (dir / "config").c_str(), 1);
    setenv("XDG_STATE_HOME", (dir / "state").c_str(), 1);
    // Forked children (death tests, lock holders) must not take the folder with them.
    std::atexit([] {
        std::error_code ec;
        if (getpid() == owner) fs::remove_all(dir, ec);
    });
}

void ExpectErrorLogEmpty() {
    const char* log = std::getenv("PONDERA_ERROR_LOG");
    std::ifstream in(log ? log : "");
    const std::string lines((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(lines, "") << "the error log " << log << " is not empty";
    EXPECT_TRUE(support::Recorder().AllErrors().empty()) << "an error was reported";
}

void ClearErrorLog() {
    if (const char* log = std::getenv("PONDERA_ERROR_LOG")) std::ofstream(log, std::ios::trunc);
}

void RecordingTest::SetUp() {
    support::SetFace(nullptr);
    support::Recorder().Clear();
}

std::vector<std::string> RecordingTest::ErrorLabels() const {
    std::vector<std::string> labels;
    for (const auto& e : support::Recorder().AllErrors())
        for (int i = 0; i < e.Count; ++i)
            labels.push_back(e.Label);
    return labels;
}

std::vector<std::string> RecordingTest::MessageTexts() const {
    std::vector<std::string> texts;
    for (const auto& m : support::Recorder().Messages)
        texts.push_back(m.Text);
    return texts;
}

const std::vector<double>& BadValues() {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double inf = std::numeric_limits<double>::infinity();
    static const std::vector<double> values = {nan,    inf,  -inf, 1e308, -1e308, 1e-300, -1e-300,
                                               1e-320, -0.0, 0.0,  -1.0,  1e150,  -1e150, 5e-324};
    return values;
}

double RelErr(double actual, double expected) {
    const double scale = std::max(1.0, std::fabs(expected));
    return std::fabs(actual - expected) / scale;
}

} // namespace testing_support
