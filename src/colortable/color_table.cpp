#include "colortable/color_table.h"

#include "colortable/clut_locations.h"
#include "support/localization.h"
#include "support/string_ids.h"
#include "support/utils.h"

namespace tq {

namespace {

void Tell(Platform& platform, const LanguageTexts& texts, const std::string& prompt) {
  int buttons = kMbOk;
  platform.ShowMessage(prompt, buttons, kMbIconCritical, texts.Get(sid::kTitle));
}

void TellWriteFailed(Platform& platform, const LanguageTexts& texts, const std::string& path, const IoStatus& status) {
  Tell(platform, texts,
       texts.Get(sid::kCannotWrite) + path + "\r\n" + status.message + "\r\n\r\n" + texts.Get(sid::kPreviousUnchanged));
}

// The first 286 lines of a file; nullopt when it cannot be read.
std::optional<std::vector<std::string>> ReadClutLines(Platform& platform, const std::string& path) {
  std::string bytes;
  if (!platform.ReadFile(path, bytes)) return std::nullopt;
  return SplitClutLines(bytes, kClutIndexCount).lines;
}

}  // namespace

IoStatus ReplaceFileContent(Platform& platform, const std::string& target, std::string_view bytes) {
  // A name of our own process beside the target: same volume, so the move is one
  // step, and a second process saving at the same moment never shares it.
  const std::string temp = target + "." + std::to_string(platform.ProcessId()) + ".tmp";
  IoStatus status = platform.WriteNewFile(temp, bytes);
  if (status) status = platform.MoveReplace(temp, target);
  if (!status && platform.FileExists(temp)) platform.RemoveFile(temp);
  return status;
}

bool LoadColorTable(Platform& platform, const ColorSchemeModule& module, ColorTableState& state, bool update_rows,
                    LoadReport report) {
  const std::string& path = state.ClutFileName;
  // No line could be read: the rows say so rather than go on showing other colours.
  auto failed = [&] {
    state.ClutError = true;
    for (int i = 0; update_rows && i < kClutIndexCount; ++i)
      if (state.ColorRowMap[i] != -1) state.rows[i].kind = RowColour::Kind::Unreadable;
    return false;
  };
  if (!platform.FileExists(path)) {
    if (const LanguageTexts* texts = report.User()) Tell(platform, *texts, texts->Get(sid::kTableNotFound) + path);
    return failed();
  }
  CheckClutVersion(platform, module, state, false, report);
  std::string bytes;
  if (IoStatus status = platform.ReadFile(path, bytes); !status) {
    if (const LanguageTexts* texts = report.User())
      Tell(platform, *texts, texts->Get(sid::kCannotRead) + path + "\r\n" + status.message);
    return failed();
  }
  const std::vector<std::string> lines = SplitClutLines(bytes, kClutIndexCount).lines;
  for (int i = 0; i < kClutIndexCount; ++i) {
    const std::int32_t value = i < static_cast<int>(lines.size()) ? ParseClutLine(lines[i]) : kClutUnreadable;
    if (update_rows && state.ColorRowMap[i] != -1) {
      RowColour& row = state.rows[i];
      row.kind = value == kClutUnreadable ? RowColour::Kind::Unreadable
                 : value == kClutNotDefined ? RowColour::Kind::NotDefined
                                            : RowColour::Kind::Colour;
      if (value >= 0) row.colour = value;
    }
    if (value != kClutUnreadable) state.ColorIndexValue[i] = value;
  }
  return true;
}

ClutNewLines BuildClutSaveLines(const ColorTableState& state) {
  ClutNewLines lines;
  // An unreadable row is written with the colour of the row handled before it, as
  // the editor always did: there is no value of its own to write.
  std::int16_t red = 0, green = 0, blue = 0;
  for (int i = 0; i < kClutIndexCount; ++i) {
    if (state.ColorRowMap[i] == -1) continue;
    const RowColour& row = state.rows[i];
    if (row.kind == RowColour::Kind::NotDefined) {
      red = green = blue = -1;
    } else if (row.kind == RowColour::Kind::Colour) {
      red = RedOf(row.colour);
      green = GreenOf(row.colour);
      blue = BlueOf(row.colour);
    }
    lines[i] = FormatClutLine(i, red, green, blue);
  }
  return lines;
}

bool SaveColorTable(Platform& platform, const LanguageTexts& texts, ColorTableState& state) {
  const std::string& path = state.ClutFileName;
  if (!platform.FileExists(path)) {
    Tell(platform, texts, texts.Get(sid::kTableNotFound) + path + "\r\n\r\n" + texts.Get(sid::kCannotSave));
    state.ClutError = true;
    return false;
  }
  if (!platform.FileExists(path + ".lock")) {
    int buttons = kMbYesNo;
    const std::string prompt = texts.Get(sid::kTableFile) + path + "\r\n" + texts.Get(sid::kNotLocked) + "\r\n\r\n" +
                               texts.Get(sid::kSaveChanges);
    if (platform.ShowMessage(prompt, buttons, kMbIconExclamation, texts.Get(sid::kTitle)) != kIdYes) return false;
  }
  std::string old_bytes;
  IoStatus status = platform.ReadFile(path, old_bytes);
  if (status) status = ReplaceFileContent(platform, path, MergeClutSave(old_bytes, BuildClutSaveLines(state)));
  if (!status) {
    TellWriteFailed(platform, texts, path, status);
    // Keeps the editor open on OK: its colours exist nowhere else.
    state.ClutError = true;
    return false;
  }
  platform.HostCall(kHostFileNotice, path);
  return true;
}



void CheckClutVersion(Platform& platform, const ColorSchemeModule& module, ColorTableState& state,
                      bool require_existing, LoadReport report) {
  const std::string& path = state.ClutFileName;
  if (require_existing && !platform.FileExists(path)) return;
  std::string bytes;
  if (!platform.ReadFile(path, bytes)) return;  // the load reports what it cannot read
  std::vector<std::string> lines = SplitClutLines(bytes, kClutIndexCount).lines;
  const std::string version =
      lines.empty() ? std::string() : ClutVersionOfLine(lines.front()).value_or(std::string());
  if (version == kClutCurrentVersion) return;

  std::string reference = GetReferenceClutFile(platform, path, true, true);
  if (reference.empty())
    reference = GetReferenceClutFile(platform, GetColorSchemeFolder(module) + kDefaultClutName, true, true);
  if (reference.empty()) {
    if (const LanguageTexts* texts = report.User())
      Tell(platform, *texts,
           texts->Get(sid::kCannotUpdate) + path + texts->Get(sid::kFrom) + version + texts->Get(sid::kTo) +
               kClutCurrentVersion + texts->Get(sid::kNoReference));
  } else if (auto reference_lines = ReadClutLines(platform, reference)) {
    lines = UpgradeClutLines(std::move(lines), std::move(*reference_lines), version);
  } else {
    return;  // a reference that cannot be read now may be readable at the next load
  }
  if (!ReplaceFileContent(platform, path, JoinClutLines(MarkClutVersion(std::move(lines), version)))) return;

  const std::string home = report.User() ? GetDVHome(platform, *report.User(), state) : ReadDVHome(platform);
  if (home.empty()) return;  // "\etc\<name>" would name nothing useful
  const std::string global = home + "\\etc\\" + FileNameOf(path);
  if (platform.FileExists(global)) platform.CopyFileTo(path, global, true);
}

std::string GetDVHome(Platform& platform, const LanguageTexts& texts, ColorTableState& state) {
  std::string home = ReadDVHome(platform);
  if (home.empty()) {
    int buttons = kMbOk;
    platform.ShowMessage(texts.Get(sid::kNoDVHome), buttons, kMbIconCritical, texts.Get(sid::kTitle));
    state.ClutError = true;
  }
  return home;
}

std::string GetDefaultClutFile(Platform& platform, const LanguageTexts& texts, ColorTableState& state) {
  const std::string home = GetDVHome(platform, texts, state);
  return home.empty() ? std::string() : home + "\\etc\\" + kDefaultClutName;
}

void SetClutFileName(Platform& platform, const LanguageTexts& texts, ColorTableState& state,
                     const std::string& value) {
  state.ClutFileName.clear();
  std::string path = value.empty() ? GetDefaultClutFile(platform, texts, state) : value;
  if (!path.empty() && platform.FileExists(path)) path = platform.AbsolutePath(path);
  state.ClutFileName = path;
}

int SyncClutFilesFromGlobalToApp(Platform& platform, const LanguageTexts& texts, const ColorSchemeModule& module,
                                 ColorTableState& state) {
  const std::string home = GetDVHome(platform, texts, state);
  if (home.empty()) return 0;
  return SyncClutFiles(platform, home + "\\etc\\", module.scheme_folder);
}

std::string InitColorSchemes(Platform& platform, const LanguageTexts& texts, ColorSchemeModule& module,
                             ColorTableState& state, const std::string& app_folder, const std::string& user_folder,
                             const std::string& clut_path) {
  SetColorSchemeFolder(module, app_folder + "ColorSchemes");
  SyncClutFilesFromGlobalToApp(platform, texts, module, state);
  SetIniPaths(platform, module, app_folder, user_folder);
  std::string result = clut_path;
  if (result.empty()) {
    result = GetIniClutFile(platform, module, true);
    if (!result.empty() && !platform.FileExists(result)) {
      result = GetDefaultClutFile(platform, texts, state);
      if (!result.empty() && !platform.FileExists(result)) result.clear();
    }
  }
  SetClutFileName(platform, texts, state, result);
  return result;
}

}  // namespace tq
