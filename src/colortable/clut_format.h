// Colour table files as lines of bytes: parsing, formatting, the merge of a save and
// the version upgrade. Pure functions, no I/O; color_table.h wraps them around files.
//
// Line splitting (SplitClutLines) follows the text stream the files were always
// read with: a line ends at LF, a CR right before that LF belongs to the line end,
// a lone CR and NUL bytes are ordinary bytes of the line, and a last line without a
// line end is still a line. An empty file has no lines. Lines are written back with
// CR LF.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tq {

constexpr int kClutIndexCount = 286;   // colour indexes 0-285, one line each
constexpr int kClutStandardCount = 256;  // 0-255; 256 and up are extended, written with "#" in front
constexpr const char* kClutCurrentVersion = "93.07";
constexpr const char* kDefaultClutName = "QLT830_colors.clut";

constexpr std::int32_t kClutUnreadable = -1;
constexpr std::int32_t kClutNotDefined = -2;

// The first `max_lines` lines of a file and everything after them, byte for byte.
struct ClutLines {
  std::vector<std::string> lines;
  std::string trailer;  // empty when the file has at most max_lines lines
};
ClutLines SplitClutLines(std::string_view bytes, std::size_t max_lines = SIZE_MAX);
// Every line followed by CR LF.
std::string JoinClutLines(const std::vector<std::string>& lines);

// A colour (0..16777215), kClutNotDefined or kClutUnreadable. A number that does not
// fit 16 bits counts as out of range, so its line is unreadable; "12abc" is not a number.
std::int32_t ParseClutLine(std::string_view line);

// The value fields of an index: three FormatClutComponent fields, "#" in front for the
// extended indexes; kClutNotDefined is written as three -1 fields.
std::string FormatClutLine(int index, std::int32_t value);
std::string FormatClutLine(int index, std::int16_t red, std::int16_t green, std::int16_t blue);

// The comments of an old line as a save carries them over: everything from the first
// "#" that is not the line's leading one; "" when there is none.
std::string ClutLineComments(std::string_view old_line);

// New value fields per index (nullopt: the index has no row and keeps its old line).
using ClutNewLines = std::array<std::optional<std::string>, kClutIndexCount>;

// The bytes a save writes: the old file's first 286 lines with new value fields and
// their old comments, as many lines as the old file had (never more), CR LF after
// each, then the old file's rest after line 286 unchanged.
std::string MergeClutSave(std::string_view old_bytes, const ClutNewLines& new_lines);

// Whether a path names a colour table file (extension CLUT, not a lock file), and
// with require_prefix also whether its name contains "QLT830_". Case-insensitive.
bool IsClutFileName(std::string_view path, bool require_prefix);

// The reference (factory) file of a colour table file: every "." of the path replaced
// by "$"; with keep_folder false only the file name.
std::string ReferenceClutPath(std::string_view path, bool keep_folder);

// The version in a line 1: what follows the last "Version=", or nullopt without a marker.
std::optional<std::string> ClutVersionOfLine(std::string_view line);

// Replaces the "#" + 4 characters label of a line by "# <new_index>" (see the upgrade).
std::string RenumberClutComment(std::string_view line, int new_index);

// The 286 lines of an upgrade from `from_version`: the indexes whose meaning changed
// taken from the reference, the extended colours of "93.01"/"93.02" moved from
// 120-146 to 256-282. Both inputs are padded or cut to 286 lines.
std::vector<std::string> UpgradeClutLines(std::vector<std::string> file_lines, std::vector<std::string> reference_lines,
                                          const std::string& from_version);

// The 286 lines with the marker of the current version in line 1: an old version
// replaced wherever it stands in line 1, or a tab and "Version=93.07" appended.
std::vector<std::string> MarkClutVersion(std::vector<std::string> lines, const std::string& old_version);

// The logical colours file of export and import: section "Logical Colors", one key
// "Index_<n>" per colour, whose value reads back with ParseClutLine.
constexpr const char* kLogicalColorsSection = "Logical Colors";
std::string LogicalColorsKey(int index);
// One value: the colour's three fields and a comment naming where it is shown (`tab`
// and `category` for the list colours from 256). A "not defined" colour
// (kClutNotDefined) is written as `not_defined_as` when given (the editor writes the
// colour its button shows, the system's button face), else as the three -1 fields of
// a colour table, which import back as "not defined" (a tool has no button to take a
// colour from).
std::string LogicalColorValue(int index, std::int32_t colour, std::optional<std::int32_t> not_defined_as,
                              const std::string& name, const std::string& tab, const std::string& category);

}  // namespace tq
