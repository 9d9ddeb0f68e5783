#include "tqclut/tqclut.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <optional>
#include <string_view>

#include "colortable/clut_format.h"
#include "colortable/color_table.h"
#include "editor/catalogue.h"
#include "editor/session.h"
#include "locking/lock_file_creator.h"
#include "quality/color_quality.h"
#include "support/utils.h"

namespace tq::clut_tool {
namespace {

constexpr const char* kToolName = "tqclut";

// A failure that ends the command with one line on standard error and exit code 2.
struct Failure {
  std::string message;
};

// ---- Reading ---------------------------------------------------------------------

// A colour table file as the editor reads it: its first 286 lines through the
// editor's parser; a line that is missing counts as unreadable.
struct Table {
  std::string path;
  std::string bytes;
  std::vector<std::string> lines;  // at most 286
  std::size_t line_count = 0;      // every line of the file
  std::array<std::int32_t, kClutIndexCount> values{};
};

Table ReadTable(Platform& platform, const std::string& path) {
  if (platform.FolderExists(path)) throw Failure{path + " is a folder, not a colour table file"};
  if (!platform.FileExists(path)) throw Failure{path + ": no such file"};
  Table table;
  table.path = path;
  if (IoStatus status = platform.ReadFile(path, table.bytes); !status)
    throw Failure{"cannot read " + path + ": " + status.message};
  const ClutLines split = SplitClutLines(table.bytes);
  table.line_count = split.lines.size();
  table.lines.assign(split.lines.begin(), split.lines.begin() + std::min<std::size_t>(split.lines.size(), kClutIndexCount));
  table.values = quality::ParseColourTable(table.bytes);
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

// "#RRGGBB", "R G B" (one argument or three) or "R,G,B".
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
  std::vector<int> fields;
  std::string field;
  for (char c : text + " ") {
    if (c == ' ' || c == ',') {
      if (field.empty()) continue;
      const std::optional<int> value = ParseInt(field);
      if (!value || *value < 0 || *value > 255) throw bad();
      fields.push_back(*value);
      field.clear();
    } else {
      field += c;
    }
  }
  if (fields.size() != 3) throw bad();
  return fields[0] | (fields[1] << 8) | (fields[2] << 16);
}

// ---- Writing -----------------------------------------------------------------------

// The lock of a colour table file, taken as the editor takes it; a holder is reported
// through the platform's message (on standard error) and the command stops.
class FileLock {
 public:
  FileLock(Platform& platform, const std::string& path) : creator_(platform) {
    std::string app = kToolName, user = platform.WindowsUserName();
    if (creator_.CreateLockFile(path, app, user, LockMode::Open, false) != LockResult::Locked)
      throw Failure{path + " is locked by another editor or tool (see above); nothing was written"};
  }

 private:
  clsLockFileCreator creator_;
};

// Writes new value fields for some indexes with the editor's save: old comments and
// lines kept, as many lines as the file had, written beside it and put in its place.
void SaveLines(Platform& platform, const Table& table, const ClutNewLines& new_lines) {
  for (int i = 0; i < kClutIndexCount; ++i)
    if (new_lines[i] && i >= static_cast<int>(table.lines.size()))
      throw Failure{table.path + " has only " + std::to_string(table.lines.size()) + " lines, so index " +
                    std::to_string(i) + " is not in it (tqclut upgrade adds the missing lines); nothing was written"};
  if (IoStatus status = ReplaceFileContent(platform, table.path, MergeClutSave(table.bytes, new_lines)); !status)
    throw Failure{"cannot write " + table.path + ": " + status.message + "; the file is unchanged"};
}

// ---- Commands ------------------------------------------------------------------------

struct Command {
  std::string_view name;
  std::string_view usage;
  std::string_view help;
  std::size_t min_args, max_args;
  int (*run)(Platform&, const std::vector<std::string>& args, std::ostream& out, std::ostream& err, const Terminal&,
             bool json);
};

std::string LineEnds(std::string_view bytes) {
  std::size_t crlf = 0, lf = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i)
    if (bytes[i] == '\n') ++(i > 0 && bytes[i - 1] == '\r' ? crlf : lf);
  if (crlf && lf) return "mixed (" + std::to_string(crlf) + " CR LF, " + std::to_string(lf) + " LF)";
  return crlf ? "CR LF" : lf ? "LF" : "none";
}

std::string JsonString(std::string_view text) {
  std::string out = "\"";
  for (unsigned char c : text) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += static_cast<char>(c);
    } else if (c < 0x20) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", c);
      out += escape;
    } else {
      out += static_cast<char>(c);
    }
  }
  return out + "\"";
}

