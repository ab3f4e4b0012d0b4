#include "stats/m_CapabilityStudy.h"

#include "engine/Families.h"
#include "stats/m_Fits.h"

#include <algorithm>
#include <string>

namespace m_CapabilityStudy {

Study Compute(const Request& r) {
    Study s;
    s.Shown = r.Shown;
    s.Level = r.Level;
    double below = 0, above = 0;
    if (r.Below && r.Above) {
        below = *r.Below, above = *r.Above;
    } else if (const Families::Family& family = Families::ByCode(r.Code); !family.Refusal(r.P)) {
        // As the calculator answers: the record's tails within 0..1, the upper
        // one capped so that the two never pass 1.
        if (r.LSL) below = std::clamp(family.Tail(r.P, *r.LSL, false), 0.0, 1.0);
        if (r.USL) above = std::clamp(family.Tail(r.P, *r.USL, true), 0.0, 1.0);
        if (r.LSL && r.USL && *r.LSL <= *r.USL && above > 1 - below) above = 1 - below;
    }
    const double total = below + above;
    s.X = m_Capability::PercentilePoints(r.Code, r.P[0], r.P[1], r.P[2], r.P[3]);
    if (s.X) s.Percentile = m_Capability::Indices(*s.X, r.LSL, r.USL, total);
    s.ZScore = m_Capability::ZScoreFigures(r.Code, r.P, r.LSL, r.USL, total);
    s.Expected = {below * 1e6, above * 1e6, total * 1e6};
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
