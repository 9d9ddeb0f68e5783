#include "colortable/clut_locations.h"

#include <algorithm>

#include "support/localization.h"
#include "support/string_ids.h"
#include "support/utils.h"

namespace tq {

std::string ReadDVHome(Platform& platform) { return platform.RegReadString(kDVHomeKey, "DVHOME"); }

std::string GetDVHome(Platform& platform, ColorTableState& state) {
  std::string home = ReadDVHome(platform);
  if (home.empty()) {
    int buttons = kMbOk;
    platform.ShowMessage(GetString(sid::kNoDVHome), buttons, kMbIconCritical, GetString(sid::kTitle));
    state.ClutError = true;
  }
  return home;
}

std::string GetDefaultClutFile(Platform& platform, ColorTableState& state) {
  const std::string home = GetDVHome(platform, state);
  return home.empty() ? std::string() : home + "\\etc\\" + kDefaultClutName;
}

std::string InstallationRoot(const std::string& home) {
  return home.size() >= 6 && home.compare(2, 4, "\\sc\\") == 0 ? home.substr(0, 6) : std::string();
}

void SetClutFileName(Platform& platform, ColorTableState& state, const std::string& value) {
  state.ClutFileName.clear();
  std::string path = value.empty() ? GetDefaultClutFile(platform, state) : value;
  if (!path.empty() && platform.FileExists(path)) path = platform.AbsolutePath(path);
  state.ClutFileName = path;
}

void SetColorSchemeFolder(ColorSchemeModule& module, const std::string& folder) {
  if (!folder.empty()) module.scheme_folder = folder + "\\";
}

std::string GetColorSchemeFolder(const ColorSchemeModule& module) { return module.scheme_folder; }

namespace {

bool VersionsDiffer(Platform& platform, const std::string& a, const std::string& b) {
  bool found = false;
  return GetClutVersion(platform, a, found) != GetClutVersion(platform, b, found);
}

// File names sorted as a user reads them, without regard to case.
void SortNames(Platform& platform, std::vector<std::string>& names) {
  std::vector<std::pair<std::string, std::string>> keyed;
  for (auto& name : names) keyed.emplace_back(platform.UpperCase(name), std::move(name));
  std::sort(keyed.begin(), keyed.end());
  for (std::size_t i = 0; i < keyed.size(); ++i) names[i] = std::move(keyed[i].second);
}

}  // namespace

int SyncClutFiles(Platform& platform, const std::string& global_folder, const std::string& scheme_folder) {
  if (!platform.FolderExists(global_folder)) return 0;
  std::vector<std::string> names = platform.ListFileNames(global_folder);
  // Sorted so that which 50 are taken does not depend on the file system's order.
  SortNames(platform, names);
  std::vector<std::string> tables, references;
  for (const std::string& name : names) {
    if (static_cast<int>(tables.size()) >= kMaxColorSchemes) break;
    if (!IsClutFileName(name, true)) continue;
    tables.push_back(name);
    // The reference of the full path: a dot in a folder name makes it name nothing.
    const std::string reference = GetReferenceClutFile(platform, global_folder + name, true, true);
    if (!reference.empty()) references.push_back(reference);
  }
  if (!CreateFolderViaHost(platform, scheme_folder)) return 0;
  int copied = 0;
  for (const std::string& name : tables) {
    const std::string target = scheme_folder + name;
    if (platform.FileExists(target)) continue;
    if (!platform.CopyFileTo(global_folder + name, target, false)) return copied;
    ++copied;
    platform.HostCall(kHostFileNotice, target);
  }
  for (const std::string& source : references) {
    const std::string target = scheme_folder + FileNameOf(source);
    if (!platform.FileExists(target)) {
      if (!platform.CopyFileTo(source, target, true)) return copied;
      ++copied;
    } else if (VersionsDiffer(platform, source, target)) {
      if (!platform.CopyFileTo(source, target, true)) return copied;
      ++copied;
      platform.HostCall(kHostFileNotice, target);
    }
  }
  return copied;
}

int SyncClutFilesFromGlobalToApp(Platform& platform, const ColorSchemeModule& module, ColorTableState& state) {
  const std::string home = GetDVHome(platform, state);
  if (home.empty()) return 0;
  return SyncClutFiles(platform, home + "\\etc\\", module.scheme_folder);
}

void SetIniPaths(Platform& platform, ColorSchemeModule& m, const std::string& app_folder,
                 const std::string& user_folder) {
  // Read without GetDVHome: a missing value has already been reported by this start-up.
  const std::string root = InstallationRoot(ReadDVHome(platform));
  m.factory_ini = root.empty() ? std::string() : root + "tq_lib\\defaults\\misc\\default_FrameWindow.ini";
  m.app_ini = app_folder + "FrameWindow.ini";
  m.user_ini = user_folder + "FrameWindow.ini";
}

std::string InitColorSchemes(Platform& platform, ColorSchemeModule& module, ColorTableState& state,
                             const std::string& app_folder, const std::string& user_folder,
                             const std::string& clut_path) {
  SetColorSchemeFolder(module, app_folder + "ColorSchemes");
  SyncClutFilesFromGlobalToApp(platform, module, state);
  SetIniPaths(platform, module, app_folder, user_folder);
  std::string result = clut_path;
  if (result.empty()) {
    result = GetIniClutFile(platform, module, true);
    if (!result.empty() && !platform.FileExists(result)) {
      result = GetDefaultClutFile(platform, state);
      if (!result.empty() && !platform.FileExists(result)) result.clear();
    }
  }
  SetClutFileName(platform, state, result);
  return result;
}

std::string GetIniClutFile(Platform& platform, ColorSchemeModule& m, bool remember) {
  std::string taken;
  for (const std::string* ini : {&m.user_ini, &m.app_ini, &m.factory_ini}) {
    if (ini->empty() || !taken.empty()) continue;
    const std::string value = platform.IniRead("COLORSCHEMES", "ClutFile", *ini);
    if (!value.empty() && platform.FileExists(m.scheme_folder + value)) taken = value;
  }
  const std::string result = m.scheme_folder + (taken.empty() ? std::string(kDefaultClutName) : taken);
  if (remember) m.remembered_path = result;
  return result;
}

void SetRememberedClutFile(ColorSchemeModule& module, const std::string& path) { module.remembered_path = path; }

bool SaveIniClutFile(Platform& platform, ColorSchemeModule& m) {
  const IniMutexLock lock(platform);
  if (!lock.held()) return false;
  const std::string current = GetIniClutFile(platform, m, false);
  if (EqualsIgnoreCase(platform, current, m.remembered_path) || m.app_ini.empty()) return false;
  platform.IniWrite("COLORSCHEMES", "ClutFile", FileNameOf(m.remembered_path), m.app_ini);
  platform.HostCall(kHostFileNotice, m.app_ini);
  return true;
}

void LoadColorSchemeList(Platform& platform, ColorSchemeModule& m) {
  m.schemes.clear();
  std::vector<std::string> names = platform.ListFileNames(m.scheme_folder);
  SortNames(platform, names);
  for (const std::string& name : names) {
    if (static_cast<int>(m.schemes.size()) >= kMaxColorSchemes) break;
    if (IsClutFileName(name, false)) m.schemes.push_back(m.scheme_folder + name);
  }
}

const std::vector<std::string>& ColorSchemes(const ColorSchemeModule& module) { return module.schemes; }

std::string GetColorSchemeAt(const ColorSchemeModule& module, int position) {
  const auto& schemes = module.schemes;
  return position >= 0 && position < static_cast<int>(schemes.size()) ? schemes[position] : std::string();
}

bool FindColorScheme(Platform& platform, const ColorSchemeModule& module, const std::string& path, int& position) {
  const auto& schemes = module.schemes;
  // The same file however the two were spelled (relative parts, separators).
  const std::string wanted = platform.AbsolutePath(path);
  for (std::size_t i = 0; i < schemes.size(); ++i) {
    if (EqualsIgnoreCase(platform, platform.AbsolutePath(schemes[i]), wanted)) {
      position = static_cast<int>(i);
      return true;
    }
  }
  return false;
}

bool CanAddColorScheme(const ColorSchemeModule& module) {
  return static_cast<int>(module.schemes.size()) < kMaxColorSchemes;
}

}  // namespace tq