std::string JsonIndexes(const std::vector<int>& indexes) {
  std::string out = "[";
  for (std::size_t i = 0; i < indexes.size(); ++i) out += (i ? "," : "") + std::to_string(indexes[i]);
  return out + "]";
}

// What `check` finds in one file.
struct CheckResult {
  std::string version;  // "" without a marker
  std::vector<int> unreadable, not_defined;  // indexes (line = index + 1)
  std::vector<quality::Finding> quality;
  int findings = 0;
};

CheckResult CheckTable(const Table& table) {
  CheckResult result;
  bool found = false;
  if (!table.lines.empty())
    if (std::optional<std::string> version = ClutVersionOfLine(table.lines[0])) {
      result.version = *version;
      found = true;
    }
  if (!found || result.version != kClutCurrentVersion) ++result.findings;
  if (table.line_count < static_cast<std::size_t>(kClutIndexCount)) ++result.findings;
  for (int i = 0; i < kClutIndexCount; ++i) {
    if (table.values[i] == kClutUnreadable && i < static_cast<int>(table.lines.size())) result.unreadable.push_back(i);
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

int RunCheck(Platform& platform, const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
             const Terminal&, bool json) {
  int exit_code = kExitClean;
  std::string json_files;
  for (const std::string& path : args) {
    Table table;
    try {
      table = ReadTable(platform, path);
    } catch (const Failure& failure) {
      err << kToolName << ": " << failure.message << "\n";
      exit_code = kExitError;
      continue;
    }
    const CheckResult result = CheckTable(table);
    if (result.findings && exit_code == kExitClean) exit_code = kExitFindings;
    const std::size_t missing = table.line_count < kClutIndexCount ? kClutIndexCount - table.line_count : 0;
    if (json) {
      std::string rules;
      for (const quality::Finding& f : result.quality) {
        std::string names;
        for (const std::string& name : f.names) names += (names.empty() ? "" : ",") + JsonString(name);
        char measured[32], threshold[32];
        std::snprintf(measured, sizeof measured, "%.2f", f.measured);
        std::snprintf(threshold, sizeof threshold, "%.2f", f.threshold);
        rules += std::string(rules.empty() ? "" : ",") + "{\"rule\":" + JsonString(f.rule) +
                 ",\"indexes\":" + JsonIndexes(f.indexes) + ",\"names\":[" + names + "],\"measured\":" + measured +
                 ",\"threshold\":" + threshold + ",\"checked\":" + (f.checked ? "true" : "false") +
                 ",\"pass\":" + (f.pass ? "true" : "false") + ",\"aaa\":" + (f.enhanced ? "true" : "false") +
                 ",\"vision\":" + JsonString(f.vision) + "}";
      }
      json_files += std::string(json_files.empty() ? "" : ",") + "{\"file\":" + JsonString(path) +
                    ",\"version\":" + (result.version.empty() ? "null" : JsonString(result.version)) +
                    ",\"lines\":" + std::to_string(table.line_count) + ",\"line_ends\":" + JsonString(LineEnds(table.bytes)) +
                    ",\"missing_lines\":" + std::to_string(missing) + ",\"unreadable\":" + JsonIndexes(result.unreadable) +
                    ",\"not_defined\":" + JsonIndexes(result.not_defined) + ",\"quality\":[" + rules +
                    "],\"findings\":" + std::to_string(result.findings) + "}";
      continue;
    }
    out << path << "\n";
    out << "  version:     "
        << (result.version.empty() ? std::string("no version marker (tqclut upgrade adds one)")
            : result.version == kClutCurrentVersion ? result.version + " (current)"
                                                    : result.version + " (old: tqclut upgrade brings it to 93.07)")
        << "\n";
    out << "  lines:       " << table.line_count << (missing ? " (" + std::to_string(missing) + " missing)" : "")
        << ", line ends " << LineEnds(table.bytes) << "\n";
    out << "  unreadable:  " << (result.unreadable.empty() ? "none" : "lines " + LineList(result.unreadable)) << "\n";
    out << "  not defined: " << (result.not_defined.empty() ? "none" : "lines " + LineList(result.not_defined)) << "\n";
    out << "  quality:\n" << quality::FormatReport(result.quality, "    ");
    out << "  " << (result.findings ? std::to_string(result.findings) + " finding(s)" : std::string("clean")) << "\n";
  }
  if (json) out << "[" << json_files << "]\n";
  return exit_code;
}

int RunShow(Platform& platform, const std::vector<std::string>& args, std::ostream& out, std::ostream&,
            const Terminal& terminal, bool) {
  const Table table = ReadTable(platform, args[0]);
  for (int i = 0; i < kClutIndexCount; ++i) {
    const std::int32_t value = table.values[i];
    char line[64];
    std::snprintf(line, sizeof line, "%3d  %-11s ", i, Describe(value).c_str());
    out << line;
    if (terminal.swatches) {
      if (value >= 0)
        out << "\x1b[48;2;" << (value & 0xFF) << ";" << ((value >> 8) & 0xFF) << ";" << ((value >> 16) & 0xFF)
            << "m    \x1b[0m ";
      else
        out << "     ";
    }
    if (value >= 0) {
      std::snprintf(line, sizeof line, "(%3d, %3d, %3d)  ", value & 0xFF, (value >> 8) & 0xFF, (value >> 16) & 0xFF);
      out << line;
    } else {
      out << std::string(17, ' ');
    }
    out << Label(i) << "\n";
  }
  return kExitClean;
}

int RunDiff(Platform& platform, const std::vector<std::string>& args, std::ostream& out, std::ostream&,
            const Terminal&, bool) {
  const Table a = ReadTable(platform, args[0]), b = ReadTable(platform, args[1]);
  int differences = 0;
  for (int i = 0; i < kClutIndexCount; ++i) {
    if (a.values[i] == b.values[i]) continue;
    ++differences;
    char line[64];
    std::snprintf(line, sizeof line, "%3d  %-11s -> %-11s  ", i, Describe(a.values[i]).c_str(), Describe(b.values[i]).c_str());
    out << line << Label(i) << "\n";
  }
  if (differences) out << differences << " of 286 colours differ\n";
  return differences ? kExitFindings : kExitClean;
}

int RunSet(Platform& platform, const std::vector<std::string>& args, std::ostream& out, std::ostream&,
           const Terminal&, bool) {
  const int index = ParseIndex(args[1]);
  const std::int32_t colour = ParseColour({args.begin() + 2, args.end()});
  const std::string& path = args[0];
  ReadTable(platform, path);  // a missing file or a folder is reported before a lock file is made
  const FileLock lock(platform, path);
  const Table table = ReadTable(platform, path);
  ClutNewLines new_lines;
  new_lines[index] = FormatClutLine(index, colour);
  SaveLines(platform, table, new_lines);
  out << args[0] << ": " << index << " " << Label(index) << ": " << Describe(table.values[index]) << " -> "
      << Hex(colour) << "\n";
  return kExitClean;
}

// An INI value of the logical colours file; not-defined colours keep their state.
std::string LogicalColoursValue(int index, std::int32_t value) {
  const IndexCatalogue& names = Names();
  const std::string text = LogicalColorValue(index, value == kClutNotDefined ? 0 : value, names.Name(index),
                                             names.Tab(index), names.Category(index));
  if (value != kClutNotDefined) return text;
  // The three fields of "not defined" in place of the colour's.
  return "  " + FormatClutComponent(-1) + FormatClutComponent(-1) + FormatClutComponent(-1) + text.substr(text.find('#'));
}

int RunExport(Platform& platform, const std::vector<std::string>& args, std::ostream& out, std::ostream&,
              const Terminal&, bool) {
  const Table table = ReadTable(platform, args[0]);
  const std::string ini = platform.AbsolutePath(args[1]);
  if (platform.FolderExists(ini)) throw Failure{args[1] + " is a folder, not an INI file"};
  int written = 0;
  for (int i = 0; i < kClutIndexCount; ++i) {
    if (!Names().Shown(i) || table.values[i] == kClutUnreadable) continue;
    const std::string key = "Index_" + std::to_string(i), value = LogicalColoursValue(i, table.values[i]);
    platform.IniWrite(kLogicalColorsSection, key, value, ini);
    // The profile functions do not say whether they wrote: read the value back.
    if (ParseClutLine(platform.IniRead(kLogicalColorsSection, key, ini)) != table.values[i])
      throw Failure{"cannot write " + args[1] + " (" + key + " did not arrive)"};
    ++written;
  }
  out << args[1] << ": " << written << " colours exported from " << args[0] << "\n";
  return kExitClean;
}

int RunImport(Platform& platform, const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
              const Terminal&, bool) {
  // The profile functions look for a file without a folder in the Windows folder.
  const std::string ini = platform.AbsolutePath(args[0]), &path = args[1];
  if (platform.FolderExists(ini)) throw Failure{args[0] + " is a folder, not an INI file"};
  if (!platform.FileExists(ini)) throw Failure{args[0] + ": no such file"};
  ReadTable(platform, path);
  ClutNewLines new_lines;
  int imported = 0;
  for (int i = 0; i < kClutIndexCount; ++i) {
    if (!Names().Shown(i)) continue;
    const std::string value = platform.IniRead(kLogicalColorsSection, "Index_" + std::to_string(i), ini);
    if (value.empty()) continue;
    const std::int32_t colour = ParseClutLine(value);
    if (colour == kClutUnreadable) {
      err << kToolName << ": " << args[0] << ": Index_" << i << " is not a colour (\"" << value << "\"); skipped\n";
      continue;
    }
    new_lines[i] = FormatClutLine(i, colour);
    ++imported;
  }
  if (imported == 0) throw Failure{args[0] + " has no colours in its section \"Logical Colors\"; nothing was written"};
  const FileLock lock(platform, path);
  SaveLines(platform, ReadTable(platform, path), new_lines);
  out << args[1] << ": " << imported << " colours imported from " << args[0] << "\n";
  return kExitClean;
}

int RunUpgrade(Platform& platform, const std::vector<std::string>& args, std::ostream& out, std::ostream&,
               const Terminal&, bool) {
  ReadTable(platform, args[0]);
  // The reference file's name replaces every "." of the path: no "./" may be left in it.
  const std::string path = platform.AbsolutePath(args[0]);
  bool found = false;
  const std::string before = GetClutVersion(platform, path, found);
  if (found && before == kClutCurrentVersion) {
    out << args[0] << ": already version " << kClutCurrentVersion << "\n";
    return kExitClean;
  }
  const FileLock lock(platform, path);
  const std::string reference = GetReferenceClutFile(platform, path, true, true);
  ColorTableState state;
  state.ClutFileName = path;
  CheckClutVersion(platform, state, true, LoadReport::ToUser);
  const std::string after = GetClutVersion(platform, path, found);
  if (!found || after != kClutCurrentVersion) throw Failure{"cannot upgrade " + args[0] + "; the file is unchanged"};
  out << args[0] << ": " << (before.empty() ? std::string("no version") : "version " + before) << " -> "
      << kClutCurrentVersion
      << (reference.empty() ? " (no reference file beside it: only the version marker was changed)"
                            : " (changed colours taken from " + FileNameOf(reference) + ")")
      << "\n";
  return kExitClean;
}

constexpr Command kCommands[] = {
    {"check", "check [--json] FILE...",
     "Reads each colour table as the editor reads it and reports its version marker, its line count and line ends, "
     "unreadable and not-defined entries with their line numbers, and the colour quality rules (contrast, "
     "distinguishable groups, also for colour-blind readers). Exit code 0 when clean, 1 on findings, 2 on an error.",
     1, SIZE_MAX, RunCheck},
    {"diff", "diff A B", "Lists every colour index whose colour differs, with the colour's name, old and new colour. "
     "Exit code 1 when they differ.", 2, 2, RunDiff},
    {"show", "show FILE", "Lists every colour index with its colour and name; with swatches on a terminal.", 1, 1,
     RunShow},
    {"set", "set FILE INDEX COLOUR", "Sets one colour (COLOUR: #RRGGBB, \"R G B\" or R,G,B), keeping every other "
     "line and comment. Takes the file's lock as the editor does.", 3, 5, RunSet},
    {"export", "export FILE INI", "Writes the colours the editor shows into INI, section \"Logical Colors\", keys "
     "Index_<n>, as the editor's Export does.", 2, 2, RunExport},
    {"import", "import INI FILE", "Writes the colours of an exported INI file into FILE under its lock.", 2, 2,
     RunImport},
    {"upgrade", "upgrade FILE", "Brings an old colour table to version 93.07 with the editor's rules, taking the "
     "changed colours from the reference file beside it (NAME$CLUT).", 1, 1, RunUpgrade},
};

const Command* FindCommand(std::string_view name) {
  for (const Command& command : kCommands)
    if (command.name == name) return &command;
  return nullptr;
}

std::string CommandHelp(const Command& command) {
  return std::string("usage: tqclut ") + std::string(command.usage) + "\n\n" + std::string(command.help) + "\n";
}

}  // namespace

std::string MessageLine(const std::string& title, const std::string& prompt) {
  std::string line = std::string(kToolName) + ": " + (title.empty() ? "" : title + ": ");
  for (char c : prompt) {
    if (c == '\r') continue;
    if (c != '\n') line += c;
    else if (!line.empty() && line.back() != ' ') line += ' ';
  }
  while (!line.empty() && line.back() == ' ') line.pop_back();
  return line;
}

std::string Usage() {
  std::string text = "usage: tqclut [--dvhome FOLDER] COMMAND ARGUMENTS\n\ncommands:\n";
  for (const Command& command : kCommands) text += "  tqclut " + std::string(command.usage) + "\n";
  text += "\n\"tqclut COMMAND --help\" describes a command. --dvhome (or the DVHOME environment variable) names "
          "the toolkit's home.\n";
  return text;
}

int Run(Platform& platform, const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
        const Terminal& terminal) {
  if (args.empty() || args[0] == "--help" || args[0] == "-h" || args[0] == "help") {
    (args.empty() ? err : out) << Usage();
    return args.empty() ? kExitError : kExitClean;
  }
  const Command* command = FindCommand(args[0]);
  if (!command) {
    err << kToolName << ": unknown command \"" << args[0] << "\" (tqclut --help lists the commands)\n";
    return kExitError;
  }
  std::vector<std::string> rest(args.begin() + 1, args.end());
  if (std::find(rest.begin(), rest.end(), "--help") != rest.end()) {
    out << CommandHelp(*command);
    return kExitClean;
  }
  bool json = false;
  if (command->name == "check") {
    const auto flag = std::find(rest.begin(), rest.end(), "--json");
    if (flag != rest.end()) {
      json = true;
      rest.erase(flag);
    }
  }
  if (rest.size() < command->min_args || rest.size() > command->max_args) {
    err << kToolName << ": " << command->name << ": wrong number of arguments; usage: tqclut " << command->usage << "\n";
    return kExitError;
  }
  try {
    return command->run(platform, rest, out, err, terminal, json);
  } catch (const Failure& failure) {
    err << kToolName << ": " << failure.message << "\n";
    return kExitError;
  }
}

}  // namespace tq::clut_tool
