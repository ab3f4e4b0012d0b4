// Turns processor faults into ordinary run-time errors (number 10000, source
// "ExceptionHandler"), so they reach the trap of the procedure that was running.
//
// The exception record and its nested chain follow the platform's layout; on
// Linux the synchronous signals SIGSEGV, SIGFPE, SIGILL and SIGBUS are turned
// into such records by a signal handler.
#pragma once

#include <cstdint>
#include <string>

namespace MExceptionHandler {

inline constexpr int kMaxParameters = 15;

struct EXCEPTION_RECORD {
    uint32_t ExceptionCode = 0;
    uint32_t ExceptionFlags = 0;
    EXCEPTION_RECORD* ExceptionRecord = nullptr; // nested record, raised first
    void* ExceptionAddress = nullptr;
    uint32_t NumberParameters = 0;
    uintptr_t ExceptionInformation[kMaxParameters] = {};
};

// Standard exception codes.
inline constexpr uint32_t EXCEPTION_ACCESS_VIOLATION = 0xC0000005;
inline constexpr uint32_t EXCEPTION_DATATYPE_MISALIGNMENT = 0x80000002;
inline constexpr uint32_t EXCEPTION_BREAKPOINT = 0x80000003;
inline constexpr uint32_t EXCEPTION_SINGLE_STEP = 0x80000004;
inline constexpr uint32_t EXCEPTION_ARRAY_BOUNDS_EXCEEDED = 0xC000008C;
inline constexpr uint32_t EXCEPTION_FLT_DENORMAL_OPERAND = 0xC000008D;
inline constexpr uint32_t EXCEPTION_FLT_DIVIDE_BY_ZERO = 0xC000008E;
inline constexpr uint32_t EXCEPTION_FLT_INEXACT_RESULT = 0xC000008F;
inline constexpr uint32_t EXCEPTION_FLT_INVALID_OPERATION = 0xC0000090;
inline constexpr uint32_t EXCEPTION_FLT_OVERFLOW = 0xC0000091;
inline constexpr uint32_t EXCEPTION_FLT_STACK_CHECK = 0xC0000092;
inline constexpr uint32_t EXCEPTION_FLT_UNDERFLOW = 0xC0000093;
inline constexpr uint32_t EXCEPTION_INT_DIVIDE_BY_ZERO = 0xC0000094;
inline constexpr uint32_t EXCEPTION_INT_OVERFLOW = 0xC0000095;
inline constexpr uint32_t EXCEPTION_PRIV_INSTRUCTION = 0xC0000096;
inline constexpr uint32_t EXCEPTION_IN_PAGE_ERROR = 0xC0000006;
inline constexpr uint32_t EXCEPTION_ILLEGAL_INSTRUCTION = 0xC000001D;
inline constexpr uint32_t EXCEPTION_NONCONTINUABLE_EXCEPTION = 0xC0000025;
inline constexpr uint32_t EXCEPTION_STACK_OVERFLOW = 0xC00000FD;
inline constexpr uint32_t EXCEPTION_INVALID_DISPOSITION = 0xC0000026;
inline constexpr uint32_t EXCEPTION_GUARD_PAGE = 0x80000001;
inline constexpr uint32_t EXCEPTION_INVALID_HANDLE = 0xC0000008;
inline constexpr uint32_t CONTROL_C_EXIT = 0xC000013A;

inline constexpr const char* kSource = "ExceptionHandler";

// "Access Violation", ..., or "Unknown (&HE0000001)" for a code not in the table.
std::string ShortName(uint32_t code);
// "EXCEPTION_ACCESS_VIOLATION", ..., or "Unknown".
std::string LongName(uint32_t code);

// Copies the record, follows the chain of nested records to the innermost one
// (the first raised) and returns that copy.
EXCEPTION_RECORD InnermostRecord(const EXCEPTION_RECORD& record);

// The filter: raises run-time error 10000 with source "ExceptionHandler" and the
// short name of the innermost record's code.
[[noreturn]] void ExceptionFilter(const EXCEPTION_RECORD& record);

// Raises a test exception through the filter when it is installed; without the
// filter the process would end, so it only logs.
void RaiseException(uint32_t code, uint32_t flags = 0, uint32_t numberOfArguments = 0,
                    const uintptr_t* arguments = nullptr);

// Installs the signal handlers once (flag set); removing restores the defaults.
// Both ignore errors.
void InstallExceptionFilter();
void RemoveExceptionFilter();
bool FilterInstalled();

} // namespace MExceptionHandler
