// Reading and writing colour tables as the editor does, and the values and JSON
// pieces the commands share.
#include <algorithm>
#include <charconv>
#include <cstdio>

#include "colortable/clut_locations.h"
#include "colortable/color_table.h"
#include "locking/lock_file.h"
#include "support/colour_text.h"
#include "support/utils.h"
#include "tqclut/tool.h"
#include "tqclut/tqclut.h"

namespace tq::clut_tool {

std::string Count(std::size_t n, std::string_view one, std::string_view many) {
  return std::to_string(n) + " " + std::string(n == 1 ? one : many);
}

// ---- Files ---------------------------------------------------------------------------

void RequireRegularFile(Platform& platform, const std::string& path, bool may_be_missing) {
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

const LanguageTexts& Texts() {
  static const LanguageTexts english;
  return english;
}

const IndexCatalogue& Names() {
  static const IndexCatalogue catalogue(Texts());
  return catalogue;
}

std::string Label(int index) {
  const std::string label = Names().Label(index);
  return label.empty() ? "(not shown by the editor)" : label;
}

// ---- Values ------------------------------------------------------------------------


std::string Describe(std::int32_t value) {
  if (value == kClutUnreadable) return "unreadable";
  if (value == kClutNotDefined) return "not defined";
  return FormatColourText(value);
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

std::int32_t ParseColour(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : " ") + part;
  if (const std::optional<std::int32_t> colour = ParseColourText(text)) return *colour;
  throw Failure{"\"" + text + "\" is not a colour: write #RRGGBB, RRGGBB, \"R G B\" or R,G,B with each part 0 to 255"};
}

// ---- Writing -----------------------------------------------------------------------

// The Windows codes of a handle held by another (POSIX platforms report the same).
constexpr std::uint32_t kSharingViolation = 32, kLockViolation = 33;

FileLock::FileLock(Platform& platform, const std::string& path) : creator_(platform, Texts()) {
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

void Append(std::string& list, const std::string& item) {
  if (!list.empty()) list += ',';
  list += item;
}

std::string JsonNumber(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f", value);
  return text;
}

std::string ShownVersion(const std::string& version) {
  std::size_t end = 0;
  while (end < version.size() && end < 16 && static_cast<unsigned char>(version[end]) >= 0x20) ++end;
  return end == version.size() ? version : version.substr(0, end) + "...";
}

}  // namespace tq::clut_tool
