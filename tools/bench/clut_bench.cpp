// Prints what the colour table operations cost, each against a plain read or write of
// the same bytes measured in the same run, and the synchronisation of 50 files.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

#include "colortable/clut_locations.h"
#include "colortable/color_table.h"
#include "editor/checks.h"
#include "posix/posix_platform.h"
#include "support/host.h"
#include "tqclut/tqclut.h"

namespace {

// A fresh folder as the core names folders (joined with "\\"), removed with its files.
class Scratch {
 public:
  Scratch() {
    static std::atomic<int> counter{0};
    const auto folder = std::filesystem::temp_directory_path() /
                        ("tqbench_" + std::to_string(::getpid()) + "_" + std::to_string(counter++));
    std::filesystem::create_directories(folder);
    path_ = folder.string() + "\\";
  }
  ~Scratch() {
    std::error_code ec;
    std::filesystem::remove_all(tq::posix::NativePath(path_), ec);
  }
  const std::string& path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + name; }

 private:
  std::string path_;
};

// The tool's own platform, with a host that creates the folders the synchronisation asks for.
class BenchPlatform : public tq::posix::PosixPlatform {
 public:
  tq::HostLink* Host() override { return &host_; }

 private:
  struct FolderHost : tq::HostLink {
    explicit FolderHost(Platform& platform) : platform(platform) {}
    bool Evaluate(const std::string&, std::int32_t& status, tq::HostValue&) override { return status = 0, true; }
    bool Notify(const std::string&, const std::string&, const tq::HostValue&) override { return true; }
    bool FileNotice(const std::string&) override { return true; }
    bool RemoveFile(const std::string&) override { return true; }
    bool CreateFolder(const std::string& path) override { return static_cast<bool>(platform.CreateFolder(path)); }
    bool Request(const std::string&) override { return true; }
    Platform& platform;
  } host_{*this};
};

