// frmTqColorSetting: the editor session of one user-interface thread.
//
// One session per thread, created on first use and kept for the thread's life; all
// controls of the thread share it (the Windows side keeps it in the thread's context).
// It holds the host's context, the change flags,
// the colour table, the colour scheme module and the lock, and runs Show up to the
// editor window. It is portable: the COM layer (src/control) converts the host's
// VARIANTs to the types below and back, and turns a SessionError into the method's
// error result.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "colortable/clut_locations.h"
#include "colortable/color_table.h"
#include "editor/catalogue.h"
#include "editor/history.h"
#include "support/localization.h"
#include "support/platform.h"
#include "support/string_ids.h"

namespace tq {

// A value crossing SetObjectValue / GetObjectValue, already converted to the type
// that its key declares (see SetObjectValueConversion).
using SessionValue = std::variant<std::monostate, bool, std::int16_t, std::int32_t, std::string, std::vector<std::int32_t>>;

// The conversion a SetObjectValue key asks of its value. Keys compared exactly;
// Unknown and Ignored ("bUseListCommRef") keys are ignored, without the session.
// HostObject ("ListCommRef") is handled by the COM layer, which binds the object and
// installs it as this thread's host; NoValue keys take the value unconverted and
// unused ("SendColorValues").
enum class ValueConversion { Unknown, Ignored, NoValue, String, Int16, Int32, Bool, HostObject, ExactText };
ValueConversion SetObjectValueConversion(const std::string& key);

// Whether GetObjectValue answers `key` from the session; any other key reads Empty,
// and the COM layer answers it without creating the session (whose first member call
// may show a message box when the toolkit is missing).
bool IsSessionValueKey(const std::string& key);

// A failure that reaches the host as the method's error result.
struct SessionError {
  enum class Kind { None, TypeMismatch, Failed };
  Kind kind = Kind::None;
  std::string description;
  explicit operator bool() const { return kind != Kind::None; }
  static SessionError TypeMismatch() { return {Kind::TypeMismatch, "Type mismatch"}; }
};

// The control's file-dialog object (support/custom_file_dlg.h).
class clsCustomFileDlg;
class clsLockFileCreator;
class frmTqColorSetting;
// The scheme, import, export and restore commands (editor/scheme_commands.h).
class SchemeCommands;

// What belongs to one control instance rather than to the thread's session.
struct ControlInstanceState {
  bool ColorSchemeInitialized = false;
  // The control's own file-dialog object; "UseCustomFileDlg" hands it to the session.
  std::shared_ptr<clsCustomFileDlg> CustomFileDlg;
  // Expires with the control: work held back until the editor closes must not reach
  // a control that the host released meanwhile.
  std::shared_ptr<const bool> alive = std::make_shared<const bool>(true);
};

// Which of the editor's controls are enabled, and which title the window shows
// (sid::kTitle or kTitleReadOnly). MakeEnableChanges decides; the window applies it. A loaded
// window starts with everything enabled, as designed.
struct EnableDecision {
  int title_id = sid::kTitle;
  bool ok = true;
  bool import_export = true;  // menu items Import and Export
  bool restore_defaults = true;
  bool colour_buttons = true;
  bool save = true;
  bool delete_scheme = true;
  bool scheme_list = true;
  bool operator==(const EnableDecision&) const = default;
};

// The decision itself (pure). `ok_before` is the OK button's state, which a read-only
// decision without `disable_ok` keeps. `restore_copy_exists` is the table's restore
// copy by its name rule (every "." made "$"); `restore_source_exists` the file that
// Restore Defaults reads (RestoreDefaultsSource).
EnableDecision DecideEnableChanges(bool enable_changes, std::int16_t authorization_level_tools,
                                   bool restore_copy_exists, bool restore_source_exists, bool disable_ok,
                                   bool ok_before);

// The file Restore Defaults reads for `clut_file`: its path upper-cased with every
// ".CLUT" made "$CLUT". For a name with more than one dot that is not the restore copy
// ("a.v2.clut" has "a$v2$clut" but reads "A.V2$CLUT"), so the command is offered only
// when this file exists: it never offers what it then cannot find.
std::string RestoreDefaultsSource(Platform& platform, const std::string& clut_file);

// Row state codes of ShowColorRow (GetRowColor gives kSystemButtonFace for a row that
// shows no colour).
constexpr int kRowColour = -101;
constexpr int kRowUnreadable = -1;
constexpr int kRowNotDefined = -2;
// The tools authorisation level from which the user may edit colours and schemes.
constexpr std::int16_t kEditingLevel = 2;
// The unload mode of the window's own close command (close box, Alt+F4, system menu).
constexpr int kUnloadFromControlMenu = 0;

// What the Save As dialog (dlgSaveColorScheme) is given.
struct SaveSchemeRequest {
  std::string proposed_name;  // the current scheme's file name
  int list_index = 0;
  std::int16_t authorization_level = -1;  // the text box and OK are enabled from kEditingLevel
  std::vector<std::string> scheme_paths;
  // The dialog's OK with the typed text: the name to close with, or nullopt when the
  // dialog stays open (the user was told why, or does not want to overwrite).
  std::function<std::optional<std::string>(const std::string& typed)> accept;
};

// The two file dialogs of import and export.
enum class FileDialogKind { Open, Save };

// The editor window as the session sees it; the Win32 window implements it. Without
// one installed, showing the editor is a Cancel at once. The window only displays the
// session's model and turns the user's actions into calls on the session.
class EditorView {
 public:
  virtual ~EditorView() = default;
  // The load handler's window steps: pages, rows, captions, hidden rows, top-most rule.
  virtual void Load(frmTqColorSetting& session) = 0;
  // Shows the editor modally with the session's Enablement(); returns once it closed
  // (OK has then set DlgReturnValue).
  virtual void ShowModal(frmTqColorSetting& session) = 0;
  virtual void Unload() = 0;
  // Ends ShowModal (OK or Cancel decided to close the form).
  virtual void Close() = 0;
  // The colour of a row changed in the model; -1 for every row.
  virtual void RowChanged(int row) = 0;
  // The scheme list (session.Schemes()) or its selection (SchemeListIndex()) changed.
  virtual void SchemesChanged() {}
  // The edited file, the enablement or the title changed.
  virtual void StateChanged() {}
  // The dialogs the commands open; without a window they answer as if cancelled.
  virtual std::string AskSchemeName(const SaveSchemeRequest&) { return {}; }
  // The standard open or save dialog; `initial_folder` is cleared once a name came back.
  virtual std::string AskFile(FileDialogKind, const std::string& /*title*/, const std::string& /*filter*/,
                              const std::string& /*default_ext*/, std::string& /*initial_folder*/) {
    return {};
  }
  // The window's handle, as the host's own file dialog gets it (0 without one).
  virtual std::int32_t WindowHandle() const { return 0; }
  // What a row without a colour shows on its button (the system's button face).
  virtual std::int32_t ButtonFaceColor() const { return kButtonFaceGrey; }
};

// A name typed into the Save As dialog that could leave the scheme folder or that
// Windows refuses for a file: folders, drives, "..", device names, reserved
// characters, trailing dots and blanks, nothing at all; and the names of the editor's
// own working files (".lock", ".tmp"), which a scheme must never replace.
bool IsRefusedSchemeName(const std::string& name);


class frmTqColorSetting {
 public:
  // `texts` are the thread's language texts, which the Language property loads.
  frmTqColorSetting(Platform& platform, LanguageTexts& texts);
  ~frmTqColorSetting();
  frmTqColorSetting(const frmTqColorSetting&) = delete;
  frmTqColorSetting& operator=(const frmTqColorSetting&) = delete;

