#!/usr/bin/env python3
"""Turns a language's string file (resources/strings/<LANG>.txt) into build inputs.

  gen_strings.py rc  <strings.txt> <out.rc> [--complete-as <EN.txt>]
      a resource script with the STRINGTABLE (UTF-8, code page 65001)
  gen_strings.py cpp <strings.txt> <out.cpp>
      the table compiled into the portable code (BuiltinString)

File format: one text per line, `<id> = "<text>"`; the text runs from the first
to the last double quote of the line, so leading and trailing blanks are kept.
Blank lines and lines starting with # are ignored. Anything else is an error.
"""
import re
import sys

LINE = re.compile(r'^(\d+) = "(.*)"$')


def read_table(path):
    table = {}
    with open(path, encoding="utf-8") as f:
        for number, raw in enumerate(f, 1):
            line = raw.rstrip("\r\n")
            if not line.strip() or line.lstrip().startswith("#"):
                continue
            m = LINE.match(line)
            if not m:
                sys.exit(f"{path}:{number}: not of the form <id> = \"<text>\": {line!r}")
            sid = int(m.group(1))
            if not 1 <= sid <= 65535:
                sys.exit(f"{path}:{number}: string ID {sid} out of range")
            if sid in table:
                sys.exit(f"{path}:{number}: string ID {sid} given twice")
            if "\n" in m.group(2) or "\0" in m.group(2):
                sys.exit(f"{path}:{number}: control characters in text")
            table[sid] = m.group(2)
    return table


def write_if_changed(path, text):
    try:
        with open(path, encoding="utf-8") as f:
            if f.read() == text:
                return
    except OSError:
        pass
    with open(path, "w", encoding="utf-8", newline="\n") as f:
        f.write(text)


def rc_quote(text):
    # The resource compiler reads backslash escapes inside strings.
    return '"' + text.replace('\\', '\\\\').replace('"', '""') + '"'


def cpp_quote(text):
    out = []
    for b in text.encode("utf-8"):
        c = chr(b)
        if c in '"\\':
            out.append("\\" + c)
        elif 0x20 <= b < 0x7F:
            out.append(c)
        else:
            out.append(f'\\{b:03o}')
    return '"' + "".join(out) + '"'


def main(argv):
    if len(argv) < 4 or argv[1] not in ("rc", "cpp"):
        sys.exit(__doc__)
    kind, src, dst = argv[1], argv[2], argv[3]
    table = read_table(src)
    if "--complete-as" in argv:
        reference = read_table(argv[argv.index("--complete-as") + 1])
        missing = sorted(set(reference) - set(table))
        extra = sorted(set(table) - set(reference))
        if missing or extra:
            sys.exit(f"{src}: IDs missing {missing[:20]} / not in the English table {extra[:20]}")
    if kind == "rc":
        lines = ["// Generated from " + src.split("/")[-1] + "; edit that file, not this one.",
                 "#pragma code_page(65001)", "LANGUAGE 0, 0", "STRINGTABLE", "BEGIN"]
        lines += [f"  {sid} {rc_quote(text)}" for sid, text in sorted(table.items())]
        lines += ["END", ""]
    else:
        lines = ["// Generated from " + src.split("/")[-1] + "; edit that file, not this one.",
                 '#include "support/builtin_strings.h"', "", "namespace tq {", "",
                 "const BuiltinStringEntry kBuiltinStrings[] = {"]
        lines += [f"    {{{sid}, {cpp_quote(text)}}}," for sid, text in sorted(table.items())]
        lines += ["};", "", "const std::size_t kBuiltinStringCount = sizeof(kBuiltinStrings) / sizeof(kBuiltinStrings[0]);",
                  "", "}  // namespace tq", ""]
    write_if_changed(dst, "\n".join(lines))


if __name__ == "__main__":
    main(sys.argv)
