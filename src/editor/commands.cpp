// The editor's commands beyond OK and Cancel: the colour scheme list, Save As and
// Delete, the More menu's Import, Export and Restore Defaults, and the file dialogs
// they ask for a name with.
#include <algorithm>
#include <cctype>

#include "colortable/clut_locations.h"
#include "editor/session.h"
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

// ---- Helpers ----

int frmTqColorSetting::Ask(const std::string& prompt, int buttons, int style) {
  return platform_->ShowMessage(prompt, buttons, style, Text(sid::kTitle));
}

bool frmTqColorSetting::IsIndexShown(int index) const {
  // A row shows the first index that points at it.
  return RowIndex(table_.ColorRowMap[index]) == index;
}

// ---- The scheme list ----

void frmTqColorSetting::SelectSchemeSilently(int index) {
  filling_ = true;
  if (!ColorSchemes(schemes_).empty()) cmbColorSchemes_Click(index);  // only remembered, since filling
  if (view_ && loaded_) view_->SchemesChanged();
  filling_ = false;
}

void frmTqColorSetting::cmbColorSchemes_Click(int index) {
  scheme_list_index_ = index;
  if (index == last_scheme_index_) return;
  if (!filling_) {
    if (ColorsChanged) {
      const std::string prompt =
          Text(sid::kColorsFor) + FileNameOf(ClutFileName()) + " " + Text(sid::kChangedSaveQuestion);
      if (Ask(prompt, kMbYesNo, kMbIconExclamation) == kIdYes) {
        if (!SaveColorTable(*platform_, strings_, table_)) {
          // The user has been told; the colours stay on the screen, unsaved, and with
          // them the scheme they belong to.
          table_.ClutError = false;
          SelectSchemeSilently(last_scheme_index_);
          return;
        }
        ColorsSaved = true;
        ColorsChanged = false;  // also when the switch is then refused
      }
    }
    ApplyScheme(index, true);
  }
  last_scheme_index_ = scheme_list_index_;
}

void frmTqColorSetting::ApplyScheme(int index, bool reload) {
  const std::string path = GetColorSchemeAt(schemes_, index);
  if (path.empty()) {
    ColorsChanged = false;
    return;
  }
  ApplySchemeFile(path, reload);
}

frmTqColorSetting::EditedFile frmTqColorSetting::Edited() const {
  return {ClutFileName(), enable_changes_, LockFileCreated, ColorsChanged, ColorThemeChanged};
}

void frmTqColorSetting::ReturnTo(const EditedFile& file) {
  ClutFileName(file.path);
  table_.ClutError = false;
  EnableChanges(file.editable);
  // Holds it again: locking another file closed the lock it had.
  LockFileCheck(file.locked);
  table_.ClutError = false;
  ColorsChanged = file.colors_changed;
  ColorThemeChanged = file.theme_changed;
  int position = -1;
  SelectSchemeSilently(FindColorScheme(*platform_, schemes_, file.path, position) ? position : -1);
  MakeEnableChanges(false);
  if (view_ && loaded_) view_->StateChanged();
}

void frmTqColorSetting::ApplySchemeFile(const std::string& path, bool reload) {
  table_.ClutError = false;
  const EditedFile before = Edited();
  ClutFileName(path);
  // Editable again unless the host opened the editor read-only: a read-only choice
  // made for the previous file does not carry over.
  EnableChanges(host_enable_changes_);
  LockFileCheck(true);
  if (table_.ClutError) return ReturnTo(before);  // refused: the editor stays on its file as it was
  if (!LockFileCreated) LockFileCheck(false);
  MakeEnableChanges(false);
  if (view_ && loaded_) view_->StateChanged();
  if (reload) {
    LoadColorTable(*platform_, schemes_, table_, true, LoadReport::ToUser(strings_));
    table_.ClutError = false;  // reported; the rows say "Unreadable" where it matters
    if (view_ && loaded_) view_->RowChanged(-1);
  }
  ColorThemeChanged = true;
  platform_->HostCall(kHostFileNotice, ClutFileName());
  ColorsChanged = false;
  history_.Clear();
}

// ---- Save As ----

std::optional<std::string> frmTqColorSetting::AcceptSchemeName(const std::string& typed,
                                                                const std::vector<std::string>& paths) {
  std::string name = typed;
  if (name.find('.') == std::string::npos) name += ".clut";
  if (IsRefusedSchemeName(name)) {
    Ask("\"" + typed + "\" " + strings_.Get(sid::kSchemeNameRefused), kMbOk, kMbIconExclamation);
    return std::nullopt;
  }
  // Our own rule, wider than the listed schemes: any file of that name in the folder,
  // in whatever case, is overwritten only when the user says so.
  bool exists = platform_->FileExists(GetColorSchemeFolder(schemes_) + name);
  for (const std::string& path : paths) exists = exists || EqualsIgnoreCase(*platform_, FileNameOf(path), name);
  for (const std::string& other : platform_->ListFileNames(GetColorSchemeFolder(schemes_)))
    exists = exists || EqualsIgnoreCase(*platform_, other, name);
  if (exists && Ask(name + strings_.Get(sid::kSchemeExists), kMbYesNo, kMbIconExclamation) != kIdYes)
    return std::nullopt;
  return name;
}

