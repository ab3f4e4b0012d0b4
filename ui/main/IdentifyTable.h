// The identification table of the data dialog, without widgets: the nine fits
// of a sample, best first, each with its parameters in the window's own slots
// and number format, Anderson-Darling A2, its p-values, AICc, weight and rank.
// Rows that have no fit stay in the table, after the ranked ones, with their
// reason. A big sample's AD arrives row by row after its ranked fits, and the
// simulated p row by row while the fits are already shown.
#pragma once

#include "stats/m_Identify.h"

#include <QAbstractTableModel>

#include <array>
#include <string>
#include <vector>

class IdentifyTable : public QAbstractTableModel {
    Q_OBJECT

  public:
    enum Column { kName, kParams, kAD, kP, kLrtP, kAICc, kWeight, kRank, kColumnCount };
    // Where a row's AD or simulated p stands.
    enum class PState { Waiting, Done, Stopped };

    using QAbstractTableModel::QAbstractTableModel;

    // The rows of one identification, in m_Fits order; shown sorted by rank.
    // `pattern` is the window's number pattern (DisplayOptions::Pattern()).
    void SetRows(std::vector<m_Identify::RowResult> rows, const std::string& pattern);
    void Clear();
    // The AD and table p of m_Fits row `fitRow` have arrived.
    void SetA2(int fitRow, double a2, double pTable);
    // The simulated p of m_Fits row `fitRow` has arrived.
    void SetP(int fitRow, double p);
    // The simulation stopped: the rows still waiting say so.
    void StopWaiting();
    // No simulation for these rows; `why` is the p column's tool tip.
    void SkipSimulation(const QString& why);

    // The fit shown in row `shown`; the m_Fits row it is.
    const m_Identify::RowResult& Fit(int shown) const { return rows_[order_[shown]]; }
    int FitRow(int shown) const { return order_[shown]; }
    // The fit of m_Fits row `fitRow`.
    const m_Identify::RowResult& ByFitRow(int fitRow) const { return rows_[fitRow]; }
    bool Usable(int shown) const { return Fit(shown).Status == "ok"; }
    // Every row's AD and p are in (or the row has none).
    bool Complete() const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

  private:
    QString Text(int shown, int column) const;
    QString Tip(int shown, int column) const;
    int Shown(int fitRow) const;

    std::vector<m_Identify::RowResult> rows_;
    std::vector<int> order_; // shown row -> m_Fits row
    std::vector<PState> p_;  // by m_Fits row
    std::vector<PState> a2_; // by m_Fits row: Waiting or Done
    std::string pattern_;
    QString noSimulation_;
};

namespace IdentifyText {
// The window's family name and its parameter texts for a fitted curve, as the
// parameter fields take them: the window's pattern where it keeps six
// significant digits, else the same places in scientific form, so a rate of
// 3.4e-5 is not shown as 0.000034.
struct WindowParams {
    std::string Name; // "Normal", "LogNormal", ..., "Johnson SU"
    int Count = 0;    // slots the family uses
    std::array<std::string, 4> Texts;
};
WindowParams ParamsOf(const m_Curves::Curve& c, const std::string& pattern);
std::string ParamText(double v, const std::string& pattern);
// A p-value: "< 0.005" below that, else three decimals.
std::string PText(double p);
} // namespace IdentifyText
