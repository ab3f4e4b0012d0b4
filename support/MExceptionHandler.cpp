#include "support/MExceptionHandler.h"

#include "support/ErrorReporter.h"
#include "support/ErrorTrap.h"

#include <csignal>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <pthread.h>
#include <ucontext.h>
#include <unistd.h>

// Bounds of this executable's own code, which is built with -fnon-call-exceptions
// and so can be unwound from a faulting instruction.
extern "C" char __executable_start;
extern "C" char etext;

namespace MExceptionHandler {

namespace {

constexpr const char* kModule = "Pondera.MExceptionHandler";

struct NameRow {
    uint32_t Code;
    const char* Short;
    const char* Long;
};

constexpr NameRow kNames[] = {
    {EXCEPTION_ACCESS_VIOLATION, "Access Violation", "EXCEPTION_ACCESS_VIOLATION"},
    {CONTROL_C_EXIT, "Control-C Exit", "EXCEPTION_CONTROL_C_EXIT"},
    {EXCEPTION_DATATYPE_MISALIGNMENT, "Data Type Misalignment", "EXCEPTION_DATATYPE_MISALIGNMENT"},
    {EXCEPTION_BREAKPOINT, "Breakpoint", "EXCEPTION_BREAKPOINT"},
    {EXCEPTION_SINGLE_STEP, "Single Step", "EXCEPTION_SINGLE_STEP"},
    {EXCEPTION_ARRAY_BOUNDS_EXCEEDED, "Array Bounds Exceeded", "EXCEPTION_ARRAY_BOUNDS_EXCEEDED"},
    {EXCEPTION_FLT_DENORMAL_OPERAND, "Float Denormal Operand", "EXCEPTION_FLT_DENORMAL_OPERAND"},
    {EXCEPTION_FLT_DIVIDE_BY_ZERO, "Divide By Zero", "EXCEPTION_FLT_DIVIDE_BY_ZERO"},
    {EXCEPTION_FLT_INEXACT_RESULT, "Floating Point Inexact Result", "EXCEPTION_FLT_INEXACT_RESULT"},
    {EXCEPTION_FLT_INVALID_OPERATION, "Invalid Operation", "EXCEPTION_FLT_INVALID_OPERATION"},
    {EXCEPTION_FLT_OVERFLOW, "Float Overflow", "EXCEPTION_FLT_OVERFLOW"},
    {EXCEPTION_FLT_STACK_CHECK, "Float Stack Check", "EXCEPTION_FLT_STACK_CHECK"},
    {EXCEPTION_FLT_UNDERFLOW, "Float Underflow", "EXCEPTION_FLT_UNDERFLOW"},
    {EXCEPTION_INT_DIVIDE_BY_ZERO, "Integer Divide By Zero", "EXCEPTION_INT_DIVIDE_BY_ZERO"},
    {EXCEPTION_INT_OVERFLOW, "Integer Overflow", "EXCEPTION_INT_OVERFLOW"},
    {EXCEPTION_PRIV_INSTRUCTION, "Privileged Instruction", "EXCEPTION_PRIVILEGED_INSTRUCTION"},
    {EXCEPTION_IN_PAGE_ERROR, "In Page Error", "EXCEPTION_IN_PAGE_ERROR"},
    {EXCEPTION_ILLEGAL_INSTRUCTION, "Illegal Instruction", "EXCEPTION_ILLEGAL_INSTRUCTION"},
    {EXCEPTION_NONCONTINUABLE_EXCEPTION, "Non Continuable Exception",
     "EXCEPTION_NONCONTINUABLE_EXCEPTION"},
    {EXCEPTION_STACK_OVERFLOW, "Stack Overflow", "EXCEPTION_STACK_OVERFLOW"},
    {EXCEPTION_INVALID_DISPOSITION, "Invalid Disposition", "EXCEPTION_INVALID_DISPOSITION"},
    {EXCEPTION_GUARD_PAGE, "Guard Page Violation", "EXCEPTION_GUARD_PAGE_VIOLATION"},
    {EXCEPTION_INVALID_HANDLE, "Invalid Handle", "EXCEPTION_INVALID_HANDLE"},
};

const NameRow* Find(uint32_t code) {
    for (const auto& row : kNames)
        if (row.Code == code) return &row;
    return nullptr;
}

// The platform's RtlMoveMemory.
void RtlMoveMemory(void* destination, const void* source, size_t length) {
    std::memmove(destination, source, length);
}

bool installed = false;
constexpr int kSignals[] = {SIGSEGV, SIGFPE, SIGILL, SIGBUS};
struct sigaction previous[std::size(kSignals)];
thread_local bool inHandler = false;
char* mainStackLow = nullptr; // lowest address of the main thread's stack
char altStack[64 * 1024];

uint32_t CodeOf(int sig, const siginfo_t* info) {
    switch (sig) {
    case SIGFPE:
        switch (info->si_code) {
        case FPE_INTDIV:
            return EXCEPTION_INT_DIVIDE_BY_ZERO;
        case FPE_INTOVF:
            return EXCEPTION_INT_OVERFLOW;
        case FPE_FLTDIV:
            return EXCEPTION_FLT_DIVIDE_BY_ZERO;
        case FPE_FLTOVF:
            return EXCEPTION_FLT_OVERFLOW;
        case FPE_FLTUND:
            return EXCEPTION_FLT_UNDERFLOW;
        case FPE_FLTRES:
            return EXCEPTION_FLT_INEXACT_RESULT;
        case FPE_FLTSUB:
            return EXCEPTION_ARRAY_BOUNDS_EXCEEDED;
        default:
            return EXCEPTION_FLT_INVALID_OPERATION;
        }
    case SIGILL:
        return (info->si_code == ILL_PRVOPC || info->si_code == ILL_PRVREG)
                   ? EXCEPTION_PRIV_INSTRUCTION
                   : EXCEPTION_ILLEGAL_INSTRUCTION;
    case SIGBUS:
        return info->si_code == BUS_ADRALN ? EXCEPTION_DATATYPE_MISALIGNMENT
                                           : EXCEPTION_IN_PAGE_ERROR;
    default:
        return EXCEPTION_ACCESS_VIOLATION;
    }
}

bool IsStackOverflow(int sig, const siginfo_t* info) {
    if (sig != SIGSEGV || !mainStackLow) return false;
    const char* address = static_cast<const char*>(info->si_addr);
    // The guard area sits just below the stack; a fault within a page or so of it
    // is the stack running out.
    return address >= mainStackLow - 256 * 1024 && address < mainStackLow + 64 * 1024;
}

bool InOwnCode(const void* context) {
#if defined(__x86_64__)
    const auto* uc = static_cast<const ucontext_t*>(context);
    const char* pc = reinterpret_cast<const char*>(uc->uc_mcontext.gregs[REG_RIP]);
    return pc >= &__executable_start && pc < &etext;
#else
    (void)context;
    return true;
#endif
}

[[noreturn]] void Fatal(const EXCEPTION_RECORD& record) {
    // Reached from the filter's signal handler: logged under the filter's name.
    support::ErrorReporter::Instance().AppendLog(support::Label(kModule, "ExceptionFilter").Text(),
                                                 support::kErrException, kSource,
                                                 ShortName(record.ExceptionCode));
    _exit(3);
}

void OnSignal(int sig, siginfo_t* info, void* context) {
    EXCEPTION_RECORD record;
    record.ExceptionCode = CodeOf(sig, info);
    record.ExceptionAddress = info->si_addr;
    if (IsStackOverflow(sig, info)) record.ExceptionCode = EXCEPTION_STACK_OVERFLOW;

    // Only a fault in our own code, inside a trapped procedure, can be unwound to
    // that procedure's trap; anything else (a fault in a library, a stack
    // overflow, a fault while handling one) is logged and ends the process.
    const bool safe = !inHandler && support::detail::TrapDepth() > 0 &&
                      record.ExceptionCode != EXCEPTION_STACK_OVERFLOW && InOwnCode(context);
    if (!safe) Fatal(record);
    inHandler = true;
    sigset_t unblock;
    sigemptyset(&unblock);
    sigaddset(&unblock, sig);
    pthread_sigmask(SIG_UNBLOCK, &unblock, nullptr);
    inHandler = false;
    ExceptionFilter(record);
}

void FindMainStack() {
    pthread_attr_t attr;
    if (pthread_getattr_np(pthread_self(), &attr) != 0) return;
    void* address = nullptr;
    size_t size = 0;
    if (pthread_attr_getstack(&attr, &address, &size) == 0)
        mainStackLow = static_cast<char*>(address);
    pthread_attr_destroy(&attr);
}

} // namespace

std::string ShortName(uint32_t code) {
    if (const NameRow* row = Find(code)) return row->Short;
    char hex[16];
    std::snprintf(hex, sizeof hex, "%08X", code);
    return std::string("Unknown (&H") + hex + ")";
}

std::string LongName(uint32_t code) {
    const NameRow* row = Find(code);
    return row ? row->Long : "Unknown";
}

EXCEPTION_RECORD InnermostRecord(const EXCEPTION_RECORD& record) {
    EXCEPTION_RECORD copy;
    RtlMoveMemory(&copy, &record, sizeof copy);
    // Guard against a cycle in a corrupt chain.
    for (int depth = 0; copy.ExceptionRecord != nullptr && depth < 1000; ++depth)
        RtlMoveMemory(&copy, copy.ExceptionRecord, sizeof copy);
    return copy;
}

void ExceptionFilter(const EXCEPTION_RECORD& record) {
    const EXCEPTION_RECORD innermost = InnermostRecord(record);
    throw support::RunTimeError(support::kErrException, kSource,
                                ShortName(innermost.ExceptionCode));
}

void RaiseException(uint32_t code, uint32_t flags, uint32_t numberOfArguments,
                    const uintptr_t* arguments) {
    EXCEPTION_RECORD record;
    record.ExceptionCode = code;
    record.ExceptionFlags = flags;
    record.NumberParameters =
        numberOfArguments < kMaxParameters ? numberOfArguments : kMaxParameters;
    for (uint32_t i = 0; i < record.NumberParameters && arguments; ++i)
        record.ExceptionInformation[i] = arguments[i];
    if (installed) ExceptionFilter(record);
    support::ErrorReporter::Instance().AppendLog(support::Label(kModule, __func__).Text(),
                                                 support::kErrException, kSource, ShortName(code));
}

void InstallExceptionFilter() {
    if (installed) return;
    FindMainStack();
    stack_t stack{};
    stack.ss_sp = altStack;
    stack.ss_size = sizeof altStack;
    sigaltstack(&stack, nullptr);
    for (size_t i = 0; i < std::size(kSignals); ++i) {
        struct sigaction action {};
        action.sa_sigaction = OnSignal;
        action.sa_flags = SA_SIGINFO | SA_ONSTACK;
        sigemptyset(&action.sa_mask);
        sigaction(kSignals[i], &action, &previous[i]);
    }
    installed = true;
}

void RemoveExceptionFilter() {
    if (!installed) return;
    for (size_t i = 0; i < std::size(kSignals); ++i)
        sigaction(kSignals[i], &previous[i], nullptr);
    installed = false;
}

bool FilterInstalled() {
    return installed;
}

} // namespace MExceptionHandler
