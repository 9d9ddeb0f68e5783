// The reading commands: check (of files and whole folders), show, diff and report.
#include <algorithm>
#include <set>

#include "colortable/clut_format.h"
#include "colortable/color_table.h"
#include "tqclut/report.h"
#include "tqclut/tool.h"
#include "tqclut/tqclut.h"

namespace tq::clut_tool {
namespace {

std::string LineEnds(std::string_view bytes) {
  std::size_t crlf = 0, lf = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i)
    if (bytes[i] == '\n') ++(i > 0 && bytes[i - 1] == '\r' ? crlf : lf);
  if (crlf && lf) return "mixed (" + std::to_string(crlf) + " CR LF, " + std::to_string(lf) + " LF)";
  return crlf ? "CR LF" : lf ? "LF" : "none";
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
}  // namespace

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

int RunReport(Context& c) {
  const Table table = ReadTable(c.platform, c.args[0], Use::Read);
  const std::string html = ReportHtml(Texts(), c.args[0], table.values,
                                      quality::Check(table.values, [](int index) { return Names().Label(index); }));
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

}  // namespace tq::clut_tool
