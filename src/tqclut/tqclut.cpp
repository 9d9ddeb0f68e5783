#include "tqclut/tqclut.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <optional>
#include <set>

#include "colortable/clut_format.h"
#include "colortable/clut_locations.h"
#include "colortable/color_table.h"
#include "editor/catalogue.h"
#include "editor/session.h"
#include "locking/lock_file.h"
#include "locking/lock_file_creator.h"
#include "quality/color_quality.h"
#include "support/utils.h"
#include "tqclut/report.h"

#ifndef TQ_VERSION
#define TQ_VERSION "unknown"
#endif

namespace tq::clut_tool {
namespace {

constexpr const char* kToolName = "tqclut";

// A failure that ends the command with one line on standard error and exit code 2.
struct Failure {
  std::string message;
};

std::string Count(std::size_t n, std::string_view one, std::string_view many) {
  return std::to_string(n) + " " + std::string(n == 1 ? one : many);
}

// ---- Files ---------------------------------------------------------------------------

using PathKind = Platform::PathInfo::Kind;

// Only regular files are read or written: a device never ends and a FIFO blocks.
void RequireRegularFile(Platform& platform, const std::string& path, bool may_be_missing = false) {
  const Platform::PathInfo info = platform.Stat(path);
  switch (info.kind) {
    case PathKind::None:
      if (may_be_missing) return;
      throw Failure{path + ": no such file"};
    case PathKind::Folder: throw Failure{path + " is a folder, not a file"};
    case PathKind::Other: throw Failure{path + " is not a regular file (a device or a pipe)"};
    case PathKind::File:
      if (info.size > kMaxFileSize)
        throw Failure{path + " is too large (" + std::to_string(info.size) +
                      " bytes) for a colour table or a logical-colours file"};
      return;
  }
}

std::string ReadWhole(Platform& platform, const std::string& path) {
  RequireRegularFile(platform, path);
  std::string bytes;
  if (IoStatus status = platform.ReadFile(path, bytes); !status)
    throw Failure{"cannot read " + path + ": " + status.message};
  if (bytes.size() > kMaxFileSize) throw Failure{path + " grew beyond the size of a colour table while it was read"};
  return bytes;
}

// ---- Reading tables --------------------------------------------------------------------

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

Table ReadTable(Platform& platform, const std::string& path, Use use) {
  Table table;
  table.path = path;
  table.bytes = ReadWhole(platform, path);
  const ClutLines split = SplitClutLines(table.bytes);
  table.line_count = split.lines.size();
  table.lines.assign(split.lines.begin(), split.lines.begin() + std::min<std::size_t>(split.lines.size(), kClutIndexCount));
  table.values.fill(kClutUnreadable);
  for (std::size_t i = 0; i < table.lines.size(); ++i) table.values[i] = ParseClutLine(table.lines[i]);
  table.not_a_table = WhyNotAColourTable(table.bytes);
  if (use != Use::Check && !table.not_a_table.empty())
    throw Failure{path + " is not a colour table: " + table.not_a_table +
                  (use == Use::Write ? "; nothing was written" : "")};
  return table;
}

// ---- Names from the editor's catalogue -------------------------------------------

const IndexCatalogue& Names() {
  static const IndexCatalogue catalogue;
  return catalogue;
}

// The name for a listing; an index no row shows says so.
std::string Label(int index) {
  const std::string label = Names().Label(index);
  return label.empty() ? "(not shown by the editor)" : label;
}

// ---- Values ------------------------------------------------------------------------

std::string Hex(std::int32_t colour) {
  char text[8];
  std::snprintf(text, sizeof text, "#%02X%02X%02X", colour & 0xFF, (colour >> 8) & 0xFF, (colour >> 16) & 0xFF);
  return text;
}

std::string Describe(std::int32_t value) {
  if (value == kClutUnreadable) return "unreadable";
  if (value == kClutNotDefined) return "not defined";
  return Hex(value);
}

std::optional<int> ParseInt(std::string_view text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || text.empty()) return std::nullopt;
  return value;
}

int ParseIndex(const std::string& text) {
  const std::optional<int> index = ParseInt(text);
  if (!index) throw Failure{"\"" + text + "\" is not a colour index (0 to 285)"};
  if (*index < 0 || *index >= kClutIndexCount)
    throw Failure{"colour index " + text + " is out of range: indexes run from 0 to 285"};
  return *index;
}

std::string_view Trim(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

// "#RRGGBB", "R G B" (one argument or three) or "R,G,B": exactly three parts.
std::int32_t ParseColour(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : " ") + part;
  const auto bad = [&] {
    return Failure{"\"" + text + "\" is not a colour: write #RRGGBB, \"R G B\" or R,G,B with each part 0 to 255"};
  };
  if (text.size() == 7 && text[0] == '#') {
    unsigned rgb = 0;
    const auto [end, error] = std::from_chars(text.data() + 1, text.data() + 7, rgb, 16);
    if (error != std::errc() || end != text.data() + 7) throw bad();
    return static_cast<std::int32_t>(((rgb >> 16) & 0xFF) | (rgb & 0xFF00) | ((rgb & 0xFF) << 16));
  }
  std::vector<std::string_view> fields;
  const std::string_view all = text;
  if (all.find(',') != std::string_view::npos) {
    for (std::size_t start = 0;;) {  // every comma separates two fields: "1,,2" has three
      const std::size_t comma = all.find(',', start);
      fields.push_back(Trim(all.substr(start, comma == std::string_view::npos ? std::string_view::npos : comma - start)));
      if (comma == std::string_view::npos) break;
      start = comma + 1;
    }
  } else {
    for (std::size_t start = 0; start < all.size();) {
      const std::size_t end = std::min(all.find(' ', start), all.size());
      if (end > start) fields.push_back(all.substr(start, end - start));
      start = end + 1;
    }
  }
  if (fields.size() != 3) throw bad();
  int rgb[3];
  for (int i = 0; i < 3; ++i) {
    const std::optional<int> value = ParseInt(fields[i]);
    if (!value || *value < 0 || *value > 255) throw bad();
    rgb[i] = *value;
  }
  return rgb[0] | (rgb[1] << 8) | (rgb[2] << 16);
}

// ---- Writing -----------------------------------------------------------------------

// The Windows codes of a handle held by another (POSIX platforms report the same).
constexpr std::uint32_t kSharingViolation = 32, kLockViolation = 33;

// The lock of a colour table file, taken as the editor takes it. A holder is named
// through the platform's message (on standard error); any other reason the lock file
// could not be made is said as it is.
class FileLock {
 public:
  FileLock(Platform& platform, const std::string& path) : creator_(platform) {
    std::string app = kToolName, user = platform.WindowsUserName();
    for (int attempt = 0; attempt < 2; ++attempt) {
      if (creator_.CreateLockFile(path, app, user, LockMode::Open, true) == LockResult::Locked) return;
      IoStatus status;
      if (platform.OpenLockFile(path + std::string(kLockSuffix), status)) continue;  // given up meanwhile
      if (status.code != kSharingViolation && status.code != kLockViolation)
        throw Failure{"cannot create the lock file " + path + std::string(kLockSuffix) + ": " + status.message +
                      "; nothing was written"};
      if (creator_.CreateLockFile(path, app, user, LockMode::Open, false) == LockResult::Locked) return;
      break;
    }
    throw Failure{path + " is locked by another editor or tool (see above); nothing was written"};
  }

