' The connector driven by an automation client that is not ours: the system's own script host
' creates it by its programmatic id and calls every member late-bound, by name, as a host of
' the Windows desktop world does. The back office it imports into is the one the machine's
' setting names (the back office module, by class). Prints one line per fact; the test suite
' compares them.
'   cscript //nologo connector-client.vbs run SETTINGS   identity, LoadDefaults (the file is
'                                                        UTF-16), ValidateSettings, a script
'                                                        notifier, Execute
'   cscript //nologo connector-client.vbs reset          ResetData, Delete
Option Explicit

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
        WScript.Echo "estado: " & text
    End Sub
End Class

Function YesNo(value)
    If value Then YesNo = "sim" Else YesNo = "nao"
End Function

Function ReadUnicode(path)
    Dim files, stream
    Set files = CreateObject("Scripting.FileSystemObject")
    Set stream = files.OpenTextFile(path, 1, False, -1)
    ReadUnicode = stream.ReadAll()
    stream.Close
End Function

Dim connector, phase
phase = WScript.Arguments(0)
Set connector = CreateObject("POSConnectorKitra.KitraConnector")

If phase = "run" Then
    WScript.Echo "ConnectorID: " & connector.ConnectorID
    WScript.Echo "Description: " & connector.Description
    WScript.Echo "Version: " & connector.Version
    WScript.Echo "FunctionalLevel: " & connector.FunctionalLevel
    WScript.Echo "HasUISetting: " & YesNo(connector.HasUISetting)
    WScript.Echo "HasUITrace: " & YesNo(connector.HasUITrace)
    WScript.Echo "Init: " & YesNo(connector.Init())
    WScript.Echo "Save: " & YesNo(connector.Save())
    WScript.Echo "HandleImportExport: " & YesNo(connector.HandleImportExport())
    WScript.Echo "HandleReExport: " & YesNo(connector.HandleReExport())
    connector.ImportData
    connector.ExportData
    connector.ReExport 1, "x", Null, Empty
    Dim signature
    signature = connector.Signature("texto")
    WScript.Echo "Signature: " & YesNo(Len(signature) > 0 And signature = connector.Signature("texto") _
                                        And signature <> connector.Signature("outro"))
    WScript.Echo "LoadDefaults: " & YesNo(connector.LoadDefaults(ReadUnicode(WScript.Arguments(1))))
    WScript.Echo "ValidateSettings: " & YesNo(connector.ValidateSettings())
    Dim told
    Set told = New Notifier
    Set connector.EventNotifier = told
    connector.Execute
    connector.Dispose
    WScript.Echo "NotifyProgress: " & YesNo(told.ProgressCalls > 0 And told.Largest > 0)
ElseIf phase = "reset" Then
    connector.ResetData
    WScript.Echo "Delete: " & YesNo(connector.Delete())
Else
    WScript.Echo "fase desconhecida: " & phase
    WScript.Quit 2
End If
Set connector = Nothing
