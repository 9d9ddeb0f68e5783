#include "tqclut/tqclut.h"

#include <algorithm>
#include <cstdio>
#include <optional>

#include "colortable/clut_format.h"
#include "tqclut/tool.h"

#ifndef TQ_VERSION
#define TQ_VERSION "unknown"
#endif

namespace tq::clut_tool {
namespace {

struct Command {
  std::string_view name;
  std::string_view usage;
  std::string_view help;
  std::size_t min_args, max_args;
  unsigned options;  // the Option flags it takes
  int (*run)(Context&);
};

constexpr Command kCommands[] = {
    {"check", "check [--json] [--recursive] PATH...",
     "Reads each colour table as the editor reads it and reports its version marker, its line count and line ends, "
     "unreadable and not-defined entries with their line numbers, and the colour quality rules (contrast, "
     "distinguishable groups, also for colour-blind readers). A folder stands for its colour tables (*.clut), "
     "with --recursive (-r) also those of its subfolders: then each table gets one line, followed by a summary. "
     "Takes no lock and writes nothing. Exit code 0 when every table is clean, 1 on findings, 2 when a table "
     "cannot be read.",
     1, SIZE_MAX, kJson | kRecursive, RunCheck},
    {"diff", "diff [--json] A B", "Lists every colour index whose colour differs, with the colour's name, old and new "
     "colour. Exit code 1 when they differ, 2 when either is not a colour table.", 2, 2, kJson, RunDiff},
    {"show", "show [--json] FILE", "Lists every colour index with its colour and name; with swatches on a terminal "
     "(not when NO_COLOR is set).", 1, 1, kJson, RunShow},
    {"report", "report FILE [-o REPORT.html]", "Writes a page for people to look at: every colour as a swatch by "
     "tab and category with its name, the findings of the quality rules with the colours involved side by side, "
     "and the status and alarm colours as protanopes, deuteranopes and tritanopes see them next to normal vision. "
     "One HTML file that needs nothing else (no scripts, no other files); on standard output without -o.",
     1, 1, kOutput, RunReport},
    {"set", "set FILE INDEX COLOUR", "Sets one colour (COLOUR: #RRGGBB, RRGGBB, \"R G B\" or R,G,B), keeping every other "
     "line, comment and line end. Takes the file's lock as the editor does; writes nothing when the colour is "
     "already set.", 3, 5, 0, RunSet},
    {"export", "export FILE INI", "Writes the colours the editor shows into INI, section \"Logical Colors\", keys "
     "Index_<n>, as the editor's Export does.", 2, 2, 0, RunExport},
    {"import", "import INI FILE", "Writes the colours of an exported INI file into FILE under its lock, keeping "
     "every other line. Keys that are no colour the editor shows, and values that are no colour, are named on "
     "standard error and skipped: exit code 1.", 2, 2, 0, RunImport},
    {"upgrade", "upgrade FILE", "Brings an old colour table to version 93.07 with the editor's rules, taking the "
     "changed colours from the reference file beside it (NAME$CLUT); completes a table of the current version that "
     "lacks lines from the same file. Exit code 2 without a reference file.", 1, 1, 0, RunUpgrade},
};

const Command* FindCommand(std::string_view name) {
  for (const Command& command : kCommands)
    if (command.name == name) return &command;
  return nullptr;
}

std::string CommandHelp(const Command& command) {
  return std::string("usage: tqclut [--dvhome FOLDER] ") + std::string(command.usage) + "\n\n" +
         std::string(command.help) + "\n";
}

// ---- Options -------------------------------------------------------------------------

struct Arguments {
  std::vector<std::string> operands;
  unsigned options = 0;
  bool help = false, version = false;
  std::optional<std::string> dvhome;
  std::string output;
  std::string error;  // the first bad option
};

// Options anywhere, "--" ends them; "-" and negative numbers are operands.
Arguments ParseArguments(const std::vector<std::string>& args) {
  Arguments parsed;
  bool options_end = false;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    const bool operand = options_end || arg.size() < 2 || arg[0] != '-' || (arg[1] >= '0' && arg[1] <= '9');
    if (operand) {
      parsed.operands.push_back(arg);
    } else if (arg == "--") {
      options_end = true;
    } else if (arg == "--json") {
      parsed.options |= kJson;
    } else if (arg == "--recursive" || arg == "-r") {
      parsed.options |= kRecursive;
    } else if (arg == "--help" || arg == "-h") {
      parsed.help = true;
    } else if (arg == "--version") {
      parsed.version = true;
    } else if (arg == "-o" || arg == "--output" || arg.starts_with("--output=")) {
      parsed.options |= kOutput;
      if (arg.starts_with("--output="))
        parsed.output = arg.substr(9);
      else if (i + 1 < args.size())
        parsed.output = args[++i];
      else if (parsed.error.empty())
        parsed.error = arg + " needs a file";
    } else if (arg == "--dvhome" || arg.starts_with("--dvhome=")) {
      if (arg != "--dvhome")
        parsed.dvhome = arg.substr(9);
      else if (i + 1 < args.size())
        parsed.dvhome = args[++i];
      else if (parsed.error.empty())
        parsed.error = "--dvhome needs a folder";
    } else if (parsed.error.empty()) {
      parsed.error = "unknown option \"" + arg + "\"";
    }
  }
  return parsed;
}

std::string OptionName(unsigned option) {
  return option == kJson ? "--json" : option == kRecursive ? "--recursive" : "-o";
}

}  // namespace

