' The connector driven by an automation client that is not ours: the system's own script host
' creates it by its programmatic id and calls every member late-bound, by name, as a host of
' the Windows desktop world does. The back office it imports into is the one the machine's
' setting names (the back office module, by class). Writes one line per fact to REPORT, a
' UTF-16 text (the script host's own output has no accents), ending with "fim" (the script host
' ends a failing script silently, so a report without it did not run to its end).
'   cscript //nologo connector-client.vbs run REPORT SETTINGS   identity, LoadDefaults (SETTINGS
'                                                        is UTF-16), ValidateSettings, a script
'                                                        notifier, Execute
'   cscript //nologo connector-client.vbs rerun REPORT   Execute again, told to a notifier that
'                                                        has no NotifyProgress and whose
'                                                        NotifyStatus fails the first time
'   cscript //nologo connector-client.vbs reset REPORT   ResetData, Delete
Option Explicit

Dim files, report
Set files = CreateObject("Scripting.FileSystemObject")
Set report = files.CreateTextFile(WScript.Arguments(1), True, True)

Sub Tell(line)
    report.WriteLine line
End Sub

Class Notifier
    Public ProgressCalls
    Public Largest

    Private Sub Class_Initialize()
        ProgressCalls = 0
        Largest = 0
    End Sub

    Public Sub NotifyProgress(position, total, text)
        ProgressCalls = ProgressCalls + 1
        If total > Largest Then Largest = total
    End Sub

    Public Sub NotifyStatus(text)
        Tell "estado: " & text
    End Sub
End Class

' A notifier that lacks a member and raises an error: neither may end the run.
Class FailingNotifier
    Public Calls

    Private Sub Class_Initialize()
        Calls = 0
    End Sub

    Public Sub NotifyStatus(text)
        Calls = Calls + 1
        If Calls = 1 Then Err.Raise 5, "FailingNotifier", "falha de proposito"
    End Sub
End Class

Function YesNo(value)
    If value Then YesNo = "sim" Else YesNo = "nao"
End Function

Function ReadUnicode(path)
    Dim stream
    Set stream = files.OpenTextFile(path, 1, False, -1)
    ReadUnicode = stream.ReadAll()
    stream.Close
End Function

Dim connector, phase
phase = WScript.Arguments(0)
Set connector = CreateObject("POSConnectorKitra.KitraConnector")

If phase = "run" Then
    Tell "ConnectorID: " & connector.ConnectorID
    Tell "Description: " & connector.Description
    Tell "Version: " & connector.Version
    Tell "FunctionalLevel: " & connector.FunctionalLevel
    Tell "HasUISetting: " & YesNo(connector.HasUISetting)
    Tell "HasUITrace: " & YesNo(connector.HasUITrace)
    Tell "Init: " & YesNo(connector.Init())
    Tell "Save: " & YesNo(connector.Save())
    Tell "HandleImportExport: " & YesNo(connector.HandleImportExport())
    Tell "HandleReExport: " & YesNo(connector.HandleReExport())
    connector.ImportData
    connector.ExportData
    connector.ReExport 1, "x", Null, Empty
    Dim signature
    signature = connector.Signature("texto")
    Tell "Signature: " & YesNo(Len(signature) > 0 And signature = connector.Signature("texto") _
                                And signature <> connector.Signature("outro"))
    Tell "LoadDefaults: " & YesNo(connector.LoadDefaults(ReadUnicode(WScript.Arguments(2))))
    Tell "ValidateSettings: " & YesNo(connector.ValidateSettings())
    Dim told
    Set told = New Notifier
    Set connector.EventNotifier = told
    connector.Execute
    connector.Dispose
    Tell "NotifyProgress: " & YesNo(told.ProgressCalls > 0 And told.Largest > 0)
ElseIf phase = "rerun" Then
    Dim failing
    Set failing = New FailingNotifier
    Set connector.EventNotifier = failing
    connector.Execute
    connector.Dispose
    Tell "NotifyStatus after its failure: " & YesNo(failing.Calls > 1)
ElseIf phase = "reset" Then
    connector.ResetData
    Tell "Delete: " & YesNo(connector.Delete())
Else
    Tell "fase desconhecida: " & phase
    report.Close
    WScript.Quit 2
End If
Set connector = Nothing
Tell "fim"
report.Close
