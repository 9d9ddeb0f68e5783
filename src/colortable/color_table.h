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

// Who hears of a failed load: the user (the editor's own loads: opening, scheme
// switch, restore) or nobody (reads on behalf of the host, which must never block
// on a message box it does not expect).
enum class LoadReport { ToUser, Quiet };

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
bool SaveColorTable(Platform& platform, ColorTableState& state);

// The new value fields of a save from the rows (pure; used by SaveColorTable).
ClutNewLines BuildClutSaveLines(const ColorTableState& state);

// Writes `bytes` to a new file beside `target` and puts it in target's place, so that
// no crash or full disk ever leaves a truncated colour table. On failure the target is
// as it was and the new file is gone.
IoStatus ReplaceFileContent(Platform& platform, const std::string& target, std::string_view bytes);

// The version of a file from its line 1; found is false without a marker or file.
std::string GetClutVersion(Platform& platform, const std::string& path, bool& found);

// The reference file of `path` (see ReferenceClutPath); with must_exist "" when absent.
std::string GetReferenceClutFile(Platform& platform, const std::string& path, bool must_exist, bool keep_folder);

// The check before every load. A file of another version than "93.07" is read once,
// upgraded from its reference file and re-marked in one pure step, and replaced once:
// a crash leaves either the old file or the new one, never an upgraded file that
// still carries its old version (which the next load would upgrade again). Without a
// reference the user is told (1325-1328, not for quiet loads) and the file is only
// re-marked, so that the warning comes once. An upgraded file is then copied over the
// same-named file in the toolkit's etc folder when one is there.
void CheckClutVersion(Platform& platform, const ColorSchemeModule& module, ColorTableState& state,
                      bool require_existing, LoadReport report);

}  // namespace tq
