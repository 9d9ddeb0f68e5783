#include "support/localization.h"

#include <algorithm>

#include "support/builtin_strings.h"
#include "support/platform.h"
#include "support/thread_context.h"

namespace tq {

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

void LanguageTexts::LoadFrom(Platform& platform, const std::string& folder, const std::string& language) {
  const void* library = nullptr;
  if (IsPlainLanguageCode(language)) library = platform.LoadLibraryFile(LanguageLibraryPath(folder, language));
  if (!library) library = platform.LoadLibraryFile(LanguageLibraryPath(folder, "EN"));
  if (!library) return;  // an earlier library stays in use, or none
  texts_.clear();
  for (std::size_t i = 0; i < kBuiltinStringCount; ++i) {
    std::string text = platform.LibraryString(library, kBuiltinStrings[i].id);
    if (!text.empty()) texts_.emplace(kBuiltinStrings[i].id, std::move(text));
  }
}

void LanguageTexts::Load(Platform& platform, const std::string& language) {
  LoadFrom(platform, platform.ModuleFolder(), language);
}

std::string LanguageTexts::Get(int id) const {
  if (const auto it = texts_.find(id); it != texts_.end()) return it->second;
  return std::string(BuiltinString(id));
}

std::string GetString(int id) {
  if (const ThreadContext* context = ThreadContext::Find()) return context->Texts().Get(id);
  return std::string(BuiltinString(id));
}

}  // namespace tq
