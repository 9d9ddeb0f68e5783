// dlgSaveColorScheme: the modal dialog of Save As, asking for a colour scheme's name.
#pragma once

#include <windows.h>

#include <string>

#include "editor/session.h"

namespace tq::win {

// Shows the dialog centred over `editor`, with the captions of the thread's language.
// Returns the accepted name, or "" on Cancel.
std::string AskSchemeName(HWND editor, const SaveSchemeRequest& request);

}  // namespace tq::win
