' A host for the control in VBScript: it hands over its context and a host object
' (a class with the members the control calls), sends the colour lists and prints
' what arrives. The last line "SCRIPT OK" tells the runner that all of it ran.
Option Explicit

Class ListCommHost
  Public Evaluated
  Public Notified

  Public Sub HostEvaluate(expression, status, value)
    WScript.Echo "HostEvaluate: " & expression
    Evaluated = Evaluated + 1
    status = 0
    value = Array("accepted", Evaluated)
  End Sub

  Public Sub HostNotify(eventName, text, value)
    WScript.Echo "HostNotify: " & eventName & " [" & text & "] " & value(0) & " " & value(1)
    Notified = Notified + 1
  End Sub

  Public Sub HostFileNotice(text)
    WScript.Echo "HostFileNotice: " & text
  End Sub

  Public Sub HostRemoveFile(path)
    WScript.Echo "HostRemoveFile: " & path
  End Sub

  Public Sub HostCreateFolder(path)
    WScript.Echo "HostCreateFolder: " & path
  End Sub

  Public Sub HostRequest(text)
    WScript.Echo "HostRequest: " & text
  End Sub
End Class

Sub Check(ok, what)
  If Not ok Then
    WScript.Echo "FAILED: " & what
    WScript.Quit 1
  End If
End Sub

Dim ctl, host, level, pipeline, index
Set ctl = CreateObject("TqColorSettingTool.ctlTqColorSetting")
Set host = New ListCommHost
host.Evaluated = 0
host.Notified = 0

ctl.SetObjectValue "UserName", "operator"
ctl.SetObjectValue "AuthorizationLevel", 2
level = "3"
ctl.SetObjectValue "AuthorizationLevelGeneral", level
Check level = "3" And VarType(level) = vbString, "a variable keeps its value and type"
pipeline = 1
ctl.SetObjectValue "Pipeline", pipeline
index = 5.7
ctl.GetObjectValue "ColorByIndex", index
Check pipeline = 1 And index = 5.7 And VarType(index) = vbDouble, "converted arguments are not written back"

ctl.SetObjectValue "ListCommRef", host
ctl.SetObjectValue "SendColorValues", Empty
Check host.Evaluated = 1, "colour lists evaluated once"
Check host.Notified = 1, "ColorSchemeLoaded notified once"

On Error Resume Next
ctl.SetObjectValue "ApplicationNumber", "abc"
Check Err.Number = 13, "text for a number is a type mismatch (" & Err.Number & ")"
Err.Clear
On Error GoTo 0

ctl.SetObjectValue "ListCommRef", Nothing
Set ctl = Nothing
WScript.Echo "SCRIPT OK"
