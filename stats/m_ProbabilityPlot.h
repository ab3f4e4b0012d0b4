// A probability plot of a sample against one fitted row, in the coordinates of
// that family's probability paper: the value axis u (x, ln(x - threshold), or
// the curve's own standard variate for the Johnson rows) across, the
// probability axis v (Phi^-1(p), or ln(-ln(1 - p)) for the Weibull and
// exponential rows) up. On that paper the row's curve is a straight line, so a
// sample the curve fits lies along it.
#pragma once

#include "stats/m_Curves.h"
#include "stats/m_Fits.h"

#include <cstddef>
#include <string>
#include <vector>

namespace m_ProbabilityPlot {

// The probability axis: Phi^-1(p), or ln(-ln(1 - p)) (smallest extreme value).
enum class Paper { Normal, ExtremeValue };
// The value axis: x itself, ln(x - threshold), or the curve's standard variate z(x).
enum class Axis { Linear, Log, Standard };

enum class Positions { Benard, Hazen, MeanRank };

struct Options {
    double Level = 0.95; // of the pointwise band
    Positions Rule = Positions::Benard;
    // Above this many points the plot keeps a thinned set, so drawing stays
    // instant on millions of values (the ends and every visible step are kept).
    std::size_t MaxPoints = 4000;
};

struct Tick {
    double At = 0; // on its axis, in plot coordinates
    std::string Label;
};

struct Plot {
    std::string Status; // empty: a plot; otherwise why there is none
    std::string Name;   // the row's name
    Paper Prob = Paper::Normal;
    Axis Value = Axis::Linear;
    std::size_t N = 0;       // values in the sample (the points may be fewer)
    std::size_t Outside = 0; // values the curve gives no density: not on the paper
    double Level = 0.95;
    std::vector<double> U, V;         // the points, ascending
    std::vector<double> LineU, LineV; // the fitted line, bottom to top
    // The band around the line at the heights BandV (empty when the curve's
    // information cannot be inverted).
    std::vector<double> BandV, BandLow, BandHigh;
    double ULow = 0, UHigh = 1, VLow = 0, VHigh = 1; // the plotted window
    std::vector<Tick> ProbTicks, ValueTicks;
};

// Plotting position of the i-th smallest of n (i from 1).
double Position(std::size_t i, std::size_t n, Positions rule = Positions::Benard);

// The paper and value axis a curve is drawn on.
Paper PaperOf(m_Curves::Kind k);
Axis AxisOf(m_Curves::Kind k);
// Probability p to its height on the paper, and back.
double ToPaper(Paper paper, double p);
double FromPaper(Paper paper, double v);
// A value x to its place on the curve's value axis (NaN outside the curve), and back.
double ToAxis(const m_Curves::Curve& c, double x);
double FromAxis(const m_Curves::Curve& c, double u);

// The plot of a sorted sample against a row's fit. A row that did not fit
// gives a plot with only its Status set.
Plot Make(const std::vector<double>& ascending, int row, const m_Fits::Fit& fit,
          const Options& options = {});

} // namespace m_ProbabilityPlot
