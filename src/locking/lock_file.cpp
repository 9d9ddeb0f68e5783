#include "locking/lock_file.h"

#include <initializer_list>
#include <utility>

namespace tq {

namespace {

constexpr std::string_view kCrLf = "\r\n";
constexpr std::size_t kMaxValueLength = 255;  // the system's fixed buffer size for names

void AppendSection(std::string& message, const LockTexts& texts,
                   std::initializer_list<std::pair<int, const std::string*>> lines) {
  std::string section;
  for (const auto& [key, value] : lines) {
    if (*value == kNotAvailable) continue;
    section += texts[key - 1];
    section += ' ';
    section += *value;
    section += kCrLf;
  }
  if (section.empty()) return;
  message += section;
  message += kCrLf;
}

}  // namespace

LockTexts DefaultLockTexts() {
  return {"is already opened and locked for editing.",
          "Corvana Username:",
          "Locking Time:",
          "Locking Application:",
          "Process ID:",
          "Windows Username:",
          "Hostname:",
          "Session ID:",
          "Do you want to open the file as read only?",
          "Open",
          "Please choose another file name.",
          "Save",
          "was opened as read only."};
}

std::string OrNotAvailable(std::string value) {
  return value.empty() ? std::string(kNotAvailable) : std::move(value);
}

std::string FormatLockFile(const LockerInfo& info) {
  std::string out;
  for (const std::string* line : {&info.app_name, &info.user_name, &info.windows_user, &info.host_name,
                                  &info.process_id, &info.session_id}) {
    out += *line;
    out += kCrLf;
  }
  return out;
}

std::size_t ParseLockFile(std::string_view bytes, LockerInfo& info) {
  std::string* const targets[] = {&info.app_name, &info.user_name, &info.windows_user,
                                  &info.host_name, &info.process_id, &info.session_id};
  std::size_t count = 0;
  std::size_t pos = 0;
  while (pos < bytes.size()) {
    std::size_t end = bytes.find_first_of("\r\n", pos);
    if (end == std::string_view::npos) end = bytes.size();
    if (count < std::size(targets)) {
      std::string line;
      for (char c : bytes.substr(pos, end - pos)) {
        if (c == '\0') continue;
        if (line.size() == kMaxValueLength) {
          // Never leave half a UTF-8 character behind the cut.
          while (!line.empty() && (static_cast<unsigned char>(line.back()) & 0xC0) == 0x80) line.pop_back();
          if (!line.empty() && static_cast<unsigned char>(line.back()) >= 0xC0) line.pop_back();
          break;
        }
        line += c;
      }
      *targets[count] = std::move(line);
    }
    ++count;
    pos = end;
    if (pos < bytes.size()) pos += bytes.compare(pos, 2, "\r\n") == 0 ? 2 : 1;
  }
  return count;
}

std::string BuildRefusalMessage(const std::string& file_name, const LockTexts& texts, const LockerInfo* holder) {
  std::string message = file_name;
  message += kCrLf;
  message += texts[0];
  message += kCrLf;
  message += kCrLf;
  if (!holder) return message;
  AppendSection(message, texts, {{2, &holder->user_name}, {3, &holder->locking_time}});
  AppendSection(message, texts, {{4, &holder->app_name}, {5, &holder->process_id}});
  AppendSection(message, texts, {{6, &holder->windows_user}, {7, &holder->host_name}, {8, &holder->session_id}});
  return message;
}

}  // namespace tq
