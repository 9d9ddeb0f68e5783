// The lock file's lines and the refusal message, from the bytes up.
#include "locking/lock_file.h"

#include <gtest/gtest.h>

namespace tq {
namespace {

LockerInfo Holder() {
  return {"ProcessDisplay", "operator1", "winuser", "SCADA01", "4242", "3", "2026-11-22 10:00:00"};
}

TEST(LockFileContent, SixLinesWithCrLfInFileOrderAndReadBack) {
  const LockerInfo h = Holder();
  EXPECT_EQ(FormatLockFile(h), "ProcessDisplay\r\noperator1\r\nwinuser\r\nSCADA01\r\n4242\r\n3\r\n");
  LockerInfo back;
  EXPECT_EQ(ParseLockFile(FormatLockFile(h), back), 6u);
  EXPECT_EQ(back.app_name, "ProcessDisplay");
  EXPECT_EQ(back.session_id, "3");
  EXPECT_EQ(back.locking_time, "N/A");  // never taken from the content
  EXPECT_EQ(OrNotAvailable(""), "N/A");
  EXPECT_EQ(OrNotAvailable("x"), "x");
}

TEST(LockFileContent, OddFilesGiveWhatCanBeReadAndKeepTheRest) {
  LockerInfo kept;
  kept.app_name = "callerApp";
  kept.user_name = "callerUser";

  LockerInfo empty = kept;
  EXPECT_EQ(ParseLockFile("", empty), 0u);
  EXPECT_EQ(empty.app_name, "callerApp");
  EXPECT_EQ(empty.user_name, "callerUser");
  EXPECT_EQ(empty.process_id, "");

  LockerInfo truncated = kept;  // a holder that died while writing
  EXPECT_EQ(ParseLockFile("App\r\nUs", truncated), 2u);
  EXPECT_EQ(truncated.app_name, "App");
  EXPECT_EQ(truncated.user_name, "Us");
  EXPECT_EQ(truncated.windows_user, "");

  LockerInfo mixed;  // LF only, a lone CR, an empty line
  EXPECT_EQ(ParseLockFile("a\nb\rc\r\n\r\ne\n", mixed), 5u);
  EXPECT_EQ(mixed.windows_user, "c");
  EXPECT_EQ(mixed.host_name, "");
  EXPECT_EQ(mixed.process_id, "e");
  EXPECT_EQ(mixed.session_id, "");

  std::string many;
  for (int i = 0; i < 10000; ++i) many += "line" + std::to_string(i) + "\r\n";
  LockerInfo lots;
  EXPECT_EQ(ParseLockFile(many, lots), 10000u);
  EXPECT_EQ(lots.app_name, "line0");
  EXPECT_EQ(lots.session_id, "line5");
}

TEST(LockFileContent, BinaryJunkIsTamedNotTrusted) {
  std::string junk;
  for (int i = 0; i < 4096; ++i) junk += static_cast<char>((i * 37) & 0xFF);
  LockerInfo info;
  ParseLockFile(junk, info);
  for (const std::string* v : {&info.app_name, &info.user_name, &info.windows_user, &info.host_name,
                               &info.process_id, &info.session_id}) {
    EXPECT_EQ(v->find('\0'), std::string::npos);
    EXPECT_LE(v->size(), 255u);
  }
  LockerInfo long_line;
  ParseLockFile(std::string(100000, 'x') + "\r\nu\r\n", long_line);
  EXPECT_EQ(long_line.app_name, std::string(255, 'x'));
  EXPECT_EQ(long_line.user_name, "u");
  LockerInfo utf8;  // "ä" is two bytes: the cut at 255 must not split it
  std::string a_umlauts;
  for (int i = 0; i < 200; ++i) a_umlauts += "\xc3\xa4";
  ParseLockFile(a_umlauts, utf8);
  EXPECT_EQ(utf8.app_name, a_umlauts.substr(0, 254));
}

TEST(RefusalMessage, AllSectionsInOrderWithBlankLinesBetween) {
  const LockerInfo h = Holder();
  EXPECT_EQ(BuildRefusalMessage("C:\\a\\QLT830_colors.clut", DefaultLockTexts(), &h),
            "C:\\a\\QLT830_colors.clut\r\n"
            "is already opened and locked for editing.\r\n\r\n"
            "Corvana Username: operator1\r\nLocking Time: 2026-11-22 10:00:00\r\n\r\n"
            "Locking Application: ProcessDisplay\r\nProcess ID: 4242\r\n\r\n"
            "Windows Username: winuser\r\nHostname: SCADA01\r\nSession ID: 3\r\n\r\n");
}

TEST(RefusalMessage, NotAvailableLinesAndEmptySectionsAreLeftOutEmptyValuesShown) {
  LockerInfo h = Holder();
  h.app_name = "N/A";
  h.process_id = "N/A";  // section B has nothing left
  h.user_name = "N/A";
  h.host_name = "";  // read but empty: the label stays
  EXPECT_EQ(BuildRefusalMessage("f", DefaultLockTexts(), &h),
            "f\r\nis already opened and locked for editing.\r\n\r\n"
            "Locking Time: 2026-11-22 10:00:00\r\n\r\n"
            "Windows Username: winuser\r\nHostname: \r\nSession ID: 3\r\n\r\n");
  // Unreadable lock file: only the file name and the first text.
  EXPECT_EQ(BuildRefusalMessage("f", DefaultLockTexts(), nullptr),
            "f\r\nis already opened and locked for editing.\r\n\r\n");
  // Localised labels are used as given.
  LockTexts de = DefaultLockTexts();
  de[0] = "ist gesperrt.";
  de[4] = "Prozess:";
  LockerInfo only_pid;
  only_pid.app_name = only_pid.user_name = only_pid.windows_user = only_pid.host_name = only_pid.session_id = "N/A";
  only_pid.process_id = "7";
  EXPECT_EQ(BuildRefusalMessage("f", de, &only_pid), "f\r\nist gesperrt.\r\n\r\nProzess: 7\r\n\r\n");
}

}  // namespace
}  // namespace tq
