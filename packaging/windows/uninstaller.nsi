; The uninstaller, a program of its own so that it is made, signed and compared with its hash like every other
; file. It lies beside the placer of its run.
;
;     uninstall.exe [/S]       removes the installation that it lies in
;     uninstall.exe /finish    goes on where the installer of this run was broken off; RunOnce starts it so
;
; A program cannot remove itself: it copies its folder away first, and goes on there with /from=FOLDER.
; Exit status: 0 done, 2 nothing was removed, 3 something could not be removed.
!include "common.nsh"

Name "Quorvaner"
Caption "Quorvaner ${VERSION}"
OutFile "${OUT}"
Page instfiles
ShowInstDetails show
!insertmacro FileVersion "uninstall" "The uninstaller of Quorvaner"

Function .onInit
    Call chooseContext
    ${GetParameters} $R0
    ClearErrors
    ${GetOptions} $R0 "/from=" $INSTDIR
    ${IfNot} ${Errors}
        Return
    ${EndIf}
    GetFullPathName $INSTDIR "$EXEDIR\..\..\.."
    ClearErrors
    ${GetOptions} $R0 "/finish" $R1
    ${IfNot} ${Errors}
        Call finish
        Quit
    ${EndIf}
    MessageBox MB_YESNO|MB_ICONQUESTION "$(removeIt)" /SD IDYES IDYES sure
    Quit
sure:
    Call goOnElsewhere
    Quit
FunctionEnd

; Nobody has asked for it, so nothing is shown.
Function finish
    SetSilent silent
    ${GetParent} $EXEDIR $0
    ${GetFileName} $0 $Run
    ExecWait '"$EXEDIR\placer.exe" finish "$INSTDIR\." $Run' $Outcome
    StrCpy $ReportFile "$INSTDIR\setup\$Run\report.txt"
    Call readReport
    ${If} $Outcome = 0
    ${AndIf} $InForce == $Run
        Call writeEntries
        ExecWait '"$EXEDIR\placer.exe" tidy "$INSTDIR\." $Run'
    ${EndIf}
    ${If} $Outcome <> 3
        Call leaveRunOnce
    ${EndIf}
    SetErrorLevel $Outcome
FunctionEnd

Function goOnElsewhere
    GetTempFileName $R2
    Delete "$R2"
    CreateDirectory "$R2"
    CopyFiles /SILENT /FILESONLY "$EXEDIR\*.*" "$R2"
    SetOutPath "$R2"
    StrCpy $R3 ""
    ${If} ${Silent}
        StrCpy $R3 "/S "
    ${EndIf}
    Exec '"$R2\uninstall.exe" $R3/from="$INSTDIR"'
FunctionEnd

Section
    SetOutPath "$TEMP"
    ; An installation for all users is an administrator's.
    StrCpy $ReportFile "$EXEDIR\report.txt"
    Delete "$ReportFile"
    ExecWait '"$EXEDIR\placer.exe" remove "$INSTDIR\." 0 "$ReportFile"' $Outcome
    Call readReport
    ${If} $Outcome = 0
        Call removeEntries
        Call leaveRunOnce
        DetailPrint "$(removed)"
        MessageBox MB_ICONINFORMATION "$(removed)$\r$\n$Told" /SD IDOK
    ${Else}
        ${If} $Outcome = 1
            StrCpy $Outcome 2
        ${EndIf}
        SetErrorLevel $Outcome
        MessageBox MB_ICONSTOP "$(notRemoved)$\r$\n$Reason" /SD IDOK
        Abort "$(notRemoved) $Reason"
    ${EndIf}
SectionEnd
