// The voltage-level requests against a recorded host (sane and junk replies), the
// colour-list expression, and the host's reads of the colour table file.
#include "editor/host_exchange.h"

#include <gtest/gtest.h>

#include "colortable/clut_locations.h"
#include "common/test_platform.h"

namespace tq {
namespace {

HostValue Text(std::string t) { return {HostValue::Kind::Text, 0, std::move(t), {}}; }
HostValue Number(double n) { return {HostValue::Kind::Number, n, "", {}}; }
HostValue Vector(std::vector<HostValue> items) { return {HostValue::Kind::Vector, 0, "", std::move(items)}; }
HostValue Many(int n, HostValue item) { return Vector(std::vector<HostValue>(n, item)); }
// The levels are the third element of the reply.
HostValue LevelsReply(int n) { return Vector({Text("L"), Text("P"), Many(n, Number(110))}); }

struct Reply { bool ok; std::int32_t status; HostValue value; };

// The host, played by the test: answers Evaluate from a script and records the calls.
struct RecordingHost : HostLink {
  std::vector<Reply> replies;
  std::vector<std::string> calls;
  std::size_t evaluated = 0;
  bool Evaluate(const std::string& expression, std::int32_t& status, HostValue& value) override {
    calls.push_back(expression);
    if (evaluated == replies.size()) return false;
    const Reply& r = replies[evaluated++];
    status = r.status;
    value = r.value;
    return r.ok;
  }
  bool Notify(const std::string& event, const std::string& text, const HostValue& value) override {
    calls.push_back(event + "|" + text + "|" + value.text);
    return true;
  }
  bool FileNotice(const std::string&) override { return true; }
  bool RemoveFile(const std::string&) override { return true; }
  bool CreateFolder(const std::string&) override { return true; }
  bool Request(const std::string&) override { return true; }
};

TEST(VoltageLevels, SaneAndJunkReplies) {
  const struct { const char* what; std::vector<Reply> replies; const char* names; int count; } cases[] = {
      {"sane", {{true, 0, LevelsReply(3)}, {true, 0, Vector({Text("10 kV"), Number(110), Number(0.4)})}},
       "10 kV|110|0.4|", 3},
      {"levels refused", {{true, 1, LevelsReply(3)}}, "", 0},
      {"host error", {{false, 0, LevelsReply(3)}}, "", 0},
      {"empty reply", {{true, 0, {}}}, "", 0},
      {"number for the reply", {{true, 0, Number(3)}}, "", 0},
      {"number for the levels", {{true, 0, Vector({Text("a"), Text("b"), Number(3)})}}, "", 0},
      {"translation refused", {{true, 0, LevelsReply(12)}, {true, 5, Many(12, Text("x"))}}, "", 13},
      {"number for the names", {{true, 0, LevelsReply(2)}, {true, 0, Number(1)}}, "", 3},
      {"vector of vectors", {{true, 0, LevelsReply(2)}, {true, 0, Vector({Many(1, Text("x")), Text("y")})}}, "", 3},
      {"a thousand names", {{true, 0, LevelsReply(1000)}, {true, 0, Many(1000, Number(7))}},
       "7|7|7|7|7|7|7|7|7|7|7|7|7|7|7|7|7|7|7|7|", 1000},
  };
  for (const auto& c : cases) {
    RecordingHost host;
    host.replies = c.replies;
    const VoltageLevels levels = FetchVoltageLevels(&host);
    std::string names;
    for (const std::string& name : levels.names) names += name + "|";
    EXPECT_EQ(names, c.names) << c.what;
    EXPECT_EQ(levels.count, c.count) << c.what;
    EXPECT_EQ(host.calls.size(), c.replies.size()) << c.what;
  }
  EXPECT_EQ(FetchVoltageLevels(nullptr).count, 0);

  RecordingHost host;
  host.replies = {{true, 0, LevelsReply(3)}};
  FetchVoltageLevels(&host);
  EXPECT_EQ(host.calls,
            (std::vector<std::string>{
                "#return network_topology_manager(\"LEVELS\", \"POWER\")",
                "#return TRANSLATION(VECTOR(\"SYS_NT_POWER_LX_0\",\"SYS_NT_POWER_LX_1\",\"SYS_NT_POWER_LX_2\"))"}));
}

ColorTableArray Only(std::vector<std::pair<int, std::int32_t>> kept) {
  ColorTableArray table;
  table.fill(kClutNotDefined);
  for (auto [index, value] : kept) table[index] = value;
  return table;
}

TEST(ColorLists, ExpressionAndSendingWithCallSixThatNotifiesOnSuccessOnly) {
  ColorTableArray full;
  for (int i = 0; i < kClutIndexCount; ++i) full[i] = i;
  EXPECT_EQ(ColorListExpression(full),
            "#return LIST(AL1=LIST(BG=256,GL=257,TXT=258),AL2=LIST(BG=256,GL=257,TXT=258),"
            "EL=LIST(BG=262,GL=263,DB=264,TXT=265),BL=LIST(BG=266,GL=267,TXT=268),"
            "TGM=LIST(ST_FAULTY=35,ST_MANUALLY_ENTERED=37,ST_OBSOLETE=39,BG=269,HL=270),"
            "TTM=LIST(BG=272,BGS=273,GL=274,TXT=275),"
            "MRGM=LIST(ST_FAULTY=35,ST_MANUALLY_ENTERED=37,ST_OBSOLETE=39,BG=276,HL=277),"
            "MRTM=LIST(BG=279,BGS=280,GL=281,TXT=282))");
  EXPECT_EQ(ColorListExpression(Only({{35, -1}})), "#return LIST(TGM=LIST(ST_FAULTY=-1),MRGM=LIST(ST_FAULTY=-1))");
  // Outside the filter (0, 38, 283) or through it into no list (56, 259): nothing.
  EXPECT_EQ(ColorListExpression(Only({{0, 1}, {38, 1}, {56, 1}, {259, 1}, {283, 1}})), "");

  for (std::int32_t status : {0, 1}) {
    RecordingHost host;
    host.replies = {{true, status, Text("accepted")}};
    SendColorValues(&host, Only({{264, 5}}));
    std::vector<std::string> expected = {"#return LIST(EL=LIST(DB=5))"};
    if (status == 0) expected.push_back("ColorSchemeLoaded||accepted");
    EXPECT_EQ(host.calls, expected);
  }
  RecordingHost idle;
  SendColorValues(&idle, Only({}));
  EXPECT_TRUE(idle.calls.empty());
  SendColorValues(nullptr, Only({{264, 5}}));
}

TEST(HostReads, TableIsReReadUnlessTheFileFailedBefore) {
  test::ScratchFolder dir;
  test::TestPlatform platform;
  const ColorSchemeModule schemes;
  ColorTableState state;
  state.ClutFileName = dir / "QLT830_colors.clut";
  auto write = [&](std::int32_t first) {
    std::string bytes = FormatClutLine(0, first) + "# Version=93.07\r\n";
    for (int i = 1; i < kClutIndexCount; ++i) bytes += FormatClutLine(i, i == 285 ? 0x0000FF : 0) + "\r\n";
    ASSERT_TRUE(test::RealPlatform().WriteNewFile(state.ClutFileName, bytes));
  };
  write(0x030201);
  EXPECT_EQ(GetColorByIndex(platform, schemes, state, 0), 0x030201);
  EXPECT_EQ(GetColorByIndex(platform, schemes, state, 285), 0x0000FF);
  EXPECT_EQ(GetColorByIndex(platform, schemes, state, 286), 0xC0C0C0);
  EXPECT_EQ(GetColorByIndex(platform, schemes, state, -1), 0xC0C0C0);
  write(0x0A0B0C);
  EXPECT_EQ(GetColorsByIndexTable(platform, schemes, state)[0], 0x0A0B0C);
  state.ClutError = true;
  write(0x111111);
  EXPECT_EQ(GetColorByIndex(platform, schemes, state, 0), 0x0A0B0C);

  ColorTableState missing;  // the host gets grey, the user no message box
  missing.ClutFileName = dir / "none.clut";
  EXPECT_EQ(GetColorByIndex(platform, schemes, missing, 0), 0xC0C0C0);
  EXPECT_TRUE(missing.ClutError);
  EXPECT_TRUE(platform.prompts.empty());
}

}  // namespace
}  // namespace tq
