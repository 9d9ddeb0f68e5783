#include "editor/session.h"

#include "support/thread_owned.h"

#include "colortable/clut_locations.h"
#include "editor/host_exchange.h"
#include "locking/lock_file_creator.h"
#include "support/localization.h"

namespace tq {

namespace {

constexpr int kFirstTextId = 1301;

SessionError TypeMismatch() { return {SessionError::Kind::TypeMismatch, "Type mismatch"}; }

// One SetObjectValue key: the conversion the COM layer applies, and what the session
// does with the converted value (nothing for the keys the COM layer handles itself).
struct KeyRule {
  const char* key;
  ValueConversion conversion;
  void (*apply)(frmTqColorSetting&, ControlInstanceState&, const SessionValue&);
};

const KeyRule* FindKeyRule(const std::string& key) {
  using S = frmTqColorSetting;
  using C = ControlInstanceState;
  using V = SessionValue;
  static const KeyRule rules[] = {
      {"UserName", ValueConversion::String, [](S& s, C&, const V& v) { s.userName = std::get<std::string>(v); }},
      {"Language", ValueConversion::String, [](S& s, C&, const V& v) { s.Language(std::get<std::string>(v)); }},
      {"ApplicationName", ValueConversion::String, [](S& s, C&, const V& v) { s.ApplicationName = std::get<std::string>(v); }},
      {"ApplicationNumber", ValueConversion::Int16, [](S& s, C&, const V& v) { s.ApplicationNumber = std::get<std::int16_t>(v); }},
      {"HostApplication", ValueConversion::String, [](S& s, C&, const V& v) { s.HostApplication(std::get<std::string>(v)); }},
      {"AppFolder", ValueConversion::String, [](S& s, C&, const V& v) { s.AppFolder = std::get<std::string>(v); }},
      {"UserFolder", ValueConversion::String, [](S& s, C&, const V& v) { s.UserFolder = std::get<std::string>(v); }},
      // The key without suffix has always set the tools level.
      {"AuthorizationLevel", ValueConversion::Int16,
       [](S& s, C&, const V& v) { s.AuthorizationLevelTools = std::get<std::int16_t>(v); }},
      {"AuthorizationLevelGeneral", ValueConversion::Int16,
       [](S& s, C&, const V& v) { s.AuthorizationLevelGeneral = std::get<std::int16_t>(v); }},
      {"ListCommRef", ValueConversion::HostObject, nullptr},
      {"bUseListCommRef", ValueConversion::Ignored, nullptr},
      {"Pipeline", ValueConversion::Bool, [](S& s, C&, const V& v) { s.PipelineEnabled = std::get<bool>(v); }},
      {"Initialize", ValueConversion::ExactText,
       [](S& s, C& c, const V& v) {
         const auto* text = std::get_if<std::string>(&v);
         if (!text || *text != "ColorScheme") return;
         s.ResolveSessionClutFile("");
         c.ColorSchemeInitialized = true;
       }},
      {"SendColorValues", ValueConversion::NoValue, [](S& s, C&, const V&) { s.SendColorValues(); }},
      {"UseCustomFileDlg", ValueConversion::Bool,
       [](S& s, C& c, const V& v) {
         s.UseCustomFileDlg = std::get<bool>(v);
         s.CustomFileDlg = c.CustomFileDlg;
       }},
      {"hwndParentView", ValueConversion::Int32, [](S& s, C&, const V& v) { s.hwndParent = std::get<std::int32_t>(v); }},
  };
  for (const KeyRule& rule : rules)
    if (key == rule.key) return &rule;
  return nullptr;
}

// One GetObjectValue key and how the session answers it (`param` only for ColorByIndex).
struct ReadRule {
  const char* key;
  SessionValue (*read)(frmTqColorSetting&, Platform&, std::int16_t param);
};

const ReadRule* FindReadRule(const std::string& key) {
  using S = frmTqColorSetting;
  using V = SessionValue;
  static const ReadRule rules[] = {
      {"ColorsByIndexTable",
       [](S& s, Platform&, std::int16_t) -> V {
         const ColorTableArray table = s.GetColorsByIndexTable();
         return std::vector<std::int32_t>(table.begin(), table.end());
       }},
      {"ColorByIndex", [](S& s, Platform&, std::int16_t index) -> V { return s.GetColorByIndex(index); }},
      {"AppFolder", [](S& s, Platform&, std::int16_t) -> V { return s.AppFolder; }},
      {"UserFolder", [](S& s, Platform&, std::int16_t) -> V { return s.UserFolder; }},
      {"AuthorizationLevel", [](S& s, Platform&, std::int16_t) -> V { return s.AuthorizationLevelTools; }},
      {"AuthorizationLevelGeneral", [](S& s, Platform&, std::int16_t) -> V { return s.AuthorizationLevelGeneral; }},
      {"ClutFile", [](S& s, Platform&, std::int16_t) -> V { return s.ClutFileName(); }},
      {"DefinedClutFile", [](S& s, Platform&, std::int16_t) -> V { return s.DefinedClutFile(); }},
      {"UseCustomFileDlg", [](S& s, Platform&, std::int16_t) -> V { return s.UseCustomFileDlg; }},
  };
  for (const ReadRule& rule : rules)
    if (key == rule.key) return &rule;
  return nullptr;
}

// Whether a value converted by the COM layer has the type its key asks for.
bool HoldsConversion(const SessionValue& value, ValueConversion conversion) {
  switch (conversion) {
    case ValueConversion::String: return std::holds_alternative<std::string>(value);
    case ValueConversion::Int16: return std::holds_alternative<std::int16_t>(value);
    case ValueConversion::Int32: return std::holds_alternative<std::int32_t>(value);
    case ValueConversion::Bool: return std::holds_alternative<bool>(value);
    default: return true;
  }
}

thread_local ThreadOwned<frmTqColorSetting> t_session;

}  // namespace

ValueConversion SetObjectValueConversion(const std::string& key) {
  const KeyRule* rule = FindKeyRule(key);
  return rule ? rule->conversion : ValueConversion::Unknown;
}

bool IsSessionValueKey(const std::string& key) { return FindReadRule(key) != nullptr; }

EnableDecision DecideEnableChanges(bool enable_changes, std::int16_t authorization_level_tools,
                                   bool restore_copy_exists, bool restore_source_exists, bool disable_ok,
                                   bool ok_before) {
  // Levels below 2 (the initial -1 included) may neither edit, nor edit schemes, nor restore.
  const bool allowed = authorization_level_tools >= 2;
  const bool editable = enable_changes && allowed;
  EnableDecision d;
  d.title_id = editable ? 1301 : 1302;
  d.ok = editable || (ok_before && !disable_ok);
  d.import_export = d.colour_buttons = d.save = editable;
  // Switched off by the host only, the user may still pick a scheme to look at.
  d.scheme_list = editable || allowed;
  d.restore_defaults = editable && restore_copy_exists && restore_source_exists;
  // A table that has a restore copy is a factory table: it cannot be deleted.
  d.delete_scheme = editable && !restore_copy_exists;
  return d;
}

frmTqColorSetting& frmTqColorSetting::ThisThread(Platform& platform) {
  if (!t_session.get()) t_session.Reset(std::make_unique<frmTqColorSetting>(platform));
  t_session.get()->platform_ = &platform;
  return *t_session.get();
}

void frmTqColorSetting::DiscardThisThread() { t_session.Reset(nullptr); }

frmTqColorSetting* frmTqColorSetting::FindThisThread() { return t_session.get(); }

frmTqColorSetting::frmTqColorSetting(Platform& platform) : platform_(&platform) {
  host_application_ = Text(kFirstTextId);  // still empty: no language yet
  GetDVHome();  // only for its message when the toolkit is missing
  ClutFileName("");
}

frmTqColorSetting::~frmTqColorSetting() = default;

// ---- Properties ----

void frmTqColorSetting::ClutFileName(const std::string& value) { SetClutFileName(*platform_, table_, value); }

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
  caption_ = Text(value ? 1301 : 1302);
}

