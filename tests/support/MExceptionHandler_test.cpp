#include "support/ErrorTrap.h"
#include "support/MExceptionHandler.h"
#include "tests/helpers/TestSupport.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

namespace {

using namespace MExceptionHandler;

TEST(ExceptionFilter, NestedChainReportsTheInnermostRecord) {
    EXCEPTION_RECORD first, middle, outer;
    first.ExceptionCode = EXCEPTION_INT_DIVIDE_BY_ZERO;
    middle.ExceptionCode = EXCEPTION_ACCESS_VIOLATION;
    middle.ExceptionRecord = &first;
    outer.ExceptionCode = 0xE0000001;
    outer.ExceptionRecord = &middle;
    try {
        ExceptionFilter(outer);
        FAIL() << "the filter raises";
    } catch (const support::RunTimeError& e) {
        EXPECT_EQ(e.Number, 10000);
        EXPECT_EQ(e.Source, "ExceptionHandler");
        EXPECT_EQ(e.Description, "Integer Divide By Zero");
    }
}

class FilterTest : public testing_support::RecordingTest {
  protected:
    void SetUp() override {
        RecordingTest::SetUp();
        InstallExceptionFilter();
    }
    void TearDown() override { RemoveExceptionFilter(); }
};

// A real integer division by zero, on purpose: the sanitizer is told to leave it to the filter.
__attribute__((no_sanitize("integer-divide-by-zero"))) int DivideBy(volatile int& zero) {
    return 7 / zero;
}

TEST_F(FilterTest, RealFaultsReachTheTrapOfTheRunningProcedure) {
    volatile int zero = 0;
    const std::pair<std::function<int()>, const char*> rows[] = {
        {[&] { return DivideBy(zero); }, "Integer Divide By Zero"}, // a real SIGFPE
        {[] {
             RaiseException(0xE0000001);
             return 0;
         },
         "Unknown (&HE0000001)"},
    };
    for (const auto& [fault, description] : rows) {
        Rec().Clear();
        int result = -1;
        support::Trap("Pondera.Test.Fault", [&] { result = fault(); });
        EXPECT_EQ(result, -1) << description;
        const auto errors = Rec().AllErrors();
        ASSERT_EQ(errors.size(), 1u) << description;
        EXPECT_EQ(errors[0].Label, "Pondera.Test.Fault");
        EXPECT_EQ(errors[0].Number, 10000);
        EXPECT_EQ(errors[0].Source, "ExceptionHandler");
        EXPECT_EQ(errors[0].Description, description);
    }
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winfinite-recursion" // on purpose: runs out of stack
int Recurse(int depth) {
    volatile char pad[1024];
    pad[0] = static_cast<char>(depth);
    return Recurse(depth + 1) + pad[0];
}
#pragma GCC diagnostic pop

TEST(FilterDeath, FaultsThatCannotBeUnwoundAreLoggedAndEndTheProcess) {
    const std::string log =
        (std::filesystem::temp_directory_path() / ("pondera-death-" + std::to_string(getpid())))
            .string();
    std::filesystem::remove(log);
    setenv("PONDERA_ERROR_LOG", log.c_str(), 1);
    // Outside any trapped procedure.
    EXPECT_EXIT(
        {
            InstallExceptionFilter();
            volatile int* volatile nowhere = nullptr;
            *nowhere = 1;
        },
        ::testing::ExitedWithCode(3), "");
    // A stack overflow, even inside a trap.
    EXPECT_EXIT(
        {
            InstallExceptionFilter();
            support::Trap("Pondera.Test.Recurse", [] { Recurse(0); });
        },
        ::testing::ExitedWithCode(3), "");
    std::stringstream text;
    text << std::ifstream(log).rdbuf();
    EXPECT_NE(text.str().find("Access Violation"), std::string::npos) << text.str();
    EXPECT_NE(text.str().find("Stack Overflow"), std::string::npos) << text.str();
    std::filesystem::remove(log);
}

} // namespace
