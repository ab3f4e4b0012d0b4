#include "ui/main/frm_About2.h"

#include "support/ErrorTrap.h"
#include "support/Version.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
constexpr const char* kForm_Load = "Pondera.frm_About2.Form_Load";
constexpr const char* kBut_OK_Click = "Pondera.frm_About2.but_OK_Click";
} // namespace

frm_About2::frm_About2(QWidget* parent) : QDialog(parent) {
    setObjectName("frm_About2");
    support::Trap(kForm_Load, [&] {
        setWindowTitle("About Pondera");
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(24, 20, 24, 16);
        layout->setSpacing(8);

        lb_Title = new QLabel("Pondera");
        lb_Title->setObjectName("lb_Title");
        QFont big = lb_Title->font();
        big.setPointSizeF(big.pointSizeF() * 1.8);
        big.setBold(true);
        lb_Title->setFont(big);
        layout->addWidget(lb_Title);

        lb_Version = new QLabel(VersionText());
        lb_Version->setObjectName("lb_Version");
        layout->addWidget(lb_Version);

        lb_Description =
            new QLabel("Draws a probability density against your specification limits and shows "
                       "its moments and the fraction nonconforming.");
        lb_Description->setObjectName("lb_Description");
        lb_Description->setWordWrap(true);
        lb_Description->setFixedWidth(360);
        layout->addWidget(lb_Description);

        auto* copyright = new QLabel("\u00a9 Qarvanto Labs, LLC");
        copyright->setEnabled(false);
        layout->addWidget(copyright);

        auto* row = new QHBoxLayout;
        row->addStretch();
        but_OK = new QPushButton("OK");
        but_OK->setObjectName("but_OK");
        but_OK->setDefault(true);
        row->addWidget(but_OK);
        layout->addLayout(row);
        connect(but_OK, &QPushButton::clicked, this, [this] { but_OK_Click(); });
        // The wrapped description sets the height: let the layout size the box.
        layout->setSizeConstraint(QLayout::SetFixedSize);
    });
}

QString frm_About2::VersionText() {
    return QStringLiteral("Version ") + QString::fromLatin1(support::kVersion);
}

void frm_About2::but_OK_Click() {
    support::Trap(kBut_OK_Click, [&] { accept(); });
}