  // The initialise handler: the default colour table, found through DVHOME (telling
  // the user when the toolkit is missing). The four members run it on their first call.
  void Begin();

  // The control's four members. On failure `error` is set and the result is meaningless.
  bool Show(ControlInstanceState& control, const std::string& clutFile, std::int16_t tabNumber,
            std::int16_t categoryNumber, bool enableChanges, SessionError& error);
  bool Show2(ControlInstanceState& control, const std::string& clutFile, const std::string& tabName,
             std::int16_t categoryNumber, bool enableChanges, SessionError& error);
  void SetObjectValue(ControlInstanceState& control, const std::string& key, const SessionValue& value,
                      SessionError& error);
  // `param` is GetObjectValue's Param converted to a 16-bit integer (only "ColorByIndex" uses it).
  SessionValue GetObjectValue(const std::string& key, std::int16_t param, SessionError& error);

  // Runs `change` now, or, while the editor is open, when it has closed: a change of the
  // host's context must not reach an open editor, whose lock is on its file. Returns
  // whether it was held.
  bool WhenClosed(std::function<void()> change);

  // The window of this session; not owned, must outlive its installation (null removes it).
  void InstallView(EditorView* view) { view_ = view; }
  EditorView* View() const { return view_; }

  // ---- Plain properties (the setter only stores, the getter only returns) ----
  std::int32_t hwndParent = 0;
  std::string ClutFileNameStart;
  bool LockFileCreated = false;
  bool ColorsChanged = false;
  bool ColorThemeChanged = false;
  bool ColorsSaved = false;
  std::string userName;
  std::string ApplicationName;
  std::int16_t ApplicationNumber = -1;
  std::string AppFolder;
  std::string UserFolder;
  bool PipelineEnabled = false;
  std::int16_t AuthorizationLevelGeneral = -1;
  std::int16_t AuthorizationLevelTools = -1;
  bool UseCustomFileDlg = false;
  std::shared_ptr<clsCustomFileDlg> CustomFileDlg;

