#include "ui/main/IdentifyTable.h"

#include "engine/Families.h"
#include "support/Format.h"

#include <QBrush>
#include <QColor>

#include <algorithm>
#include <cmath>

namespace IdentifyText {

std::string ParamText(double v, const std::string& pattern) {
    const std::string fixed = support::Format(v, pattern);
    if (pattern.find('E') != std::string::npos) return fixed;
    // Too few digits survive the fixed places: the same places in scientific form.
    if (std::fabs(support::Val(fixed) - v) > 1e-6 * std::fabs(v))
        return support::Format(v, pattern + "E+00");
    return fixed;
}

WindowParams ParamsOf(const m_Curves::Curve& c, const std::string& pattern) {
    WindowParams w;
    w.Name = m_Curves::Family(c.K);
    if (const Families::Family* f = Families::ByName(w.Name))
        for (const Families::Slot& slot : f->Slots)
            w.Count += slot.Label != nullptr;
    for (int i = 0; i < w.Count; ++i)
        w.Texts[i] = ParamText(c.P[i], pattern);
    return w;
}

std::string PText(double p) {
    if (std::isnan(p)) return "";
    return p < 0.005 ? "< 0.005" : support::Format(p, "0.000");
}

} // namespace IdentifyText

namespace {

QString Q(const std::string& s) {
    return QString::fromStdString(s);
}

QString Number(double v, const char* pattern) {
    return std::isfinite(v) ? Q(support::Format(v, pattern)) : QString();
}

} // namespace

void IdentifyTable::SetRows(std::vector<m_Identify::RowResult> rows, const std::string& pattern) {
    beginResetModel();
    rows_ = std::move(rows);
    pattern_ = pattern;
    noSimulation_.clear();
    order_.resize(rows_.size());
    for (std::size_t i = 0; i < rows_.size(); ++i)
        order_[i] = static_cast<int>(i);
    // Ranked rows first, best first; the rows without a rank keep the table's order.
    std::stable_sort(order_.begin(), order_.end(), [&](int a, int b) {
        const int ra = rows_[a].Rank, rb = rows_[b].Rank;
        return ra > 0 && (rb == 0 || ra < rb);
    });
    p_.assign(rows_.size(), PState::Waiting);
    a2_.assign(rows_.size(), PState::Waiting);
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        if (rows_[i].Status != "ok" || !std::isnan(rows_[i].P)) p_[i] = PState::Done;
        if (rows_[i].Status != "ok" || !std::isnan(rows_[i].A2)) a2_[i] = PState::Done;
    }
    endResetModel();
}

int IdentifyTable::Shown(int fitRow) const {
    return static_cast<int>(std::find(order_.begin(), order_.end(), fitRow) - order_.begin());
}

void IdentifyTable::SetA2(int fitRow, double a2, double pTable) {
    if (fitRow < 0 || fitRow >= static_cast<int>(rows_.size())) return;
    rows_[fitRow].A2 = a2;
    rows_[fitRow].PTable = pTable;
    a2_[fitRow] = PState::Done;
    const int shown = Shown(fitRow);
    emit dataChanged(index(shown, kAD), index(shown, kP)); // the p column's tip has the table p
}

void IdentifyTable::Clear() {
    SetRows({}, pattern_);
}

void IdentifyTable::SetP(int fitRow, double p) {
    if (fitRow < 0 || fitRow >= static_cast<int>(rows_.size())) return;
    rows_[fitRow].P = p;
    p_[fitRow] = PState::Done;
    const int shown = Shown(fitRow);
    emit dataChanged(index(shown, kP), index(shown, kP));
}

void IdentifyTable::StopWaiting() {
    for (PState& s : p_)
        if (s == PState::Waiting) s = PState::Stopped;
    if (!rows_.empty()) emit dataChanged(index(0, kP), index(rowCount() - 1, kP));
}

bool IdentifyTable::Complete() const {
    auto done = [](PState s) { return s == PState::Done; };
    return std::all_of(p_.begin(), p_.end(), done) && std::all_of(a2_.begin(), a2_.end(), done);
}