std::string WhyNotAColourTable(std::string_view bytes) {
  if (bytes.empty()) return "it is empty";
  if (bytes.find('\0') != std::string_view::npos) return "it holds NUL bytes";
  for (std::size_t cr = bytes.find('\r'); cr != std::string_view::npos; cr = bytes.find('\r', cr + 1))
    if (cr + 1 == bytes.size() || bytes[cr + 1] != '\n') return "it has a CR without LF, a line end the editor does not read";
  const std::vector<std::string> lines = SplitClutLines(bytes, kClutIndexCount).lines;
  const std::size_t colours =
      std::count_if(lines.begin(), lines.end(), [](const std::string& line) { return ParseClutLine(line) != kClutUnreadable; });
  if (colours * 2 <= lines.size())
    return "only " + std::to_string(colours) + " of its first " + Count(lines.size(), "line reads", "lines read") +
           " as a colour";
  return {};
}

std::string ValidUtf8(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    // A sequence's length from its lead byte; 0 for a byte that cannot lead one.
    const std::size_t length =
        c < 0x80 ? 1 : c >= 0xC2 && c <= 0xDF ? 2 : c >= 0xE0 && c <= 0xEF ? 3 : c >= 0xF0 && c <= 0xF4 ? 4 : 0;
    bool valid = length != 0 && i + length <= text.size();
    for (std::size_t k = 1; valid && k < length; ++k) valid = (static_cast<unsigned char>(text[i + k]) & 0xC0) == 0x80;
    if (valid && length >= 3) {
      const unsigned char second = static_cast<unsigned char>(text[i + 1]);
      valid = !(c == 0xE0 && second < 0xA0) && !(c == 0xED && second >= 0xA0) && !(c == 0xF0 && second < 0x90) &&
              !(c == 0xF4 && second >= 0x90);
    }
    if (valid) {
      out.append(text.substr(i, length));
      i += length;
    } else {
      out += "\xEF\xBF\xBD";
      ++i;
    }
  }
  return out;
}

std::string JsonString(std::string_view text) {
  std::string out = "\"";
  for (const char c : ValidUtf8(text)) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", c);
      out += escape;
    } else {
      out += c;
    }
  }
  return out + "\"";
}

std::string Usage() {
  std::string text =
      "usage: tqclut [--dvhome FOLDER] COMMAND ARGUMENTS\n"
      "       tqclut help [COMMAND] | --help | --version\n\ncommands:\n";
  for (const Command& command : kCommands) text += "  tqclut " + std::string(command.usage) + "\n";
  text +=
      "\nOptions may stand anywhere; \"--\" ends them. \"tqclut help COMMAND\" describes a command. --dvhome (or "
      "the DVHOME environment variable) names the toolkit's home.\n";
  return text;
}

int Run(Platform& platform, const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
        const Environment& environment) {
  const Arguments parsed = ParseArguments(args);
  const Command* command = parsed.operands.empty() ? nullptr : FindCommand(parsed.operands[0]);
  const std::string usage_line =
      command ? "usage: tqclut " + std::string(command->usage) : std::string("tqclut --help lists the commands");
  if (!parsed.error.empty()) {
    err << kToolName << ": " << parsed.error << "; " << usage_line << "\n";
    return kExitError;
  }
  if (parsed.version) {
    out << kToolName << " " << TQ_VERSION << "\n";
    return kExitClean;
  }
  std::vector<std::string> rest = parsed.operands;
  if (!rest.empty() && rest[0] == "help") {
    rest.erase(rest.begin());
    if (rest.size() > 1) {
      err << kToolName << ": help: wrong number of arguments; usage: tqclut help [COMMAND]\n";
      return kExitError;
    }
    if (!rest.empty() && rest[0] == "help") {
      out << "usage: tqclut help [COMMAND]\n\nDescribes COMMAND; without one, lists the commands.\n";
      return kExitClean;
    }
    command = rest.empty() ? nullptr : FindCommand(rest[0]);
    if (!rest.empty() && !command) {
      err << kToolName << ": unknown command \"" << rest[0] << "\" (tqclut --help lists the commands)\n";
      return kExitError;
    }
    out << (command ? CommandHelp(*command) : Usage());
    return kExitClean;
  }
  if (rest.empty()) {
    (parsed.help ? out : err) << Usage();
    return parsed.help ? kExitClean : kExitError;
  }
  if (!command) {
    err << kToolName << ": unknown command \"" << rest[0] << "\" (tqclut --help lists the commands)\n";
    return kExitError;
  }
  if (parsed.help) {
    out << CommandHelp(*command);
    return kExitClean;
  }
  if (const unsigned foreign = parsed.options & ~command->options) {
    err << kToolName << ": " << command->name << " takes no option " << OptionName(foreign & -foreign) << "; "
        << usage_line << "\n";
    return kExitError;
  }
  rest.erase(rest.begin());
  if (rest.size() < command->min_args || rest.size() > command->max_args) {
    err << kToolName << ": " << command->name << ": wrong number of arguments; " << usage_line << "\n";
    return kExitError;
  }
  if (parsed.dvhome) {
    if (!environment.set_toolkit_home) {
      err << kToolName << ": --dvhome cannot be used here\n";
      return kExitError;
    }
    environment.set_toolkit_home(*parsed.dvhome);
  }
  Context context{platform, rest, out, err, environment.terminal && !environment.no_color, parsed.options, parsed.output};
  int code;
  try {
    code = command->run(context);
  } catch (const Failure& failure) {
    err << kToolName << ": " << failure.message << "\n";
    code = kExitError;
  }
  // A report that did not arrive is no report: a full disk or a closed pipe is an error.
  if (!out.flush()) {
    err << kToolName << ": cannot write to standard output\n";
    return kExitError;
  }
  return code;
}

}  // namespace tq::clut_tool
