// The control's one message box: the standard Windows box with the OK, Yes and No
// buttons captioned in the user's language.
#pragma once

#include <string>

namespace tq::win {

// Shows a modal message box owned by the active window. `buttons` is the button set
// (0 OK, 4 Yes/No), `style` the icon and default-button bits; on return `buttons`
// holds both, as passed to the system. Returns the box's result (1 OK, 6 Yes, 7 No),
// or 0 when the box could not be shown.
int ShowMessage(const std::string& prompt, int& buttons, int style, const std::string& title);

}  // namespace tq::win
