#include "win32/thread_state.h"

#include "win32/win_platform.h"

namespace tq::win {

ThreadState& ThreadState::This() { return ThreadContext::This().Extended<ThreadState>(); }

ThreadState* ThreadState::Find() {
  const ThreadContext* context = ThreadContext::Find();
  return context ? static_cast<ThreadState*>(context->FindExtension()) : nullptr;
}

frmTqColorSetting& ThreadState::Session() {
  if (!session) {
    session = std::make_unique<frmTqColorSetting>(WinPlatform::Instance(), ThreadContext::This().Texts());
    session->InstallView(&Window());
  }
  return *session;
}

EditorWindow& ThreadState::Window() {
  if (!window) window = std::make_unique<EditorWindow>();
  return *window;
}

}  // namespace tq::win
