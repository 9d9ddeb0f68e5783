// What tqclut's commands share: failures, reading and writing tables under the
// editor's rules, names, values and JSON pieces. Internal to the tool; tqclut.h is
// its interface.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "colortable/clut_format.h"
#include "editor/catalogue.h"
#include "locking/lock_file_creator.h"
#include "quality/color_quality.h"
#include "support/localization.h"
#include "support/platform.h"

namespace tq::clut_tool {

inline constexpr const char* kToolName = "tqclut";
using PathKind = Platform::PathInfo::Kind;

// A failure that ends the command with one line on standard error and exit code 2.
struct Failure {
  std::string message;
};

// "1 line", "2 lines".
std::string Count(std::size_t n, std::string_view one, std::string_view many);

// ---- Files and tables ----------------------------------------------------------------

// Only regular files are read or written: a device never ends and a FIFO blocks.
void RequireRegularFile(Platform& platform, const std::string& path, bool may_be_missing = false);
std::string ReadWhole(Platform& platform, const std::string& path);

// A colour table file as the editor reads it: its first 286 lines through the
// editor's parser; a line that is missing counts as unreadable.
struct Table {
  std::string path;
  std::string bytes;
  std::vector<std::string> lines;  // at most 286
  std::size_t line_count = 0;      // every line of the file
  quality::ColourTable values{};
  std::string not_a_table;  // WhyNotAColourTable
};

// What a table is read for: a check reads anything; other commands refuse what is
// not a colour table.
enum class Use { Check, Read, Write };
Table ReadTable(Platform& platform, const std::string& path, Use use);

// The lock of a colour table file, taken as the editor takes it. A holder is named
// through the platform's message (on standard error); any other reason the lock file
// could not be made is said as it is.
class FileLock {
 public:
  FileLock(Platform& platform, const std::string& path);

 private:
  clsLockFileCreator creator_;
};

// The reference file of a table (NAME$CLUT beside it).
std::string ReferenceOf(Platform& platform, const std::string& path);
// Writes new value fields for some indexes: old comments, line ends and lines kept,
// written beside the file and put in its place.
void SaveLines(Platform& platform, const Table& table, const ClutNewLines& new_lines);

// ---- Names and values ----------------------------------------------------------------

// The tool's texts: the built-in English ones, since it loads no language library.
const LanguageTexts& Texts();
const IndexCatalogue& Names();
// The name for a listing; an index no row shows says so.
std::string Label(int index);
// "#RRGGBB", "unreadable" or "not defined".
std::string Describe(std::int32_t value);
std::optional<int> ParseInt(std::string_view text);
// Without blanks and tabs around.
std::string_view Trim(std::string_view text);
// A version marker as a listing shows it: up to the first control character and at
// most 16 bytes (a file without LF is one line, and its "version" would be the file).
std::string ShownVersion(const std::string& version);
int ParseIndex(const std::string& text);
// A colour as the editor reads one typed or pasted ("#RRGGBB", "RRGGBB", "R G B" in one
// argument or three, "R,G,B"); anything else fails.
std::int32_t ParseColour(const std::vector<std::string>& parts);

// ---- JSON ------------------------------------------------------------------------------

std::string JsonIndexes(const std::vector<int>& indexes);
// Appends an item to a comma-separated list.
void Append(std::string& list, const std::string& item);
std::string JsonNumber(double value);

// ---- Commands --------------------------------------------------------------------------

// Options a command takes besides --dvhome and --help.
enum Option : unsigned { kJson = 1, kRecursive = 2, kOutput = 4 };

struct Context {
  Platform& platform;
  const std::vector<std::string>& args;  // the operands after the command
  std::ostream& out;
  std::ostream& err;
  bool swatches;
  unsigned options;  // the Option flags given
  std::string output;  // -o FILE
  bool json() const { return options & kJson; }
};

// Reading commands (inspect.cpp): nothing is locked or written but a report's file.
int RunCheck(Context& c);
int RunShow(Context& c);
int RunDiff(Context& c);
int RunReport(Context& c);
// Writing commands (edit.cpp): under the table's lock, through a replace.
int RunSet(Context& c);
int RunExport(Context& c);
int RunImport(Context& c);
int RunUpgrade(Context& c);

}  // namespace tq::clut_tool