void frmTqColorSetting::cmdSave_Click() {
  if (!enablement_.save) return;  // the window disables what may not run; so does the session
  if (!CanAddColorScheme(schemes_)) {
    Ask(Text(sid::kTooManySchemes), kMbOk, kMbIconExclamation);
    return;
  }
  SaveSchemeRequest request{FileNameOf(ClutFileName()), scheme_list_index_, AuthorizationLevelTools,
                            ColorSchemes(schemes_), nullptr};
  request.accept = [this, &request](const std::string& typed) { return AcceptSchemeName(typed, request.scheme_paths); };
  const std::string name = view_ ? view_->AskSchemeName(request) : std::string();
  if (name.empty()) return;
  const std::string folder = GetColorSchemeFolder(schemes_);
  const std::string path = platform_->AbsolutePath(folder + name);
  const EditedFile before = Edited();
  const bool switching = !EqualsIgnoreCase(*platform_, path, ClutFileName());
  if (switching) {
    // The folder may have gone since the list was made; the host creates our folders.
    if (!platform_->FolderExists(folder) && !CreateFolderViaHost(*platform_, folder)) return;
    int position = -1;
    // A file that is not a listed scheme is replaced whole (the user agreed): only the
    // lines of a colour table are kept when the colours are written into it.
    const bool scheme = FindColorScheme(*platform_, schemes_, path, position);
    if (!scheme || !platform_->FileExists(path)) {
      if (IoStatus copied = platform_->CopyFileTo(ClutFileName(), path, true); !copied) {
        Ask(strings_.Get(sid::kCannotWrite) + path + "\r\n" + copied.message + "\r\n\r\n" +
                strings_.Get(sid::kPreviousUnchanged),
            kMbOk, kMbIconCritical);
        return;
      }
    }
    LoadColorSchemeList(*platform_, schemes_);
    // A name the list does not show (not a ".clut" file) is still the file edited now.
    SelectSchemeSilently(FindColorScheme(*platform_, schemes_, path, position) ? position : -1);
    ApplySchemeFile(path, false);
    if (!EqualsIgnoreCase(*platform_, ClutFileName(), path)) return;  // refused: still on the old file
    if (!EnableChanges()) {
      // Taken read-only: the colours could not be written there, so the editor goes back
      // to the file they can be saved to, with the changes still marked.
      ReturnTo(before);
      return;
    }
  }
  if (!SaveColorTable(*platform_, strings_, table_)) {
    table_.ClutError = false;  // the user has been told
    if (switching) ReturnTo(before);  // to a file OK can still save, the changes still marked
    return;
  }
  ColorsSaved = true;
  ColorsChanged = false;
  history_.Clear();
  platform_->HostCall(kHostFileNotice, name);
}

// ---- Delete ----

void frmTqColorSetting::cmdDelete_Click() {
  if (!enablement_.delete_scheme) return;
  const std::vector<std::string> schemes = ColorSchemes(schemes_);
  const int index = scheme_list_index_;
  if (index < 0 || index >= static_cast<int>(schemes.size())) return;
  const std::string path = schemes[index];
  const std::string name = FileNameOf(path);
  if (Ask(Text(sid::kDeleteQuestion) + name + Text(sid::kDeleteQuestionEnd), kMbYesNo, kMbIconExclamation) != kIdYes)
    return;
  const int count = static_cast<int>(schemes.size());
  const int next = index == count - 1 ? std::max(index - 1, 0) : index;
  if (platform_->FileExists(path)) {
    platform_->HostCall(kHostRemoveFile, path);
    // A host that only takes note leaves the file: the user asked for it to go.
    if (platform_->FileExists(path)) platform_->RemoveFile(path);
  }
  LoadColorSchemeList(*platform_, schemes_);
  SelectSchemeSilently(next);
  ApplyScheme(next, true);
}

// ---- Restore Defaults ----

