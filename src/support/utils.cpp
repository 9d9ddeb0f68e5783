#include "support/utils.h"

#include "support/platform.h"

namespace tq {

std::string FormatClutComponent(std::int16_t value) {
  std::string field;
  if (value < 0)
    field = " ";
  else if (value < 10)
    field = "  ";
  else if (value < 100)
    field = " ";
  field += std::to_string(value);
  field += "  ";
  return field;
}

// Windows takes "/" between the parts of a path as well as "\\".
std::string FileNameOf(std::string_view path) {
  const auto slash = path.find_last_of("\\/");
  return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

std::string UpperAscii(std::string_view text) {
  std::string upper(text);
  for (char& c : upper)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return upper;
}

bool EqualsIgnoreCase(Platform& platform, std::string_view a, std::string_view b) {
  return platform.UpperCase(a) == platform.UpperCase(b);
}

bool CreateFolderViaHost(Platform& platform, const std::string& folder) {
  if (platform.FolderExists(folder)) return true;
  platform.HostCall(kHostCreateFolder, folder);
  return platform.FolderExists(folder);
}

}  // namespace tq