 private:
  clsLockFileCreator creator_;
};

// The bytes of an edit: new value fields with the old comments for some of the first
// 286 lines. Unlike the editor's save, every line keeps its own line end, so an
// edit changes only the lines it is about.
std::string MergeKeepingLineEnds(std::string_view old_bytes, const ClutNewLines& new_lines) {
  std::string out;
  out.reserve(old_bytes.size() + 64);
  std::size_t pos = 0;
  for (int index = 0; pos < old_bytes.size() && index < kClutIndexCount; ++index) {
    const std::size_t lf = old_bytes.find('\n', pos);
    const std::size_t next = lf == std::string_view::npos ? old_bytes.size() : lf + 1;
    // As SplitClutLines: a CR belongs to the line end only right before an LF.
    const std::size_t end = lf == std::string_view::npos ? next : lf > pos && old_bytes[lf - 1] == '\r' ? lf - 1 : lf;
    const std::string_view line = old_bytes.substr(pos, end - pos);
    if (new_lines[index])
      out += *new_lines[index] + ClutLineComments(line);
    else
      out += line;
    out += old_bytes.substr(end, next - end);
    pos = next;
  }
  out += old_bytes.substr(pos);
  return out;
}

std::string ReferenceOf(Platform& platform, const std::string& path) {
  // The reference file's name replaces every "." of the path: no "./" may be left in it.
  return ReferenceClutPath(platform.AbsolutePath(path), true);
}

// Writes new value fields for some indexes: old comments, line ends and lines kept,
// written beside the file and put in its place.
void SaveLines(Platform& platform, const Table& table, const ClutNewLines& new_lines) {
  for (int i = 0; i < kClutIndexCount; ++i) {
    if (!new_lines[i] || i < static_cast<int>(table.lines.size())) continue;
    const std::string reference = ReferenceOf(platform, table.path);
    throw Failure{table.path + " has only " + Count(table.lines.size(), "line", "lines") + ", so index " +
                  std::to_string(i) + " is not in it (" +
                  (platform.FileExists(reference)
                       ? "tqclut upgrade completes it from " + FileNameOf(reference)
                       : "put its reference file " + FileNameOf(reference) + " beside it, then tqclut upgrade completes it") +
                  "); nothing was written"};
  }
  if (IoStatus status = ReplaceFileContent(platform, table.path, MergeKeepingLineEnds(table.bytes, new_lines)); !status)
    throw Failure{"cannot write " + table.path + ": " + status.message + "; the file is unchanged"};
}

// ---- JSON ----------------------------------------------------------------------------

std::string JsonIndexes(const std::vector<int>& indexes) {
  std::string out = "[";
  for (std::size_t i = 0; i < indexes.size(); ++i) {
    if (i) out += ',';
    out += std::to_string(indexes[i]);
  }
  return out + "]";
}

// Appends an item to a comma-separated list.
void Append(std::string& list, const std::string& item) {
  if (!list.empty()) list += ',';
  list += item;
}

std::string JsonNumber(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f", value);
  return text;
}

// ---- Commands ------------------------------------------------------------------------

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

struct Command {
  std::string_view name;
  std::string_view usage;
  std::string_view help;
  std::size_t min_args, max_args;
  unsigned options;  // the Option flags it takes
  int (*run)(Context&);
};

std::string LineEnds(std::string_view bytes) {
  std::size_t crlf = 0, lf = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i)
    if (bytes[i] == '\n') ++(i > 0 && bytes[i - 1] == '\r' ? crlf : lf);
  if (crlf && lf) return "mixed (" + std::to_string(crlf) + " CR LF, " + std::to_string(lf) + " LF)";
  return crlf ? "CR LF" : lf ? "LF" : "none";
}

