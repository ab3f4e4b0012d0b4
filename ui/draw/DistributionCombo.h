// dd_Distribution: a drop-down list of distribution names, each with a small
// picture of its density drawn by the engine. When Locked the user cannot
// change the choice (the program still can) and the box shows the button-face
// look.
#pragma once

#include <QComboBox>
#include <QIcon>
#include <QString>

class DistributionCombo : public QComboBox {
    Q_OBJECT

  public:
    explicit DistributionCombo(QWidget* parent = nullptr);

    // Adds a name with its picture (no picture for an unknown name).
    void AddDistribution(const QString& name);
    // Clears the list and adds the names in order.
    void SetDistributions(const QStringList& names);
    // The text of the selected item ("" when none).
    QString Text() const { return currentText(); }
    // Selects the item with this text; false when it is not in the list.
    bool SelectText(const QString& name);

    bool Locked() const { return locked_; }
    void SetLocked(bool locked);

    // The picture of one of the nine distributions, size in device pixels.
    static QIcon DistributionIcon(const QString& name, QSize size = QSize(32, 18));

    // Does nothing while Locked.
    void showPopup() override;

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void ApplyLook();

    bool locked_ = false;
};
