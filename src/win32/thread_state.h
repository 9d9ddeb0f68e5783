// The Windows side's part of this thread's context (support/thread_context.h): the
// editor session, its window, the host object and the INI mutex, and the control's
// counts. Made on first use; ThreadContext::End() destroys it.
#pragma once

#include <windows.h>

#include <memory>
#include <vector>

#include "editor/session.h"
#include "support/host.h"
#include "support/thread_context.h"
#include "win32/editor_window.h"
#include "win32/handles.h"

namespace tq::win {

struct ThreadState final : ThreadContext::Extension {
  // This thread's part, made on first use.
  static ThreadState& This();
  // This thread's part when there is one; makes none.
  static ThreadState* Find();

  // This thread's session on the control's platform, made on first use with the
  // thread's language texts and shown by the thread's window.
  frmTqColorSetting& Session();
  EditorWindow& Window();

  // Destroyed bottom up: the window before the session it shows, the session (whose
  // lock goes with it) before the host objects.
  UniqueHandle ini_mutex;  // "IniFileWrite", once opened
  std::shared_ptr<HostLink> host;  // "ListCommRef"
  // Hosts replaced during a call to the control, kept until the outermost call returns.
  std::vector<std::shared_ptr<HostLink>> retired_hosts;
  int control_calls = 0;   // calls to the control in progress
  bool in_host_call = false;  // a call to the host in progress
  int controls = 0;        // controls alive
  std::unique_ptr<frmTqColorSetting> session;
  std::unique_ptr<EditorWindow> window;
};

}  // namespace tq::win
