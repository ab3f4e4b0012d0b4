// Keyboard mnemonics for the window's captions. The captions change with the
// distribution and the mode, so their marked letters are handed out afresh
// each time: in order, each caption takes its first letter that no earlier
// caption (nor the menu bar) has taken, and a caption with no free letter
// goes without.
#pragma once

#include <string>
#include <vector>

namespace Mnemonics {

// The captions with "&" before each one's letter; `taken` holds the letters
// already in use (upper case), e.g. the menu bar's.
std::vector<std::string> Mark(const std::vector<std::string>& captions, std::string taken);

// The caption as the user reads it: the marker removed ("&&" stays one "&").
std::string Plain(const std::string& caption);

} // namespace Mnemonics