  // ---- Properties with rules ----
  const std::string& ClutFileName() const { return table_.ClutFileName; }
  void ClutFileName(const std::string& value);  // "" = default file; an existing file by its absolute path
  const std::string& IniFileName() const { return ini_file_name_; }
  void IniFileName(const std::string& value);   // absolute path of an existing file, else ""
  bool ClutError() const { return table_.ClutError; }
  void ClutError(bool value) { table_.ClutError = value; }
  // Kept as text, as the host has always seen it: nullopt (a type mismatch for the
  // host) until a value was stored.
  std::optional<bool> DlgReturnValue() const;
  void DlgReturnValue(bool value) { dlg_return_value_ = value ? "True" : "False"; }
  bool EnableChanges() const { return enable_changes_; }
  void EnableChanges(bool value);               // also sets the title
  const std::string& Language() const { return language_; }
  void Language(const std::string& value);      // loads the language library and the texts
  const std::string& HostApplication() const { return host_application_; }
  void HostApplication(const std::string& value);  // title text + " / " + value
  // The selection lives in the window's tab strip and category lists: the setters load
  // the form, the getters read what it holds.
  std::int16_t TabNumber() const { return static_cast<std::int16_t>(selection_.TabNumber()); }
  void TabNumber(std::int16_t value);
  std::int16_t CategoryNumber() const { return static_cast<std::int16_t>(selection_.CategoryNumber()); }
  void CategoryNumber(std::int16_t value);
  // The editor window's title.
  const std::string& Caption() const { return caption_; }

  // ---- Methods ----
  bool CheckCanContinueCST(bool showMessage);
  // Imports the logical colours of IniFileName into the rows, as unsaved changes.
  void ImportIniFile();
  std::string GetDVHome();
  std::string GetDefaultClutFile();
  ColorTableArray GetColorsByIndexTable();
  std::int32_t GetColorByIndex(std::int16_t index);
  void SendColorValues();
  void cmbInitializeColorSchemes();
  int SyncClutFilesFromGlobalToApp();
  void LockFileCheck(bool lock);
  void CreateLockFile();
  const EnableDecision& MakeEnableChanges(bool disableOK);
  // The colour-scheme initialisation: scheme folder, synchronisation, settings paths,
  // and the colour table file (`requested`, else the scheme's, else the default one).
  std::string ResolveSessionClutFile(const std::string& requested);
  // After OK: the current table becomes the scheme's recorded one (FrameWindow.ini).
  void RecordDefinedClutFile();
  // The scheme's recorded table (FrameWindow.ini), as the host reads it.
  std::string DefinedClutFile();

  // ---- What the window's controls do ----
  // Puts a colour (kRowColour) or an error state (kRowUnreadable, kRowNotDefined) on a
  // row; any other state changes nothing.
  void ShowColorRow(int row, std::int32_t color, int colorIndex, int state);
  // The row's colour as shown; kSystemButtonFace for a row without one.
  std::int32_t GetRowColor(int row) const;
  // A colour button's dialog ended: `chosen` is the confirmed colour, nullopt when the
  // user cancelled (which changes nothing).
  void ColorPicked(int row, std::optional<std::int32_t> chosen);
  void cmdOK_Click();
  void cmdCancel_Click();
  // The scheme list: a choice of the user (list position), and one made by the program.
  void cmbColorSchemes_Click(int index);
  void SelectSchemeSilently(int index);
  // Makes the scheme at that list position the edited file.
  void ApplyScheme(int index, bool reload);
  void cmdSave_Click();
  void cmdDelete_Click();
  void miImport_Click();
  void miExport_Click();
  void miRestoreDefaults_Click();
  // The window is asked to close; kUnloadFromControlMenu acts as Cancel.
  void QueryUnload(int unloadMode);

