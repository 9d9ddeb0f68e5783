// modCommonDialog: the standard open and save dialogs, for the editor's import and
// export of logical colours.
#pragma once

#include <windows.h>

#include <string>

namespace tq::win {

// `filter` is in the "|" form ("Ini Files (*.ini)|*.ini|All Files (*.*)|*.*|").
// `initial_folder` is where the dialog starts; it is cleared once a usable name came back.
// Both return "" when the user cancelled or the dialog failed.
std::string ShowOpen(HWND owner, const std::string& title, const std::string& filter, const std::string& default_ext,
                     bool must_exist, bool multi_select, std::string& initial_folder);
// Proves the chosen folder writable (a probe file name + ".tmp", created and deleted)
// before the name is accepted; a refusal is shown to the user and gives "".
std::string ShowSave(HWND owner, const std::string& title, const std::string& filter, const std::string& default_ext,
                     std::string& initial_folder);

}  // namespace tq::win
