#include "support/ErrorTrap.h"
#include "support/MExceptionHandler.h"
#include "tests/helpers/TestSupport.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

using namespace MExceptionHandler;

TEST(ExceptionNames, KnownCodesHaveShortAndLongNames) {
    struct Row {
        uint32_t code;
        const char* shortName;
        const char* longName;
    } rows[] = {
        {0xC0000005, "Access Violation", "EXCEPTION_ACCESS_VIOLATION"},
        {0xC0000094, "Integer Divide By Zero", "EXCEPTION_INT_DIVIDE_BY_ZERO"},
        {0xC000008E, "Divide By Zero", "EXCEPTION_FLT_DIVIDE_BY_ZERO"},
        {0xC00000FD, "Stack Overflow", "EXCEPTION_STACK_OVERFLOW"},
        {0x80000001, "Guard Page Violation", "EXCEPTION_GUARD_PAGE_VIOLATION"},
        {0xC0000096, "Privileged Instruction", "EXCEPTION_PRIVILEGED_INSTRUCTION"},
        {0xC000013A, "Control-C Exit", "EXCEPTION_CONTROL_C_EXIT"},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(ShortName(r.code), r.shortName);
        EXPECT_EQ(LongName(r.code), r.longName);
    }
}

TEST(ExceptionNames, UnknownCodeShowsEightHexDigits) {
    EXPECT_EQ(ShortName(0xE0000001), "Unknown (&HE0000001)");
    EXPECT_EQ(ShortName(0x1F), "Unknown (&H0000001F)");
    EXPECT_EQ(LongName(0xE0000001), "Unknown");
}

TEST(ExceptionFilter, NestedChainReportsTheInnermostRecord) {
    EXCEPTION_RECORD first, middle, outer;
    first.ExceptionCode = EXCEPTION_INT_DIVIDE_BY_ZERO;
    middle.ExceptionCode = EXCEPTION_ACCESS_VIOLATION;
    middle.ExceptionRecord = &first;
    outer.ExceptionCode = 0xE0000001;
    outer.ExceptionRecord = &middle;
    EXPECT_EQ(InnermostRecord(outer).ExceptionCode, EXCEPTION_INT_DIVIDE_BY_ZERO);
    EXPECT_EQ(InnermostRecord(first).ExceptionCode, EXCEPTION_INT_DIVIDE_BY_ZERO);
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

int DivideIntegers(int a, int b) {
    int result = -1;
    support::Trap("Pondera.Test.DivideIntegers", [&] { result = a / b; });
    return result;
}

TEST_F(FilterTest, RealIntegerDivisionByZeroReachesTheTrapOfTheRunningProcedure) {
    volatile int zero = 0;
    EXPECT_EQ(DivideIntegers(7, zero), -1);
    const auto errors = Rec().AllErrors();
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].Label, "Pondera.Test.DivideIntegers");
    EXPECT_EQ(errors[0].Number, 10000);
    EXPECT_EQ(errors[0].Source, "ExceptionHandler");
    EXPECT_EQ(errors[0].Description, "Integer Divide By Zero");
    // The handler is ready for the next fault.
    EXPECT_EQ(DivideIntegers(9, zero), -1);
    EXPECT_EQ(Rec().AllErrors().size(), 2u);
    EXPECT_EQ(DivideIntegers(9, 3), 3);
}

TEST_F(FilterTest, NullPointerReadIsAnAccessViolation) {
    int value = 0;
    support::Trap("Pondera.Test.Read", [&] {
        volatile int* volatile nowhere = nullptr;
        value = *nowhere;
    });
    const auto errors = Rec().AllErrors();
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].Description, "Access Violation");
}

TEST_F(FilterTest, RaisedTestExceptionTravelsTheSamePath) {
    support::Trap("Pondera.Test.Raise", [] { RaiseException(0xE0000001); });
    const auto errors = Rec().AllErrors();
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].Description, "Unknown (&HE0000001)");
}

TEST(FilterFlag, InstallAndRemoveAreIdempotent) {
    EXPECT_FALSE(FilterInstalled());
    InstallExceptionFilter();
    InstallExceptionFilter();
    EXPECT_TRUE(FilterInstalled());
    RemoveExceptionFilter();
    EXPECT_FALSE(FilterInstalled());
    RemoveExceptionFilter();
    EXPECT_FALSE(FilterInstalled());
}

std::string ReadLog(const std::string& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

int Recurse(int depth) {
    volatile char pad[1024];
    pad[0] = static_cast<char>(depth);
    return Recurse(depth + 1) + pad[0];
}

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
    const std::string text = ReadLog(log);
    EXPECT_NE(text.find("Access Violation"), std::string::npos) << text;
    EXPECT_NE(text.find("Stack Overflow"), std::string::npos) << text;
    std::filesystem::remove(log);
}

} // namespace