// A version marker as a listing shows it: up to the first control character and at
// most 16 bytes (a file without LF is one line, and its "version" would be the file).
std::string ShownVersion(const std::string& version) {
  std::size_t end = 0;
  while (end < version.size() && end < 16 && static_cast<unsigned char>(version[end]) >= 0x20) ++end;
  return end == version.size() ? version : version.substr(0, end) + "...";
}

// What `check` finds in one file.
struct CheckResult {
  std::optional<std::string> version;        // nullopt without a marker
  std::vector<int> unreadable, not_defined;  // indexes of lines present (line = index + 1)
  std::size_t missing = 0;                   // lines missing up to 286
  std::vector<quality::Finding> quality;
  int findings = 0;
};

CheckResult CheckTable(const Table& table) {
  CheckResult result;
  if (!table.lines.empty()) result.version = ClutVersionOfLine(table.lines[0]);
  if (result.version != kClutCurrentVersion) ++result.findings;
  if (!table.not_a_table.empty()) ++result.findings;
  result.missing = kClutIndexCount - table.lines.size();
  if (result.missing) ++result.findings;
  for (int i = 0; i < static_cast<int>(table.lines.size()); ++i) {
    if (table.values[i] == kClutUnreadable) result.unreadable.push_back(i);
    if (table.values[i] == kClutNotDefined) result.not_defined.push_back(i);
  }
  result.findings += static_cast<int>(result.unreadable.size());
  result.quality = quality::Check(table.values, [](int index) { return Names().Label(index); });
  for (const quality::Finding& finding : result.quality)
    if (!finding.pass) ++result.findings;
  return result;
}

std::string LineList(const std::vector<int>& indexes) {
  std::string out;
  for (int index : indexes) out += (out.empty() ? "" : ", ") + std::to_string(index + 1) + " (index " + std::to_string(index) + ")";
  return out;
}

std::string UnreadableText(const CheckResult& result) {
  std::string text = result.unreadable.empty() ? "" : "lines " + LineList(result.unreadable);
  if (result.missing) {
    const std::size_t first = kClutIndexCount - result.missing + 1;
    text += (text.empty() ? "" : "; ") +
            (result.missing == 1 ? "line 286 (index 285), which is missing"
                                 : "lines " + std::to_string(first) + " to 286 (indexes " + std::to_string(first - 1) +
                                       " to 285), which are missing");
  }
  return text.empty() ? "none" : text;
}

std::string VersionText(const CheckResult& result) {
  if (!result.version) return "no version marker (tqclut upgrade adds one)";
  if (*result.version == kClutCurrentVersion) return *result.version + " (current)";
  return ShownVersion(*result.version) + " (not current: tqclut upgrade brings it to " + kClutCurrentVersion + ")";
}

// A table's findings as JSON; `all_rules` lists every measured pair, else only the
// findings that need attention (a site-wide check, which would otherwise be huge).
std::string CheckJson(const Table& table, const CheckResult& result, bool all_rules) {
  std::string rules;
  for (const quality::Finding& f : result.quality) {
    if (f.pass && !all_rules) continue;
    std::string names;
    for (const std::string& name : f.names) Append(names, JsonString(name));
    Append(rules, "{\"rule\":" + JsonString(f.rule) +
             ",\"indexes\":" + JsonIndexes(f.indexes) + ",\"names\":[" + names + "],\"measured\":" +
             JsonNumber(f.measured) + ",\"threshold\":" + JsonNumber(f.threshold) +
             ",\"checked\":" + (f.checked ? "true" : "false") + ",\"pass\":" + (f.pass ? "true" : "false") +
             ",\"aaa\":" + (f.enhanced ? "true" : "false") + ",\"vision\":" + JsonString(f.vision) + "}");
  }
  return "{\"file\":" + JsonString(table.path) +
         ",\"not_a_colour_table\":" + (table.not_a_table.empty() ? "null" : JsonString(table.not_a_table)) +
         ",\"version\":" + (result.version ? JsonString(ShownVersion(*result.version)) : "null") +
         ",\"lines\":" + std::to_string(table.line_count) + ",\"line_ends\":" + JsonString(LineEnds(table.bytes)) +
         ",\"missing_lines\":" + std::to_string(result.missing) + ",\"unreadable\":" + JsonIndexes(result.unreadable) +
         ",\"not_defined\":" + JsonIndexes(result.not_defined) + ",\"quality\":[" + rules +
         "],\"findings\":" + std::to_string(result.findings) + "}";
}

// The full report of one table.
void PrintCheck(std::ostream& out, const Table& table, const CheckResult& result) {
  out << table.path << "\n";
  if (!table.not_a_table.empty())
    out << "  content:     not a colour table: " << table.not_a_table << " (tqclut will not write it)\n";
  out << "  version:     " << VersionText(result) << "\n";
  out << "  lines:       " << table.line_count
      << (result.missing ? " (" + std::to_string(result.missing) + " missing)" : "") << ", line ends "
      << LineEnds(table.bytes) << "\n";
  out << "  unreadable:  " << UnreadableText(result) << "\n";
  out << "  not defined: " << (result.not_defined.empty() ? "none" : "lines " + LineList(result.not_defined)) << "\n";
  out << "  quality:\n" << quality::FormatReport(result.quality, "    ");
  out << "  " << (result.findings ? Count(result.findings, "finding", "findings") : std::string("clean")) << "\n";
}

