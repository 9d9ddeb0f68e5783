#include "support/thread_context.h"

namespace tq {

namespace {

// A plain pointer, the one thread_local of the core: with the MinGW posix thread
// model the destructors of thread_local objects run after the thread's storage has
// been freed and corrupt the heap when a thread ends, so End() destroys the object.
thread_local ThreadContext* t_context = nullptr;

}  // namespace

ThreadContext& ThreadContext::This() {
  if (!t_context) t_context = new ThreadContext();
  return *t_context;
}

ThreadContext* ThreadContext::Find() { return t_context; }

void ThreadContext::End() {
  if (!t_context) return;
  // The extension goes first, while the texts its destructors may show are still there.
  t_context->extension_.reset();
  delete t_context;
  t_context = nullptr;
}

}  // namespace tq
