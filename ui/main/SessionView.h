// The window's side of the remembered session: what it shows is kept at quit,
// and put back (then plotted) at the next start.
#pragma once

class frm_Pondera;

namespace SessionView {

// Stores the window's session; a store that refuses is left as it was (it logs
// its own failures), quitting goes on.
void Remember(const frm_Pondera& w);
// Puts the stored session into the window and plots. Entries that are missing
// or damaged, or parameters the distribution does not accept, keep the start-up
// state, without a message.
void Restore(frm_Pondera& w);

} // namespace SessionView
