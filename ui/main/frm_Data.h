// The "Fit to Data" dialog: measurements pasted or read from a text or CSV
// file, with n and the sample moments shown as they are typed, the column to
// read when there are several, and the spec limits to draw the fit against.
// OK keeps the dialog open with a message while the text cannot be fitted (the
// line that failed is selected); the window reads Result() and Limits() once
// the dialog is accepted. A big file is not put into the text field: its first
// lines are shown, and all its values are read from the file.
#pragma once

#include "ui/main/DataStep.h"

#include <QDialog>

#include <array>
#include <optional>
#include <string>

class QComboBox;
class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

class frm_Data : public QDialog {
    Q_OBJECT

  public:
    explicit frm_Data(QWidget* parent = nullptr);

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
    // Reads a file into the text field, or its first lines for a big one; a
    // message when it cannot be read.
    void OpenFile(const QString& path);
    void accept() override;

  protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    // Reads the text or the file with the chosen column and shows the outcome.
    DataStep::Sample Refresh();
    void ShowColumns(const std::vector<std::string>& names);
    void LeaveFile();
    void Warn(const std::string& text);

    DataStep::Sample result_;
    DataStep::Sample fileSample_;           // the big file's values
    std::optional<std::string> fileColumn_; // the column they were read from
    QString folder_;                        // where the last file was opened
    QString file_;
    bool loading_ = false; // the text field is being filled by the program
};
