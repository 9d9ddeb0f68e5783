// The smallest host of the colour-setting control in JScript: it hands over its
// folders and a host object, asks for the list colours and prints what it receives.
// JScript cannot write to by-reference arguments; the control needs no answer here.
// usage: cscript sample_host.js <application folder> <user folder>
var host = {
  HostEvaluate: function (expression) { WScript.Echo("Received: " + expression); },
  HostNotify: function (eventName) { WScript.Echo("Notified: " + eventName); },
  HostFileNotice: function (text) { WScript.Echo("File: " + text); },
  HostRemoveFile: function () {}, HostCreateFolder: function () {}, HostRequest: function () {}
};
var ctl = new ActiveXObject("TqColorSettingTool.ctlTqColorSetting");
ctl.SetObjectValue("AppFolder", WScript.Arguments(0));
ctl.SetObjectValue("UserFolder", WScript.Arguments(1));
ctl.SetObjectValue("ListCommRef", host);
ctl.SetObjectValue("Initialize", "ColorScheme");
ctl.SetObjectValue("SendColorValues", 0);
WScript.Echo("Colour table: " + ctl.GetObjectValue("ClutFile"));
WScript.Echo("Alarm list text: #" + ctl.GetObjectValue("ColorByIndex", 258).toString(16));
