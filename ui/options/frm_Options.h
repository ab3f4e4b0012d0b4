// The options dialog: number format, x range, tick counts, chart colours, and
// the capability method and confidence level.
// It edits the program-wide display options and writes them to the settings
// store when Apply is pressed; the main window redraws on Applied().
//
// Apply keeps the dialog open, so the redrawn chart can be judged and the
// options tuned again; the Cancel button then reads "Close". Cancel (also
// Escape and the window's close box) puts the fields back as they were when
// the dialog was shown, or last applied, and hides it.
#pragma once

#include <QDialog>

#include <cstdint>

class ColorPicker;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QRadioButton;
class SpinButton;

class frm_Options : public QDialog {
    Q_OBJECT

  public:
    // Builds the controls and runs Form_Load on the current display options.
    explicit frm_Options(QWidget* parent = nullptr);

    QRadioButton* ob_Decimal = nullptr;
    QRadioButton* ob_Scientific = nullptr;
    QComboBox* dd_Decimal = nullptr;
    QRadioButton* ob_StDev = nullptr;
    QLineEdit* tb_NumStDev = nullptr;
    QRadioButton* ob_Endpoints = nullptr;
    QLineEdit* tb_XMin = nullptr;
    QLineEdit* tb_XMax = nullptr;
    QLineEdit* tb_XTicks = nullptr;
    SpinButton* sb_XTicks = nullptr;
    QLineEdit* tb_YTicks = nullptr;
    SpinButton* sb_YTicks = nullptr;
    ColorPicker* cp_Background = nullptr;
    ColorPicker* cp_InSpec = nullptr;
    ColorPicker* cp_OutSpec = nullptr;
    // The capability figures shown (percentile or Z-score) and the level of their intervals.
    QComboBox* dd_CapMethod = nullptr;
    QComboBox* dd_ConfLevel = nullptr;
    QCheckBox* cb_ChartTitles = nullptr;
    QPushButton* but_Apply = nullptr;
    QPushButton* but_Cancel = nullptr;

    // Fills every control from the display options.
    void Form_Load();

    // The event procedures. The lost-focus checks show their message, put the
    // focus back into the box and return false when the text fails.
    void but_Apply_Click();
    void but_Cancel_Click();
    bool tb_NumStDev_LostFocus();
    bool tb_XMin_LostFocus();
    bool tb_XMax_LostFocus();
    bool tb_XTicks_LostFocus();
    bool tb_YTicks_LostFocus();
    void sb_XTicks_Change();
    void sb_YTicks_Change();
    void ob_StDev_Click();
    void ob_Endpoints_Click();

  signals:
    // New options are in memory (and stored); the chart should be redrawn.
    void Applied();

  public slots:
    void reject() override;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;

  private:
    // What Cancel goes back to.
    struct Snapshot {
        bool Scientific = true;
        int DecimalIndex = 6;
        bool Endpoints = false;
        QString NumStDev, XMin, XMax, XTicks, YTicks;
        uint32_t Background = 0, InSpec = 0, OutSpec = 0;
        int CapMethod = 0, ConfLevel = 0;
    };

    void BuildControls();
    void ConnectEvents();
    bool CheckBox(QLineEdit* box);
    bool RunPendingCheck();
    bool ShowFailure(QLineEdit* box, const char* message);
    void ReturnFocus(QLineEdit* box);
    void EnableRangeFields();
    Snapshot Take() const;
    void Restore(const Snapshot& s);

    Snapshot shown_;
    QLineEdit* pendingCheck_ = nullptr; // box that lost the focus, checked once events settle
    bool refocusing_ = false;
};
