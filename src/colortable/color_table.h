// The colour table file of the editor: its in-memory table and the reading and
// writing of the file, with the version check before every load.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "colortable/clut_format.h"
#include "support/platform.h"

namespace tq {

// Where the colour tables live (clut_locations.h): the version check falls back on
// the scheme folder's default reference file.
struct ColorSchemeModule;
// The language the user is told in (support/localization.h).
class LanguageTexts;

// The button face: as RGB, the grey of a colour not (yet) read; as an OLE system
// colour, what a row without a colour shows, in the system's shade.
constexpr std::int32_t kButtonFaceGrey = 0xC0C0C0;
constexpr std::int32_t kSystemButtonFace = static_cast<std::int32_t>(0x8000000F);

// What a colour row shows: a colour, or one of the two state texts.
struct RowColour {
  enum class Kind { Colour, Unreadable, NotDefined };
  Kind kind = Kind::Colour;
  std::int32_t colour = kButtonFaceGrey;
};

// The part of the editor session that the colour table file reads and writes. The
// editor owns one; rows[i] stands for the colour row of index i (ColorRowMap[i] != -1).
struct ColorTableState {
  std::string ClutFileName;
  bool ClutError = false;
  std::array<std::int32_t, kClutIndexCount> ColorIndexValue;
  std::array<std::int16_t, kClutIndexCount> ColorRowMap;
  std::array<RowColour, kClutIndexCount> rows;

  ColorTableState() {
    ColorIndexValue.fill(kButtonFaceGrey);
    ColorRowMap.fill(-1);
  }
};

// Who hears of a failed load: the user, in the language of the texts given (the
// editor's own loads: opening, scheme switch, restore), or nobody (reads on behalf of
// the host, which must never block on a message box it does not expect).
class LoadReport {
 public:
  static LoadReport ToUser(const LanguageTexts& texts) { return LoadReport(&texts); }
  static LoadReport Quiet() { return LoadReport(nullptr); }
  // The texts the user is told in; null for a quiet load.
  const LanguageTexts* User() const { return user_; }

 private:
  explicit LoadReport(const LanguageTexts* user) : user_(user) {}
  const LanguageTexts* user_;
};

// Reads ClutFileName into the table (and, with update_rows, into the rows), after
// CheckClutVersion. Missing file: message 1305, ClutError. A file that cannot be
// read: message 1316 with the system's reason, ClutError; the rows of a failed load
// show "Unreadable". Quiet loads set ClutError and show nothing. Returns whether it read.
bool LoadColorTable(Platform& platform, const ColorSchemeModule& module, ColorTableState& state, bool update_rows,
                    LoadReport report);

// Writes the rows into ClutFileName: asks when the lock file is missing, merges with
// the old lines, writes beside the file and replaces it in one step. On any failure
// the old file stays whole and the user is told (1312 + path + reason + 1313): our
// own decision, since a save that silently fails loses the user's colours. A failed
// write also sets ClutError, which keeps the editor open on OK.
// Reports the file to the host (host call 2) after a successful write.
bool SaveColorTable(Platform& platform, const LanguageTexts& texts, ColorTableState& state);

// The new value fields of a save from the rows (pure; used by SaveColorTable).
ClutNewLines BuildClutSaveLines(const ColorTableState& state);

// Writes `bytes` to a new file beside `target` and puts it in target's place, so that
// no crash or full disk ever leaves a truncated colour table. On failure the target is
// as it was and the new file is gone.
IoStatus ReplaceFileContent(Platform& platform, const std::string& target, std::string_view bytes);



// The check before every load. A file of another version than "93.07" is read once,
// upgraded from its reference file and re-marked in one pure step, and replaced once:
// a crash leaves either the old file or the new one, never an upgraded file that
// still carries its old version (which the next load would upgrade again). Without a
// reference the user is told (1325-1328, not for quiet loads) and the file is only
// re-marked, so that the warning comes once. An upgraded file is then copied over the
// same-named file in the toolkit's etc folder when one is there.
void CheckClutVersion(Platform& platform, const ColorSchemeModule& module, ColorTableState& state,
                      bool require_existing, LoadReport report);


// ---- The table's file among the toolkit's folders (clut_locations.h) ----

// The toolkit home (ReadDVHome); "" with message 1315 and ClutError when missing.
std::string GetDVHome(Platform& platform, const LanguageTexts& texts, ColorTableState& state);

// home + "\etc\QLT830_colors.clut", or "" without a home.
std::string GetDefaultClutFile(Platform& platform, const LanguageTexts& texts, ColorTableState& state);

// The ClutFileName setter: "" means the default file; an existing file is stored by
// its absolute path, a missing one as given.
void SetClutFileName(Platform& platform, const LanguageTexts& texts, ColorTableState& state,
                     const std::string& value);

// SyncClutFiles from GetDVHome + "\etc\" into the module's scheme folder.
int SyncClutFilesFromGlobalToApp(Platform& platform, const LanguageTexts& texts, const ColorSchemeModule& module,
                                 ColorTableState& state);

// Sets the scheme folder, synchronises, sets the INI paths and resolves ClutFileName.
std::string InitColorSchemes(Platform& platform, const LanguageTexts& texts, ColorSchemeModule& module,
                             ColorTableState& state, const std::string& app_folder, const std::string& user_folder,
                             const std::string& clut_path);


}  // namespace tq
