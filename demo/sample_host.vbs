' A complete small host of the colour-setting control in VBScript: it sets the
' context (the language first), hands over a host object that answers the control's
' calls and creates the scheme folder when the control asks for it, initialises the
' colour schemes, asks for the list colours and prints what arrives. With "show" it
' also opens the editor and answers Import and Export with its own file question.
' usage: cscript sample_host.vbs <application folder> <user folder> [show]
Option Explicit

' The host object: the control calls these members by name.
Class ListCommHost
  Public Sub HostEvaluate(expression, status, value)
    WScript.Echo "Received: " & expression
    If Left(expression, 13) = "#return LIST(" Then
      status = 0                               ' the colour lists: taken
    Else
      status = 1                               ' voltage levels: this host has none
    End If
  End Sub
  Public Sub HostNotify(eventName, text, value)
    WScript.Echo "Notified: " & eventName
  End Sub
  Public Sub HostFileNotice(text)
    WScript.Echo "File: " & text
  End Sub
  Public Sub HostRemoveFile(path)              ' the user deleted a scheme
    Dim fso : Set fso = CreateObject("Scripting.FileSystemObject")
    If fso.FileExists(path) Then fso.DeleteFile path, True
  End Sub
  Public Sub HostCreateFolder(path)            ' the control creates no folder itself
    CreateFolders path
    WScript.Echo "Folder created: " & path
  End Sub
  Public Sub HostRequest(text)
  End Sub
End Class

' Folders are passed to the control ending with "\".
Function Folder(path)
  Folder = path
  If Right(path, 1) <> "\" Then Folder = path & "\"
End Function

Sub CreateFolders(ByVal path)
  Dim fso : Set fso = CreateObject("Scripting.FileSystemObject")
  If Right(path, 1) = "\" Then path = Left(path, Len(path) - 1)
  If path = "" Or fso.FolderExists(path) Then Exit Sub
  CreateFolders fso.GetParentFolderName(path)
  fso.CreateFolder path
End Sub

' The host's own file dialog for Import (dlgType 3) and Export (4), asked for while
' "UseCustomFileDlg" is True. vRetVal and Cancel are references: a String in vRetVal
' is the file; left Empty, nothing happens (Cancel reaches the control only where the
' script engine writes back a Boolean reference).
Sub ctl_BrowsePressed(dlgParent, dlgType, dlgTitle, dlgFilter, dlgFile, vRetVal, Cancel)
  Dim folder, name
  folder = dlgFile
  If Right(folder, 1) <> "\" Then folder = folder & "\"
  name = InputBox("INI file (a full path):", dlgTitle, folder & "colors.ini")
  If name = "" Then
    Cancel = True
  Else
    vRetVal = name
  End If
End Sub

Dim ctl, ok
Set ctl = CreateObject("TqColorSettingTool.ctlTqColorSetting")
ctl.SetObjectValue "Language", "EN"                   ' first: every later text depends on it
ctl.SetObjectValue "UserName", "op1"
ctl.SetObjectValue "HostApplication", "Sample host"
ctl.SetObjectValue "AppFolder", Folder(WScript.Arguments(0))
ctl.SetObjectValue "UserFolder", Folder(WScript.Arguments(1))
ctl.SetObjectValue "AuthorizationLevel", 2             ' 2 or more may edit
ctl.SetObjectValue "ListCommRef", New ListCommHost     ' before "Initialize"
ctl.SetObjectValue "Initialize", "ColorScheme"         ' before the first Show
ctl.SetObjectValue "SendColorValues", Empty            ' the list colours, now
WScript.Echo "Colour table: " & ctl.GetObjectValue("ClutFile")
WScript.Echo "Alarm list text: &H" & Hex(ctl.GetObjectValue("ColorByIndex", 258))

If WScript.Arguments.Count > 2 Then
  If WScript.Arguments(2) = "show" Then
    On Error Resume Next                               ' Wine's script host binds no events
    WScript.ConnectObject ctl, "ctl_"
    If Err.Number = 0 Then ctl.SetObjectValue "UseCustomFileDlg", True
    On Error GoTo 0
    ok = ctl.Show2(ctl.GetObjectValue("ClutFile"), "AlarmDisplayTab", 0, True)
    WScript.Echo "OK pressed with changes: " & ok
  End If
End If
ctl.SetObjectValue "ListCommRef", Nothing
