// A complete small host of the colour-setting control in JScript: it sets the context
// (the language first), hands over a host object that creates the scheme folder when
// the control asks for it, initialises the colour schemes, asks for the list colours
// and prints what arrives. JScript cannot write to by-reference arguments: HostEvaluate
// leaves status 0 (taken) and value Empty, and a JScript host cannot answer
// BrowsePressed, so it keeps the control's own file dialogs.
// usage: cscript sample_host.js <application folder> <user folder> [show]
var fso = new ActiveXObject("Scripting.FileSystemObject");

function folder(path) { return /\\$/.test(path) ? path : path + "\\"; }  // ends with "\"

function createFolders(path) {
  path = path.replace(/\\+$/, "");
  if (path === "" || fso.FolderExists(path)) return;
  createFolders(fso.GetParentFolderName(path));
  fso.CreateFolder(path);
}

// The host object: the control calls these members by name.
var host = {
  HostEvaluate: function (expression, status, value) { WScript.Echo("Received: " + expression); },
  HostNotify: function (eventName, text, value) { WScript.Echo("Notified: " + eventName); },
  HostFileNotice: function (text) { WScript.Echo("File: " + text); },
  HostRemoveFile: function (path) { if (fso.FileExists(path)) fso.DeleteFile(path, true); },
  HostCreateFolder: function (path) {  // the control creates no folder itself
    createFolders(path);
    WScript.Echo("Folder created: " + path);
  },
  HostRequest: function (text) {}
};

var ctl = new ActiveXObject("TqColorSettingTool.ctlTqColorSetting");
ctl.SetObjectValue("Language", "EN");  // first: every later text depends on it
ctl.SetObjectValue("UserName", "op1");
ctl.SetObjectValue("HostApplication", "Sample host");
ctl.SetObjectValue("AppFolder", folder(WScript.Arguments(0)));
ctl.SetObjectValue("UserFolder", folder(WScript.Arguments(1)));
ctl.SetObjectValue("AuthorizationLevel", 2);  // 2 or more may edit
ctl.SetObjectValue("ListCommRef", host);  // before "Initialize"
ctl.SetObjectValue("Initialize", "ColorScheme");  // before the first Show
ctl.SetObjectValue("SendColorValues", null);  // the list colours, now
WScript.Echo("Colour table: " + ctl.GetObjectValue("ClutFile"));
WScript.Echo("Alarm list text: 0x" + ctl.GetObjectValue("ColorByIndex", 258).toString(16));

if (WScript.Arguments.length > 2 && WScript.Arguments(2) === "show") {
  var ok = ctl.Show2(ctl.GetObjectValue("ClutFile"), "AlarmDisplayTab", 0, true);
  WScript.Echo("OK pressed with changes: " + ok);
}
ctl.SetObjectValue("ListCommRef", null);
