// Shared test helpers: a clean recording face per test, and the bad values that
// every entry point is tried with.
#pragma once

#include "support/UserFace.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace testing_support {

// Points the error log and settings store at a temporary folder of this process's
// own, so that parallel test programs never share a store. Called by both test mains.
void IsolateUserFiles();

// Fixture: the recording face is installed and emptied before each test.
class RecordingTest : public ::testing::Test {
  protected:
    void SetUp() override;
    support::RecordingFace& Rec() { return support::Recorder(); }
    // Labels of every error reported so far, in order.
    std::vector<std::string> ErrorLabels() const;
    std::vector<std::string> MessageTexts() const;
};

// End-to-end window tests end with this: no error reached the log file or a
// report (suites named EndToEnd* also run under a real X server).
void ExpectErrorLogEmpty();
// Empties the error log, so that each such test reads only its own errors.
void ClearErrorLog();

// NaN, +-inf, huge, tiny, denormal, negative zero, negative, zero ...
const std::vector<double>& BadValues();

// Relative difference, absolute below 1.
double RelErr(double actual, double expected);

} // namespace testing_support