// One line for a table of a site-wide check: its findings by kind.
std::string CheckLine(const Table& table, const CheckResult& result) {
  if (!result.findings) return table.path + ": clean";
  std::vector<std::string> kinds;
  if (!table.not_a_table.empty()) kinds.push_back("not a colour table");
  if (!result.version) kinds.push_back("no version marker");
  else if (*result.version != kClutCurrentVersion) kinds.push_back("version " + ShownVersion(*result.version));
  if (result.missing) kinds.push_back(Count(result.missing, "line", "lines") + " missing");
  if (!result.unreadable.empty()) kinds.push_back(Count(result.unreadable.size(), "unreadable line", "unreadable lines"));
  const std::size_t failed = std::count_if(result.quality.begin(), result.quality.end(),
                                           [](const quality::Finding& f) { return !f.pass; });
  if (failed) kinds.push_back(Count(failed, "quality finding", "quality findings"));
  std::string text;
  for (const std::string& kind : kinds) text += (text.empty() ? "" : ", ") + kind;
  return table.path + ": " + Count(result.findings, "finding", "findings") + " (" + text + ")";
}

#ifdef _WIN32
constexpr char kSeparator = '\\';
#else
constexpr char kSeparator = '/';
#endif

// The colour tables (*.clut) of a folder by name, then with `recursive` those of its
// subfolders, depth first: the same order on every run.
void CollectTables(Platform& platform, const std::string& folder, bool recursive, std::vector<std::string>& paths) {
  const std::string base = folder.ends_with('/') || folder.ends_with('\\') ? folder : folder + kSeparator;
  std::vector<std::string> names = platform.ListFileNames(folder);
  std::sort(names.begin(), names.end());
  for (const std::string& name : names)
    if (IsClutFileName(name, false)) paths.push_back(base + name);
  if (!recursive) return;
  std::vector<std::string> folders = platform.ListFolderNames(folder);
  std::sort(folders.begin(), folders.end());
  for (const std::string& name : folders) CollectTables(platform, base + name, true, paths);
}

// Files are checked in full; folders (a site: stations, applications, schemes) give
// one line per table and a summary. Either way nothing is locked or written.
int RunCheck(Context& c) {
  std::vector<std::string> paths;
  bool site = false;
  for (const std::string& arg : c.args) {
    if (c.platform.Stat(arg).kind != PathKind::Folder) {
      paths.push_back(arg);
      continue;
    }
    site = true;
    CollectTables(c.platform, arg, c.options & kRecursive, paths);
  }
  if (paths.empty())
    throw Failure{"no colour table (*.clut) in " + c.args[0] +
                  (c.args.size() > 1 ? " or the other folders" : "") +
                  (c.options & kRecursive ? "" : " (--recursive also looks into subfolders)")};
  std::size_t clean = 0, with_findings = 0, unreadable = 0;
  std::string json_tables;
  for (const std::string& path : paths) {
    std::string json;
    try {
      const Table table = ReadTable(c.platform, path, Use::Check);
      const CheckResult result = CheckTable(table);
      ++(result.findings ? with_findings : clean);
      if (c.json())
        json = CheckJson(table, result, !site);
      else if (site)
        c.out << CheckLine(table, result) << "\n";
      else
        PrintCheck(c.out, table, result);
    } catch (const Failure& failure) {
      ++unreadable;
      if (c.json())
        json = "{\"file\":" + JsonString(path) + ",\"error\":" + JsonString(failure.message) + "}";
      else if (site)
        c.out << path << ": unreadable: " << failure.message << "\n";
      else
        c.err << kToolName << ": " << failure.message << "\n";
    }
    Append(json_tables, json);
  }
  const std::string tables = Count(paths.size(), "table", "tables");
  if (c.json())
    c.out << "{\"tables\":[" << json_tables << "],\"summary\":{\"tables\":" << paths.size() << ",\"clean\":" << clean
          << ",\"with_findings\":" << with_findings << ",\"unreadable\":" << unreadable << "}}\n";
  else if (site)
    c.out << tables << ": " << clean << " clean, " << with_findings << " with findings, " << unreadable
          << " unreadable\n";
  return unreadable ? kExitError : with_findings ? kExitFindings : kExitClean;
}

int RunShow(Context& c) {
  const Table table = ReadTable(c.platform, c.args[0], Use::Read);
  if (c.json()) {
    std::string colours;
    for (int i = 0; i < kClutIndexCount; ++i) {
      const std::string name = Names().Label(i);
      Append(colours, "{\"index\":" + std::to_string(i) +
                 ",\"colour\":" + JsonString(Describe(table.values[i])) +
                 ",\"name\":" + (name.empty() ? "null" : JsonString(name)) + "}");
    }
    c.out << "{\"file\":" << JsonString(table.path) << ",\"colours\":[" << colours << "]}\n";
    return kExitClean;
  }
  for (int i = 0; i < kClutIndexCount; ++i) {
    const std::int32_t value = table.values[i];
    char line[64];
    std::snprintf(line, sizeof line, "%3d  %-11s ", i, Describe(value).c_str());
    c.out << line;
    if (c.swatches) {
      if (value >= 0)
        c.out << "\x1b[48;2;" << (value & 0xFF) << ";" << ((value >> 8) & 0xFF) << ";" << ((value >> 16) & 0xFF)
              << "m    \x1b[0m ";
      else
        c.out << "     ";
    }
    if (value >= 0) {
      std::snprintf(line, sizeof line, "(%3d, %3d, %3d)  ", value & 0xFF, (value >> 8) & 0xFF, (value >> 16) & 0xFF);
      c.out << line;
    } else {
      c.out << std::string(17, ' ');
    }
    c.out << Label(i) << "\n";
  }
  return kExitClean;
}

