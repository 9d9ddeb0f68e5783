// The host's keys: how SetObjectValue converts and applies each, how GetObjectValue
// answers each, and the changes held back while the editor is open.
#include "editor/session.h"

namespace tq {

namespace {

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

}  // namespace

ValueConversion SetObjectValueConversion(const std::string& key) {
  const KeyRule* rule = FindKeyRule(key);
  return rule ? rule->conversion : ValueConversion::Unknown;
}

bool IsSessionValueKey(const std::string& key) { return FindReadRule(key) != nullptr; }

void frmTqColorSetting::SetObjectValue(ControlInstanceState& control, const std::string& key,
                                       const SessionValue& value, SessionError& error) {
  Begin();
  const KeyRule* rule = FindKeyRule(key);
  if (!rule || !rule->apply) return;
  if (!HoldsConversion(value, rule->conversion)) {
    error = SessionError::TypeMismatch();
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
  Begin();
  const ReadRule* rule = FindReadRule(key);
  return rule ? rule->read(*this, *platform_, param) : SessionValue();
}

}  // namespace tq
