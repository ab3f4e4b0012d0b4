// The "Fit to Data" dialog: measurements pasted or read from a text or CSV
// file, with n and the sample moments shown as they are typed, the column to
// read when there are several, and the spec limits to draw the fit against.
// Beside them the identification table: every fit of the sample, best first,
// shown as soon as the fits are done; the simulated p fills in row by row
// from a worker thread, with a progress bar and a button that stops it.
//
// OK keeps the dialog open with a message while the text cannot be fitted (the
// line that failed is selected); "Use this fit" (or Enter or a double click on
// a row) accepts with the selected row as ChosenFit(). The window reads
// Result(), Limits() and ChosenFit() once the dialog is accepted. A big file is
// not put into the text field: its first lines are shown, and all its values
// are read from the file.
#pragma once

#include "ui/main/DataStep.h"
#include "ui/main/IdentifyTable.h"

#include <QDialog>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

class ProbabilityChart;
class QComboBox;
class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QTableView;
class QTimer;

class frm_Data : public QDialog {
    Q_OBJECT

  public:
    explicit frm_Data(QWidget* parent = nullptr);
    ~frm_Data() override;

    QPlainTextEdit* tb_Data = nullptr;
    QLabel* lb_File = nullptr; // what is shown of a big file
    QLabel* lb_Column = nullptr;
    QComboBox* dd_Column = nullptr;
    QLineEdit* tb_LSL = nullptr;
    QLineEdit* tb_Target = nullptr;
    QLineEdit* tb_USL = nullptr;
    QPushButton* but_Open = nullptr;
    QLabel* lb_Summary = nullptr;
    QDialogButtonBox* but_Buttons = nullptr;
    QLabel* lb_Fits = nullptr;
    QTableView* tbl_Fits = nullptr;
    QProgressBar* pg_Simulation = nullptr;
    QPushButton* but_StopSimulation = nullptr;
    QPushButton* but_UseFit = nullptr;
    // Where the probability plot of the selected row goes.
    ProbabilityChart* pic_ProbabilityPlot = nullptr;

    IdentifyTable* Fits() const { return fits_; }
    // The row "Use this fit" accepted with; nullptr after OK.
    const m_Identify::RowResult* ChosenFit() const { return chosen_ ? &*chosen_ : nullptr; }
    // The identified sample, ascending (empty before the first fits arrive).
    const std::vector<double>& Sorted() const { return *sorted_; }
    // A simulation of p-values is running.
    bool Simulating() const;
    // The table shows the fits of the text and column as they are now.
    bool Settled() const;
    // The seed of the simulated p: the same answers as pondera-cli identify.
    static constexpr std::uint64_t kSeed = 1;
    // Typing waits this long before the sample is identified again.
    static constexpr int kSettleMs = 250;
    // Bigger samples show each row as it is fitted, and the ranked table before
    // its AD column.
    static constexpr std::size_t kRowByRow = 100000;
    // Bigger samples get no simulated p: a simulated sample would take seconds
    // to fit, and at that size the test rejects any real data anyway.
    static constexpr std::size_t kMaxSimulated = 200000;

    // The sample last accepted.
    const DataStep::Sample& Result() const { return result_; }
    // LSL, Target, USL as typed (empty: none); set before the dialog opens.
    std::array<QString, 3> Limits() const;
    void SetLimits(const std::array<QString, 3>& texts);

    // Files up to this size go into the text field whole; bigger ones are shown
    // by their first kPreviewLines lines.
    static constexpr qint64 kWholeFile = 1 << 20;
    static constexpr int kPreviewLines = 200;
    // The file whose values are read, empty while the text field holds them.
    const QString& FilePath() const { return file_; }

    void tb_Data_Change();
    void dd_Column_Click();
    void but_Open_Click();
    void but_UseFit_Click();
    void but_StopSimulation_Click();
    // The selection moved to shown row `row` of the table (-1: none).
    void tbl_Fits_RowChange(int row);
    // Draws the probability plot of m_Fits row `fitRow` of the table into
    // pic_ProbabilityPlot; -1 clears it.
    void ShowProbabilityPlot(int fitRow);
    // Reads a file into the text field, or its first lines for a big one; a
    // message when it cannot be read.
    void OpenFile(const QString& path);
    void accept() override;

  protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    struct Job; // one identification on the worker thread
    // Reads the text or the file with the chosen column and shows the outcome.
    DataStep::Sample Refresh();
    // Reads the sample again and identifies it on a worker thread.
    void IdentifyNow();
    void StartIdentify(std::vector<double> values);
    void StopJob();
    // Queued from the worker: the fits, one simulated p, the end.
    void ShowFits(int generation, std::vector<m_Identify::RowResult> rows,
                  std::shared_ptr<const std::vector<double>> sorted);
    void ShowRow(int generation, int fitRow, const m_Identify::RowResult& row);
    void ShowP(int generation, int fitRow, double p);
    void ShowMeasured(int generation, int fitRow, double a2, double pTable);
    void ShowSimulation(int generation);
    void SimulationEnded(int generation);
    void ShowProgress();
    // The sample as OK and "Use this fit" take it; false after a message.
    bool Checked(DataStep::Sample& s);
    void ShowColumns(const std::vector<std::string>& names);
    void LeaveFile();
    void Warn(const std::string& text);

    DataStep::Sample result_;
    DataStep::Sample fileSample_;           // the big file's values
    std::optional<std::string> fileColumn_; // the column they were read from
    QString folder_;                        // where the last file was opened
    QString file_;
    bool loading_ = false; // the text field is being filled by the program

    IdentifyTable* fits_ = nullptr;
    QTimer* settle_ = nullptr;   // typing has paused
    QTimer* progress_ = nullptr; // polls the simulation's progress
    std::optional<m_Identify::RowResult> chosen_;
    std::vector<m_Identify::RowResult> partial_; // the rows fitted so far
    std::shared_ptr<const std::vector<double>> sorted_;
    bool tableCurrent_ = false; // the table shows the text and column as they are
    int generation_ = 0;        // of the identification whose answers are shown
    std::shared_ptr<Job> job_;
    // Every worker started; a stopped one finishes its current step on its own
    // and is joined when the next starts or the dialog goes.
    std::vector<std::pair<std::thread, std::shared_ptr<Job>>> workers_;
};
