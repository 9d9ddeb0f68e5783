#include "colortable/clut_locations.h"

#include <algorithm>

#include "support/localization.h"
#include "support/utils.h"

namespace tq {

ColorSchemeModule& ThisThreadColorSchemes() {
  thread_local ColorSchemeModule module;
  return module;
}

void ResetColorSchemeModule() { ThisThreadColorSchemes() = ColorSchemeModule(); }

std::string GetDVHome(Platform& platform, ColorTableState& state) {
  std::string home = platform.RegReadString(kDVHomeKey, "DVHOME");
  if (home.empty()) {
    int buttons = kMbOk;
    platform.ShowMessage(GetString(1315), buttons, kMbIconCritical, GetString(1301));
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

void SetColorSchemeFolder(const std::string& folder) {
  if (!folder.empty()) ThisThreadColorSchemes().scheme_folder = folder + "\\";
}

std::string GetColorSchemeFolder() { return ThisThreadColorSchemes().scheme_folder; }

namespace {

bool VersionsDiffer(Platform& platform, const std::string& a, const std::string& b) {
  bool found_a = false, found_b = false;
  return GetClutVersion(platform, a, found_a) != GetClutVersion(platform, b, found_b) || found_a != found_b;
}

}  // namespace

int SyncClutFiles(Platform& platform, const std::string& global_folder, const std::string& scheme_folder) {
  if (!platform.FolderExists(global_folder)) return 0;
  std::vector<std::string> names = platform.ListFileNames(global_folder);
  // Sorted so that which 50 are taken does not depend on the file system's order.
  std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) { return UpperAscii(a) < UpperAscii(b); });
  std::vector<std::string> tables, references;
  for (const std::string& name : names) {
    if (static_cast<int>(tables.size()) >= kMaxColorSchemes) break;
    if (!IsClutFileName(name, true)) continue;
    tables.push_back(name);
    const std::string reference = ReferenceClutPath(name, false);
    if (platform.FileExists(global_folder + reference)) references.push_back(reference);
  }
  if (tables.empty()) return 0;
  if (!platform.FolderExists(scheme_folder) && !CreateFolderViaHost(platform, scheme_folder)) return 0;
  int copied = 0;
  for (const std::string& name : tables) {
    const std::string target = scheme_folder + name;
    if (platform.FileExists(target)) continue;
    if (!platform.CopyFileTo(global_folder + name, target, false)) return copied;
    ++copied;
    platform.HostCall(kHostFileNotice, target);
  }
  for (const std::string& name : references) {
    const std::string source = global_folder + name, target = scheme_folder + name;
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

int SyncClutFilesFromGlobalToApp(Platform& platform, ColorTableState& state) {
  const std::string home = GetDVHome(platform, state);
  if (home.empty()) return 0;
  return SyncClutFiles(platform, home + "\\etc\\", GetColorSchemeFolder());
}

void SetIniPaths(Platform& platform, const std::string& app_folder, const std::string& user_folder) {
  ColorSchemeModule& m = ThisThreadColorSchemes();
  // Read without GetDVHome: a missing value has already been reported by this start-up.
  const std::string root = InstallationRoot(platform.RegReadString(kDVHomeKey, "DVHOME"));
  m.factory_ini = root.empty() ? std::string() : root + "tq_lib\\defaults\\misc\\default_FrameWindow.ini";
  m.app_ini = app_folder + "FrameWindow.ini";
  m.user_ini = user_folder + "FrameWindow.ini";
  m.write_target = m.app_ini;
}

std::string InitColorSchemes(Platform& platform, ColorTableState& state, const std::string& app_folder,
                             const std::string& user_folder, const std::string& clut_path) {
  SetColorSchemeFolder(app_folder + "ColorSchemes");
  SyncClutFilesFromGlobalToApp(platform, state);
  SetIniPaths(platform, app_folder, user_folder);
  std::string result = clut_path;
  if (result.empty()) {
    result = GetIniClutFile(platform, true);
    if (!result.empty() && !platform.FileExists(result)) {
      result = GetDefaultClutFile(platform, state);
      if (!result.empty() && !platform.FileExists(result)) result.clear();
    }
  }
  SetClutFileName(platform, state, result);
  return result;
}

std::string GetIniClutFile(Platform& platform, bool remember) {
  ColorSchemeModule& m = ThisThreadColorSchemes();
  if (remember) m.remembered_lookup.clear();
  std::string taken;
  for (const std::string* ini : {&m.user_ini, &m.app_ini, &m.factory_ini}) {
    if (ini->empty() || !taken.empty()) continue;
    const std::string value = platform.IniRead("COLORSCHEMES", "ClutFile", *ini);
    if (!value.empty() && platform.FileExists(m.scheme_folder + value)) taken = value;
  }
  const std::string result = m.scheme_folder + (taken.empty() ? std::string(kDefaultClutName) : taken);
  if (remember) m.remembered_lookup = m.remembered_path = result;
  return result;
}

void SetRememberedClutFile(const std::string& path) {
  ColorSchemeModule& m = ThisThreadColorSchemes();
  m.remembered_lookup = m.remembered_path = path;
}

bool SaveIniClutFile(Platform& platform) {
  ColorSchemeModule& m = ThisThreadColorSchemes();
  bool wrote = false;
  if (platform.AcquireIniMutex()) {
    const std::string current = GetIniClutFile(platform, false);
    if (!EqualsIgnoreCase(current, m.remembered_path) && !m.write_target.empty()) {
      platform.IniWrite("COLORSCHEMES", "ClutFile", FileNameOf(m.remembered_path), m.app_ini);
      platform.HostCall(kHostFileNotice, m.app_ini);
      wrote = true;
    }
  }
  platform.ReleaseIniMutex();
  return wrote;
}

void LoadColorSchemeList(Platform& platform) {
  ColorSchemeModule& m = ThisThreadColorSchemes();
  m.schemes.fill(std::string());
  std::vector<std::string> names = platform.ListFileNames(m.scheme_folder);
  std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) { return UpperAscii(a) < UpperAscii(b); });
  std::vector<std::string> found;
  for (const std::string& name : names) {
    if (static_cast<int>(found.size()) >= kMaxColorSchemes) break;
    if (IsClutFileName(name, false)) found.push_back(m.scheme_folder + name);
  }
  // Case-insensitive order, as the user reads the names in the list.
  std::copy(found.begin(), found.end(), m.schemes.begin());
}

std::string GetColorSchemeAt(int position) {
  int count = 0;
  for (const std::string& entry : ThisThreadColorSchemes().schemes) {
    if (entry.empty()) continue;
    if (count++ == position) return entry;
  }
  return {};
}

bool FindColorScheme(const std::string& path, int& position) {
  int count = 0;
  for (const std::string& entry : ThisThreadColorSchemes().schemes) {
    if (entry.empty()) continue;
    if (EqualsIgnoreCase(entry, path)) {
      position = count;
      return true;
    }
    ++count;
  }
  return false;
}

bool CanAddColorScheme() {
  int count = 0;
  for (const std::string& entry : ThisThreadColorSchemes().schemes) {
    if (entry.empty()) continue;
    if (count == kMaxColorSchemes - 1) return false;
    ++count;
  }
  return true;
}

}  // namespace tq
