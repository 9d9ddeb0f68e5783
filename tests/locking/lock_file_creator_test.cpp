// clsLockFileCreator over real files in a scratch folder: the share-mode lock of this
// build's platform, the lines it writes, and what a refused party is told. Only the
// user's answers to the boxes are scripted.
#include "locking/lock_file_creator.h"

#include <gtest/gtest.h>

#include "common/test_platform.h"

namespace tq {
namespace {

using Creator = clsLockFileCreator;

struct LockTest : ::testing::Test {
  test::ScratchFolder folder;
  test::TestPlatform platform;
  std::string file = folder / "QLT830_colors.clut";
  std::string lock = file + ".lock";

  std::string Content(const std::string& path) {
    std::string bytes;
    EXPECT_TRUE(platform.ReadFile(path, bytes)) << path;
    return bytes;
  }
  // Takes the lock as a silent caller would; returns the result.
  int Take(Creator& c, const std::string& name, std::string app = "App", std::string user = "User") {
    int result = -1;
    c.CreateLockFile(name, app, user, Creator::kModeOpen, 1, result);
    return result;
  }
  std::string Me(const std::string& app, const std::string& user) {
    return app + "\r\n" + user + "\r\n" + platform.WindowsUserName() + "\r\n" + platform.ComputerName() + "\r\n" +
           std::to_string(platform.ProcessId()) + "\r\n" + std::to_string(platform.SessionId()) + "\r\n";
  }
};

TEST_F(LockTest, TakesTheLockWritesItsLinesAndDeletesTheFileWhenDestroyed) {
  {
    Creator c(platform);
    std::string app, user = "op1";
    int result = -1;
    c.CreateLockFile(file, app, user, Creator::kModeOpenOrReadOnly, 0, result);
    EXPECT_EQ(result, Creator::kLocked);
    EXPECT_EQ(app, "N/A");
    EXPECT_EQ(Content(lock), Me("N/A", "op1"));
    EXPECT_EQ(c.LockedFileName(), file);
    EXPECT_FALSE(c.ReadOnly());
    EXPECT_FALSE(c.IsFileOpenedReadOnly(file));
    EXPECT_TRUE(platform.prompts.empty());
    std::string u, h;
    EXPECT_TRUE(c.GetFileLockerInfo(file, u, h));
    EXPECT_EQ(u, "op1");
    EXPECT_EQ(h, platform.ComputerName());
  }
  EXPECT_FALSE(platform.FileExists(lock));
}

TEST_F(LockTest, SecondObjectInOneProcessIsRefusedAndBothSeeTheLockAsTheirs) {
  Creator first(platform);
  ASSERT_EQ(Take(first, file, "Display", "op1"), Creator::kLocked);
  {
    Creator second(platform);
    std::string app = "Other", user = "op2";
    int result = -1;
    platform.answers = {kIdOk};
    second.CreateLockFile(file, app, user, Creator::kModeOpen, 0, result);
    EXPECT_EQ(result, Creator::kRefused);
    EXPECT_EQ(app, "Display");  // the holder's names replace the caller's
    EXPECT_EQ(user, "op1");
    ASSERT_EQ(platform.prompts.size(), 1u);
    const auto& box = platform.prompts[0];
    EXPECT_EQ(box.title, "Open " + file);
    EXPECT_EQ(box.buttons, kMbOk);
    EXPECT_EQ(box.style, kMbIconExclamation);
    EXPECT_EQ(box.text.rfind(file + "\r\nis already opened and locked for editing.\r\n\r\nCorvana Username: op1\r\n"
                             "Locking Time: ", 0), 0u) << box.text;
    EXPECT_NE(box.text.find("Locking Application: Display\r\nProcess ID: " + std::to_string(platform.ProcessId())),
              std::string::npos);
    EXPECT_NE(box.text.find("Hostname: " + platform.ComputerName() + "\r\n"), std::string::npos);
    EXPECT_EQ(box.text.find("N/A"), std::string::npos);

    EXPECT_TRUE(first.IsLockedByMe(file, "Display", "op1"));
    EXPECT_TRUE(second.IsLockedByMe(file, "Display", "op1"));
    EXPECT_FALSE(second.IsLockedByMe(file, "Display", "op2"));
    EXPECT_FALSE(second.IsLockedByMe(file, "display", "op1"));  // names compare case-sensitively
    EXPECT_FALSE(second.IsLockedByMe(folder / "other.clut", "Display", "op1"));
  }
  // The refused object owned nothing and so deleted nothing; the lock still holds.
  EXPECT_EQ(Content(lock), Me("Display", "op1"));
  Creator third(platform);
  EXPECT_EQ(Take(third, file), Creator::kRefused);
}

TEST_F(LockTest, ReadOnlyOfferSaveModeAndSilentRefusal) {
  Creator holder(platform);
  ASSERT_EQ(Take(holder, file, "Display", "op1"), Creator::kLocked);
  Creator c(platform);
  std::string app, user;
  int result = -1;

  platform.answers = {kIdNo};
  c.CreateLockFile(file, app, user, Creator::kModeOpenOrReadOnly, 0, result);
  EXPECT_EQ(result, Creator::kRefused);
  EXPECT_FALSE(c.ReadOnly());
  ASSERT_EQ(platform.prompts.size(), 1u);
  EXPECT_EQ(platform.prompts[0].buttons, kMbYesNo);
  EXPECT_EQ(platform.prompts[0].style, 0x130);
  EXPECT_EQ(platform.prompts[0].title, "Open " + file);
  const std::string question = "Do you want to open the file as read only?";
  EXPECT_EQ(platform.prompts[0].text.substr(platform.prompts[0].text.size() - question.size() - 4),
            "\r\n\r\n" + question);

  platform.answers = {kIdYes};
  c.CreateLockFile(file, app, user, Creator::kModeOpenOrReadOnly, 0, result);
  EXPECT_EQ(result, Creator::kReadOnlyChosen);
  EXPECT_TRUE(c.ReadOnly());
  platform.answers = {kIdOk};
  EXPECT_TRUE(c.IsFileOpenedReadOnly(file));
  EXPECT_EQ(platform.prompts.back().text, file + "\r\nwas opened as read only.\r\n\r\nPlease choose another file name.");
  EXPECT_EQ(platform.prompts.back().title, "Save " + file);

  platform.answers = {kIdOk};
  c.CreateLockFile(file, app, user, Creator::kModeSave, 0, result);
  EXPECT_EQ(result, Creator::kRefused);
  EXPECT_EQ(platform.prompts.back().title, "Save " + file);
  EXPECT_EQ(platform.prompts.back().style, kMbIconExclamation);
  EXPECT_NE(platform.prompts.back().text.find("\r\n\r\nPlease choose another file name."), std::string::npos);

  const std::size_t shown = platform.prompts.size();
  std::string quiet_app = "Mine", quiet_user;
  c.CreateLockFile(file, quiet_app, quiet_user, Creator::kModeOpenOrReadOnly, 1, result);
  EXPECT_EQ(result, Creator::kRefused);
  EXPECT_EQ(platform.prompts.size(), shown);
  EXPECT_EQ(quiet_app, "Mine");
  EXPECT_EQ(quiet_user, "N/A");
  // A successful lock clears read-only.
  EXPECT_EQ(Take(c, folder / "b.clut"), Creator::kLocked);
  EXPECT_FALSE(c.ReadOnly());
}

TEST_F(LockTest, LockMovesToAnotherFileAndAFailedAttemptGivesTheOldLockUp) {
  const std::string other = folder / "other.clut";
  const std::string third = folder / "third.clut";
  Creator c(platform);
  ASSERT_EQ(Take(c, file), Creator::kLocked);
  ASSERT_EQ(Take(c, other), Creator::kLocked);
  EXPECT_FALSE(platform.FileExists(lock));
  EXPECT_TRUE(platform.FileExists(other + ".lock"));
  EXPECT_EQ(c.LockedFileName(), other);

  Creator elsewhere(platform);
  ASSERT_EQ(Take(elsewhere, third), Creator::kLocked);
  EXPECT_EQ(Take(c, third), Creator::kRefused);
  // The failed attempt closed c's handle on other.clut.lock, but the file stays until c goes.
  EXPECT_TRUE(platform.FileExists(other + ".lock"));
  {
    Creator taker(platform);
    EXPECT_EQ(Take(taker, other), Creator::kLocked);
  }
  // Taking the same file again after losing it keeps the file just opened.
  ASSERT_EQ(Take(c, other), Creator::kLocked);
  EXPECT_EQ(Content(other + ".lock"), Me("App", "User"));
}

TEST_F(LockTest, LeftoverLockFileOfACrashedHolderIsTakenOver) {
  ASSERT_TRUE(platform.WriteNewFile(lock, "Dead\r\nghost\r\nx\r\nFARHOST\r\n1\r\n0\r\nextra\r\n"));
  ASSERT_TRUE(platform.SetAttributes(lock, kAttrHidden | kAttrReadOnly));
  {
    Creator c(platform);
    EXPECT_EQ(Take(c, file, "Display", "op1"), Creator::kLocked);
    EXPECT_EQ(Content(lock), Me("Display", "op1"));
  }
  EXPECT_FALSE(platform.FileExists(lock));
}

TEST_F(LockTest, OddLockFilesOfALiveHolderStillGiveTheRefusal) {
  std::string many;
  for (int i = 0; i < 10000; ++i) many += std::to_string(i) + "\r\n";
  std::string junk;
  for (int i = 0; i < 3000; ++i) junk += static_cast<char>((i * 131 + 7) & 0xFF);
  const struct {
    const char* name;
    std::string bytes;
    std::vector<std::string> expected;
  } cases[] = {
      {"empty", "", {"Corvana Username: caller\r\n", "Locking Time: ", "Locking Application: CallerApp\r\n",
                     "Process ID: \r\n", "Hostname: \r\n"}},
      {"truncated", "HolderApp\r\nhold", {"Corvana Username: hold\r\n", "Locking Application: HolderApp\r\n",
                                          "Session ID: \r\n"}},
      {"10000 lines", many, {"Corvana Username: 1\r\n", "Process ID: 4\r\n", "Session ID: 5\r\n\r\n"}},
      {"junk", junk, {"Locking Time: "}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    IoStatus status;
    // A holder that wrote these bytes through its real lock handle.
    auto held = platform.OpenLockFile(lock, status);
    ASSERT_TRUE(held) << status.message;
    ASSERT_TRUE(held->Write(c.bytes));
    Creator refused(platform);
    std::string app = "CallerApp", user = "caller";
    int result = -1;
    platform.answers = {kIdOk};
    refused.CreateLockFile(file, app, user, Creator::kModeOpen, 0, result);
    EXPECT_EQ(result, Creator::kRefused);
    ASSERT_FALSE(platform.prompts.empty());
    const std::string text = platform.prompts.back().text;
    EXPECT_EQ(text.rfind(file + "\r\nis already opened and locked for editing.\r\n\r\n", 0), 0u);
    for (const auto& part : c.expected) EXPECT_NE(text.find(part), std::string::npos) << part << " in " << text;
    EXPECT_LT(text.size(), 3000u);
  }
}

TEST_F(LockTest, PlacesWhereNoLockCanBeMadeCountAsLocked) {
  const std::string missing = folder / "no such folder\\x.clut";
  ASSERT_TRUE(platform.CreateFolder(folder / "dir.clut.lock"));  // the lock's name is taken by a folder
  for (const std::string& target : {missing, folder / "dir.clut"}) {
    SCOPED_TRACE(target);
    Creator c(platform);
    std::string app = "A", user = "U";
    int result = -1;
    platform.answers = {kIdNo};
    c.CreateLockFile(target, app, user, Creator::kModeOpenOrReadOnly, 0, result);
    EXPECT_EQ(result, Creator::kRefused);
    ASSERT_FALSE(platform.prompts.empty());
    // Nothing could be read: the file name, the first text and the question only.
    EXPECT_EQ(platform.prompts.back().text, target + "\r\nis already opened and locked for editing.\r\n\r\n"
                                                     "Do you want to open the file as read only?");
    EXPECT_EQ(app, "A");
    EXPECT_FALSE(c.IsLockedByMe(target, "A", "U"));
    std::string u, h;
    EXPECT_FALSE(c.GetFileLockerInfo(target, u, h));
  }
  EXPECT_FALSE(platform.FileExists(missing + ".lock"));
}

TEST_F(LockTest, ReadOnlyFolderCountsAsLocked) {
  const std::string sealed = folder / "sealed\\";
  ASSERT_TRUE(platform.CreateFolder(sealed));
  ASSERT_TRUE(platform.SetAttributes(sealed, kAttrReadOnly));
  if (platform.WriteNewFile(sealed + "probe", "x")) {
    platform.RemoveFile(sealed + "probe");
    platform.SetAttributes(sealed, kAttrNormal);
    GTEST_SKIP() << "this account may write into read-only folders";
  }
  Creator c(platform);
  EXPECT_EQ(Take(c, sealed + "x.clut"), Creator::kRefused);
  platform.SetAttributes(sealed, kAttrNormal);
}

}  // namespace
}  // namespace tq
