// The English texts built into the control library; generated at build time from
// resources/strings/EN.txt, the same file that makes the EN string table.
#pragma once

#include <cstddef>
#include <string_view>

namespace tq {

struct BuiltinStringEntry {
  int id;
  const char* text;  // UTF-8
};

extern const BuiltinStringEntry kBuiltinStrings[];  // sorted by id
extern const std::size_t kBuiltinStringCount;

// The built-in text of an ID; empty when the table has none.
std::string_view BuiltinString(int id);

}  // namespace tq
