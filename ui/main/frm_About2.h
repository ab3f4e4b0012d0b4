// The About box: the product's name, its version and what it is for.
#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

class frm_About2 : public QDialog {
    Q_OBJECT
  public:
    explicit frm_About2(QWidget* parent = nullptr);

    static QString VersionText(); // "Version 1.0.0"

    QLabel* lb_Title = nullptr;
    QLabel* lb_Version = nullptr;
    QLabel* lb_Description = nullptr;
    QPushButton* but_OK = nullptr;

  private:
    void but_OK_Click();
};
