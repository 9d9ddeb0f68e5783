// tqclut, the engineer's command-line tool for colour table files: check (also of
// whole folders), diff, show, set, export, import and upgrade, with the editor's own
// parser, lock and safe replace. The commands run on any Platform; main_posix.cpp and
// main_win.cpp only make the platform and hand over the arguments.
#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "support/platform.h"

namespace tq::clut_tool {

// Exit codes: done and clean; findings (check), differences (diff) or skipped entries
// (import); an error. Several files: the worst of them.
constexpr int kExitClean = 0;
constexpr int kExitFindings = 1;
constexpr int kExitError = 2;

// Colour tables and logical-colours files are a few kilobytes: a larger file is none
// of them, and is not read.
constexpr std::uint64_t kMaxFileSize = 1 << 20;

// What the program knows about where it runs.
struct Environment {
  bool terminal = false;  // standard output is a terminal that shows colour escapes
  bool no_color = false;  // NO_COLOR is set (no-color.org): no colour escapes even there
  // Takes --dvhome FOLDER; without it the option is refused.
  std::function<void(const std::string& folder)> set_toolkit_home;
};

// args without the program name. Options may stand anywhere; "--" ends them.
int Run(Platform& platform, const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
        const Environment& environment = {});

// Why bytes are not a colour table, "" when they are one. A colour table is text
// without NUL bytes whose lines end in LF or CR LF and of whose first 286 lines more
// than half read as colours (three numbers 0-255, or three -1). The commands that
// write refuse anything else, so that a binary or a stray file is never edited.
std::string WhyNotAColourTable(std::string_view bytes);

// Text with every byte that is not part of valid UTF-8 (shortest form, no surrogates,
// nothing beyond U+10FFFF) replaced by U+FFFD: file names may be any bytes.
std::string ValidUtf8(std::string_view text);

// A JSON string of ValidUtf8(text): quotes, backslashes and control characters escaped.
std::string JsonString(std::string_view text);

// The usage text of the whole tool.
std::string Usage();

}  // namespace tq::clut_tool
