#include "ui/main/SessionView.h"

#include "settings/Session.h"
#include "support/ErrorTrap.h"
#include "support/UserFace.h"
#include "ui/draw/DistributionCombo.h"
#include "ui/main/PlotPipeline.h"
#include "ui/main/frm_Pondera.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace SessionView {

namespace {

constexpr const char* kModule = "Pondera.SessionView";

QString Q(const std::string& s) {
    return QString::fromStdString(s);
}
std::string S(const QString& s) {
    return s.toStdString();
}

struct Limit {
    QCheckBox* Check;
    QLineEdit* Box;
};
std::array<Limit, 3> Limits(const frm_Pondera& w) {
    return {{{w.cb_LSL, w.tb_LSL}, {w.cb_Target, w.tb_Target}, {w.cb_USL, w.tb_USL}}};
}
std::array<QLineEdit*, 4> Params(const frm_Pondera& w) {
    return {w.tb_Param1, w.tb_Param2, w.tb_Param3, w.tb_Param4};
}
std::array<QLineEdit*, 4> Moments(const frm_Pondera& w) {
    return {w.tb_Mean, w.tb_StDev, w.tb_Skewness, w.tb_Kurtosis};
}

// Whether the plot would take the parameter fields as they are, asked without
// showing the checks' messages.
bool ParamsAccepted(const frm_Pondera& w) {
    PlotPipeline::PlotInputs in;
    in.Name = S(w.dd_Distribution->Text());
    for (int i = 0; i < 4; ++i)
        in.ParamTexts[i] = S(Params(w)[i]->text());
    in.Param3Shown = !w.tb_Param3->isHidden();
    support::RecordingFace quiet;
    support::UserFace& previous = support::Face();
    support::SetFace(&quiet);
    const bool ok = PlotPipeline::CheckParamTexts(in).Ok &&
                    PlotPipeline::CheckParamRules(in.Name, PlotPipeline::ParamValues(in)).Ok;
    support::SetFace(&previous);
    return ok;
}

} // namespace

void Remember(const frm_Pondera& w) {
    support::TrapIgnore([&] {
        Session::State s;
        const bool byMoments = w.cb_DrawbyMoments->isChecked();
        s.ByMoments = byMoments;
        if (!byMoments) {
            s.Distribution = S(w.dd_Distribution->Text());
            for (int i = 0; i < 4; ++i)
                if (!Params(w)[i]->isHidden()) s.Params[i] = S(Params(w)[i]->text());
        }
        for (int i = 0; i < 3; ++i) {
            s.Ticked[i] = Limits(w)[i].Check->isChecked();
            s.Limits[i] = S(Limits(w)[i].Box->text());
        }
        if (byMoments) {
            for (int i = 0; i < 4; ++i)
                s.Moments[i] = S(Moments(w)[i]->text());
            s.Locks = {w.cb_LockSkewness->isChecked(), w.cb_LockKurtosis->isChecked()};
        }
        Session::Save(s);
    });
}

void Restore(frm_Pondera& w) {
    support::Trap({kModule, __func__}, [&] {
        const Session::State s = Session::Load();
        const std::array<Limit, 3> limits = Limits(w);
        for (int i = 0; i < 3; ++i) {
            const Limit& limit = limits[i];
            if (s.Limits[i]) limit.Box->setText(Q(*s.Limits[i]));
            if (s.Ticked[i]) {
                limit.Check->setChecked(*s.Ticked[i]);
                limit.Box->setEnabled(*s.Ticked[i]);
            }
        }
        if (s.ByMoments.value_or(false)) {
            for (int i = 0; i < 4; ++i)
                if (s.Moments[i]) Moments(w)[i]->setText(Q(*s.Moments[i]));
            w.cb_DrawbyMoments->setChecked(true);
            w.cb_DrawbyMoments_Click();
            const std::pair<QCheckBox*, void (frm_Pondera::*)()> locks[] = {
                {w.cb_LockSkewness, &frm_Pondera::cb_LockSkewness_Click},
                {w.cb_LockKurtosis, &frm_Pondera::cb_LockKurtosis_Click}};
            for (int i = 0; i < 2; ++i) {
                if (!s.Locks[i]) continue;
                locks[i].first->setChecked(*s.Locks[i]);
                (w.*locks[i].second)();
            }
        } else {
            const int index = s.Distribution ? w.dd_Distribution->findText(Q(*s.Distribution)) : -1;
            if (index >= 0) {
                w.dd_Distribution->setCurrentIndex(index);
                w.dd_Distribution_Change();
            }
            const std::array<QString, 4> defaults = {w.tb_Param1->text(), w.tb_Param2->text(),
                                                     w.tb_Param3->text(), w.tb_Param4->text()};
            for (int i = 0; i < 4; ++i)
                if (s.Params[i] && !Params(w)[i]->isHidden())
                    Params(w)[i]->setText(Q(*s.Params[i]));
            // Parameters that depend on each other (a minimum below a maximum) go
            // back to the distribution's defaults together.
            if (!ParamsAccepted(w))
                for (int i = 0; i < 4; ++i)
                    Params(w)[i]->setText(defaults[i]);
        }
        w.Plot();
    });
}

} // namespace SessionView
