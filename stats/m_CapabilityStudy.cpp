#include "stats/m_CapabilityStudy.h"

#include "stats/m_Fits.h"

#include <string>

namespace m_CapabilityStudy {

Study Compute(const Request& r) {
    Study s;
    s.Shown = r.Shown;
    s.Level = r.Level;
    const double total = r.Below + r.Above;
    s.X = m_Capability::PercentilePoints(r.Code, r.P[0], r.P[1], r.P[2], r.P[3]);
    if (s.X) s.Percentile = m_Capability::Indices(*s.X, r.LSL, r.USL, total);
    s.ZScore = m_Capability::ZScoreFigures(r.Code, r.P, r.LSL, r.USL, total);
    s.Expected = {r.Below * 1e6, r.Above * 1e6, total * 1e6};
    if (r.Values && !r.Values->empty()) {
        s.N = r.Values->size();
        s.Observed = m_Capability::Observed(*r.Values, r.LSL, r.USL);
    }
    return s;
}

bool HasIntervals(const Request& r) {
    return r.Values && r.Row >= 0 && r.Row < m_Fits::kRowCount &&
           r.Values->size() >= m_Fits::kMinValues && (r.LSL || r.USL) &&
           m_Bootstrap::CurveOf(r.Code, r.P);
}

bool AddIntervals(Study& s, const Request& r, m_Bootstrap::Options options) {
    if (!HasIntervals(r)) return true;
    options.Level = r.Level;
    const m_Bootstrap::Result b = m_Bootstrap::Intervals(r.Row, *m_Bootstrap::CurveOf(r.Code, r.P),
                                                         r.Values->size(), r.LSL, r.USL, options);
    if (b.Cancelled) return false;
    s.Level = r.Level;
    s.PercentileCI = {b.Percentile.Pp, b.Percentile.Ppk, b.Ppm};
    s.ZScoreCI = {b.ZScore.Pp, b.ZScore.Ppk, b.Ppm};
    s.IntervalMethod = "parametric bootstrap, " + std::to_string(options.Replicates) + " samples";
    if (r.Row == m_Fits::kNormal) {
        const int n = static_cast<int>(r.Values->size());
        const Intervals exact{
            s.Percentile.Pp ? m_Capability::NormalPpInterval(*s.Percentile.Pp, n, r.Level)
                            : std::nullopt,
            s.Percentile.Ppk ? m_Capability::NormalPpkInterval(*s.Percentile.Ppk, n, r.Level)
                             : std::nullopt,
            b.Ppm};
        s.PercentileCI = s.ZScoreCI = exact;
        s.IntervalMethod = "chi-square (Pp), Bissell (Ppk); ppm: " + s.IntervalMethod;
    }
    return true;
}

} // namespace m_CapabilityStudy
