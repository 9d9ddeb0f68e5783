// The lock between processes, as editors meet in the field: a helper process holds
// the lock, and the refused side sees the real message box, answered by an automated
// user. Ten processes race for one lock.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <thread>

#include "common/win_test_support.h"
#include "locking/lock_file_creator.h"
#include "support/localization.h"
#include "win32/win_platform.h"

namespace tq {
namespace {

using Creator = clsLockFileCreator;
const LanguageTexts english;  // the built-in texts
using test::AnswerMessageBox;
using test::HelperProcess;
using test::W;

TEST(LockBetweenProcesses, RefusedSideNamesTheHolderInTheRealBoxAndCannotWriteTheLockFile) {
  test::ScratchFolder folder;
  const std::string file = folder / "QLT830_colors.clut";
  const std::string lock = file + ".lock";
  HelperProcess holder("hold-lock", {file, "ProcessDisplay", "op1", "120000"});
  ASSERT_TRUE(holder.ready());
  EXPECT_NE(GetFileAttributesW(W(lock).c_str()) & FILE_ATTRIBUTE_HIDDEN, 0u);
  const std::string holder_pid = std::to_string(holder.pid());

  // On its own thread, as a user-interface thread with its own message box hook.
  std::thread([&] {
    Platform& platform = win::WinPlatform::Instance();
    Creator c(platform, english);
    const std::wstring title = W(GetString(1510) + " " + file);

    auto no = AnswerMessageBox(title, IDNO);
    std::string app = "Mine", user = "me";
    EXPECT_EQ(c.CreateLockFile(file, app, user, LockMode::OpenOrReadOnly, false), LockResult::Refused);
    EXPECT_EQ(app + "/" + user, "ProcessDisplay/op1");  // the holder's names
    const auto seen = no.get();
    ASSERT_TRUE(seen.found);
    const std::vector<std::string> parts = {file + "\r\nis already opened and locked for editing.",
                                            "Corvana Username: op1", "Locking Time: ",
                                            "Locking Application: ProcessDisplay", "Process ID: " + holder_pid,
                                            "Hostname: " + platform.ComputerName(),
                                            "Do you want to open the file as read only?"};
    for (const std::string& part : parts)
      EXPECT_NE(seen.text.find(W(part)), std::wstring::npos) << part;

    EXPECT_FALSE(c.IsLockedByMe(file, "ProcessDisplay", "op1"));  // another process holds it
  }).join();
  // The share mode: readers are let in (the refusal read the holder), a second writer is not.
  HANDLE writer = CreateFileW(W(lock).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, 0, nullptr);
  EXPECT_EQ(writer, INVALID_HANDLE_VALUE);
  if (writer != INVALID_HANDLE_VALUE) CloseHandle(writer);
}

TEST(LockBetweenProcesses, TenProcessesRaceAndExactlyOneWinsTheOthersNameIt) {
  test::ScratchFolder folder;
  const std::string file = folder / "race.clut";
  const std::string start_name = "TqLockRaceStart_" + std::to_string(GetCurrentProcessId());
  HANDLE start = CreateEventW(nullptr, TRUE, FALSE, W(start_name).c_str());
  ASSERT_TRUE(start);
  std::vector<std::unique_ptr<HelperProcess>> racers;
  for (int i = 0; i < 10; ++i) {
    racers.push_back(std::make_unique<HelperProcess>("race-lock", std::vector<std::string>{file, start_name, "6000"}));
    ASSERT_TRUE(racers.back()->ready());
  }
  SetEvent(start);
  std::vector<int> codes;
  for (auto& r : racers) codes.push_back(r->Wait(60000));
  CloseHandle(start);

  ASSERT_EQ(std::count(codes.begin(), codes.end(), 0), 1) << ::testing::PrintToString(codes);
  const int winner_pid = static_cast<int>(racers[std::find(codes.begin(), codes.end(), 0) - codes.begin()]->pid());
  for (std::size_t i = 0; i < racers.size(); ++i)  // each loser names the winner
    EXPECT_TRUE(codes[i] == 0 || codes[i] == winner_pid) << "racer " << i << ": " << codes[i];
}

}  // namespace
}  // namespace tq