void frmTqColorSetting::Language(const std::string& value) {
  language_ = value;
  LoadLanguageLibrary(*platform_, value);
  for (std::size_t i = 0; i < texts_.size(); ++i) texts_[i] = GetString(kFirstTextId + static_cast<int>(i));
}

void frmTqColorSetting::HostApplication(const std::string& value) {
  host_application_ = value.empty() ? Text(1301) : Text(1301) + " / " + value;
}

std::int16_t frmTqColorSetting::TabNumber() {
  LoadForm();
  return static_cast<std::int16_t>(selection_.TabNumber());
}

void frmTqColorSetting::TabNumber(std::int16_t value) {
  LoadForm();
  selection_.SetTabNumber(value);
}

std::int16_t frmTqColorSetting::CategoryNumber() {
  LoadForm();
  return static_cast<std::int16_t>(selection_.CategoryNumber());
}

void frmTqColorSetting::CategoryNumber(std::int16_t value) {
  LoadForm();
  selection_.SetCategoryNumber(value);
}

const std::string& frmTqColorSetting::Text(int id) const {
  static const std::string none;
  const int i = id - kFirstTextId;
  return i >= 0 && i < static_cast<int>(texts_.size()) ? texts_[i] : none;
}

// ---- Methods ----

bool frmTqColorSetting::CheckCanContinueCST(bool showMessage) {
  if (!GetColorSchemeFolder(schemes_).empty()) return true;
  if (showMessage) {
    int buttons = kMbOk;
    platform_->ShowMessage(GetString(1323), buttons, kMbIconCritical, GetString(1301));
  }
  return false;
}

