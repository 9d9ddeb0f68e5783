// The localised message box, driven as a user would: an automation thread finds the
// box on screen, reads what it shows and presses a button.
#include <gtest/gtest.h>

#include <thread>

#include "common/win_test_support.h"
#include "support/localization.h"
#include "support/platform.h"
#include "win32/msgbox.h"
#include "win32/win_platform.h"

namespace tq {
namespace {

using test::AnswerMessageBox;

std::string ShippedFolder() {
  std::string f = test::ExeFolder();
  f.pop_back();
  return f;
}

TEST(MessageBox, EnglishYesNoShowsTheTextsAndReturnsTheAnswer) {
  std::thread([] {
    auto no = AnswerMessageBox(L"EN question", IDNO);
    int buttons = kMbYesNo;
    EXPECT_EQ(win::ShowMessage("Save?", buttons, kMbIconExclamation | kMbDefButton2, "EN question"), kIdNo);
    EXPECT_EQ(buttons, 0x134);
    const auto seen = no.get();
    ASSERT_TRUE(seen.found);
    EXPECT_EQ(seen.yes, L"Yes");
    EXPECT_EQ(seen.no, L"No");
    EXPECT_EQ(seen.text, L"Save?");

    auto ok = AnswerMessageBox(L"EN notice", IDOK);
    buttons = kMbOk;
    EXPECT_EQ(win::ShowMessage("Done.", buttons, kMbIconCritical, "EN notice"), kIdOk);
    EXPECT_EQ(buttons, kMbIconCritical);
    EXPECT_EQ(ok.get().ok, L"OK");
  }).join();
}

TEST(MessageBox, GermanButtonsPromptAndTitleReachTheScreen) {
  std::thread([] {
    LoadLanguageLibraryFrom(win::WinPlatform::Instance(), ShippedFolder(), "DE");
    const std::string title = GetString(1301) + " \xc3\xa4\xc3\xb6\xc3\xbc";  // Farbeinstellungen äöü
    auto yes = AnswerMessageBox(test::W(title), IDYES);
    int buttons = kMbYesNo;
    EXPECT_EQ(win::ShowMessage(GetString(1311), buttons, kMbIconExclamation, title), kIdYes);
    const auto seen = yes.get();
    ASSERT_TRUE(seen.found);
    EXPECT_EQ(seen.yes, L"Ja");
    EXPECT_EQ(seen.no, L"Nein");
    EXPECT_EQ(seen.text, L"M\u00f6chten Sie die \u00c4nderungen speichern?");

    auto no = AnswerMessageBox(L"DE no", IDNO);
    buttons = kMbYesNo;
    EXPECT_EQ(win::ShowMessage("?", buttons, 0, "DE no"), kIdNo);
    EXPECT_EQ(no.get().no, L"Nein");

    auto ok = AnswerMessageBox(L"DE ok", IDOK);
    buttons = kMbOk;
    EXPECT_EQ(win::ShowMessage("!", buttons, kMbIconExclamation, "DE ok"), kIdOk);
    EXPECT_EQ(ok.get().ok, L"OK");  // 1551 is "OK" in German too
  }).join();
}

TEST(MessageBox, OtherButtonSetsKeepSystemCaptionsAndLaterBoxesAreStillLocalised) {
  std::thread([] {
    LoadLanguageLibraryFrom(win::WinPlatform::Instance(), ShippedFolder(), "DE");
    auto cancel = AnswerMessageBox(L"OK/Cancel", IDCANCEL);
    int buttons = 1;  // OK and Cancel
    EXPECT_EQ(win::ShowMessage("?", buttons, 0, "OK/Cancel"), IDCANCEL);
    const auto seen = cancel.get();
    EXPECT_EQ(seen.cancel, L"Cancel");  // the system's word, not a translation

    auto yes = AnswerMessageBox(L"after", IDYES);
    buttons = kMbYesNo;
    EXPECT_EQ(win::ShowMessage("?", buttons, 0, "after"), kIdYes);
    EXPECT_EQ(yes.get().yes, L"Ja");
  }).join();
}

TEST(MessageBox, WithAnActiveWindowTheBoxIsOwnedByIt) {
  std::thread([] {
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
    DestroyWindow(owner);
  }).join();
}

}  // namespace
}  // namespace tq
