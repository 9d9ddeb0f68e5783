#include "support/thread_owned.h"

#include <cstdlib>

namespace tq {

namespace {

struct Entry {
  void** slot;
  void (*destroy)(void** slot);
};
// Plain data only: see the header.
constexpr int kMaxEntries = 32;
thread_local Entry t_entries[kMaxEntries];
thread_local int t_count = 0;

}  // namespace

void detail::RegisterThreadObject(void** slot, void (*destroy)(void** slot)) {
  if (t_count == kMaxEntries) std::abort();  // more kinds of per-thread state than the table holds
  t_entries[t_count++] = {slot, destroy};
}

void EndThreadState() {
  while (t_count > 0) {
    const Entry entry = t_entries[--t_count];
    entry.destroy(entry.slot);
  }
}

}  // namespace tq
