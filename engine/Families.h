// One record per distribution family: its code and names, the calculator's key,
// the parameter slots, the rules on them, its places in the distribution list
// and its picture there, the fitted type that shows it in moments mode, the
// closed-form moments and quantiles, the density and both tails. The named
// procedures of m_Distributions, the distribution calculator, the window, the
// list and the command line all read their family's record instead of testing
// names or codes.
#pragma once

#include <array>
#include <string>
#include <vector>

namespace Families {

using Params = double[4]; // Param1..Param4 in the family's own meaning

// A rule on the parameters. Check is the CheckParamN that shows its message and
// whose field then gets the focus (1..3); 0 for a rule only the calculator
// applies (the Johnson parameters have no window check).
struct Rule {
    int Check = 0;
    bool (*Holds)(const Params& p) = nullptr;
    const char* Message = nullptr;
};

struct Slot {
    const char* Label = nullptr;       // caption of lb_ParamN, nullptr = hidden
    const char* DefaultText = nullptr; // text put into tb_ParamN on selection
};

using Moment = double (*)(double p1, double p2, double p3);
// A Johnson density with the engine's argument order (x, delta, gamma, lamda, xi).
using JohnsonPdf = double (*)(double x, double delta, double gamma, double lamda, double xi);

// The parameter rows of every Johnson form: typed by parameters it starts as the
// standard curve of its kind; in moments mode the rows show the fit.
inline constexpr std::array<Slot, 4> kJohnsonSlots = {
    {{"Delta:", "1"}, {"Gamma:", "0"}, {"Lamda:", "1"}, {"Xi:", "0"}}};

// The picture in the distribution list: a typical member over a range that
// shows its shape.
struct Icon {
    double Low = 0, High = 0;
    std::array<double, 4> P{};
};

struct Family {
    const char* Name = nullptr; // user-facing, compared exactly; nullptr: the calculator's alone
    int Code = 0;               // distribution code
    const char* CalculatorKey =
        nullptr;            // "Lognormal" for "LogNormal"; "Johnson" for every Johnson form
    bool Classical = false; // offered with its own parameter rows; closed-form moments
    int SlotCount = 0;      // parameters the calculator takes
    std::array<Slot, 4> Slots{};
    int MinimumSlot = 0; // the slot (1..4) where the support starts, 0 for none
    int As99Type = 0; // AS 99's curve type of a Johnson form (1 SL, 2 SU, 3 SB, 4 normal), else 0

    // Place in the distribution list (1 = first; 0 = not listed) outside and
    // inside moments mode.
    int ListItem = 0, MomentsListItem = 0;
    Icon Picture{};

    // Drawing by moments: JohnsonDist's JDistribution for a fit of this form
    // ("SB", "SL", "SU", "Normal"), the list item that shows such a fit, and the
    // engine's named density that draws it (nullptr for the normal fit, drawn by
    // Normal_PDF of the requested moments). The command line draws a Johnson
    // form typed by its parameters with the same density.
    const char* FittedType = nullptr;
    const char* FitItem = nullptr;
    JohnsonPdf EngineDensity = nullptr;

    // In the order the calculator applies them; the first that fails refuses.
    std::array<Rule, 3> Rules{};

    // Moments as CalcMomentsforDistribution asks for them: the mean with the first
    // MeanArgs parameters, the others with the first MomentArgs, the rest as 0.
    // nullptr for the Johnson forms, whose moments come from the fit.
    int MeanArgs = 0, MomentArgs = 0;
    Moment Mean = nullptr, StDev = nullptr, Skewness = nullptr, Kurtosis = nullptr;

    // Density and tails, parameters as the calculator holds them, already
    // accepted by the rules; x is not NaN. Upper: P(X > x), else P(X <= x).
    double (*Density)(const Params& p, double x) = nullptr;
    double (*Tail)(const Params& p, double x, bool upper) = nullptr;
    // The density on x(i) = low + (i - 1)(high - low)/n into out[0..n-1]: the same
    // values as Density, with a quick path for the common case.
    void (*Grid)(const Params& p, double low, double high, int n, double* out) = nullptr;
    // True where all the probability sits at one point (minimum = maximum).
    bool (*NoSpread)(const Params& p) = nullptr;
    // The quantile given z and its two normal tails P(Z <= z) and P(Z > z): the
    // x with P(X <= x) = lower, worked from the smaller of the two tails, which
    // alone need be exact. Beyond the double range it is infinite (with the
    // overflow flag raised, for the caller to clear).
    double (*Quantile)(const Params& p, double z, double lower, double upper) = nullptr;

    // The first rule the parameters break, or nullptr.
    const Rule* Refusal(const Params& p) const;
};

// Every family: the nine of the distribution list, then the calculator's
// Johnson normal form (no name, code 0).
const std::array<Family, 10>& All();

// By the user-facing name; nullptr when the name is not one of the nine.
const Family* ByName(const std::string& name);
// By JohnsonDist's fitted type; nullptr for a type without a curve ("Error",
// the two-point "ST", ...).
const Family* ByFittedType(const std::string& type);
// The names of the distribution list, in moments mode or outside it.
std::vector<std::string> ListOrder(bool byMoments);
// By code; any code without a row of its own is the Johnson normal form, as
// the calculator takes it.
const Family& ByCode(int code);
// The family the calculator means by its key: a key shared by several forms
// ("Johnson") is told apart by the distribution code given with it, the normal
// form standing for any code without a form of its own. nullptr for an unknown key.
const Family* ForCalculator(const std::string& key, int form);

} // namespace Families