std::string frmTqColorSetting::GetDVHome() { return tq::GetDVHome(*platform_, table_); }

std::string frmTqColorSetting::GetDefaultClutFile() { return tq::GetDefaultClutFile(*platform_, table_); }

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
  return tq::SyncClutFilesFromGlobalToApp(*platform_, schemes_, table_);
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
  if (!lock_) lock_ = std::make_unique<clsLockFileCreator>(*platform_);
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
  return InitColorSchemes(*platform_, schemes_, table_, AppFolder, UserFolder, requested);
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
  const int index = FindColorRow(table_.ColorRowMap, row);
  if (index < 0) return kSystemButtonFace;
  const RowColour& shown = table_.rows[index];
  return shown.kind == RowColour::Kind::Colour ? shown.colour : kSystemButtonFace;
}

void frmTqColorSetting::ColorPicked(int row, std::optional<std::int32_t> chosen) {
  const int index = FindColorRow(table_.ColorRowMap, row);
  if (!chosen || index < 0) return;
  const ColourRows before = ColourRows::Of(table_);
  ShowColorRow(row, *chosen, index, kRowColour);
  history_.Record(before, ColourRows::Of(table_));
  ColorsChanged = true;  // also for the same colour confirmed again
}

void frmTqColorSetting::cmdOK_Click() {
  if (ColorsSaved || ColorThemeChanged || ColorsChanged) DlgReturnValue(true);
  if (ColorsChanged) SaveColorTable(*platform_, table_);
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

void frmTqColorSetting::LoadForm() {
  if (loaded_) return;
  loaded_ = true;  // first, so that the steps below may read the selection
  selection_ = TabSelection(PipelineEnabled);
  voltage_names_ = InitColorRowMap(table_.ColorRowMap, table_.ColorIndexValue, FetchVoltageLevels(platform_->Host()),
                                   PipelineEnabled);
  table_.rows.fill(RowColour());
  history_.Clear();
  LockFileCreated = ColorsChanged = ColorThemeChanged = ColorsSaved = false;
  DlgReturnValue(false);
  enablement_ = EnableDecision();
  LoadColorTable(*platform_, schemes_, table_, true, LoadReport::ToUser);
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
    error = TypeMismatch();
    return false;
  }
  return *ok;
}

bool frmTqColorSetting::Show2(ControlInstanceState& control, const std::string& clutFile, const std::string& tabName,
                              std::int16_t categoryNumber, bool enableChanges, SessionError& error) {
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

void frmTqColorSetting::SetObjectValue(ControlInstanceState& control, const std::string& key,
                                       const SessionValue& value, SessionError& error) {
  const KeyRule* rule = FindKeyRule(key);
  if (!rule || !rule->apply) return;
  if (!HoldsConversion(value, rule->conversion)) {
    error = TypeMismatch();
    return;
  }
  // Our own rule, where the host's contract is silent: a key that carries context (all
  // but the command "SendColorValues") would change the file or the rules under the
  // open editor, whose lock is on the old file. The open editor ignores it; it takes
  // effect when the editor closes, so that the host's next Show sees it.
  if (rule->conversion == ValueConversion::NoValue) return rule->apply(*this, control, value);
  // A control released meanwhile is stood in for by its file-dialog object.
  WhenClosed([this, rule, value, control = &control, alive = std::weak_ptr<const bool>(control.alive),
              dialog = control.CustomFileDlg] {
    ControlInstanceState stand_in;
    stand_in.CustomFileDlg = dialog;
    rule->apply(*this, alive.expired() ? stand_in : *control, value);
  });
}

bool frmTqColorSetting::WhenClosed(std::function<void()> change) {
  if (!showing_) {
    change();
    return false;
  }
  held_.push_back(std::move(change));
  return true;
}

void frmTqColorSetting::ApplyHeld() {
  std::vector<std::function<void()>> held;
  held.swap(held_);
  for (const auto& change : held) change();
}

SessionValue frmTqColorSetting::GetObjectValue(const std::string& key, std::int16_t param, SessionError&) {
  const ReadRule* rule = FindReadRule(key);
  return rule ? rule->read(*this, *platform_, param) : SessionValue();
}

}  // namespace tq
