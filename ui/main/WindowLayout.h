// The main window's controls and menus, created, named, laid out and wired to
// their handlers once by frm_Pondera's constructor; and the look of a locked field.
#pragma once

#include "ui/main/frm_Pondera.h"

class QLineEdit;
class QEvent;
class QObject;
class QString;
class PictureBox;

namespace WindowLayout {

// Every control of the window, in the left column of titled frames, the
// density chart with its marker strip, and the status bar; a caption label is
// its field's buddy. The fields are one table in WindowLayout.cpp: a new field
// is one row there (and its member and handlers in frm_Pondera).
void Build(frm_Pondera& w);
// File, Edit and View with their items.
void BuildMenus(frm_Pondera& w);
// Shortcuts, the Tab order, which surfaces take the focus, accessible names,
// and the captions' mnemonics.
void SetKeyboard(frm_Pondera& w);
// Hands the captions' mnemonic letters out afresh (after they changed).
void MarkMnemonics(frm_Pondera& w);
// Every handler connected to its control's signal, each run as one user
// action; focus events go to the window's one event filter.
void Connect(frm_Pondera& w);
// The GotFocus handler of a watched control, or nullptr.
using FocusHandler = void (frm_Pondera::*)();
FocusHandler FocusHandlerOf(const frm_Pondera& w, const QObject* watched);
// The parameter rows' captions, visibility and default texts (a row without a
// caption is hidden), with the mnemonics handed out afresh.
void ShowParamRows(frm_Pondera& w, const std::array<PlotPipeline::ParamRow, 4>& rows);
// Moments mode or back: the list, the parameter captions, which boxes are inputs
// and which outputs, and the controls only moments mode uses.
void ShowMode(frm_Pondera& w, bool byMoments);
// A focus change, seen by the window's event filter, run as the field's GotFocus
// (or tb_Param1's LostFocus while the window is not unloaded) handler.
void RouteFocus(frm_Pondera& w, QObject* watched, const QEvent& event, bool unloaded);
// A limit's mnemonic (Alt+L, Alt+T, Alt+U) ticks it as a click does and puts the
// focus in its value, selected to be typed over; true when it was one.
bool LimitMnemonic(frm_Pondera& w, QObject* watched, const QEvent& event);
// A caption printed reading upward, centred on a small surface.
void PaintUpright(PictureBox& pb, const QString& text, int size);
// Inputs are white; outputs and locked fields read-only in the button-face colour.
void SetBoxLocked(QLineEdit* box, bool locked);

} // namespace WindowLayout
