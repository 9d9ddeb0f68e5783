#include "support/localization.h"

#include <algorithm>

#include "support/builtin_strings.h"
#include "support/platform.h"

namespace tq {

namespace {

struct LanguageState {
  Platform* platform = nullptr;
  const void* library = nullptr;
};

thread_local LanguageState t_language;

}  // namespace

std::string_view BuiltinString(int id) {
  const BuiltinStringEntry* end = kBuiltinStrings + kBuiltinStringCount;
  const BuiltinStringEntry* it =
      std::lower_bound(kBuiltinStrings, end, id, [](const BuiltinStringEntry& e, int v) { return e.id < v; });
  return it != end && it->id == id ? std::string_view(it->text) : std::string_view();
}

bool IsPlainLanguageCode(std::string_view code) {
  if (code.empty() || code.size() > 32) return false;
  return std::all_of(code.begin(), code.end(), [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
  });
}

std::string LanguageLibraryPath(const std::string& folder, const std::string& code) {
  return folder + "\\" + code + "\\ColorSettingTool_" + code + ".dll";
}

void LoadLanguageLibraryFrom(Platform& platform, const std::string& folder, const std::string& language) {
  const void* library = nullptr;
  if (IsPlainLanguageCode(language)) library = platform.LoadLibraryFile(LanguageLibraryPath(folder, language));
  if (!library) library = platform.LoadLibraryFile(LanguageLibraryPath(folder, "EN"));
  if (!library) return;  // an earlier library stays in use, or none
  t_language.platform = &platform;
  t_language.library = library;
}

void LoadLanguageLibrary(Platform& platform, const std::string& language) {
  LoadLanguageLibraryFrom(platform, platform.ModuleFolder(), language);
}

bool HasLanguageLibrary() { return t_language.library != nullptr; }

std::string GetString(int id) {
  if (t_language.library) {
    std::string text = t_language.platform->LibraryString(t_language.library, id);
    if (!text.empty()) return text;
  }
  return std::string(BuiltinString(id));
}

}  // namespace tq
