// The lock file's lines and the refusal message, from the bytes up.
#include "locking/lock_file.h"

#include <gtest/gtest.h>

namespace tq {
namespace {

LockerInfo Holder() {
  return {"ProcessDisplay", "operator1", "winuser", "SCADA01", "4242", "3", "2026-11-22 10:00:00"};
}

std::vector<std::string> Values(LockerInfo info) {
  std::vector<std::string> v;
  for (const std::string* line : info.Lines()) v.push_back(*line);
  return v;
}

TEST(LockFileContent, WrittenInFileOrderAndReadBackAsFarAsTheBytesGo) {
  std::string many;
  for (int i = 0; i < 10000; ++i) many += "l" + std::to_string(i) + "\r\n";
  using V = std::vector<std::string>;
  const struct {
    const char* name;
    std::string bytes;
    std::size_t count;
    V values;  // what the caller passed in stays where the file has no line
  } cases[] = {
      {"own", FormatLockFile(Holder()), 6, {"ProcessDisplay", "operator1", "winuser", "SCADA01", "4242", "3"}},
      {"empty", "", 0, {"callerApp", "callerUser", "", "", "", ""}},
      {"truncated", "App\r\nUs", 2, {"App", "Us", "", "", "", ""}},
      {"mixed ends", "a\nb\rc\r\n\r\ne\n", 5, {"a", "b", "c", "", "e", ""}},
      {"10000 lines", many, 10000, {"l0", "l1", "l2", "l3", "l4", "l5"}},
      {"long line", std::string(100000, 'x') + "\r\nu", 2, {std::string(255, 'x'), "u", "", "", "", ""}},
      {"NUL bytes", std::string("a\0b\r\n", 5), 1, {"ab", "callerUser", "", "", "", ""}},
  };
  for (const auto& c : cases) {
    LockerInfo info;
    info.app_name = "callerApp";
    info.user_name = "callerUser";
    EXPECT_EQ(ParseLockFile(c.bytes, info), c.count) << c.name;
    EXPECT_EQ(Values(info), c.values) << c.name;
    EXPECT_EQ(info.locking_time, "N/A") << c.name;  // never taken from the content
  }
}

TEST(RefusalMessage, SectionsInOrderNotAvailableLeftOutEmptyValuesShown) {
  const LockerInfo h = Holder();
  EXPECT_EQ(BuildRefusalMessage("C:\\a\\QLT830_colors.clut", DefaultLockTexts(), &h),
            "C:\\a\\QLT830_colors.clut\r\n"
            "is already opened and locked for editing.\r\n\r\n"
            "Corvana Username: operator1\r\nLocking Time: 2026-11-22 10:00:00\r\n\r\n"
            "Locking Application: ProcessDisplay\r\nProcess ID: 4242\r\n\r\n"
            "Windows Username: winuser\r\nHostname: SCADA01\r\nSession ID: 3\r\n\r\n");
  LockerInfo odd = Holder();
  odd.app_name = odd.process_id = odd.user_name = "N/A";  // section B has nothing left
  odd.host_name = "";                                   // read but empty: the label stays
  LockTexts texts = DefaultLockTexts();
  texts[lock_text::kLocked] = "ist gesperrt.";
  EXPECT_EQ(BuildRefusalMessage("f", texts, &odd),
            "f\r\nist gesperrt.\r\n\r\nLocking Time: 2026-11-22 10:00:00\r\n\r\n"
            "Windows Username: winuser\r\nHostname: \r\nSession ID: 3\r\n\r\n");
}

}  // namespace
}  // namespace tq
