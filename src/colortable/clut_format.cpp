#include "colortable/clut_format.h"

#include <algorithm>
#include <climits>

#include "support/utils.h"

namespace tq {

ClutLines SplitClutLines(std::string_view bytes, std::size_t max_lines) {
  ClutLines result;
  std::size_t pos = 0;
  while (pos < bytes.size() && result.lines.size() < max_lines) {
    const std::size_t lf = bytes.find('\n', pos);
    if (lf == std::string_view::npos) {
      result.lines.emplace_back(bytes.substr(pos));
      pos = bytes.size();
      break;
    }
    std::size_t end = lf;
    if (end > pos && bytes[end - 1] == '\r') --end;
    result.lines.emplace_back(bytes.substr(pos, end - pos));
    pos = lf + 1;
  }
  result.trailer.assign(bytes.substr(pos));
  return result;
}

std::string JoinClutLines(const std::vector<std::string>& lines) {
  std::size_t size = 0;
  for (const auto& line : lines) size += line.size() + 2;
  std::string bytes;
  bytes.reserve(size);
  for (const auto& line : lines) {
    bytes += line;
    bytes += "\r\n";
  }
  return bytes;
}

namespace {

// Optional sign and decimal digits; the value saturates at the int32 limits, which
// keeps it out of the colour range as the 16-bit overflow would.
std::optional<std::int32_t> ClutNumber(std::string_view piece) {
  std::size_t i = 0;
  bool negative = false;
  if (i < piece.size() && (piece[i] == '+' || piece[i] == '-')) negative = piece[i++] == '-';
  if (i == piece.size()) return std::nullopt;
  std::int64_t value = 0;
  for (; i < piece.size(); ++i) {
    if (piece[i] < '0' || piece[i] > '9') return std::nullopt;
    value = std::min<std::int64_t>(value * 10 + (piece[i] - '0'), std::int64_t{INT32_MAX});
  }
  return static_cast<std::int32_t>(negative ? -value : value);
}

bool InColourRange(std::int32_t v) { return v >= 0 && v <= 255; }

}  // namespace

std::int32_t ParseClutLine(std::string_view line) {
  if (!line.empty() && line.front() == '#') line.remove_prefix(1);
  if (const auto hash = line.find('#'); hash != std::string_view::npos) line = line.substr(0, hash);
  std::int32_t rgb[3] = {-1, 0, 0};
  int count = 0;
  bool junk = false;
  std::size_t pos = 0;
  while (true) {
    const std::size_t space = line.find(' ', pos);
    const std::string_view piece = line.substr(pos, space == std::string_view::npos ? std::string_view::npos : space - pos);
    if (const auto number = ClutNumber(piece)) {
      if (count < 3) rgb[count] = *number;
      ++count;
    } else if (!piece.empty()) {  // pieces never hold a space, so "empty after trimming" is empty
      junk = true;
    }
    if (space == std::string_view::npos) break;
    pos = space + 1;
  }
  if (InColourRange(rgb[0]) && InColourRange(rgb[1]) && InColourRange(rgb[2]) && count == 3 && !junk)
    return rgb[0] + rgb[1] * 256 + rgb[2] * 65536;
  if (rgb[0] == -1 && rgb[1] == -1) return kClutNotDefined;
  return kClutUnreadable;
}

std::string FormatClutLine(int index, std::int16_t red, std::int16_t green, std::int16_t blue) {
  std::string line = index >= kClutStandardCount ? "#" : "";
  line += FormatClutComponent(red);
  line += FormatClutComponent(green);
  line += FormatClutComponent(blue);
  return line;
}

std::string FormatClutLine(int index, std::int32_t value) {
  if (value < 0) return FormatClutLine(index, std::int16_t{-1}, std::int16_t{-1}, std::int16_t{-1});
  return FormatClutLine(index, RedOf(value), GreenOf(value), BlueOf(value));
}

std::string ClutLineComments(std::string_view old_line) {
  if (!old_line.empty() && old_line.front() == '#') old_line.remove_prefix(1);
  const auto hash = old_line.find('#');
  return hash == std::string_view::npos ? std::string() : std::string(old_line.substr(hash));
}

std::string MergeClutSave(std::string_view old_bytes, const ClutNewLines& new_lines) {
  ClutLines old = SplitClutLines(old_bytes, kClutIndexCount);
  for (std::size_t i = 0; i < old.lines.size(); ++i)
    if (new_lines[i]) old.lines[i] = *new_lines[i] + ClutLineComments(old.lines[i]);
  return JoinClutLines(old.lines) + old.trailer;
}

bool IsClutFileName(std::string_view path, bool require_prefix) {
  const std::string name = UpperAscii(FileNameOf(path));
  if (require_prefix && name.find("QLT830_") == std::string::npos) return false;
  const auto dot = name.rfind('.');
  const std::string_view extension = dot == std::string::npos ? std::string_view() : std::string_view(name).substr(dot + 1);
  return name.find(".CLUT") != std::string::npos && name.find(".LOCK") == std::string::npos && extension == "CLUT";
}

std::string ReferenceClutPath(std::string_view path, bool keep_folder) {
  std::string reference(keep_folder ? std::string(path) : FileNameOf(path));
  std::replace(reference.begin(), reference.end(), '.', '$');
  return reference;
}

std::optional<std::string> ClutVersionOfLine(std::string_view line) {
  const auto marker = line.rfind("Version=");
  if (line.empty() || marker == std::string_view::npos) return std::nullopt;
  return std::string(line.substr(marker + 8));
}

std::string RenumberClutComment(std::string_view line, int new_index) {
  std::string result(line);
  const auto hash = result.find('#');
  const auto colon = result.find(':');
  if (hash == std::string::npos || colon == std::string::npos || colon < hash + 5) return result;
  const std::string label = result.substr(hash, 5);
  const std::string replacement = "# " + std::to_string(new_index);
  for (auto at = result.find(label); at != std::string::npos; at = result.find(label, at + replacement.size()))
    result.replace(at, label.size(), replacement);
  return result;
}

namespace {

bool InSetE(int i) {
  switch (i) {
    case 18: case 26: case 33: case 36: case 40: case 63: case 66: case 71: return true;
    default: return (i >= 51 && i <= 55) || (i >= 77 && i <= 79) || (i >= 100 && i <= 109);
  }
}

bool IsKnownOldVersion(const std::string& v) {
  return v.empty() || v == "93.01" || v == "93.02" || v == "93.03" || v == "93.04" || v == "93.05" || v == "93.06";
}

}  // namespace

std::vector<std::string> UpgradeClutLines(std::vector<std::string> file_lines, std::vector<std::string> reference_lines,
                                          const std::string& from_version) {
  file_lines.resize(kClutIndexCount);
  reference_lines.resize(kClutIndexCount);
  const bool move = from_version == "93.01" || from_version == "93.02";
  std::vector<std::string> moved;
  std::vector<std::string> result(kClutIndexCount);
  for (int i = 0; i < kClutIndexCount; ++i) {
    const std::string& line = file_lines[i];
    bool replace = false;
    if (move && i >= 120 && i <= 146) moved.push_back(line);
    if (move && i >= 120 && i <= 159) replace = true;
    if (from_version.empty() && i >= 110 && i <= 116) replace = true;
    if (IsKnownOldVersion(from_version) && InSetE(i)) replace = true;
    if (i > 255 && line.empty()) replace = true;
    result[i] = replace ? reference_lines[i] : line;
  }
  for (std::size_t k = 0; k < moved.size(); ++k)
    result[256 + k] = RenumberClutComment(moved[k], static_cast<int>(256 + k)).insert(0, 1, '#');
  return result;
}

std::vector<std::string> MarkClutVersion(std::vector<std::string> lines, const std::string& old_version) {
  lines.resize(kClutIndexCount);
  std::string& first = lines[0];
  if (old_version.empty()) {
    first += "\tVersion=";
    first += kClutCurrentVersion;
  } else {
    for (auto at = first.find(old_version); at != std::string::npos;
         at = first.find(old_version, at + std::char_traits<char>::length(kClutCurrentVersion)))
      first.replace(at, old_version.size(), kClutCurrentVersion);
  }
  return lines;
}

std::string LogicalColorsKey(int index) { return "Index_" + std::to_string(index); }

std::string LogicalColorValue(int index, std::int32_t colour, std::optional<std::int32_t> not_defined_as,
                              const std::string& name, const std::string& tab, const std::string& category) {
  const bool fields_of_state = colour == kClutNotDefined && !not_defined_as;
  if (colour == kClutNotDefined && not_defined_as) colour = *not_defined_as;
  std::string value = "  ";
  for (std::int16_t field : {RedOf(colour), GreenOf(colour), BlueOf(colour)})
    value += FormatClutComponent(fields_of_state ? std::int16_t{-1} : field);
  value += "# " + std::to_string(index) + ": ";
  if (index < kClutStandardCount) return value + name;
  return value + tab + (category.empty() ? "," : " (" + category + "),") + name;
}

}  // namespace tq
