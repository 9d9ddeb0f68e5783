// The editor's commands on its colour table file beyond OK and Cancel: the colour
// scheme list, Save As and Delete, the More menu's Import, Export and Restore
// Defaults, and the file dialogs they ask for a name with.
//
// The session's members of those names (cmbColorSchemes_Click, cmdSave_Click, ...)
// call these; they are defined with them, so that the session does not depend on this
// unit. A command lives only for the call: what it keeps between calls (the
// list's selection, the dialogs' folder) is the session's. It works through the
// session's public members and, for what no one else may change (the table's rows,
// the scheme list, the undo history), as the session's friend.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "editor/session.h"

namespace tq {

class SchemeCommands {
 public:
  explicit SchemeCommands(frmTqColorSetting& session) : s_(session), platform_(*session.platform_) {}

  // The scheme list: a choice of the user (list position), and one made by the program.
  void SchemeChosen(int index);
  void SelectSilently(int index);
  // Makes the scheme at that list position the edited file.
  void Apply(int index, bool reload);
  void SaveAs();
  void Delete();
  void RestoreDefaults();
  void Export();
  void Import();
  // The logical colours of the session's IniFileName into the rows, as unsaved changes.
  void ImportIniFile();

 private:
  // The file being edited and how: what a command that fails halfway returns to.
  struct EditedFile {
    std::string path;
    bool editable, locked, colors_changed, theme_changed;
  };
  EditedFile Edited() const;
  // Edits `file` again as it was edited (its lock taken again), with the scheme list on it.
  void ReturnTo(const EditedFile& file);
  void Unmake(const std::string& made, const EditedFile& edited);
  void ApplyFile(const std::string& path, bool reload);
  // The Save As dialog's OK: the name to save as, or nullopt when it stays open.
  std::optional<std::string> AcceptName(const std::string& typed, const std::vector<std::string>& paths);
  // The file the user names for import or export: the host's dialog or ours.
  std::string ChooseLogicalColorsFile(FileDialogKind kind);
  // The indexes import and export work on: those a row shows.
  bool IsIndexShown(int index) const;
  int Ask(const std::string& prompt, int buttons, int style);
  // The session's view while its window is loaded, else null.
  EditorView* LoadedView() const;

  frmTqColorSetting& s_;
  Platform& platform_;
};

}  // namespace tq
