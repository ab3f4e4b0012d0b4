// The "Fit to Data" dialog: measurements pasted or read from a text or CSV
// file, with n and the sample moments shown as they are typed. OK keeps the
// dialog open with a message while the text cannot be fitted (the line that
// failed is selected); the window reads Result() once the dialog is accepted.
#pragma once

#include "ui/main/DataStep.h"

#include <QDialog>

class QDialogButtonBox;
class QLabel;
class QPlainTextEdit;
class QPushButton;

class frm_Data : public QDialog {
    Q_OBJECT

  public:
    explicit frm_Data(QWidget* parent = nullptr);

    QPlainTextEdit* tb_Data = nullptr;
    QPushButton* but_Open = nullptr;
    QLabel* lb_Summary = nullptr;
    QDialogButtonBox* but_Buttons = nullptr;

    // The sample last accepted.
    const DataStep::Sample& Result() const { return result_; }

    void tb_Data_Change();
    void but_Open_Click();
    // Reads a file into the text field; a message when it cannot be read.
    void OpenFile(const QString& path);
    void accept() override;

  private:
    DataStep::Sample result_;
    QString folder_; // where the last file was opened
};
