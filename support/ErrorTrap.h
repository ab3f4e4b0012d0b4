// The one error path: run-time errors, the per-procedure trap and the
// floating-point checks.
//
// A procedure wraps its body in a trap with its label (see Label); a function
// returns its body's value through TrapValue:
//
//     void Plot() { support::Trap({kModule, __func__}, [&] { ... }); }
//     double mean(int code, double p1, double p2, double p3) {
//         return support::TrapValue({kModule, __func__}, 0.0, [&] { return support::ck(...); });
//     }
//
// On an error the trap hands it to m_Interface::HandleErrors with the label and
// the procedure returns whatever its result held, as the old runtime did.
#pragma once

#include <cfenv>
#include <cstdint>
#include <exception>
#include <string>
#include <utility>

namespace support {

// A procedure's error label, "Pondera.<module>.<procedure>". Built from the module's
// one constant and the procedure's own name where the two agree, so a label cannot
// drift from its procedure:
//
//     constexpr const char* kModule = "Pondera.m_Distributions";
//     double mean(...) { support::Trap({kModule, __func__}, [&] { ... }); }
//
// (__func__ is read in the procedure itself, never inside the lambda, where it would
// be "operator()".) A label whose procedure name differs from the function's, such as
// an event handler, is given whole. The text is put together only when an error is
// reported.
struct Label {
    const char* Module = nullptr;
    const char* Procedure = nullptr; // nullptr: Module holds the whole label

    constexpr Label(const char* whole) : Module(whole) {}
    constexpr Label(const char* module, const char* procedure)
        : Module(module), Procedure(procedure) {}
    std::string Text() const {
        return Procedure ? std::string(Module) + "." + Procedure : std::string(Module);
    }
};

// Error numbers of the old runtime that the floating-point checks raise.
inline constexpr int32_t kErrInvalidCall = 5;   // "Invalid procedure call or argument"
inline constexpr int32_t kErrOverflow = 6;      // "Overflow"
inline constexpr int32_t kErrDivByZero = 11;    // "Division by zero"
inline constexpr int32_t kErrException = 10000; // raised by the exception filter

// The application's title; also the source of run-time errors raised by our own code.
inline constexpr const char* kAppTitle = "Pondera";

struct RunTimeError : std::exception {
    int32_t Number = 0;
    std::string Source;
    std::string Description;

    RunTimeError() = default;
    RunTimeError(int32_t number, std::string source, std::string description)
        : Number(number), Source(std::move(source)), Description(std::move(description)) {}
    const char* what() const noexcept override { return Description.c_str(); }
};

// The current error, as the old runtime's Err object: set by the trap before it
// calls HandleErrors, cleared by HandleErrors.
RunTimeError& Err();

[[noreturn]] void Raise(int32_t number, const std::string& source, const std::string& description);

// Standard description for the old runtime's error numbers (5, 6, 11, ...).
std::string DescriptionOf(int32_t number);

// Throws the matching run-time error when overflow, division by zero or an
// invalid operation has happened since the innermost trap began.
void CheckFp();

// Checks the floating-point flags once `v` has been computed, then returns it.
// Use it where a value is stored, so that a faulty value never lands in a result.
inline double ck(double v) {
#if defined(__x86_64__) || defined(__i386__)
    asm volatile("" : "+x"(v)); // keep the computation of v before the flag test
#else
    asm volatile("" : "+g"(v));
#endif
    CheckFp();
    return v;
}

namespace detail {
// Saves and clears the floating-point flags for the scope of one trap and puts
// the caller's flags back afterwards, so every procedure sees only its own faults.
class FpScope {
  public:
    FpScope();
    ~FpScope();
    FpScope(const FpScope&) = delete;
    FpScope& operator=(const FpScope&) = delete;

  private:
    std::fexcept_t saved_{};
};

// Depth of nested traps on this thread; the signal translator only throws inside one.
int& TrapDepth();

// The trap depth at which the toolkit last called back into our code (an event
// it delivers), or -1 outside any such call.
int& CallbackDepth();

unsigned SaveFlags();
void RestoreFlags(unsigned flags);

void Dispatch(Label label, std::exception_ptr error) noexcept;
} // namespace detail

// Code that is not ours runs in this scope (the toolkit's own work). The flags it
// raises are not faults of the procedure around it: on leaving, the flags are
// put back as they were on entry.
class ForeignCode {
  public:
    ForeignCode() : saved_(detail::SaveFlags()) {}
    ~ForeignCode() { detail::RestoreFlags(saved_); }
    ForeignCode(const ForeignCode&) = delete;
    ForeignCode& operator=(const ForeignCode&) = delete;

  private:
    unsigned saved_;
};

// The toolkit delivering an event to our code: foreign code around it, and the
// first trap opened inside it is a window procedure (see Trap).
class ToolkitCallback {
  public:
    ToolkitCallback() : previous_(detail::CallbackDepth()) {
        detail::CallbackDepth() = detail::TrapDepth();
    }
    ~ToolkitCallback() { detail::CallbackDepth() = previous_; }
    ToolkitCallback(const ToolkitCallback&) = delete;
    ToolkitCallback& operator=(const ToolkitCallback&) = delete;

  private:
    ForeignCode foreign_;
    int previous_;
};

// The error trap of one procedure: runs body; any run-time error (also one
// translated from a hardware fault, or a floating-point fault found at the end)
// goes to HandleErrors with the label. Never throws.
//
// A window procedure (the first trap inside an event the toolkit delivers) is
// not charged with the flags left when its body ends: its body calls the
// toolkit, whose own code leaves flags behind (Qt's vector image conversion
// divides by zero alpha whenever a window gets its icon, that is in every
// dialog, menu and message box on a real display). Its own arithmetic is
// checked where it is stored (ck) and by the traps of the procedures it calls.
template <class Body> void Trap(Label label, Body&& body) noexcept {
    detail::FpScope fp;
    const bool windowProcedure = ++detail::TrapDepth() == detail::CallbackDepth() + 1;
    try {
        body();
        if (!windowProcedure) CheckFp();
    } catch (...) {
        detail::Dispatch(label, std::current_exception());
    }
    --detail::TrapDepth();
}

// The trap of a function: body returns the function's result. On an error the
// function returns what its result held, as under Trap: `initial` when body
// did not finish, body's value when only the floating-point check at the end
// failed.
//
//     double Max(double a, double b) {
//         return support::TrapValue({kModule, __func__}, 0.0, [&] { return a >= b ? a : b; });
//     }
template <class R, class Body> R TrapValue(Label label, R initial, Body&& body) noexcept {
    R result = std::move(initial);
    Trap(label, [&] { result = body(); });
    return result;
}

// As Trap, but errors are ignored (cleared, not reported): "On Error Resume Next".
template <class Body> void TrapIgnore(Body&& body) noexcept {
    detail::FpScope fp;
    ++detail::TrapDepth();
    try {
        body();
    } catch (...) {
    }
    --detail::TrapDepth();
}

} // namespace support
