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
check(ctl.GetObjectValue("ColorByIndex", "-1") === 0xC0C0C0, "an index as text; out of range is silver");
ctl.SetObjectValue("ListCommRef", host);
ctl.SetObjectValue("SendColorValues", null);
check(evaluated.length === 1 && evaluated[0].indexOf("#return LIST(") === 0, "colour lists sent");
ctl.SetObjectValue("ListCommRef", null);
WScript.Echo("SCRIPT OK");
