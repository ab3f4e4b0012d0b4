#include "support/ErrorTrap.h"

#include "support/m_Interface.h"

#include <new>

namespace support {

namespace {
// MXCSR exception flags: invalid operation, division by zero, overflow. The
// denormal, underflow and inexact flags are not faults.
#if defined(__x86_64__)
constexpr unsigned kInvalid = 0x01, kDivZero = 0x04, kOverflow = 0x08;
constexpr unsigned kAllFlags = 0x3F;

inline unsigned ReadFlags() {
    return __builtin_ia32_stmxcsr() & kAllFlags;
}
inline void WriteFlags(unsigned flags) {
    __builtin_ia32_ldmxcsr((__builtin_ia32_stmxcsr() & ~kAllFlags) | (flags & kAllFlags));
}
#else
constexpr unsigned kInvalid = FE_INVALID, kDivZero = FE_DIVBYZERO, kOverflow = FE_OVERFLOW;
inline unsigned ReadFlags() {
    return std::fetestexcept(FE_ALL_EXCEPT);
}
inline void WriteFlags(unsigned flags) {
    std::feclearexcept(FE_ALL_EXCEPT);
    if (flags) std::feraiseexcept(static_cast<int>(flags));
}
#endif
} // namespace

RunTimeError& Err() {
    thread_local RunTimeError current;
    return current;
}

void Raise(int32_t number, const std::string& source, const std::string& description) {
    throw RunTimeError(number, source, description.empty() ? DescriptionOf(number) : description);
}

std::string DescriptionOf(int32_t number) {
    switch (number) {
    case 5:
        return "Invalid procedure call or argument";
    case 6:
        return "Overflow";
    case 7:
        return "Out of memory";
    case 9:
        return "Subscript out of range";
    case 11:
        return "Division by zero";
    case 13:
        return "Type mismatch";
    case 51:
        return "Internal error";
    default:
        return "Application-defined or object-defined error";
    }
}

void CheckFp() {
    const unsigned flags = ReadFlags();
    if (!(flags & (kInvalid | kDivZero | kOverflow))) return;
    WriteFlags(0); // reported once; the trap puts the caller's flags back
    const int32_t number = (flags & kDivZero)    ? kErrDivByZero
                           : (flags & kOverflow) ? kErrOverflow
                                                 : kErrInvalidCall;
    throw RunTimeError(number, kAppTitle, DescriptionOf(number));
}

namespace detail {

FpScope::FpScope() {
    saved_ = static_cast<std::fexcept_t>(ReadFlags());
    WriteFlags(0);
}

FpScope::~FpScope() {
    WriteFlags(static_cast<unsigned>(saved_));
}

int& TrapDepth() {
    thread_local int depth = 0;
    return depth;
}

int& CallbackDepth() {
    thread_local int depth = -1;
    return depth;
}

unsigned SaveFlags() {
    return ReadFlags();
}

void RestoreFlags(unsigned flags) {
    WriteFlags(flags);
}

void Dispatch(Label label, std::exception_ptr error) noexcept {
    try {
        std::rethrow_exception(error);
    } catch (const RunTimeError& e) {
        Err() = e;
    } catch (const std::bad_alloc&) {
        Err() = RunTimeError(7, kAppTitle, DescriptionOf(7));
    } catch (const std::exception& e) {
        Err() = RunTimeError(51, kAppTitle, std::string(DescriptionOf(51)) + ": " + e.what());
    } catch (...) {
        Err() = RunTimeError(51, kAppTitle, DescriptionOf(51));
    }
    WriteFlags(0);
    m_Interface::HandleErrors(label.Text());
}

} // namespace detail
} // namespace support
