// The localised message box, driven as a user would: an automation thread finds the
// box on screen, reads what it shows and presses a button.
#include <gtest/gtest.h>

#include <thread>

#include "common/win_test_support.h"
#include "support/localization.h"
#include "support/thread_context.h"
#include "win32/msgbox.h"
#include "win32/win_platform.h"

namespace tq {
namespace {

TEST(MsgBox, ButtonCaptionsPromptAndTitleInTheUsersLanguage) {
  const struct {
    const char* language;
    int buttons, press, result;
    std::wstring caption;  // of the pressed button
  } cases[] = {
      {"EN", kMbYesNo, IDNO, kIdNo, L"No"},    {"EN", kMbOk, IDOK, kIdOk, L"OK"},
      {"DE", kMbYesNo, IDYES, kIdYes, L"Ja"},  {"DE", kMbYesNo, IDNO, kIdNo, L"Nein"},
      {"DE", 1, IDCANCEL, IDCANCEL, L"Cancel"},  // other sets keep the system's words
  };
  std::string folder = test::ExeFolder();
  folder.pop_back();
  for (const auto& c : cases) {
    std::thread([&] {
      ThreadContext::This().Texts().LoadFrom(win::WinPlatform::Instance(), folder, c.language);
      const std::string title = GetString(1301) + " \xc3\xa4\xc3\xb6\xc3\xbc " + c.language;
      auto seen = test::AnswerMessageBox(test::W(title), c.press);
      int buttons = c.buttons;
      EXPECT_EQ(win::ShowMessage(GetString(1311), buttons, kMbIconExclamation, title), c.result);
      EXPECT_EQ(buttons, c.buttons + kMbIconExclamation);
      const auto box = seen.get();
      ASSERT_TRUE(box.found) << title;
      EXPECT_EQ(box.text, test::W(GetString(1311)));
      const std::wstring pressed = c.press == IDOK ? box.ok : c.press == IDYES ? box.yes : c.press == IDNO ? box.no : box.cancel;
      EXPECT_EQ(pressed, c.caption) << c.language;
    }).join();
  }
}

thread_local int t_boxes_seen = 0;
LRESULT CALLBACK HostsOwnHook(int code, WPARAM wparam, LPARAM lparam) {
  if (code == HCBT_ACTIVATE && test::WindowText(reinterpret_cast<HWND>(wparam)) == L"Owned") ++t_boxes_seen;
  return CallNextHookEx(nullptr, code, wparam, lparam);
}

TEST(MsgBox, OwnedByTheActiveWindowAndTheHostsHooksStillSeeIt) {
  std::thread([] {
    HHOOK hook = SetWindowsHookExW(WH_CBT, HostsOwnHook, nullptr, GetCurrentThreadId());
    HWND owner = CreateWindowExW(0, L"STATIC", L"Owner", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 200, 100, nullptr,
                                 nullptr, nullptr, nullptr);
    ASSERT_TRUE(owner);
    SetActiveWindow(owner);
    auto ok = std::async(std::launch::async, [] {
      HWND box = test::WaitForWindow(L"Owned");
      HWND got = box ? GetWindow(box, GW_OWNER) : nullptr;
      if (box) test::PressButton(box, IDOK);
      return got;
    });
    int buttons = kMbOk;
    EXPECT_EQ(win::ShowMessage("owned", buttons, 0, "Owned"), kIdOk);
    EXPECT_EQ(ok.get(), owner);
    EXPECT_EQ(t_boxes_seen, 1);
    DestroyWindow(owner);
    UnhookWindowsHookEx(hook);
  }).join();
}

}  // namespace
}  // namespace tq
