' The smallest host of the colour-setting control: it hands over its folders and a host
' object, asks for the list colours and prints what the host object receives.
' usage: cscript sample_host.vbs <application folder> <user folder>
Class Host
  Sub HostEvaluate(expression, status, value) : WScript.Echo "Received: " & expression : status = 0 : End Sub
  Sub HostNotify(eventName, text, value) : WScript.Echo "Notified: " & eventName : End Sub
  Sub HostFileNotice(text) : WScript.Echo "File: " & text : End Sub
  Sub HostRemoveFile(path) : End Sub
  Sub HostCreateFolder(path) : End Sub
  Sub HostRequest(text) : End Sub
End Class
Set ctl = CreateObject("TqColorSettingTool.ctlTqColorSetting")
ctl.SetObjectValue "AppFolder", WScript.Arguments(0)
ctl.SetObjectValue "UserFolder", WScript.Arguments(1)
ctl.SetObjectValue "ListCommRef", New Host
ctl.SetObjectValue "Initialize", "ColorScheme"
ctl.SetObjectValue "SendColorValues", 0
WScript.Echo "Colour table: " & ctl.GetObjectValue("ClutFile")
WScript.Echo "Alarm list text: &H" & Hex(ctl.GetObjectValue("ColorByIndex", 258))
