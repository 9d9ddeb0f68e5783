#include "editor/scheme_commands.h"

#include <algorithm>
#include <cctype>

#include "colortable/clut_locations.h"
#include "support/custom_file_dlg.h"
#include "support/localization.h"
#include "support/string_ids.h"
#include "support/utils.h"

namespace tq {

namespace {

constexpr int kImportDialogMode = 3, kExportDialogMode = 4;

// The device names Windows keeps in every folder, also with an extension ("NUL.clut").
bool IsDeviceName(const std::string& name) {
  std::string stem = UpperAscii(name.substr(0, name.find('.')));
  while (!stem.empty() && stem.back() == ' ') stem.pop_back();
  static const char* const devices[] = {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
  for (const char* device : devices)
    if (stem == device) return true;
  return stem.size() == 4 && (stem.starts_with("COM") || stem.starts_with("LPT")) && stem[3] >= '1' && stem[3] <= '9';
}

}  // namespace

bool IsRefusedSchemeName(const std::string& name) {
  if (name.empty() || name == "." || name.find("..") != std::string::npos) return true;
  // A trailing dot or blank is dropped by Windows: the file would get another name.
  if (name.back() == '.' || name.back() == ' ' || name.front() == ' ') return true;
  if (name.front() == '.') return true;  // no name before the extension
  for (unsigned char c : name)
    if (c < 32 || std::string_view("\\/:*?\"<>|").find(static_cast<char>(c)) != std::string_view::npos) return true;
  // Our own rule: a scheme saved over a lock or a file being written would break the
  // lock or the save that owns it.
  const std::string upper = UpperAscii(name);
  return IsDeviceName(name) || upper.ends_with(".LOCK") || upper.ends_with(".TMP");
}

std::string RestoreDefaultsSource(Platform& platform, const std::string& clut_file) {
  std::string source = platform.UpperCase(clut_file);
  for (std::size_t at = 0; (at = source.find(".CLUT", at)) != std::string::npos; ++at) source[at] = '$';
  return source;
}

// ---- The session's members of these commands ----

void frmTqColorSetting::cmbColorSchemes_Click(int index) { SchemeCommands(*this).SchemeChosen(index); }
void frmTqColorSetting::SelectSchemeSilently(int index) { SchemeCommands(*this).SelectSilently(index); }
void frmTqColorSetting::ApplyScheme(int index, bool reload) { SchemeCommands(*this).Apply(index, reload); }
void frmTqColorSetting::cmdSave_Click() { SchemeCommands(*this).SaveAs(); }
void frmTqColorSetting::cmdDelete_Click() { SchemeCommands(*this).Delete(); }
void frmTqColorSetting::miImport_Click() { SchemeCommands(*this).Import(); }
void frmTqColorSetting::miExport_Click() { SchemeCommands(*this).Export(); }
void frmTqColorSetting::miRestoreDefaults_Click() { SchemeCommands(*this).RestoreDefaults(); }
void frmTqColorSetting::ImportIniFile() { SchemeCommands(*this).ImportIniFile(); }

// ---- Helpers ----

int SchemeCommands::Ask(const std::string& prompt, int buttons, int style) {
  return platform_.ShowMessage(prompt, buttons, style, s_.Text(sid::kTitle));
}

EditorView* SchemeCommands::LoadedView() const { return s_.IsLoaded() ? s_.View() : nullptr; }

bool SchemeCommands::IsIndexShown(int index) const {
  // A row shows the first index that points at it.
  return s_.RowIndex(s_.Table().ColorRowMap[index]) == index;
}

// ---- The scheme list ----

void SchemeCommands::SelectSilently(int index) {
  s_.filling_ = true;
  if (!ColorSchemes(s_.Schemes()).empty()) SchemeChosen(index);  // only remembered, since filling
  if (EditorView* view = LoadedView()) view->SchemesChanged();
  s_.filling_ = false;
}

void SchemeCommands::SchemeChosen(int index) {
  s_.scheme_list_index_ = index;
  if (index == s_.last_scheme_index_) return;
  if (!s_.filling_) {
    if (s_.ColorsChanged) {
      const std::string prompt =
          s_.Text(sid::kColorsFor) + FileNameOf(s_.ClutFileName()) + " " + s_.Text(sid::kChangedSaveQuestion);
      if (Ask(prompt, kMbYesNo, kMbIconExclamation) == kIdYes) {
        if (!SaveColorTable(platform_, s_.Strings(), s_.table_)) {
          // The user has been told; the colours stay on the screen, unsaved, and with
          // them the scheme they belong to.
          s_.ClutError(false);
          SelectSilently(s_.last_scheme_index_);
          return;
        }
        s_.ColorsSaved = true;
        s_.ColorsChanged = false;  // also when the switch is then refused
      }
    }
    Apply(index, true);
  }
  s_.last_scheme_index_ = s_.scheme_list_index_;
}

void SchemeCommands::Apply(int index, bool reload) {
  const std::string path = GetColorSchemeAt(s_.Schemes(), index);
  if (path.empty()) {
    s_.ColorsChanged = false;
    return;
  }
  ApplyFile(path, reload);
}

SchemeCommands::EditedFile SchemeCommands::Edited() const {
  return {s_.ClutFileName(), s_.EnableChanges(), s_.LockFileCreated, s_.ColorsChanged, s_.ColorThemeChanged};
}

void SchemeCommands::ReturnTo(const EditedFile& file) {
  s_.ClutFileName(file.path);
  s_.ClutError(false);
  s_.EnableChanges(file.editable);
  // Holds it again: locking another file closed the lock it had.
  s_.LockFileCheck(file.locked);
  s_.ClutError(false);
  s_.ColorsChanged = file.colors_changed;
  s_.ColorThemeChanged = file.theme_changed;
  int position = -1;
  SelectSilently(FindColorScheme(platform_, s_.Schemes(), file.path, position) ? position : -1);
  s_.MakeEnableChanges(false);
  if (EditorView* view = LoadedView()) view->StateChanged();
}

void SchemeCommands::ApplyFile(const std::string& path, bool reload) {
  s_.ClutError(false);
  const EditedFile before = Edited();
  s_.ClutFileName(path);
  // Editable again unless the host opened the editor read-only: a read-only choice
  // made for the previous file does not carry over.
  s_.EnableChanges(s_.host_enable_changes_);
  s_.LockFileCheck(true);
  if (s_.ClutError()) return ReturnTo(before);  // refused: the editor stays on its file as it was
  if (!s_.LockFileCreated) s_.LockFileCheck(false);
  s_.MakeEnableChanges(false);
  if (EditorView* view = LoadedView()) view->StateChanged();
  if (reload) {
    LoadColorTable(platform_, s_.Schemes(), s_.table_, true, LoadReport::ToUser(s_.Strings()));
    s_.ClutError(false);  // reported; the rows say "Unreadable" where it matters
    if (EditorView* view = LoadedView()) view->RowChanged(-1);
  }
  s_.ColorThemeChanged = true;
  platform_.HostCall(kHostFileNotice, s_.ClutFileName());
  s_.ColorsChanged = false;
  s_.history_.Clear();
}

// ---- Save As ----

std::optional<std::string> SchemeCommands::AcceptName(const std::string& typed,
                                                      const std::vector<std::string>& paths) {
  std::string name = typed;
  if (name.find('.') == std::string::npos) name += ".clut";
  if (IsRefusedSchemeName(name)) {
    Ask("\"" + typed + "\" " + s_.Strings().Get(sid::kSchemeNameRefused), kMbOk, kMbIconExclamation);
    return std::nullopt;
  }
  // Our own rule, wider than the listed schemes: any file of that name in the folder,
  // in whatever case, is overwritten only when the user says so.
  const std::string folder = GetColorSchemeFolder(s_.Schemes());
  bool exists = platform_.FileExists(folder + name);
  for (const std::string& path : paths) exists = exists || EqualsIgnoreCase(platform_, FileNameOf(path), name);
  for (const std::string& other : platform_.ListFileNames(folder))
    exists = exists || EqualsIgnoreCase(platform_, other, name);
  if (exists && Ask(name + s_.Strings().Get(sid::kSchemeExists), kMbYesNo, kMbIconExclamation) != kIdYes)
    return std::nullopt;
  return name;
}

void SchemeCommands::SaveAs() {
  if (!s_.Enablement().save) return;  // the window disables what may not run; so does the session
  if (!CanAddColorScheme(s_.Schemes())) {
    Ask(s_.Text(sid::kTooManySchemes), kMbOk, kMbIconExclamation);
    return;
  }
  SaveSchemeRequest request{FileNameOf(s_.ClutFileName()), s_.SchemeListIndex(), s_.AuthorizationLevelTools,
                            ColorSchemes(s_.Schemes()), nullptr};
  request.accept = [this, &request](const std::string& typed) { return AcceptName(typed, request.scheme_paths); };
  const std::string name = s_.View() ? s_.View()->AskSchemeName(request) : std::string();
  if (name.empty()) return;
  const std::string folder = GetColorSchemeFolder(s_.Schemes());
  const std::string path = platform_.AbsolutePath(folder + name);
  const EditedFile before = Edited();
  const bool switching = !EqualsIgnoreCase(platform_, path, s_.ClutFileName());
  std::string made;  // the new file, which goes again when the save does not end in it
  if (switching) {
    // The folder may have gone since the list was made; the host creates our folders.
    if (!platform_.FolderExists(folder) && !CreateFolderViaHost(platform_, folder)) return;
    int position = -1;
    // A file that is not a listed scheme is replaced whole (the user agreed): only the
    // lines of a colour table are kept when the colours are written into it.
    const bool scheme = FindColorScheme(platform_, s_.Schemes(), path, position);
    if (!scheme || !platform_.FileExists(path)) {
      if (!platform_.FileExists(path)) made = path;
      if (IoStatus copied = platform_.CopyFileTo(s_.ClutFileName(), path, true); !copied) {
        Ask(s_.Strings().Get(sid::kCannotWrite) + path + "\r\n" + copied.message + "\r\n\r\n" +
                s_.Strings().Get(sid::kPreviousUnchanged),
            kMbOk, kMbIconCritical);
        return;
      }
    }
    LoadColorSchemeList(platform_, s_.schemes_);
    // A name the list does not show (not a ".clut" file) is still the file edited now.
    SelectSilently(FindColorScheme(platform_, s_.Schemes(), path, position) ? position : -1);
    ApplyFile(path, false);
    if (!EqualsIgnoreCase(platform_, s_.ClutFileName(), path)) return Unmake(made, before);  // refused
    if (!s_.EnableChanges()) {
      // Taken read-only: the colours could not be written there, so the editor goes back
      // to the file they can be saved to, with the changes still marked.
      ReturnTo(before);
      return Unmake(made, before);
    }
  }
  if (!SaveColorTable(platform_, s_.Strings(), s_.table_)) {
    s_.ClutError(false);  // the user has been told
    if (switching) ReturnTo(before);  // to a file OK can still save, the changes still marked
    return Unmake(made, before);
  }
  s_.ColorsSaved = true;
  s_.ColorsChanged = false;
  s_.history_.Clear();
  platform_.HostCall(kHostFileNotice, name);
}

// A Save As that did not end in the file it made leaves no copy of the old colours
// behind under the new name.
void SchemeCommands::Unmake(const std::string& made, const EditedFile& edited) {
  if (made.empty() || !platform_.RemoveFile(made)) return;
  LoadColorSchemeList(platform_, s_.schemes_);
  int position = -1;
  SelectSilently(FindColorScheme(platform_, s_.Schemes(), edited.path, position) ? position : -1);
}

// ---- Delete ----

void SchemeCommands::Delete() {
  if (!s_.Enablement().delete_scheme) return;
  const std::vector<std::string> schemes = ColorSchemes(s_.Schemes());
  const int index = s_.SchemeListIndex();
  if (index < 0 || index >= static_cast<int>(schemes.size())) return;
  const std::string path = schemes[index];
  const std::string name = FileNameOf(path);
  const std::string question = s_.Text(sid::kDeleteQuestion) + name + s_.Text(sid::kDeleteQuestionEnd);
  if (Ask(question, kMbYesNo, kMbIconExclamation) != kIdYes) return;
  const int count = static_cast<int>(schemes.size());
  const int next = index == count - 1 ? std::max(index - 1, 0) : index;
  if (platform_.FileExists(path)) {
    platform_.HostCall(kHostRemoveFile, path);
    // A host that only takes note leaves the file: the user asked for it to go.
    if (platform_.FileExists(path)) platform_.RemoveFile(path);
  }
  LoadColorSchemeList(platform_, s_.schemes_);
  SelectSilently(next);
  Apply(next, true);
}

// ---- Restore Defaults ----

void SchemeCommands::RestoreDefaults() {
  if (!s_.Enablement().restore_defaults) return;
  if (Ask(s_.Text(sid::kRestoreDefaultsQuestion), kMbYesNo, kMbIconExclamation) != kIdYes) return;
  if (ReadDVHome(platform_).empty()) {
    Ask(s_.Text(sid::kNoDVHome), kMbOk, kMbIconCritical);
    return;
  }
  // Read aside: a copy that cannot be read is reported and leaves every row as it
  // was, rather than "Unreadable" rows that the next save would fill with other colours.
  ColorTableState restored = s_.Table();
  restored.ClutFileName = RestoreDefaultsSource(platform_, s_.ClutFileName());
  if (!LoadColorTable(platform_, s_.Schemes(), restored, true, LoadReport::ToUser(s_.Strings()))) return;
  ColorTableState& table = s_.table_;
  s_.history_.Record(ColourRows::Of(table), ColourRows::Of(restored));
  table.rows = restored.rows;
  table.ColorIndexValue = restored.ColorIndexValue;
  s_.ColorsChanged = true;
  if (EditorView* view = LoadedView()) view->RowChanged(-1);
}

// ---- Logical colours: export and import ----

std::string SchemeCommands::ChooseLogicalColorsFile(FileDialogKind kind) {
  const bool import = kind == FileDialogKind::Open;
  const std::string filter = s_.Text(sid::kIniFiles) + " (*.ini)|*.ini|" + s_.Text(sid::kAllFiles) + " (*.*)|*.*|";
  const std::string title = s_.Text(import ? sid::kImportTitle : sid::kExportTitle);
  const std::string root = InstallationRoot(ReadDVHome(platform_));
  std::string& folder = s_.file_dialog_folder_;
  folder = root.empty() ? "C:\\" : root + "tq_lib\\defaults\\ColorSettingTool";
  EditorView* view = s_.View();
  if (s_.UseCustomFileDlg && s_.CustomFileDlg) {
    HostValue file;
    bool cancel = false;
    s_.CustomFileDlg->RaiseBrowse(view ? view->WindowHandle() : 0, import ? kImportDialogMode : kExportDialogMode,
                                  title, filter, folder, file, cancel);
    return !cancel && file.kind == HostValue::Kind::Text ? file.text : std::string();
  }
  return view ? view->AskFile(kind, title, filter, "ini", folder) : std::string();
}

void SchemeCommands::Export() {
  if (!s_.Enablement().import_export) return;
  const std::string file = ChooseLogicalColorsFile(FileDialogKind::Save);
  if (file.empty()) return;
  const std::vector<int>& strip = s_.Selection().Strip();
  const ColorTableState& table = s_.Table();
  const LanguageTexts& texts = s_.Strings();
  const std::int32_t button_face = s_.View() ? s_.View()->ButtonFaceColor() : kButtonFaceGrey;
  bool wrote = false;
  for (int index = 0; index < kClutIndexCount; ++index) {
    if (!IsIndexShown(index)) continue;
    const RowColour& shown = table.rows[index];
    if (shown.kind == RowColour::Kind::Unreadable) continue;
    const int row = table.ColorRowMap[index];
    // A "not defined" row is exported as the colour its button shows.
    const std::int32_t colour = shown.kind == RowColour::Kind::Colour ? shown.colour : kClutNotDefined;
    const std::string value =
        LogicalColorValue(index, colour, button_face, RowName(texts, row, s_.VoltageNames()),
                          GetTabCaptionOfRow(texts, strip, row), GetCategoryNameOfRow(texts, row));
    if (IoStatus written = platform_.IniWrite(kLogicalColorsSection, LogicalColorsKey(index), value, file);
        !written) {
      Ask(file + "\r\n" + written.message + "\r\n\r\n" + s_.Text(sid::kCannotSave), kMbOk, kMbIconCritical);
      break;
    }
    wrote = true;
  }
  // The host hears of a file only when something was written into it.
  if (wrote) platform_.HostCall(kHostFileNotice, file);
}

void SchemeCommands::Import() {
  if (!s_.Enablement().import_export) return;
  const std::string file = ChooseLogicalColorsFile(FileDialogKind::Open);
  if (file.empty()) return;
  s_.IniFileName(file);
  ImportIniFile();
}

void SchemeCommands::ImportIniFile() {
  const std::string& ini = s_.IniFileName();
  if (ini.empty() || !platform_.FileExists(ini)) return;
  const ColourRows before = ColourRows::Of(s_.Table());
  for (int index = 0; index < kClutIndexCount; ++index) {
    if (!IsIndexShown(index)) continue;
    const std::string value = platform_.IniRead(kLogicalColorsSection, LogicalColorsKey(index), ini);
    if (value.empty()) continue;
    const int row = s_.Table().ColorRowMap[index];
    const std::int32_t colour = ParseClutLine(value);
    if (colour == kClutUnreadable) {
      s_.ShowColorRow(row, 0, index, kRowUnreadable);
    } else if (colour == kClutNotDefined) {
      s_.ShowColorRow(row, 0, index, kRowNotDefined);
    } else {
      s_.ShowColorRow(row, colour, index, kRowColour);
      s_.ColorsChanged = true;
    }
  }
  s_.history_.Record(before, ColourRows::Of(s_.Table()));
}

}  // namespace tq