int RunDiff(Context& c) {
  const Table a = ReadTable(c.platform, c.args[0], Use::Read), b = ReadTable(c.platform, c.args[1], Use::Read);
  std::vector<int> differ;
  for (int i = 0; i < kClutIndexCount; ++i)
    if (a.values[i] != b.values[i]) differ.push_back(i);
  if (c.json()) {
    std::string items;
    for (int i : differ) {
      const std::string name = Names().Label(i);
      Append(items, "{\"index\":" + std::to_string(i) +
               ",\"a\":" + JsonString(Describe(a.values[i])) + ",\"b\":" + JsonString(Describe(b.values[i])) +
               ",\"name\":" + (name.empty() ? "null" : JsonString(name)) + "}");
    }
    c.out << "{\"a\":" << JsonString(a.path) << ",\"b\":" << JsonString(b.path) << ",\"differences\":[" << items
          << "]}\n";
  } else {
    for (int i : differ) {
      char line[64];
      std::snprintf(line, sizeof line, "%3d  %-11s -> %-11s  ", i, Describe(a.values[i]).c_str(),
                    Describe(b.values[i]).c_str());
      c.out << line << Label(i) << "\n";
    }
    if (!differ.empty()) c.out << differ.size() << " of 286 colours differ\n";
  }
  return differ.empty() ? kExitClean : kExitFindings;
}

int RunSet(Context& c) {
  const int index = ParseIndex(c.args[1]);
  const std::int32_t colour = ParseColour({c.args.begin() + 2, c.args.end()});
  const std::string& path = c.args[0];
  ReadTable(c.platform, path, Use::Write);  // a missing file or a folder is reported before a lock file is made
  const FileLock lock(c.platform, path);
  const Table table = ReadTable(c.platform, path, Use::Write);
  const std::string what = path + ": " + std::to_string(index) + " " + Label(index) + ": ";
  if (table.values[index] == colour) {
    c.out << what << "already " << Hex(colour) << "; nothing was written\n";
    return kExitClean;
  }
  ClutNewLines new_lines;
  new_lines[index] = FormatClutLine(index, colour);
  SaveLines(c.platform, table, new_lines);
  c.out << what << Describe(table.values[index]) << " -> " << Hex(colour) << "\n";
  return kExitClean;
}

// An INI value of the logical colours file; not-defined colours keep their state.
std::string LogicalColoursValue(int index, std::int32_t value) {
  const IndexCatalogue& names = Names();
  return LogicalColorValue(index, value, std::nullopt, names.Name(index), names.Tab(index), names.Category(index));
}

int RunExport(Context& c) {
  const Table table = ReadTable(c.platform, c.args[0], Use::Read);
  RequireRegularFile(c.platform, c.args[1], true);
  const std::string ini = c.platform.AbsolutePath(c.args[1]);
  int written = 0;
  for (int i = 0; i < kClutIndexCount; ++i) {
    if (!Names().Shown(i) || table.values[i] == kClutUnreadable) continue;
    const std::string key = LogicalColorsKey(i), value = LogicalColoursValue(i, table.values[i]);
    if (IoStatus status = c.platform.IniWrite(kLogicalColorsSection, key, value, ini); !status)
      throw Failure{"cannot write " + c.args[1] + ": " + status.message};
    // The profile functions do not always say whether they wrote: read the value back.
    if (ParseClutLine(c.platform.IniRead(kLogicalColorsSection, key, ini)) != table.values[i])
      throw Failure{"cannot write " + c.args[1] + " (" + key + " did not arrive)"};
    ++written;
  }
  if (written == 0)
    throw Failure{c.args[0] + " has no readable colour that the editor shows; nothing was written to " + c.args[1]};
  c.out << c.args[1] << ": " << Count(written, "colour", "colours") << " exported from " << c.args[0] << "\n";
  return kExitClean;
}

// The keys of an INI file's section, as written (the profile functions compare
// sections and keys without regard to case and surrounding blanks; ";" starts a comment).
std::vector<std::string> IniKeys(std::string_view text, std::string_view section) {
  std::vector<std::string> keys;
  bool inside = false;
  for (std::size_t pos = 0; pos < text.size();) {
    const std::size_t lf = std::min(text.find('\n', pos), text.size());
    std::string_view line = text.substr(pos, lf - pos);
    pos = lf + 1;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    line = Trim(line);
    if (line.starts_with('[')) {
      const std::size_t close = line.find(']');
      inside = close != std::string_view::npos && UpperAscii(Trim(line.substr(1, close - 1))) == UpperAscii(section);
    } else if (inside && !line.starts_with(';')) {
      if (const std::size_t equals = line.find('='); equals != std::string_view::npos)
        keys.emplace_back(Trim(line.substr(0, equals)));
    }
  }
  return keys;
}

