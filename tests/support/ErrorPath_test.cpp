#include "support/ErrorReporter.h"
#include "support/ErrorTrap.h"
#include "support/m_Interface.h"
#include "tests/helpers/TestSupport.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <regex>
#include <sys/stat.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

// Each test starts an empty log of its own (CTest runs each in its own process).
class ErrorPath : public testing_support::RecordingTest {
  protected:
    void SetUp() override {
        RecordingTest::SetUp();
        fs::remove(log_);
        setenv("PONDERA_ERROR_LOG", log_.c_str(), 1);
    }
    void TearDown() override {
        setenv("PONDERA_ERROR_LOG", oldLog_.c_str(), 1);
        fs::remove(log_);
    }
    const std::string oldLog_ = std::getenv("PONDERA_ERROR_LOG");
    const std::string log_ =
        fs::temp_directory_path() / ("pondera-log-" + std::to_string(getpid()));
};

double Divide(double a, double b) {
    return support::TrapValue("Pondera.Test.Divide", 0.0, [&] { return support::ck(a / b); });
}

volatile double zero = 0, one = 1, big = 1e300;

TEST_F(ErrorPath, FloatingPointFaultsBecomeNumberedErrorsAndLeaveTheResult) {
    const std::tuple<const char*, std::function<double()>, int32_t, const char*> rows[] = {
        {"1/0", [] { return one / zero; }, 11, "Division by zero"},
        {"0/0", [] { return zero / zero; }, 5, "Invalid procedure call or argument"},
        // Overflow in an intermediate step, divided away: the value is finite, the fault stays.
        {"1/(1e300^2)", [] { return one / (big * big); }, 6, "Overflow"},
    };
    for (const auto& [name, compute, number, description] : rows) {
        Rec().Clear();
        const double result = support::TrapValue({"Pondera.Test", "Compute"}, 7.0,
                                                 [&] { return support::ck(compute()); });
        EXPECT_EQ(result, 7) << name;
        const auto errors = Rec().AllErrors();
        ASSERT_EQ(errors.size(), 1u) << name;
        EXPECT_EQ(errors[0].Label, "Pondera.Test.Compute");
        EXPECT_EQ(errors[0].Number, number) << name;
        EXPECT_EQ(errors[0].Source, "Pondera");
        EXPECT_EQ(errors[0].Description, description);
    }
    // A fault found only when the body has ended is reported, and the function
    // returns the body's value: its result had been assigned by then.
    Rec().Clear();
    const double unchecked = support::TrapValue({"Pondera.Test", "Compute"}, 7.0, [] {
        const volatile double inf = one / zero;
        (void)inf;
        return 2.0;
    });
    EXPECT_EQ(unchecked, 2);
    ASSERT_EQ(Rec().AllErrors().size(), 1u);
    EXPECT_EQ(Rec().AllErrors()[0].Number, 11);
}

// The toolkit's own flags (raised around an event it delivers, or by its work in
// a handler's body) are nobody's fault; a procedure the handler calls is checked.
TEST_F(ErrorPath, AWindowProcedureIsNotChargedWithTheToolkitsFlags) {
    volatile double toolkit = 0;
    support::Trap("Pondera.Test.Outer", [&] {
        {
            const support::ToolkitCallback event;
            support::Trap("Pondera.Test.Handler", [&] {
                toolkit = zero / zero;
                Divide(1, 0);
            });
            toolkit = zero / zero;
        }
    });
    EXPECT_EQ(ErrorLabels(), std::vector<std::string>{"Pondera.Test.Divide"});
}

