#include "locking/lock_file.h"

#include <initializer_list>
#include <utility>

#include "support/builtin_strings.h"

namespace tq {

namespace {


void AppendSection(std::string& message, const LockTexts& texts,
                   std::initializer_list<std::pair<int, const std::string*>> lines) {
  std::string section;
  for (const auto& [key, value] : lines) {
    if (*value == kNotAvailable) continue;
    section += texts[key];
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
  LockTexts texts;
  for (int i = 0; i < lock_text::kCount; ++i) texts[i] = BuiltinString(lock_text::kFirstId + i);
  return texts;
}

std::string OrNotAvailable(std::string value) {
  return value.empty() ? std::string(kNotAvailable) : std::move(value);
}

std::string CutLockValue(std::string_view ansi) { return std::string(ansi.substr(0, kMaxLockValueLength)); }

std::string FormatLockFile(LockerInfo info) {
  std::string out;
  for (const std::string* line : info.Lines()) {
    out += *line;
    out += kCrLf;
  }
  return out;
}

std::size_t ParseLockFile(std::string_view bytes, LockerInfo& info) {
  const auto targets = info.Lines();
  std::size_t count = 0;
  std::size_t pos = 0;
  while (pos < bytes.size()) {
    std::size_t end = bytes.find_first_of("\r\n", pos);
    if (end == std::string_view::npos) end = bytes.size();
    if (count < std::size(targets)) {
      std::string line;
      for (char c : bytes.substr(pos, end - pos))
        if (c != '\0' && line.size() < kMaxLockValueLength) line += c;
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
  message += texts[lock_text::kLocked];
  message += kCrLf;
  message += kCrLf;
  if (!holder) return message;
  using namespace lock_text;
  AppendSection(message, texts, {{kUser, &holder->user_name}, {kTime, &holder->locking_time}});
  AppendSection(message, texts, {{kApplication, &holder->app_name}, {kProcess, &holder->process_id}});
  AppendSection(message, texts,
                {{kWindowsUser, &holder->windows_user}, {kHost, &holder->host_name}, {kSession, &holder->session_id}});
  return message;
}

}  // namespace tq
