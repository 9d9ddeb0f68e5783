// Where colour table files live: the toolkit's home and its etc folder, the
// application's colour scheme folder, FrameWindow.ini and the colour scheme list.
//
// The module state (scheme folder, INI paths, remembered colour table, scheme list)
// is a ColorSchemeModule that the caller owns and hands to the functions below: the
// editor session owns one (so each user-interface thread has its own), tqclut, the
// bench and the tests each their own.
#pragma once

#include <string>
#include <vector>

#include "colortable/clut_format.h"
#include "support/platform.h"

namespace tq {

constexpr const char* kDVHomeKey = "SOFTWARE\\DataViews\\DVtools\\2.6";
constexpr int kMaxColorSchemes = 50;

// The version of a file from its line 1; found is false without a marker or file.
std::string GetClutVersion(Platform& platform, const std::string& path, bool& found);
// The reference file of `path` (see ReferenceClutPath); with must_exist "" when absent.
std::string GetReferenceClutFile(Platform& platform, const std::string& path, bool must_exist, bool keep_folder);

struct ColorSchemeModule {
  std::string scheme_folder;  // with trailing "\", "" until set
  std::string user_ini, app_ini, factory_ini;  // app_ini is the one written
  std::string remembered_path;                 // the table chosen, compared on write-back
  std::vector<std::string> schemes;  // full paths, at most kMaxColorSchemes
};

// The toolkit home from the registry ("" when missing), without a word to the user.
std::string ReadDVHome(Platform& platform);
// "C:\sc\" when the home has "\sc\" at character 3, else "".
std::string InstallationRoot(const std::string& home);


// Appends "\"; "" leaves the folder unchanged.
void SetColorSchemeFolder(ColorSchemeModule& module, const std::string& folder);
std::string GetColorSchemeFolder(const ColorSchemeModule& module);

// The copy of global colour tables (at most 50, prefix "QLT830_") and their reference
// files from global_folder into scheme_folder. An application copy is never
// overwritten; a reference file is refreshed when its version differs. A missing
// scheme folder is asked of the host (call 4) whenever global_folder exists; each
// copied table and refreshed reference is reported (call 2). Returns the number of
// files copied.
int SyncClutFiles(Platform& platform, const std::string& global_folder, const std::string& scheme_folder);

// AppFolder and UserFolder end with "\".
void SetIniPaths(Platform& platform, ColorSchemeModule& module, const std::string& app_folder,
                 const std::string& user_folder);

// The colour table named by FrameWindow.ini (user, application, factory).
std::string GetIniClutFile(Platform& platform, ColorSchemeModule& module, bool remember);
// Writes the remembered file's name into the application's FrameWindow.ini under the
// "IniFileWrite" mutex when the settings name another file. Returns whether it wrote.
bool SaveIniClutFile(Platform& platform, ColorSchemeModule& module);
// The colour table the editor settled on (a scheme switch), which SaveIniClutFile records.
void SetRememberedClutFile(ColorSchemeModule& module, const std::string& path);

// The scheme list: the colour table files of the scheme folder, sorted by name
// without regard to case before the first 50 are taken (so the list does not depend
// on the order the file system lists them in).
void LoadColorSchemeList(Platform& platform, ColorSchemeModule& module);
const std::vector<std::string>& ColorSchemes(const ColorSchemeModule& module);
std::string GetColorSchemeAt(const ColorSchemeModule& module, int position);  // "" outside the list
bool FindColorScheme(Platform& platform, const ColorSchemeModule& module, const std::string& path, int& position);
bool CanAddColorScheme(const ColorSchemeModule& module);

}  // namespace tq
