// Texts by string ID, from the language library chosen by the host's language,
// then the English library, then the built-in English table.
//
// The loaded texts are per thread (support/thread_context.h): each user-interface
// thread has its own language. Libraries are never unloaded.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

namespace tq {

class Platform;

// True for a code that can safely name a folder and a file: letters, digits, "-", "_",
// 1 to 32 characters. Anything else is treated as a missing language.
bool IsPlainLanguageCode(std::string_view code);

// folder + "\" + code + "\ColorSettingTool_" + code + ".dll"
std::string LanguageLibraryPath(const std::string& folder, const std::string& code);

// The texts of one language library, read once when it loads: a lookup then needs
// neither the library nor the platform that loaded it.
class LanguageTexts {
 public:
  // Loads the library of `language` beside the control library (Platform::ModuleFolder),
  // falling back to EN; when both fail the texts loaded before stay.
  void Load(Platform& platform, const std::string& language);
  // The same with an explicit folder (the control library's folder, without trailing "\").
  void LoadFrom(Platform& platform, const std::string& folder, const std::string& language);
  // The text of a string ID: loaded library, else built-in English, else "".
  std::string Get(int id) const;

 private:
  std::unordered_map<int, std::string> texts_;
};

// The text of a string ID in this thread's language (ThreadContext), else built-in English.
// For the Windows side; the portable core is handed the LanguageTexts it speaks.
std::string GetString(int id);

}  // namespace tq