void IdentifyTable::SkipSimulation(const QString& why) {
    noSimulation_ = why;
    for (PState& s : p_)
        s = PState::Done;
    if (!rows_.empty()) emit dataChanged(index(0, kP), index(rowCount() - 1, kP));
}

int IdentifyTable::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(order_.size());
}

int IdentifyTable::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kColumnCount;
}

QVariant IdentifyTable::headerData(int section, Qt::Orientation orientation, int role) const {
    static const char* const kHeads[kColumnCount] = {
        "Distribution", "Parameters", "AD", "p", "LRT p", "AICc", "Weight", "Rank"};
    static const char* const kTips[kColumnCount] = {
        nullptr,
        "In the order of the distribution's fields; \"Minimum\" is the threshold",
        "Anderson-Darling A\u00B2: not comparable across families",
        "Simulated p of the AD test (parametric bootstrap)",
        "Likelihood-ratio test against the same family without threshold",
        "Corrected Akaike information criterion: lower is better",
        "Akaike weight: the share of support among the ranked rows",
        "By AICc"};
    if (orientation != Qt::Horizontal || section < 0 || section >= kColumnCount) return {};
    if (role == Qt::DisplayRole) return QString(kHeads[section]);
    if (role == Qt::ToolTipRole && kTips[section]) return QString(kTips[section]);
    return {};
}

QString IdentifyTable::Text(int shown, int column) const {
    const m_Identify::RowResult& r = Fit(shown);
    const bool ok = r.Status == "ok";
    switch (column) {
    case kName:
        return Q(r.Name);
    case kParams: {
        if (!ok) return Q(r.Status);
        const IdentifyText::WindowParams w = IdentifyText::ParamsOf(r.F.C, pattern_);
        const Families::Family* f = Families::ByName(w.Name);
        QString text;
        for (int i = 0; i < w.Count; ++i) {
            if (i) text += "  ";
            text += QString(f->Slots[i].Label) + " " + Q(w.Texts[i]);
        }
        return text;
    }
    case kAD:
        if (ok && a2_[FitRow(shown)] == PState::Waiting) return QString::fromUtf8("\u2026");
        return ok ? Number(r.A2, "0.000") : QString();
    case kP:
        if (!ok) return {};
        switch (p_[FitRow(shown)]) {
        case PState::Waiting:
            return QString::fromUtf8("\u2026");
        case PState::Stopped:
            return "stopped";
        case PState::Done:
            break;
        }
        return std::isnan(r.P) ? QString("n/a") : Q(IdentifyText::PText(r.P));
    case kLrtP:
        return Q(IdentifyText::PText(r.LrtP));
    case kAICc:
        return ok ? Number(r.AICc, "0.00") : QString();
    case kWeight:
        return ok ? Number(r.Weight, "0.000") : QString();
    case kRank:
        return r.Rank > 0 ? QString::number(r.Rank) : QString();
    default:
        return {};
    }
}

QString IdentifyTable::Tip(int shown, int column) const {
    const m_Identify::RowResult& r = Fit(shown);
    if (r.Status != "ok") return Q("No fit: " + r.Status + ".");
    if (column == kP && !std::isnan(r.PTable))
        return Q("Table p (D'Agostino & Stephens): " + IdentifyText::PText(r.PTable));
    if (column == kP && std::isnan(r.P)) return noSimulation_;
    if (column == kName && !r.F.Type.empty()) return Q("Johnson " + r.F.Type);
    if (column == kParams) return Text(shown, column);
    return {};
}

QVariant IdentifyTable::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount() || index.column() >= kColumnCount) return {};
    const int shown = index.row(), column = index.column();
    switch (role) {
    case Qt::DisplayRole:
        return Text(shown, column);
    case Qt::ToolTipRole: {
        const QString tip = Tip(shown, column);
        return tip.isEmpty() ? QVariant() : QVariant(tip);
    }
    case Qt::ForegroundRole:
        // A row without a fit is greyed: there, but not to be chosen.
        return Usable(shown) ? QVariant() : QVariant(QBrush(QColor(128, 128, 128)));
    case Qt::TextAlignmentRole:
        return column >= kAD ? QVariant(int(Qt::AlignRight | Qt::AlignVCenter)) : QVariant();
    default:
        return {};
    }
}