  // ---- Editing comforts beside the editor's own commands (colour_edits.cpp) ----
  // Each changes colours only when the colour buttons are enabled, and is one step
  // of undo. A row's colour from a paste or a typed value:
  bool SetRowColour(int row, std::int32_t colour);
  // The row's colour in the file Restore Defaults reads; nullopt when there is none.
  std::optional<std::int32_t> FactoryColour(int row);
  bool ResetRowToFactory(int row);
  bool CanUndo() const { return enablement_.colour_buttons && history_.CanUndo(); }
  bool CanRedo() const { return enablement_.colour_buttons && history_.CanRedo(); }
  bool Undo();
  bool Redo();
  // The rows whose name (in the editor's language, ignoring case) holds `text`, or
  // whose colour index it is, in the order the tabs and categories show them.
  struct RowMatch {
    int position;  // in the tab strip
    int category;  // in the page's category list; -1 for a page without one
    int row;
  };
  std::vector<RowMatch> FindRows(const std::string& text);

  // ---- The window's life ----
  void LoadForm();  // the load handler, unless already loaded
  void UnloadForm();
  bool IsLoaded() const { return loaded_; }

  // ---- The model the window shows ----
  const ColorTableState& Table() const { return table_; }
  // The table index that colour row `row` shows (the first index that points at it),
  // -1 for a row that shows none.
  int RowIndex(int row) const { return row >= 0 && row < kRowCount ? row_index_[row] : -1; }
  // What colour row `row` shows; null for a row that shows no index.
  const RowColour* ShownRow(int row) const {
    const int index = RowIndex(row);
    return index >= 0 ? &table_.rows[index] : nullptr;
  }
  // Scheme folder, settings paths and the scheme list.
  const ColorSchemeModule& Schemes() const { return schemes_; }
  TabSelection& Selection() { return selection_; }
  const VoltageRowNames& VoltageNames() const { return voltage_names_; }
  const EnableDecision& Enablement() const { return enablement_; }
  int SchemeListIndex() const { return scheme_list_index_; }
  // The session's texts sid::kFirstSessionText to kLastSessionText, loaded with the
  // language ("" before).
  const std::string& Text(int id) const;
  // All texts of the session's language (the thread's), for the names it shows.
  const LanguageTexts& Strings() const { return strings_; }

 private:
  // They change the rows, the scheme list and the history, which nothing outside the
  // session may change.
  friend class SchemeCommands;

  void ReleaseLockFile();

  Platform* platform_;
  LanguageTexts& strings_;
  EditorView* view_ = nullptr;
  ColorTableState table_;
  std::array<std::int16_t, kRowCount> row_index_ = MakeRowIndex(table_.ColorRowMap);  // RowIndex by row
  static std::array<std::int16_t, kRowCount> MakeRowIndex(const ColorRowMapArray& map);
  ColorSchemeModule schemes_;  // empty folder until the colour-scheme initialisation
  std::unique_ptr<clsLockFileCreator> lock_;
  TabSelection selection_{false};
  VoltageRowNames voltage_names_;
  EnableDecision enablement_;
  std::array<std::string, sid::kLastSessionText - sid::kFirstSessionText + 1> texts_;
  std::string ini_file_name_;
  std::string dlg_return_value_;
  std::string language_ = "EN";
  std::string host_application_;
  std::string caption_;
  bool enable_changes_ = false;
  bool begun_ = false;
  bool loaded_ = false;
  bool showing_ = false;  // inside Show
  bool host_enable_changes_ = false;  // EnableChanges as the host asked for it
  int scheme_list_index_ = 0;  // the scheme list's selection; -1 for a file it does not hold
  int last_scheme_index_ = 0;  // the list position last acted on
  bool filling_ = false;       // the program sets the selection
  std::string file_dialog_folder_;  // where the next file dialog starts
  ColourHistory history_;  // the colour changes since the file was opened or saved
  // What the host sent while the editor was open, applied in order when it closes.
  std::vector<std::function<void()>> held_;
  void ApplyHeld();
};

}  // namespace tq
