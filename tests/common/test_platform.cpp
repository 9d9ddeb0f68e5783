#include "common/test_platform.h"

#include <gtest/gtest.h>

namespace tq::test {

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
