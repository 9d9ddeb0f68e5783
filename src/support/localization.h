// Texts by string ID, from the language library chosen by the host's language,
// then the English library, then the built-in English table.
//
// The loaded library is per thread, as all module state of the control: each
// user-interface thread has its own language. Libraries are never unloaded.
#pragma once

#include <string>
#include <string_view>

namespace tq {

class Platform;

// True for a code that can safely name a folder and a file: letters, digits, "-", "_",
// 1 to 32 characters. Anything else is treated as a missing language.
bool IsPlainLanguageCode(std::string_view code);

// folder + "\" + code + "\ColorSettingTool_" + code + ".dll"
std::string LanguageLibraryPath(const std::string& folder, const std::string& code);

// Loads the library of `language` beside the control library (Platform::ModuleFolder),
// falling back to EN; when both fail the thread keeps the library it had.
void LoadLanguageLibrary(Platform& platform, const std::string& language);
// The same with an explicit folder (the control library's folder, without trailing "\").
void LoadLanguageLibraryFrom(Platform& platform, const std::string& folder, const std::string& language);


// The text of a string ID: loaded library, else built-in English, else "".
std::string GetString(int id);

}  // namespace tq
