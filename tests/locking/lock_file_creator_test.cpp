// clsLockFileCreator over real files in a scratch folder: the share-mode lock of this
// build's platform, the lines it writes, and what a refused party is told. Only the
// user's answers to the boxes are scripted.
#include "locking/lock_file_creator.h"

#include <gtest/gtest.h>

#include "common/test_platform.h"

namespace tq {
namespace {

using Creator = clsLockFileCreator;
const LanguageTexts english;  // the built-in texts

struct LockTest : ::testing::Test {
  test::ScratchFolder folder;
  test::TestPlatform platform;
  std::string file = folder / "QLT830_colors.clut";
  std::string lock = file + ".lock";

  LockResult Take(Creator& c, const std::string& name, std::string app = "App", std::string user = "User",
                  LockMode mode = LockMode::Open, bool silent = true) {
    return c.CreateLockFile(name, app, user, mode, silent);
  }
  std::string Me(const std::string& app, const std::string& user) {
    return app + "\r\n" + user + "\r\n" + platform.WindowsUserName() + "\r\n" + platform.ComputerName() + "\r\n" +
           std::to_string(platform.ProcessId()) + "\r\n" + std::to_string(platform.SessionId()) + "\r\n";
  }
};

// Over the leftover lock file of a crashed holder, which nobody holds open.
TEST_F(LockTest, TakesTheLockWritesItsLinesAndDeletesTheFileWhenDestroyed) {
  ASSERT_TRUE(platform.WriteNewFile(lock, "Dead\r\nghost\r\nx\r\nFARHOST\r\n1\r\n0\r\nextra\r\n"));
  ASSERT_TRUE(platform.SetAttributes(lock, kAttrHidden | kAttrReadOnly));
  {
    Creator c(platform, english);
    std::string app, user = "op1";
    EXPECT_EQ(c.CreateLockFile(file, app, user, LockMode::OpenOrReadOnly, false), LockResult::Locked);
    EXPECT_EQ(app, "N/A");
    EXPECT_EQ(test::Read(lock), Me("N/A", "op1"));
    EXPECT_EQ(c.LockedFileName(), file);
    EXPECT_FALSE(c.IsFileOpenedReadOnly(file));
    std::string u, h;
    EXPECT_TRUE(c.GetFileLockerInfo(file, u, h));
    EXPECT_EQ(u + "@" + h, "op1@" + platform.ComputerName());
  }
  EXPECT_FALSE(platform.FileExists(lock));
  EXPECT_TRUE(platform.prompts.empty());
}

// A second object, in this process too: refused as its mode says, it sees the lock as the holder's.
TEST_F(LockTest, ARefusedObjectTellsAsItsModeSaysOffersReadOnlyAndOwnsNothing) {
  Creator holder(platform, english);
  ASSERT_EQ(Take(holder, file, "Display", "op1"), LockResult::Locked);
  {
    Creator c(platform, english);
    std::string app = "Other", user = "op2";
    platform.answers = {kIdOk, kIdNo, kIdYes, kIdOk, kIdOk};
    EXPECT_EQ(c.CreateLockFile(file, app, user, LockMode::Open, false), LockResult::Refused);
    EXPECT_EQ(app + "/" + user, "Display/op1");  // the holder's names replace the caller's
    EXPECT_EQ(platform.prompts[0].title, "Open " + file);
    EXPECT_EQ(platform.prompts[0].buttons, kMbOk);
    EXPECT_EQ(platform.prompts[0].style, kMbIconExclamation);
    EXPECT_TRUE(holder.IsLockedByMe(file, "Display", "op1"));
    EXPECT_TRUE(c.IsLockedByMe(file, "Display", "op1"));
    EXPECT_FALSE(c.IsLockedByMe(file, "display", "op1"));  // names compare case-sensitively
    EXPECT_FALSE(c.IsLockedByMe(folder / "other.clut", "Display", "op1"));

    EXPECT_EQ(Take(c, file, "", "", LockMode::OpenOrReadOnly, false), LockResult::Refused);
    EXPECT_FALSE(c.ReadOnly());
    EXPECT_EQ(platform.prompts[1].buttons, kMbYesNo);
    EXPECT_EQ(platform.prompts[1].style, 0x130);
    EXPECT_TRUE(platform.prompts[1].text.ends_with("\r\n\r\nDo you want to open the file as read only?"));

    EXPECT_EQ(Take(c, file, "", "", LockMode::OpenOrReadOnly, false), LockResult::ReadOnlyChosen);
    EXPECT_TRUE(c.ReadOnly());
    EXPECT_TRUE(c.IsFileOpenedReadOnly(file));
    EXPECT_EQ(platform.prompts[3].text, file + "\r\nwas opened as read only.\r\n\r\nPlease choose another file name.");
    EXPECT_EQ(platform.prompts[3].title, "Save " + file);

    EXPECT_EQ(Take(c, file, "", "", LockMode::Save, false), LockResult::Refused);
    EXPECT_EQ(platform.prompts[4].title, "Save " + file);
    EXPECT_TRUE(platform.prompts[4].text.ends_with("\r\n\r\nPlease choose another file name."));

    std::string quiet_app = "Mine", quiet_user;
    EXPECT_EQ(c.CreateLockFile(file, quiet_app, quiet_user, LockMode::OpenOrReadOnly, true), LockResult::Refused);
    EXPECT_EQ(platform.prompts.size(), 5u);
    EXPECT_EQ(quiet_app + "/" + quiet_user, "Mine/N/A");
    EXPECT_EQ(Take(c, folder / "b.clut"), LockResult::Locked);
    EXPECT_FALSE(c.ReadOnly());  // a lock taken clears read-only
  }
  // The refused object owned nothing of the holder's and so deleted nothing; the lock still holds.
  EXPECT_EQ(test::Read(lock), Me("Display", "op1"));
}

TEST_F(LockTest, AHolderWithLongOrNonAsciiNamesRecognisesItsOwnLock) {
  std::string umlauts;
  for (int i = 0; i < 200; ++i) umlauts += "\xc3\xa4";
  const std::string long_app(300, 'a');
  Creator c(platform, english);
  ASSERT_EQ(Take(c, file, long_app, umlauts), LockResult::Locked);
  EXPECT_TRUE(c.IsLockedByMe(file, long_app, umlauts));
  EXPECT_FALSE(c.IsLockedByMe(file, long_app, "o" + umlauts.substr(2)));
}

TEST_F(LockTest, LockMovesToAnotherFileAndAFailedAttemptGivesTheOldLockUp) {
  const std::string other = folder / "other.clut", third = folder / "third.clut";
  Creator c(platform, english);
  ASSERT_EQ(Take(c, file), LockResult::Locked);
  ASSERT_EQ(Take(c, other), LockResult::Locked);
  EXPECT_EQ(c.LockedFileName(), other);
  Creator elsewhere(platform, english);
  ASSERT_EQ(Take(elsewhere, third), LockResult::Locked);
  EXPECT_EQ(Take(c, third), LockResult::Refused);
  // The failed attempt closed c's handle on other.clut.lock, but the file stays until c goes.
  EXPECT_TRUE(platform.FileExists(other + ".lock"));
  {
    Creator taker(platform, english);
    EXPECT_EQ(Take(taker, other), LockResult::Locked);
  }
  // Taking the same file again after losing it keeps the file just opened.
  ASSERT_EQ(Take(c, other), LockResult::Locked);
  EXPECT_EQ(test::Read(other + ".lock"), Me("App", "User"));
}

TEST_F(LockTest, OddLockFilesOfALiveHolderStillGiveTheRefusal) {
  std::string many;
  for (int i = 0; i < 10000; ++i) many += std::to_string(i) + "\r\n";
  const std::pair<std::string, std::vector<std::string>> cases[] = {
      {"", {"Corvana Username: caller\r\n", "Locking Application: CallerApp\r\n", "Process ID: \r\n"}},
      {many, {"Corvana Username: 1\r\nLocking Time: ", "Process ID: 4\r\n", "Session ID: 5\r\n\r\n"}},
  };
  for (const auto& [bytes, expected] : cases) {
    IoStatus status;
    auto held = platform.OpenLockFile(lock, status);  // a holder that wrote these bytes
    ASSERT_TRUE(held && held->Write(bytes));
    Creator refused(platform, english);
    platform.answers = {kIdOk};
    EXPECT_EQ(Take(refused, file, "CallerApp", "caller", LockMode::Open, false), LockResult::Refused);
    const std::string text = platform.prompts.back().text;
    for (const auto& part : expected) EXPECT_NE(text.find(part), std::string::npos) << part << " in " << text;
  }
}

TEST_F(LockTest, PlacesWhereNoLockCanBeMadeCountAsLocked) {
  const std::string missing = folder / "no such folder\\x.clut";
  ASSERT_TRUE(platform.CreateFolder(folder / "dir.clut.lock"));  // the lock's name is taken by a folder
  for (const std::string& target : {missing, folder / "dir.clut"}) {
    SCOPED_TRACE(target);
    Creator c(platform, english);
    platform.answers = {kIdNo};
    EXPECT_EQ(Take(c, target, "A", "U", LockMode::OpenOrReadOnly, false), LockResult::Refused);
    // Nothing could be read: the file name, the first text and the question only.
    EXPECT_EQ(platform.prompts.back().text, target + "\r\nis already opened and locked for editing.\r\n\r\n"
                                                     "Do you want to open the file as read only?");
  }
  EXPECT_FALSE(platform.FileExists(missing + ".lock"));
}

}  // namespace
}  // namespace tq
