#include "common/test_platform.h"

#include <gtest/gtest.h>

namespace tq::test {

IoStatus TestPlatform::CreateFolder(const std::string& path) {
  if (auto f = Fault("CreateFolder", path)) return *f;
  return real_.CreateFolder(path);
}

IoStatus TestPlatform::ReadFile(const std::string& path, std::string& bytes) {
  if (auto f = Fault("ReadFile", path)) return *f;
  return real_.ReadFile(path, bytes);
}

IoStatus TestPlatform::WriteNewFile(const std::string& path, std::string_view bytes) {
  if (auto f = Fault("WriteNewFile", path)) return *f;
  return real_.WriteNewFile(path, bytes);
}

IoStatus TestPlatform::MoveReplace(const std::string& source, const std::string& target) {
  if (auto f = Fault("MoveReplace", target)) return *f;
  return real_.MoveReplace(source, target);
}

IoStatus TestPlatform::CopyFileTo(const std::string& source, const std::string& target, bool overwrite) {
  if (auto f = Fault("CopyFileTo", target)) return *f;
  return real_.CopyFileTo(source, target, overwrite);
}

IoStatus TestPlatform::RemoveFile(const std::string& path) {
  if (auto f = Fault("RemoveFile", path)) return *f;
  return real_.RemoveFile(path);
}

IoStatus TestPlatform::SetAttributes(const std::string& path, std::uint32_t attributes) {
  if (auto f = Fault("SetAttributes", path)) return *f;
  return real_.SetAttributes(path, attributes);
}

std::unique_ptr<LockHandle> TestPlatform::OpenLockFile(const std::string& path, IoStatus& status) {
  if (auto f = Fault("OpenLockFile", path)) {
    status = *f;
    return nullptr;
  }
  return real_.OpenLockFile(path, status);
}

int TestPlatform::ShowMessage(const std::string& prompt, int& buttons, int style, const std::string& title) {
  prompts.push_back({prompt, title, buttons, style});
  const int set = buttons;
  buttons += style;
  if (!answers.empty()) {
    const int answer = answers.front();
    answers.pop_front();
    return answer;
  }
  if (!allow_unscripted) ADD_FAILURE() << "unexpected message box: " << title << ": " << prompt;
  return set == kMbYesNo ? kIdNo : kIdOk;
}

bool TestPlatform::HostCall(int kind, const std::string& text) {
  host_calls.emplace_back(kind, text);
  return host ? host(kind, text) : true;
}

}  // namespace tq::test
