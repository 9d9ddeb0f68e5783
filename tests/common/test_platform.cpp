#include "common/test_platform.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace tq::test {

std::string Read(const std::string& path) {
  std::string bytes;
  EXPECT_TRUE(RealPlatform().ReadFile(path, bytes)) << path;
  return bytes;
}

void Write(const std::string& path, const std::string& bytes) {
  EXPECT_TRUE(RealPlatform().WriteNewFile(path, bytes)) << path;
}

std::string SourceFile(const std::string& relative) {
  std::ifstream in(std::string(TQ_SOURCE_DIR) + "/" + relative, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
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

}  // namespace tq::test