int RunImport(Context& c) {
  // The profile functions look for a file without a folder in the Windows folder.
  const std::string& ini_name = c.args[0];
  const std::string& path = c.args[1];
  const std::string ini_text = ReadWhole(c.platform, ini_name);
  const std::string ini = c.platform.AbsolutePath(ini_name);
  ReadTable(c.platform, path, Use::Write);
  int skipped = 0;
  const auto skip = [&](const std::string& key, const std::string& why) {
    c.err << kToolName << ": " << ini_name << ": " << key << ": " << why << "; skipped\n";
    ++skipped;
  };
  std::set<int> indexes;
  for (const std::string& key : IniKeys(ini_text, kLogicalColorsSection)) {
    const std::optional<int> index = UpperAscii(key).starts_with("INDEX_") && key.size() > 6 && key[6] != '-' && key[6] != '+'
                                         ? ParseInt(std::string_view(key).substr(6))
                                         : std::nullopt;
    if (!index)
      skip(key, "not a colour key (Index_0 to Index_285)");
    else if (*index >= kClutIndexCount)
      skip(key, "there is no colour index " + std::to_string(*index) + " (0 to 285)");
    else if (!Names().Shown(*index))
      skip(key, "the editor shows no colour " + std::to_string(*index));
    else
      indexes.insert(*index);
  }
  std::array<std::int32_t, kClutIndexCount> colours;
  colours.fill(kClutUnreadable);
  for (int i : indexes) {
    const std::string key = LogicalColorsKey(i);
    const std::string value = c.platform.IniRead(kLogicalColorsSection, key, ini);
    colours[i] = ParseClutLine(value);
    if (colours[i] == kClutUnreadable) skip(key, "\"" + value + "\" is not a colour");
  }
  const int imported = static_cast<int>(std::count_if(colours.begin(), colours.end(), [](std::int32_t v) { return v != kClutUnreadable; }));
  if (imported == 0)
    throw Failure{ini_name + " has no colours in its section \"Logical Colors\"; nothing was written"};
  const FileLock lock(c.platform, path);
  const Table table = ReadTable(c.platform, path, Use::Write);
  ClutNewLines new_lines;
  int changed = 0;
  for (int i = 0; i < kClutIndexCount; ++i) {
    if (colours[i] == kClutUnreadable || colours[i] == table.values[i]) continue;
    new_lines[i] = FormatClutLine(i, colours[i]);
    ++changed;
  }
  if (changed) SaveLines(c.platform, table, new_lines);
  c.out << path << ": " << Count(imported, "colour", "colours") << " imported from " << ini_name << ", "
        << (changed ? Count(changed, "colour", "colours") + " changed" : std::string("none changed; nothing was written"))
        << "\n";
  return skipped ? kExitFindings : kExitClean;
}

// A table at the current version that lacks lines: the missing ones from its
// reference, with the file's own line end. The editor would show them "Unreadable".
void CompleteFromReference(Platform& platform, const Table& table, const Table& reference) {
  const std::string end = table.bytes.find("\r\n") != std::string::npos ? "\r\n" : "\n";
  std::string bytes = table.bytes;
  if (!bytes.empty() && bytes.back() != '\n') bytes += end;
  for (std::size_t i = table.lines.size(); i < static_cast<std::size_t>(kClutIndexCount); ++i)
    bytes += (i < reference.lines.size() ? reference.lines[i] : FormatClutLine(static_cast<int>(i), kClutNotDefined)) + end;
  if (IoStatus status = ReplaceFileContent(platform, table.path, bytes); !status)
    throw Failure{"cannot write " + table.path + ": " + status.message + "; the file is unchanged"};
}

int RunUpgrade(Context& c) {
  Platform& platform = c.platform;
  const std::string& name = c.args[0];
  const Table before = ReadTable(platform, name, Use::Write);
  const std::string path = platform.AbsolutePath(name);
  const std::optional<std::string> version = before.lines.empty() ? std::nullopt : ClutVersionOfLine(before.lines[0]);
  const bool current = version == kClutCurrentVersion;
  if (current && before.lines.size() == static_cast<std::size_t>(kClutIndexCount)) {
    c.out << name << ": already version " << kClutCurrentVersion << "\n";
    return kExitClean;
  }
  const std::string reference_path = ReferenceOf(platform, path);
  if (!platform.FileExists(reference_path))
    throw Failure{"cannot upgrade " + name + ": its reference file " + reference_path + " does not exist, and " +
                  (current ? "the missing lines" : "the colours whose meaning changed since its version") +
                  " come from it; nothing was written"};
  const Table reference = ReadTable(platform, reference_path, Use::Read);

  const FileLock lock(platform, path);
  const Table table = ReadTable(platform, path, Use::Write);
  if (current) {
    CompleteFromReference(platform, table, reference);
    c.out << name << ": " << Count(kClutIndexCount - table.lines.size(), "missing line", "missing lines")
          << " added from " << FileNameOf(reference_path) << "\n";
    return kExitClean;
  }
  // The editor's upgrade, quietly: what would be its messages is said here, in one line.
  const std::string home = platform.RegReadString(kDVHomeKey, "DVHOME");
  const std::string global = home.empty() ? std::string() : home + "\\etc\\" + FileNameOf(path);
  const bool refresh = !global.empty() && platform.FileExists(global);
  ColorTableState state;
  state.ClutFileName = path;
  // No scheme folder: the file's own reference, required above, is the one taken.
  const ColorSchemeModule schemes;
  CheckClutVersion(platform, schemes, state, true, LoadReport::Quiet);
  bool found = false;
  if (GetClutVersion(platform, path, found) != kClutCurrentVersion || !found)
    throw Failure{"cannot upgrade " + name + " (it could not be written); the file is unchanged"};
  c.out << name << ": " << (version ? "version " + ShownVersion(*version) : std::string("no version")) << " -> "
        << kClutCurrentVersion << " (changed colours taken from " << FileNameOf(reference_path) << ")"
        << (refresh ? "; the toolkit's copy " + global + " too" : "") << "\n";
  return kExitClean;
}