// A file of the source tree.
std::string SourceFile(const std::string& relative) {
  std::ifstream in(std::string(TQ_SOURCE_DIR) + "/" + relative, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

using Clock = std::chrono::steady_clock;

// Median microseconds of `rounds` runs.
double Micros(int rounds, const std::function<void()>& run) {
  std::vector<double> times;
  for (int i = 0; i < rounds; ++i) {
    const auto start = Clock::now();
    run();
    times.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
  }
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

std::string Factory() {
  std::string table;
  for (int i = 0; i < tq::kClutIndexCount; ++i) {
    table += tq::FormatClutLine(i, (i * 2654435761u) & 0xFFFFFF) + "# " + std::to_string(i) + ": Colour " +
             std::to_string(i);
    if (i == 0) table += " Version=93.07";
    table += "\r\n";
  }
  return table;
}

void Row(const char* what, double micros, const char* base_name, double base) {
  std::printf("%-34s %10.1f us   %6.2f x %s (%.1f us)\n", what, micros, micros / base, base_name, base);
}

}  // namespace

int main() {
  Scratch dir;
  BenchPlatform p;
  const std::string table = Factory();
  const std::string path = dir / "QLT830_colors.clut";
  p.WriteNewFile(path, table);
  p.WriteNewFile(dir / "QLT830_colors$clut", table);
  p.WriteNewFile(path + ".lock", "");
  const int rounds = 200;

  std::string bytes;
  const double plain_read = Micros(rounds, [&] { p.ReadFile(path, bytes); });
  const double plain_write = Micros(rounds, [&] { p.WriteNewFile(dir / "plain.clut", table); });

  volatile std::uint32_t sink = 0;
  const double parse = Micros(rounds, [&] {
    for (const auto& line : tq::SplitClutLines(table, tq::kClutIndexCount).lines) sink = sink + static_cast<std::uint32_t>(tq::ParseClutLine(line));
  });
  tq::ColorSchemeModule schemes;
  tq::ColorTableState state;
  state.ClutFileName = path;
  for (int i = 0; i < tq::kClutIndexCount; ++i) state.ColorRowMap[i] = static_cast<std::int16_t>(i);
  const double load = Micros(rounds, [&] { tq::LoadColorTable(p, schemes, state, true, tq::LoadReport::Quiet()); });
  int failed = 0;
  const tq::LanguageTexts english;
  const double save = Micros(rounds, [&] { failed += !tq::SaveColorTable(p, english, state); });

  // Each run upgrades a fresh old file; their reference is the scheme folder's default one.
  std::string old = table;
  old.replace(old.find("93.07"), 5, "93.01");
  for (int i = 0; i < rounds; ++i) p.WriteNewFile(dir / ("QLT830_old" + std::to_string(i) + ".clut"), old);
  tq::SetColorSchemeFolder(schemes, dir.path().substr(0, dir.path().size() - 1));
  int next = 0;
  const double upgrade = Micros(rounds, [&] {
    state.ClutFileName = dir / ("QLT830_old" + std::to_string(next++) + ".clut");
    tq::CheckClutVersion(p, schemes, state, false, tq::LoadReport::Quiet());
  });

  std::printf("colour table of %zu bytes, median of %d runs, %d failed operations\n", table.size(), rounds, failed);
  std::printf("(writes end with the data on disk, so they follow the disk's flush time)\n");
  Row("parse of a full table", parse, "plain read", plain_read);
  Row("load (LoadColorTable)", load, "plain read", plain_read);
  Row("save with merge (SaveColorTable)", save, "plain write", plain_write);
  Row("upgrade from 93.01 (one replace)", upgrade, "plain write", plain_write);

  Scratch global, app;
  for (int i = 0; i < 50; ++i) {
    const std::string name = "QLT830_" + std::to_string(100 + i);
    p.WriteNewFile(global / (name + ".clut"), table);
    p.WriteNewFile(global / (name + "$clut"), table);
  }
  int copied = 0;
  const double first = Micros(1, [&] { copied = tq::SyncClutFiles(p, global.path(), app / "ColorSchemes\\"); });
  int again = 0;
  const double second = Micros(9, [&] { again = tq::SyncClutFiles(p, global.path(), app / "ColorSchemes\\"); });
  std::printf("%-34s %10.1f us   (%d files copied)\n", "sync 50 tables, first run", first, copied);
  std::printf("%-34s %10.1f us   (%d files copied)\n", "sync 50 tables, no-copy run", second, again);

  // tqclut check on a site: 20 stations of 5 applications with 10 schemes each, every
  // table a little different; against the check of one table alone.
  Scratch site;
  int tables = 0;
  for (int station = 0; station < 20; ++station) {
    const std::string station_folder = site / ("station" + std::to_string(station));
    p.CreateFolder(station_folder);
    for (int app = 0; app < 5; ++app) {
      const std::string schemes = station_folder + "\\app" + std::to_string(app);
      p.CreateFolder(schemes);
      for (int scheme = 0; scheme < 10; ++scheme, ++tables) {
        std::string variant = table;
        const std::string line = tq::FormatClutLine(23, tables * 4099 & 0xFFFFFF);
        variant.replace(variant.find("\r\n", variant.find("# 22:")) + 2, line.size(), line);
        p.WriteNewFile(schemes + "\\scheme" + std::to_string(scheme) + ".clut", variant);
      }
    }
  }
  const std::string one = site / "station0\\app0\\scheme0.clut";
  const std::string root = site.path().substr(0, site.path().size() - 1);
  auto check = [&](const std::vector<std::string>& args) {
    std::ostringstream out, err;
    tq::clut_tool::Run(p, args, out, err);
  };
  const double single = Micros(50, [&] { check({"check", one}); });
  const double whole = Micros(3, [&] { check({"check", "--recursive", root}); });
  const double whole_json = Micros(3, [&] { check({"check", "--recursive", "--json", root}); });
  std::printf("%-34s %10.1f us\n", "tqclut check, one table", single);
  std::printf("%-34s %10.1f us   %6.2f x one table (%d tables, %.0f ms in all)\n", "tqclut check -r, per table",
              whole / tables, whole / tables / single, tables, whole / 1000);
  std::printf("%-34s %10.1f us   %6.2f x one table\n", "tqclut check -r --json, per table", whole_json / tables,
              whole_json / tables / single);

  // The editor's live checks on the classic scheme, which fails several rules: every
  // rule at opening, then one colour picked (the alarm list text, then back).
  const tq::quality::ColourTable colours = tq::quality::ParseColourTable(SourceFile("data/QLT830_colors.clut"));
  // Every rule on colours it has not seen (the same colours again are not measured again).
  tq::quality::ColourTable other = colours;
  other[0] ^= 1;
  tq::EditorChecks checks;
  bool other_turn = false;
  const double all_rules = Micros(rounds, [&] { checks.Reset((other_turn = !other_turn) ? other : colours); });
  checks.Reset(colours);
  bool flip = false;
  const double one_change = Micros(rounds, [&] {
    flip = !flip;
    sink = sink + static_cast<std::uint32_t>(checks.Change(258, flip ? 0x303030 : colours[258]).size());
  });
  const double status_change = Micros(rounds, [&] {
    flip = !flip;
    sink = sink + static_cast<std::uint32_t>(checks.Change(45, flip ? 0x0000C0 : colours[45]).size());
  });
  std::printf("%-34s %10.1f us   (%zu findings)\n", "editor checks, every rule", all_rules, checks.Failed().size());
  std::printf("%-34s %10.1f us\n", "editor checks, list text changed", one_change);
  std::printf("%-34s %10.1f us   (the index of most rules)\n", "editor checks, alarm colour changed", status_change);
  return 0;
}
