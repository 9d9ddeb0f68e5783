#include "editor/session.h"

#include "colortable/clut_locations.h"
#include "editor/host_exchange.h"
#include "locking/lock_file_creator.h"
#include "support/localization.h"
#include "support/string_ids.h"

namespace tq {

EnableDecision DecideEnableChanges(bool enable_changes, std::int16_t authorization_level_tools,
                                   bool restore_copy_exists, bool restore_source_exists, bool disable_ok,
                                   bool ok_before) {
  // Lower levels (the initial -1 included) may neither edit, nor edit schemes, nor restore.
  const bool allowed = authorization_level_tools >= kEditingLevel;
  const bool editable = enable_changes && allowed;
  EnableDecision d;
  d.title_id = editable ? sid::kTitle : sid::kTitleReadOnly;
  d.ok = editable || (ok_before && !disable_ok);
  d.import_export = d.colour_buttons = d.save = editable;
  // Switched off by the host only, the user may still pick a scheme to look at.
  d.scheme_list = editable || allowed;
  d.restore_defaults = editable && restore_copy_exists && restore_source_exists;
  // A table that has a restore copy is a factory table: it cannot be deleted.
  d.delete_scheme = editable && !restore_copy_exists;
  return d;
}

frmTqColorSetting::frmTqColorSetting(Platform& platform, LanguageTexts& texts)
    : platform_(&platform), strings_(texts) {}

void frmTqColorSetting::Begin() {
  if (begun_) return;
  begun_ = true;
  GetDVHome();  // only for its message when the toolkit is missing
  ClutFileName("");
}

frmTqColorSetting::~frmTqColorSetting() = default;

// ---- Properties ----

void frmTqColorSetting::ClutFileName(const std::string& value) { SetClutFileName(*platform_, strings_, table_, value); }

void frmTqColorSetting::IniFileName(const std::string& value) {
  ini_file_name_.clear();
  if (!value.empty() && platform_->FileExists(value)) ini_file_name_ = platform_->AbsolutePath(value);
}

std::optional<bool> frmTqColorSetting::DlgReturnValue() const {
  if (dlg_return_value_ == "True") return true;
  if (dlg_return_value_ == "False") return false;
  return std::nullopt;
}

void frmTqColorSetting::EnableChanges(bool value) {
  enable_changes_ = value;
  caption_ = Text(value ? sid::kTitle : sid::kTitleReadOnly);
}

void frmTqColorSetting::Language(const std::string& value) {
  language_ = value;
  strings_.Load(*platform_, value);
  for (std::size_t i = 0; i < texts_.size(); ++i) texts_[i] = strings_.Get(sid::kFirstSessionText + static_cast<int>(i));
}

void frmTqColorSetting::HostApplication(const std::string& value) {
  host_application_ = value.empty() ? Text(sid::kTitle) : Text(sid::kTitle) + " / " + value;
}

void frmTqColorSetting::TabNumber(std::int16_t value) {
  LoadForm();
  selection_.SetTabNumber(value);
}

void frmTqColorSetting::CategoryNumber(std::int16_t value) {
  LoadForm();
  selection_.SetCategoryNumber(value);
}

const std::string& frmTqColorSetting::Text(int id) const {
  static const std::string none;
  const int i = id - sid::kFirstSessionText;
  return i >= 0 && i < static_cast<int>(texts_.size()) ? texts_[i] : none;
}

// ---- Methods ----

bool frmTqColorSetting::CheckCanContinueCST(bool showMessage) {
  if (!GetColorSchemeFolder(schemes_).empty()) return true;
  if (showMessage) {
    int buttons = kMbOk;
    platform_->ShowMessage(strings_.Get(sid::kNoAppFolder), buttons, kMbIconCritical, strings_.Get(sid::kTitle));
  }
  return false;
}

std::string frmTqColorSetting::GetDVHome() { return tq::GetDVHome(*platform_, strings_, table_); }

std::string frmTqColorSetting::GetDefaultClutFile() { return tq::GetDefaultClutFile(*platform_, strings_, table_); }

ColorTableArray frmTqColorSetting::GetColorsByIndexTable() {
  return tq::GetColorsByIndexTable(*platform_, schemes_, table_);
}

std::int32_t frmTqColorSetting::GetColorByIndex(std::int16_t index) {
  return tq::GetColorByIndex(*platform_, schemes_, table_, index);
}

void frmTqColorSetting::SendColorValues() { tq::SendColorValues(*platform_, schemes_, table_); }

void frmTqColorSetting::cmbInitializeColorSchemes() {
  LoadForm();  // the scheme list is one of the window's controls
  LoadColorSchemeList(*platform_, schemes_);
  int position = -1;
  // A file the list does not hold selects nothing rather than a scheme not edited.
  SelectSchemeSilently(FindColorScheme(*platform_, schemes_, ClutFileName(), position) ? position : -1);
}

int frmTqColorSetting::SyncClutFilesFromGlobalToApp() {
  return tq::SyncClutFilesFromGlobalToApp(*platform_, strings_, schemes_, table_);
}

void frmTqColorSetting::LockFileCheck(bool lock) {
  if (lock)
    CreateLockFile();
  else
    ReleaseLockFile();
}

void frmTqColorSetting::CreateLockFile() {
  if (!enable_changes_) return;  // a read-only editor takes no lock
  // The lock object may overwrite these with the holder's names; the session's stay.
  std::string app = host_application_, user = userName;
  if (!lock_) lock_ = std::make_unique<clsLockFileCreator>(*platform_, strings_);
  const LockResult result = lock_->CreateLockFile(ClutFileName(), app, user, LockMode::OpenOrReadOnly, false);
  // A failed attempt has also closed any lock held before.
  LockFileCreated = result == LockResult::Locked;
  if (result == LockResult::ReadOnlyChosen) EnableChanges(false);
  if (result == LockResult::Refused) table_.ClutError = true;
}

void frmTqColorSetting::ReleaseLockFile() {
  lock_.reset();  // its destruction closes and deletes the lock file it created
  LockFileCreated = false;
}

const EnableDecision& frmTqColorSetting::MakeEnableChanges(bool disableOK) {
  LoadForm();
  const bool restore_copy = !GetReferenceClutFile(*platform_, ClutFileName(), true, true).empty();
  const bool restore_source = platform_->FileExists(RestoreDefaultsSource(*platform_, ClutFileName()));
  enablement_ = DecideEnableChanges(enable_changes_, AuthorizationLevelTools, restore_copy, restore_source, disableOK,
                                    enablement_.ok);
  caption_ = Text(enablement_.title_id);
  return enablement_;
}

std::string frmTqColorSetting::ResolveSessionClutFile(const std::string& requested) {
  return InitColorSchemes(*platform_, strings_, schemes_, table_, AppFolder, UserFolder, requested);
}

void frmTqColorSetting::RecordDefinedClutFile() {
  SetRememberedClutFile(schemes_, ClutFileName());
  SaveIniClutFile(*platform_, schemes_);
}

std::string frmTqColorSetting::DefinedClutFile() { return GetIniClutFile(*platform_, schemes_, false); }

// ---- What the window's controls do ----

void frmTqColorSetting::ShowColorRow(int row, std::int32_t color, int colorIndex, int state) {
  if (colorIndex < 0 || colorIndex >= kClutIndexCount) return;
  RowColour& shown = table_.rows[colorIndex];
  switch (state) {
    case kRowColour: shown = {RowColour::Kind::Colour, color & 0xFFFFFF}; break;
    case kRowUnreadable: shown.kind = RowColour::Kind::Unreadable; break;
    case kRowNotDefined: shown.kind = RowColour::Kind::NotDefined; break;
    default: return;
  }
  if (view_ && loaded_) view_->RowChanged(row);
}

std::int32_t frmTqColorSetting::GetRowColor(int row) const {
  const RowColour* shown = ShownRow(row);
  return shown && shown->kind == RowColour::Kind::Colour ? shown->colour : kSystemButtonFace;
}

void frmTqColorSetting::ColorPicked(int row, std::optional<std::int32_t> chosen) {
  const int index = RowIndex(row);
  if (!chosen || index < 0) return;
  const ColourRows before = ColourRows::Of(table_);
  ShowColorRow(row, *chosen, index, kRowColour);
  history_.Record(before, ColourRows::Of(table_));
  ColorsChanged = true;  // also for the same colour confirmed again
}

void frmTqColorSetting::cmdOK_Click() {
  if (ColorsSaved || ColorThemeChanged || ColorsChanged) DlgReturnValue(true);
  if (ColorsChanged) SaveColorTable(*platform_, strings_, table_);
  if (table_.ClutError) {
    table_.ClutError = false;  // the user has seen why and may try again
    return;
  }
  history_.Clear();
  if (view_) view_->Close();
}

void frmTqColorSetting::cmdCancel_Click() {
  // A scheme chosen during the visit is abandoned; nothing is written.
  if (!ClutFileNameStart.empty() && ColorThemeChanged) ClutFileName(ClutFileNameStart);
  ColorsChanged = ColorThemeChanged = false;
  if (view_) view_->Close();
}

void frmTqColorSetting::QueryUnload(int unloadMode) {
  if (unloadMode == kUnloadFromControlMenu) cmdCancel_Click();
}

// ---- The window's life ----

std::array<std::int16_t, kRowCount> frmTqColorSetting::MakeRowIndex(const ColorRowMapArray& map) {
  std::array<std::int16_t, kRowCount> index;
  index.fill(-1);
  for (int i = kClutIndexCount - 1; i >= 0; --i)  // backwards: the first index that points at a row wins
    if (map[i] >= 0 && map[i] < kRowCount) index[map[i]] = static_cast<std::int16_t>(i);
  return index;
}

void frmTqColorSetting::LoadForm() {
  if (loaded_) return;
  loaded_ = true;  // first, so that the steps below may read the selection
  selection_ = TabSelection(PipelineEnabled);
  voltage_names_ = InitColorRowMap(strings_, table_.ColorRowMap, table_.ColorIndexValue,
                                   FetchVoltageLevels(platform_->Host()), PipelineEnabled);
  row_index_ = MakeRowIndex(table_.ColorRowMap);
  table_.rows.fill(RowColour());
  history_.Clear();
  LockFileCreated = ColorsChanged = ColorThemeChanged = ColorsSaved = false;
  DlgReturnValue(false);
  enablement_ = EnableDecision();
  LoadColorTable(*platform_, schemes_, table_, true, LoadReport::ToUser(strings_));
  if (view_) view_->Load(*this);
}

void frmTqColorSetting::UnloadForm() {
  if (!loaded_) return;
  loaded_ = false;
  if (view_) view_->Unload();
}

// ---- The control's members ----

bool frmTqColorSetting::Show(ControlInstanceState& control, const std::string& clutFile, std::int16_t tabNumber,
                             std::int16_t categoryNumber, bool enableChanges, SessionError& error) {
  Begin();
  // The thread has one editor: a Show from inside the open one (a host's timer, a
  // second control) gets false and leaves the open editor alone.
  if (showing_) return false;
  struct Showing {
    bool& flag;
    explicit Showing(bool& f) : flag(f) { flag = true; }
    ~Showing() { flag = false; }
  } showing(showing_);
  table_.ClutError = false;
  if (!CheckCanContinueCST(true)) {
    UnloadForm();
    return false;
  }
  // Once initialised, the control keeps the file chosen then or in the last session.
  if (!control.ColorSchemeInitialized) ResolveSessionClutFile(clutFile);
  EnableChanges(enableChanges);
  host_enable_changes_ = enableChanges;
  cmbInitializeColorSchemes();
  LockFileCheck(true);
  if (table_.ClutError) {
    UnloadForm();
    LockFileCheck(false);  // an editor that does not open holds no lock
  } else {
    LoadForm();
    TabNumber(tabNumber);
    CategoryNumber(categoryNumber);
    MakeEnableChanges(true);
    ClutFileNameStart = ClutFileName();
    if (view_) view_->ShowModal(*this);  // without a window: as if cancelled at once
    UnloadForm();
    LockFileCheck(false);
    ClutFileNameStart.clear();
  }
  const std::optional<bool> ok = DlgReturnValue();
  if (ok && *ok) {
    RecordDefinedClutFile();
    SendColorValues();
  }
  ApplyHeld();  // after the closed editor's file is recorded under the old context
  if (!ok) {
    error = SessionError::TypeMismatch();
    return false;
  }
  return *ok;
}

bool frmTqColorSetting::Show2(ControlInstanceState& control, const std::string& clutFile, const std::string& tabName,
                              std::int16_t categoryNumber, bool enableChanges, SessionError& error) {
  Begin();
  LoadForm();  // the tab strip is the window's
  const std::vector<int>& strip = selection_.Strip();
  std::int16_t tab = 0;
  for (std::size_t position = 0; position < strip.size(); ++position) {
    if (kTabPages[strip[position]].tag == tabName) {
      tab = static_cast<std::int16_t>(position);
      break;
    }
  }
  return Show(control, clutFile, tab, categoryNumber, enableChanges, error);
}

}  // namespace tq
