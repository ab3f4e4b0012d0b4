#include "support/m_Interface.h"

#include "support/ErrorReporter.h"
#include "support/ErrorTrap.h"
#include "support/UserFace.h"
#include "support/Version.h"

#include <cmath>

namespace m_Interface {

namespace {
constexpr const char* kModule = "Pondera.m_Interface";
} // namespace

void SetupErrorHandling() {
    support::Trap({kModule, __func__}, [&] {
        support::ErrorReporter::Instance().SetApplication(
            support::kAppTitle, support::ErrorReporter::ProgramFolder(), support::kVersion);
    });
}

void HandleErrors(const std::string& label) noexcept {
    // Runs with errors ignored: a fault while reporting must not recurse.
    try {
        const support::RunTimeError error = support::Err();
        if (error.Number == kErrExceptionBox) {
            support::Face().ShowMessage("Exception", error.Description, support::BoxIcon::Critical);
        } else if (error.Number == kErrUserInputBox) {
            support::Face().ShowMessage("User input error", error.Description,
                                        support::BoxIcon::Information);
        } else {
            support::ErrorReporter::Instance().Report(label, error.Number, error.Source,
                                                      error.Description);
        }
    } catch (...) {
    }
    support::Err() = support::RunTimeError();
}

std::string FormatDec(int16_t places) {
    std::string result;
    support::Trap({kModule, __func__}, [&] {
        if (places < 0 || places > 6) return;
        result = "0";
        if (places > 0) result += "." + std::string(places, '0');
    });
    return result;
}

double Max(double a, double b) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] { return a >= b ? a : b; });
}

double Min(double a, double b) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] { return a <= b ? a : b; });
}

double Pi() {
    return support::TrapValue({kModule, __func__}, 0.0,
                              [&] { return support::ck(4 * std::atan(1.0)); });
}

} // namespace m_Interface