int RunReport(Context& c) {
  const Table table = ReadTable(c.platform, c.args[0], Use::Read);
  const std::string html =
      ReportHtml(c.args[0], table.values, quality::Check(table.values, [](int index) { return Names().Label(index); }));
  if (c.output.empty()) {
    c.out << html;
    return kExitClean;
  }
  RequireRegularFile(c.platform, c.output, true);
  if (IoStatus status = ReplaceFileContent(c.platform, c.output, html); !status)
    throw Failure{"cannot write " + c.output + ": " + status.message};
  c.out << c.output << ": the report of " << c.args[0] << "\n";
  return kExitClean;
}

constexpr Command kCommands[] = {
    {"check", "check [--json] [--recursive] PATH...",
     "Reads each colour table as the editor reads it and reports its version marker, its line count and line ends, "
     "unreadable and not-defined entries with their line numbers, and the colour quality rules (contrast, "
     "distinguishable groups, also for colour-blind readers). A folder stands for its colour tables (*.clut), "
     "with --recursive (-r) also those of its subfolders: then each table gets one line, followed by a summary. "
     "Takes no lock and writes nothing. Exit code 0 when every table is clean, 1 on findings, 2 when a table "
     "cannot be read.",
     1, SIZE_MAX, kJson | kRecursive, RunCheck},
    {"diff", "diff [--json] A B", "Lists every colour index whose colour differs, with the colour's name, old and new "
     "colour. Exit code 1 when they differ, 2 when either is not a colour table.", 2, 2, kJson, RunDiff},
    {"show", "show [--json] FILE", "Lists every colour index with its colour and name; with swatches on a terminal "
     "(not when NO_COLOR is set).", 1, 1, kJson, RunShow},
    {"report", "report FILE [-o REPORT.html]", "Writes a page for people to look at: every colour as a swatch by "
     "tab and category with its name, the findings of the quality rules with the colours involved side by side, "
     "and the status and alarm colours as protanopes, deuteranopes and tritanopes see them next to normal vision. "
     "One HTML file that needs nothing else (no scripts, no other files); on standard output without -o.",
     1, 1, kOutput, RunReport},
    {"set", "set FILE INDEX COLOUR", "Sets one colour (COLOUR: #RRGGBB, \"R G B\" or R,G,B), keeping every other "
     "line, comment and line end. Takes the file's lock as the editor does; writes nothing when the colour is "
     "already set.", 3, 5, 0, RunSet},
    {"export", "export FILE INI", "Writes the colours the editor shows into INI, section \"Logical Colors\", keys "
     "Index_<n>, as the editor's Export does.", 2, 2, 0, RunExport},
    {"import", "import INI FILE", "Writes the colours of an exported INI file into FILE under its lock, keeping "
     "every other line. Keys that are no colour the editor shows, and values that are no colour, are named on "
     "standard error and skipped: exit code 1.", 2, 2, 0, RunImport},
    {"upgrade", "upgrade FILE", "Brings an old colour table to version 93.07 with the editor's rules, taking the "
     "changed colours from the reference file beside it (NAME$CLUT); completes a table of the current version that "
     "lacks lines from the same file. Exit code 2 without a reference file.", 1, 1, 0, RunUpgrade},
};

const Command* FindCommand(std::string_view name) {
  for (const Command& command : kCommands)
    if (command.name == name) return &command;
  return nullptr;
}

std::string CommandHelp(const Command& command) {
  return std::string("usage: tqclut [--dvhome FOLDER] ") + std::string(command.usage) + "\n\n" +
         std::string(command.help) + "\n";
}

// ---- Options -------------------------------------------------------------------------

struct Arguments {
  std::vector<std::string> operands;
  unsigned options = 0;
  bool help = false, version = false;
  std::optional<std::string> dvhome;
  std::string output;
  std::string error;  // the first bad option
};

// Options anywhere, "--" ends them; "-" and negative numbers are operands.
Arguments ParseArguments(const std::vector<std::string>& args) {
  Arguments parsed;
  bool options_end = false;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    const bool operand = options_end || arg.size() < 2 || arg[0] != '-' || (arg[1] >= '0' && arg[1] <= '9');
    if (operand) {
      parsed.operands.push_back(arg);
    } else if (arg == "--") {
      options_end = true;
    } else if (arg == "--json") {
      parsed.options |= kJson;
    } else if (arg == "--recursive" || arg == "-r") {
      parsed.options |= kRecursive;
    } else if (arg == "--help" || arg == "-h") {
      parsed.help = true;
    } else if (arg == "--version") {
      parsed.version = true;
    } else if (arg == "-o" || arg == "--output" || arg.starts_with("--output=")) {
      parsed.options |= kOutput;
      if (arg.starts_with("--output="))
        parsed.output = arg.substr(9);
      else if (i + 1 < args.size())
        parsed.output = args[++i];
      else if (parsed.error.empty())
        parsed.error = arg + " needs a file";
    } else if (arg == "--dvhome" || arg.starts_with("--dvhome=")) {
      if (arg != "--dvhome")
        parsed.dvhome = arg.substr(9);
      else if (i + 1 < args.size())
        parsed.dvhome = args[++i];
      else if (parsed.error.empty())
        parsed.error = "--dvhome needs a folder";
    } else if (parsed.error.empty()) {
      parsed.error = "unknown option \"" + arg + "\"";
    }
  }
  return parsed;
}

std::string OptionName(unsigned option) {
  return option == kJson ? "--json" : option == kRecursive ? "--recursive" : "-o";
}

}  // namespace

