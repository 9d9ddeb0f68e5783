// The writing commands: set, export, import and upgrade, each under the table's lock.
#include <algorithm>
#include <set>

#include "colortable/clut_format.h"
#include "colortable/clut_locations.h"
#include "colortable/color_table.h"
#include "support/colour_text.h"
#include "support/utils.h"
#include "tqclut/tool.h"
#include "tqclut/tqclut.h"

namespace tq::clut_tool {
int RunSet(Context& c) {
  const int index = ParseIndex(c.args[1]);
  const std::int32_t colour = ParseColour({c.args.begin() + 2, c.args.end()});
  const std::string& path = c.args[0];
  ReadTable(c.platform, path, Use::Write);  // a missing file or a folder is reported before a lock file is made
  const FileLock lock(c.platform, path);
  const Table table = ReadTable(c.platform, path, Use::Write);
  const std::string what = path + ": " + std::to_string(index) + " " + Label(index) + ": ";
  if (table.values[index] == colour) {
    c.out << what << "already " << FormatColourText(colour) << "; nothing was written\n";
    return kExitClean;
  }
  ClutNewLines new_lines;
  new_lines[index] = FormatClutLine(index, colour);
  SaveLines(c.platform, table, new_lines);
  c.out << what << Describe(table.values[index]) << " -> " << FormatColourText(colour) << "\n";
  return kExitClean;
}

namespace {

// An INI value of the logical colours file; not-defined colours keep their state.
std::string LogicalColoursValue(int index, std::int32_t value) {
  const IndexCatalogue& names = Names();
  return LogicalColorValue(index, value, std::nullopt, names.Name(index), names.Tab(index), names.Category(index));
}

}  // namespace

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

namespace {

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

}  // namespace

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

namespace {

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

}  // namespace

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
  CheckClutVersion(platform, schemes, state, true, LoadReport::Quiet());
  bool found = false;
  if (GetClutVersion(platform, path, found) != kClutCurrentVersion || !found)
    throw Failure{"cannot upgrade " + name + " (it could not be written); the file is unchanged"};
  c.out << name << ": " << (version ? "version " + ShownVersion(*version) : std::string("no version")) << " -> "
        << kClutCurrentVersion << " (changed colours taken from " << FileNameOf(reference_path) << ")"
        << (refresh ? "; the toolkit's copy " + global + " too" : "") << "\n";
  return kExitClean;
}

}  // namespace tq::clut_tool
