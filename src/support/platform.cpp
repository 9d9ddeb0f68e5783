#include "support/platform.h"

#include <ostream>

namespace tq {

std::string MessageLine(std::string_view prefix, const std::string& title, const std::string& prompt) {
  std::string line = std::string(prefix) + (title.empty() ? "" : title + ": ");
  for (char c : prompt) {
    if (c == '\r') continue;
    if (c != '\n') line += c;
    else if (!line.empty() && line.back() != ' ') line += ' ';
  }
  while (!line.empty() && line.back() == ' ') line.pop_back();
  return line;
}

int AnswerWithoutUser(std::ostream& out, std::string_view prefix, const std::string& prompt, int& buttons, int style,
                      const std::string& title) {
  buttons += style;
  out << MessageLine(prefix, title, prompt) << "\n";
  return (buttons & 0xF) == kMbYesNo ? kIdNo : kIdOk;
}

}  // namespace tq
