// A host for the control in JScript. JScript cannot write to by-reference
// arguments, so this host only listens: it prints the expressions it is sent.
// The last line "SCRIPT OK" tells the runner that all of it ran.
function check(ok, what) {
  if (!ok) {
    WScript.Echo("FAILED: " + what);
    WScript.Quit(1);
  }
}

var evaluated = [];
var host = {
  HostEvaluate: function (expression, status, value) {
    WScript.Echo("HostEvaluate: " + expression);
    evaluated.push(expression);
  },
  HostNotify: function (eventName, text, value) { WScript.Echo("HostNotify: " + eventName); },
  HostFileNotice: function (text) { WScript.Echo("HostFileNotice: " + text); },
  HostRemoveFile: function (path) { WScript.Echo("HostRemoveFile: " + path); },
  HostCreateFolder: function (path) { WScript.Echo("HostCreateFolder: " + path); },
  HostRequest: function (text) { WScript.Echo("HostRequest: " + text); }
};

var ctl = new ActiveXObject("TqColorSettingTool.ctlTqColorSetting");
ctl.SetObjectValue("AuthorizationLevel", 4);
check(ctl.GetObjectValue("AuthorizationLevel") === 4, "tools level");
ctl.SetObjectValue("UserFolder", 17);
check(ctl.GetObjectValue("UserFolder") === "17", "a number passed as text");
check(ctl.GetObjectValue("ColorByIndex", "-1") === 0xC0C0C0, "index out of range is silver");
// Wine's JScript can hold an array of Long but not inspect it (VBArray wants VARIANTs).
var table = ctl.GetObjectValue("ColorsByIndexTable");
check(typeof ctl.GetObjectValue("NoSuchKey") === "undefined", "unknown key gives Empty");

ctl.SetObjectValue("ListCommRef", host);
ctl.SetObjectValue("SendColorValues", null);
check(evaluated.length === 1 && evaluated[0].indexOf("#return LIST(") === 0, "colour lists sent");

var refused = false;
try {
  ctl.SetObjectValue("ApplicationNumber", "abc");
} catch (e) {
  refused = true;
}
check(refused, "text for a number is refused");

ctl.SetObjectValue("ListCommRef", null);
WScript.Echo("SCRIPT OK");