TEST_F(ErrorPath, OneActionGathersRepeatsIntoOneReportAndLogsEveryError) {
    {
        support::ActionScope action;
        for (int i = 0; i < 300; ++i)
            Divide(1, 0);
        Divide(0, 0);
        EXPECT_TRUE(Rec().Reports.empty()) << "nothing shown while the action runs";
    }
    ASSERT_EQ(Rec().Reports.size(), 1u);
    const auto& report = Rec().Reports[0];
    ASSERT_EQ(report.size(), 2u);
    EXPECT_EQ(report[0].Count, 300);
    EXPECT_EQ(report[0].Description, "Division by zero");
    EXPECT_EQ(report[1].Count, 1);

    std::ifstream in(log_);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    ASSERT_EQ(lines.size(), 301u);
    // ISO 8601 date and time, label, number in decimal and hex, source, description.
    const std::regex shape(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\S* \| Pondera\.Test\.Divide \| )"
                           R"(11 \(&H0000000B\) \| Pondera \| Division by zero)");
    EXPECT_TRUE(std::regex_match(lines[0], shape)) << lines[0];
    EXPECT_NE(lines[300].find("5 (&H00000005)"), std::string::npos) << lines[300];
}

TEST_F(ErrorPath, OnlyAPlainFileIsALogAndTheReportSaysWhereTheErrorWent) {
    const std::string dir = log_ + "-dir", fifo = log_ + "-fifo";
    fs::create_directories(dir);
    mkfifo(fifo.c_str(), 0600); // no reader: opening it for writing would wait for good
    const std::pair<std::string, std::string> rows[] = {
        {log_, "Details were written to " + log_},
        {fifo, "Details could not be written to the error log (" + fifo + ": not a regular file)."},
        {dir, "Details could not be written to the error log (" + dir + ": not a regular file)."},
        {"/proc/pondera-none/log.txt", "Details could not be written to the error log "
                                       "(/proc/pondera-none/log.txt: No such file or directory)."},
    };
    alarm(60); // a log that blocks ends the test instead of hanging it
    for (const auto& [path, note] : rows) {
        Rec().Clear();
        setenv("PONDERA_ERROR_LOG", path.c_str(), 1);
        Divide(1, 0);
        ASSERT_EQ(Rec().AllErrors().size(), 1u) << path;
        EXPECT_EQ(support::LogNote(Rec().AllErrors()), note);
    }
    alarm(0);
    fs::remove_all(dir);
    fs::remove(fifo);
}

TEST_F(ErrorPath, AFullLogBecomesTheOlderGenerationAndEveryLineStaysWhole) {
    const std::string old = log_ + ".1";
    std::ofstream(log_) << std::string(support::kLogLimit - 100, 'x') << '\n';
    const std::string description(300, 'd');
    // Two processes writing at once rotate the log several times between them.
    for (int child = 0; child < 2; ++child)
        if (fork() == 0) {
            for (int i = 0; i < 5000; ++i)
                support::ErrorReporter::Instance().AppendLog("Pondera.Test.Fill", 6, "Pondera",
                                                             description);
            _exit(0);
        }
    for (int child = 0; child < 2; ++child)
        wait(nullptr);
    for (const std::string& file : {log_, old}) {
        EXPECT_LT(fs::file_size(file), static_cast<uintmax_t>(support::kLogLimit)) << file;
        std::ifstream in(file);
        for (std::string line; std::getline(in, line);)
            ASSERT_TRUE(
                line.ends_with(" | Pondera.Test.Fill | 6 (&H00000006) | Pondera | " + description))
                << file << ": " << line.substr(0, 80);
    }
    fs::remove(old);
}

TEST_F(ErrorPath, ObjectErrorNumbersGetTheirOwnBoxesAndNoReport) {
    for (const auto& [number, title] :
         {std::pair{m_Interface::kErrExceptionBox, "Exception"},
          std::pair{m_Interface::kErrUserInputBox, "User input error"}}) {
        Rec().Clear();
        support::Trap("Pondera.Test.Box",
                      [&] { support::Raise(number, "Pondera", "Type a number"); });
        ASSERT_EQ(Rec().Messages.size(), 1u) << title;
        EXPECT_EQ(Rec().Messages[0].Title, title);
        EXPECT_EQ(Rec().Messages[0].Text, "Type a number");
        EXPECT_TRUE(Rec().Reports.empty()) << title;
    }
}

} // namespace