void frmTqColorSetting::miRestoreDefaults_Click() {
  if (!enablement_.restore_defaults) return;
  if (Ask(Text(sid::kRestoreDefaultsQuestion), kMbYesNo, kMbIconExclamation) != kIdYes) return;
  if (ReadDVHome(*platform_).empty()) {
    Ask(Text(sid::kNoDVHome), kMbOk, kMbIconCritical);
    return;
  }
  // Read aside: a copy that cannot be read is reported and leaves every row as it
  // was, rather than "Unreadable" rows that the next save would fill with other colours.
  ColorTableState restored = table_;
  restored.ClutFileName = RestoreDefaultsSource(*platform_, ClutFileName());
  if (!LoadColorTable(*platform_, schemes_, restored, true, LoadReport::ToUser(strings_))) return;
  history_.Record(ColourRows::Of(table_), ColourRows::Of(restored));
  table_.rows = restored.rows;
  table_.ColorIndexValue = restored.ColorIndexValue;
  ColorsChanged = true;
  if (view_ && loaded_) view_->RowChanged(-1);
}

std::string RestoreDefaultsSource(Platform& platform, const std::string& clut_file) {
  std::string source = platform.UpperCase(clut_file);
  for (std::size_t at = 0; (at = source.find(".CLUT", at)) != std::string::npos; ++at) source[at] = '$';
  return source;
}

// ---- Logical colours: export and import ----

std::string frmTqColorSetting::ChooseLogicalColorsFile(FileDialogKind kind) {
  const bool import = kind == FileDialogKind::Open;
  const std::string filter = Text(sid::kIniFiles) + " (*.ini)|*.ini|" + Text(sid::kAllFiles) + " (*.*)|*.*|";
  const std::string title = Text(import ? sid::kImportTitle : sid::kExportTitle);
  const std::string root = InstallationRoot(ReadDVHome(*platform_));
  file_dialog_folder_ = root.empty() ? "C:\\" : root + "tq_lib\\defaults\\ColorSettingTool";
  if (UseCustomFileDlg && CustomFileDlg) {
    HostValue file;
    bool cancel = false;
    CustomFileDlg->RaiseBrowse(view_ ? view_->WindowHandle() : 0, import ? kImportDialogMode : kExportDialogMode,
                               title, filter, file_dialog_folder_, file, cancel);
    return !cancel && file.kind == HostValue::Kind::Text ? file.text : std::string();
  }
  return view_ ? view_->AskFile(kind, title, filter, "ini", file_dialog_folder_) : std::string();
}

void frmTqColorSetting::miExport_Click() {
  if (!enablement_.import_export) return;
  const std::string file = ChooseLogicalColorsFile(FileDialogKind::Save);
  if (file.empty()) return;
  const std::vector<int>& strip = selection_.Strip();
  bool wrote = false;
  for (int index = 0; index < kClutIndexCount; ++index) {
    if (!IsIndexShown(index)) continue;
    const RowColour& shown = table_.rows[index];
    if (shown.kind == RowColour::Kind::Unreadable) continue;
    const int row = table_.ColorRowMap[index];
    // A "not defined" row is exported as the colour its button shows.
    const std::int32_t colour = shown.kind == RowColour::Kind::Colour ? shown.colour : kClutNotDefined;
    const std::string value =
        LogicalColorValue(index, colour, view_ ? view_->ButtonFaceColor() : kButtonFaceGrey, RowName(strings_, row, voltage_names_),
                          GetTabCaptionOfRow(strings_, strip, row), GetCategoryNameOfRow(strings_, row));
    if (IoStatus written = platform_->IniWrite(kLogicalColorsSection, LogicalColorsKey(index), value, file);
        !written) {
      Ask(file + "\r\n" + written.message + "\r\n\r\n" + Text(sid::kCannotSave), kMbOk, kMbIconCritical);
      break;
    }
    wrote = true;
  }
  // The host hears of a file only when something was written into it.
  if (wrote) platform_->HostCall(kHostFileNotice, file);
}

void frmTqColorSetting::miImport_Click() {
  if (!enablement_.import_export) return;
  const std::string file = ChooseLogicalColorsFile(FileDialogKind::Open);
  if (file.empty()) return;
  IniFileName(file);
  ImportIniFile();
}

void frmTqColorSetting::ImportIniFile() {
  if (ini_file_name_.empty() || !platform_->FileExists(ini_file_name_)) return;
  const ColourRows before = ColourRows::Of(table_);
  for (int index = 0; index < kClutIndexCount; ++index) {
    if (!IsIndexShown(index)) continue;
    const std::string value = platform_->IniRead(kLogicalColorsSection, LogicalColorsKey(index), ini_file_name_);
    if (value.empty()) continue;
    const int row = table_.ColorRowMap[index];
    const std::int32_t colour = ParseClutLine(value);
    if (colour == kClutUnreadable) {
      ShowColorRow(row, 0, index, kRowUnreadable);
    } else if (colour == kClutNotDefined) {
      ShowColorRow(row, 0, index, kRowNotDefined);
    } else {
      ShowColorRow(row, colour, index, kRowColour);
      ColorsChanged = true;
    }
  }
  history_.Record(before, ColourRows::Of(table_));
}

}  // namespace tq
