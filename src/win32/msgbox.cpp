#include "win32/msgbox.h"

#include <windows.h>

#include <cstdint>
#include <limits>

#include "support/localization.h"
#include "support/string_ids.h"
#include "win32/guard.h"
#include "win32/text.h"

namespace tq::win {

namespace {

// The box being shown on this thread: a box on one thread never disturbs another. A
// thread_local of plain data, because the hook procedure gets no pointer of ours.
struct BoxHook {
  int button_set = 0;
  HHOOK hook = nullptr;
};
thread_local BoxHook t_box;

void SetItemText(HWND box, int item, int string_id) {
  SetDlgItemTextW(box, item, Widen(GetString(string_id)).c_str());
}

// Catches the box as it is activated, before it is seen, puts the localised captions
// on its buttons and removes itself. The host's own hooks on this thread still see
// every event.
LRESULT CALLBACK CaptionHook(int code, WPARAM wparam, LPARAM lparam) {
  const LRESULT next = CallNextHookEx(t_box.hook, code, wparam, lparam);
  if (code == HCBT_ACTIVATE) {
    HWND box = reinterpret_cast<HWND>(wparam);
    // A box whose captions could not be made keeps the system's.
    GuardCallback(0, [&] {
      if (t_box.button_set == MB_OK) {
        SetItemText(box, IDOK, sid::kBoxOk);
      } else if (t_box.button_set == MB_YESNO) {
        SetItemText(box, IDYES, sid::kBoxYes);
        SetItemText(box, IDNO, sid::kBoxNo);
      }
      return 0;
    });
    UnhookWindowsHookEx(t_box.hook);
    t_box.hook = nullptr;
  }
  return next;
}

}  // namespace

int ShowMessage(const std::string& prompt, int& buttons, int style, const std::string& title) {
  t_box.button_set = buttons;
  const long long combined = static_cast<long long>(buttons) + style;
  if (combined < std::numeric_limits<std::int16_t>::min() || combined > std::numeric_limits<std::int16_t>::max())
    return 0;  // the caller's 16-bit style cannot hold it: an error, not a box
  buttons = static_cast<int>(combined);

  HWND owner = GetActiveWindow();
  t_box.hook = SetWindowsHookExW(WH_CBT, CaptionHook, nullptr, GetCurrentThreadId());
  const int result = MessageBoxW(owner, Widen(prompt).c_str(), Widen(title).c_str(), static_cast<UINT>(buttons));
  if (t_box.hook) {  // the box failed before it was activated
    UnhookWindowsHookEx(t_box.hook);
    t_box.hook = nullptr;
  }
  return result;
}

}  // namespace tq::win
