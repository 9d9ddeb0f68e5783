// tqclut, the engineer's command-line tool for colour table files: check, diff, show,
// set, export, import and upgrade, with the editor's own parser, lock and safe
// replace. The commands run on any Platform; main_posix.cpp and main_win.cpp only
// make the platform and hand over the arguments.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "support/platform.h"

namespace tq::clut_tool {

// Exit codes: done and clean; findings (check) or differences (diff); an error.
constexpr int kExitClean = 0;
constexpr int kExitFindings = 1;
constexpr int kExitError = 2;

struct Terminal {
  bool swatches = false;  // true-colour swatches in `show` (standard output is a terminal)
};

// args without the program name; global options (--dvhome) are taken by the caller.
int Run(Platform& platform, const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
        const Terminal& terminal = {});

// A message the core would show in a message box, as one line of standard error:
// "tqclut: title: the lines of the prompt joined". Nobody is there to answer, so the
// console platforms answer every question No: nothing is overwritten, no lock ignored.
std::string MessageLine(const std::string& title, const std::string& prompt);

// The usage text of the whole tool.
std::string Usage();

}  // namespace tq::clut_tool
