// The main window's controls and menus, created, named and laid out once by
// frm_Pondera's constructor; and the look of a locked field.
#pragma once

class QLineEdit;
class frm_Pondera;

namespace WindowLayout {

// Every control of the window, in the left column of titled frames, the
// density chart with its marker strip, and the status bar.
void Build(frm_Pondera& w);
// File, Edit and View with their items.
void BuildMenus(frm_Pondera& w);
// Inputs are white; outputs and locked fields read-only in the button-face colour.
void SetBoxLocked(QLineEdit* box, bool locked);

} // namespace WindowLayout
