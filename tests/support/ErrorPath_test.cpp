#include "support/ErrorReporter.h"
#include "support/ErrorTrap.h"
#include "support/m_Interface.h"
#include "tests/helpers/TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

namespace fs = std::filesystem;

std::string ReadFile(const std::string& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// Each test gets a fresh log file of its own.
class ErrorPath : public testing_support::RecordingTest {
protected:
    void SetUp() override {
        RecordingTest::SetUp();
        log_ = (fs::temp_directory_path() /
                ("pondera-log-" + std::to_string(getpid()) + "-" +
                 ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".txt"))
                   .string();
        fs::remove(log_);
        oldLog_ = std::getenv("PONDERA_ERROR_LOG");
        setenv("PONDERA_ERROR_LOG", log_.c_str(), 1);
    }
    void TearDown() override {
        setenv("PONDERA_ERROR_LOG", oldLog_.c_str(), 1);
        fs::remove(log_);
    }
    std::string log_;
    std::string oldLog_;
};

double Divide(double a, double b) {
    double result = 0;
    support::Trap("Pondera.Test.Divide", [&] { result = support::ck(a / b); });
    return result;
}

TEST_F(ErrorPath, FloatingPointFaultsBecomeNumberedRunTimeErrors) {
    struct Case {
        double a, b;
        int32_t number;
        const char* description;
    } cases[] = {{1, 0, 11, "Division by zero"},
                 {1e300, 1e-300, 6, "Overflow"},
                 {0, 0, 5, "Invalid procedure call or argument"}};
    for (const auto& c : cases) {
        Rec().Clear();
        EXPECT_EQ(Divide(c.a, c.b), 0) << "the result keeps what it held";
        const auto errors = Rec().AllErrors();
        ASSERT_EQ(errors.size(), 1u);
        EXPECT_EQ(errors[0].Label, "Pondera.Test.Divide");
        EXPECT_EQ(errors[0].Number, c.number);
        EXPECT_EQ(errors[0].Source, "Pondera");
        EXPECT_EQ(errors[0].Description, c.description);
    }
    EXPECT_EQ(Divide(6, 3), 2);
}

TEST_F(ErrorPath, FaultInAnIntermediateStepIsCaughtWhereTheValueIsStored) {
    double result = 7;
    support::Trap("Pondera.Test.Intermediate", [&] {
        volatile double big = 1e300;
        const double lost = big * big;   // overflow, then divided away
        result = support::ck(1 / lost); // finite (0), but the overflow was a fault
    });
    EXPECT_EQ(result, 7);
    ASSERT_EQ(ErrorLabels(), std::vector<std::string>{"Pondera.Test.Intermediate"});
    EXPECT_EQ(Rec().AllErrors()[0].Number, 6);
}

TEST_F(ErrorPath, ACalleesHandledFaultDoesNotLeakIntoTheCaller) {
    double outer = 0;
    support::Trap("Pondera.Test.Outer", [&] {
        const double inner = Divide(1, 0); // reported by the inner procedure
        outer = support::ck(inner + 1);
    });
    EXPECT_EQ(outer, 1);
    EXPECT_EQ(ErrorLabels(), std::vector<std::string>{"Pondera.Test.Divide"});
}

TEST_F(ErrorPath, OneActionGathersRepeatsIntoOneReport) {
    {
        support::ActionScope action;
        for (int i = 0; i < 300; ++i) Divide(1, 0);
        Divide(0, 0);
        EXPECT_TRUE(Rec().Reports.empty()) << "nothing shown while the action runs";
    }
    ASSERT_EQ(Rec().Reports.size(), 1u);
    const auto& report = Rec().Reports[0];
    ASSERT_EQ(report.size(), 2u);
    EXPECT_EQ(report[0].Count, 300);
    EXPECT_EQ(report[0].Description, "Division by zero");
    EXPECT_EQ(report[1].Count, 1);
}

TEST_F(ErrorPath, EveryErrorIsLoggedOnItsOwnLine) {
    {
        support::ActionScope action;
        Divide(1, 0);
        Divide(1, 0);
    }
    const std::string text = ReadFile(log_);
    std::istringstream lines(text);
    std::string line;
    int count = 0;
    while (std::getline(lines, line)) {
        ++count;
        EXPECT_NE(line.find("Pondera.Test.Divide"), std::string::npos);
        EXPECT_NE(line.find("11 (&H0000000B)"), std::string::npos);
        EXPECT_NE(line.find("Division by zero"), std::string::npos);
        ASSERT_GE(line.size(), 19u);
        EXPECT_EQ(line[4], '-');
        EXPECT_EQ(line[10], 'T') << "ISO 8601 date and time first: " << line;
    }
    EXPECT_EQ(count, 2);
}

TEST_F(ErrorPath, AnUnwritableLogNeverStopsTheProgram) {
    setenv("PONDERA_ERROR_LOG", "/proc/pondera-no-such-dir/log.txt", 1);
    Divide(1, 0);
    EXPECT_EQ(Rec().AllErrors().size(), 1u);
}

TEST_F(ErrorPath, ObjectErrorNumbersGetTheirOwnBoxesAndNoReport) {
    support::Trap("Pondera.Test.Box", [] {
        support::Raise(m_Interface::kErrExceptionBox, "Pondera", "Something odd");
    });
    support::Trap("Pondera.Test.Box", [] {
        support::Raise(m_Interface::kErrUserInputBox, "Pondera", "Type a number");
    });
    ASSERT_EQ(Rec().Messages.size(), 2u);
    EXPECT_EQ(Rec().Messages[0].Title, "Exception");
    EXPECT_EQ(Rec().Messages[0].Text, "Something odd");
    EXPECT_EQ(Rec().Messages[1].Title, "User input error");
    EXPECT_EQ(Rec().Messages[1].Text, "Type a number");
    EXPECT_TRUE(Rec().Reports.empty());
    EXPECT_EQ(support::Err().Number, 0) << "HandleErrors clears the error";
}

TEST_F(ErrorPath, LogGoesToTheStateFolderWhenNotRedirectedAndTheProgramFolderIsReadOnly) {
    unsetenv("PONDERA_ERROR_LOG");
    auto& reporter = support::ErrorReporter::Instance();
    reporter.SetApplication("Pondera", "/nonexistent-pondera-folder", "test");
    const std::string state = (fs::temp_directory_path() / "pondera-state").string();
    const char* oldState = std::getenv("XDG_STATE_HOME");
    setenv("XDG_STATE_HOME", state.c_str(), 1);
    EXPECT_EQ(reporter.LogPath(), state + "/Pondera/qarvPonderaErrorLog.txt");
    reporter.SetApplication("Pondera", fs::temp_directory_path().string(), "test");
    EXPECT_EQ(reporter.LogPath(),
              (fs::temp_directory_path() / "qarvPonderaErrorLog.txt").string());
    reporter.SetApplication("Pondera", "", "test");
    if (oldState) setenv("XDG_STATE_HOME", oldState, 1);
}

} // namespace