std::string WhyNotAColourTable(std::string_view bytes) {
  if (bytes.empty()) return "it is empty";
  if (bytes.find('\0') != std::string_view::npos) return "it holds NUL bytes";
  for (std::size_t cr = bytes.find('\r'); cr != std::string_view::npos; cr = bytes.find('\r', cr + 1))
    if (cr + 1 == bytes.size() || bytes[cr + 1] != '\n') return "it has a CR without LF, a line end the editor does not read";
  const std::vector<std::string> lines = SplitClutLines(bytes, kClutIndexCount).lines;
  const std::size_t colours =
      std::count_if(lines.begin(), lines.end(), [](const std::string& line) { return ParseClutLine(line) != kClutUnreadable; });
  if (colours * 2 <= lines.size())
    return "only " + std::to_string(colours) + " of its first " + Count(lines.size(), "line reads", "lines read") +
           " as a colour";
  return {};
}

std::string ValidUtf8(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    // A sequence's length from its lead byte; 0 for a byte that cannot lead one.
    const std::size_t length =
        c < 0x80 ? 1 : c >= 0xC2 && c <= 0xDF ? 2 : c >= 0xE0 && c <= 0xEF ? 3 : c >= 0xF0 && c <= 0xF4 ? 4 : 0;
    bool valid = length != 0 && i + length <= text.size();
    for (std::size_t k = 1; valid && k < length; ++k) valid = (static_cast<unsigned char>(text[i + k]) & 0xC0) == 0x80;
    if (valid && length >= 3) {
      const unsigned char second = static_cast<unsigned char>(text[i + 1]);
      valid = !(c == 0xE0 && second < 0xA0) && !(c == 0xED && second >= 0xA0) && !(c == 0xF0 && second < 0x90) &&
              !(c == 0xF4 && second >= 0x90);
    }
    if (valid) {
      out.append(text.substr(i, length));
      i += length;
    } else {
      out += "\xEF\xBF\xBD";
      ++i;
    }
  }
  return out;
}

std::string JsonString(std::string_view text) {
  std::string out = "\"";
  for (const char c : ValidUtf8(text)) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", c);
      out += escape;
    } else {
      out += c;
    }
  }
  return out + "\"";
}

std::string Usage() {
  std::string text =
      "usage: tqclut [--dvhome FOLDER] COMMAND ARGUMENTS\n"
      "       tqclut help [COMMAND] | --help | --version\n\ncommands:\n";
  for (const Command& command : kCommands) text += "  tqclut " + std::string(command.usage) + "\n";
  text +=
      "\nOptions may stand anywhere; \"--\" ends them. \"tqclut help COMMAND\" describes a command. --dvhome (or "
      "the DVHOME environment variable) names the toolkit's home.\n";
  return text;
}

int Run(Platform& platform, const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
        const Environment& environment) {
  const Arguments parsed = ParseArguments(args);
  const Command* command = parsed.operands.empty() ? nullptr : FindCommand(parsed.operands[0]);
  const std::string usage_line =
      command ? "usage: tqclut " + std::string(command->usage) : std::string("tqclut --help lists the commands");
  if (!parsed.error.empty()) {
    err << kToolName << ": " << parsed.error << "; " << usage_line << "\n";
    return kExitError;
  }
  if (parsed.version) {
    out << kToolName << " " << TQ_VERSION << "\n";
    return kExitClean;
  }
  std::vector<std::string> rest = parsed.operands;
  if (!rest.empty() && rest[0] == "help") {
    rest.erase(rest.begin());
    if (rest.size() > 1) {
      err << kToolName << ": help: wrong number of arguments; usage: tqclut help [COMMAND]\n";
      return kExitError;
    }
    command = rest.empty() ? nullptr : FindCommand(rest[0]);
    if (!rest.empty() && !command) {
      err << kToolName << ": unknown command \"" << rest[0] << "\" (tqclut --help lists the commands)\n";
      return kExitError;
    }
    out << (command ? CommandHelp(*command) : Usage());
    return kExitClean;
  }
  if (rest.empty()) {
    (parsed.help ? out : err) << Usage();
    return parsed.help ? kExitClean : kExitError;
  }
  if (!command) {
    err << kToolName << ": unknown command \"" << rest[0] << "\" (tqclut --help lists the commands)\n";
    return kExitError;
  }
  if (parsed.help) {
    out << CommandHelp(*command);
    return kExitClean;
  }
  if (const unsigned foreign = parsed.options & ~command->options) {
    err << kToolName << ": " << command->name << " takes no option " << OptionName(foreign & -foreign) << "; "
        << usage_line << "\n";
    return kExitError;
  }
  rest.erase(rest.begin());
  if (rest.size() < command->min_args || rest.size() > command->max_args) {
    err << kToolName << ": " << command->name << ": wrong number of arguments; " << usage_line << "\n";
    return kExitError;
  }
  if (parsed.dvhome) {
    if (!environment.set_toolkit_home) {
      err << kToolName << ": --dvhome cannot be used here\n";
      return kExitError;
    }
    environment.set_toolkit_home(*parsed.dvhome);
  }
  Context context{platform, rest, out, err, environment.terminal && !environment.no_color, parsed.options, parsed.output};
  int code;
  try {
    code = command->run(context);
  } catch (const Failure& failure) {
    err << kToolName << ": " << failure.message << "\n";
    code = kExitError;
  }
  // A report that did not arrive is no report: a full disk or a closed pipe is an error.
  if (!out.flush()) {
    err << kToolName << ": cannot write to standard output\n";
    return kExitError;
  }
  return code;
}

}  // namespace tq::clut_tool
