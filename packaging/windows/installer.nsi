; The installer: asks where to, unpacks beside what is installed, and lets the placer do the rest.
;
; build-installer gives VERSION, CONTENT (a folder: new, tool and package.json), SIZE (KiB) and OUT.
;
;     quorvaner-setup-X.Y.Z.exe [/S] [/D=FOLDER]     /D is the last, and takes no quotes
;
; Exit status: 0 installed, 1 cancelled, 2 nothing has changed, 3 to be finished by RunOnce or by the next run.
!include "common.nsh"

Name "Quorvaner"
Caption "Quorvaner ${VERSION}"
OutFile "${OUT}"
DirText "$(where)"
Page directory
Page instfiles
!insertmacro FileVersion "Quorvaner" "The installer of Quorvaner"

Var Mutex ; while one is open, another says so

; Nothing is started as an administrator that an operator can do: the exchange asks for it where it must.
Function .onInit
    System::Call 'kernel32::CreateMutexW(p 0, i 0, w "Local\Quorvaner setup") p .r1 ?e'
    Pop $0
    StrCpy $Mutex $1
    ${If} $0 = 183 ; ERROR_ALREADY_EXISTS
        MessageBox MB_ICONINFORMATION "$(alreadyOpen)" /SD IDOK
        SetErrorLevel 2
        Quit
    ${EndIf}
    Call chooseContext
    ${If} $INSTDIR == ""
        Call findInstallation
    ${EndIf}
FunctionEnd

; The launcher that has started this installer knows best which installation is meant.
Function findInstallation
    System::Alloc 48
    Pop $1
    System::Call 'ntdll::NtQueryInformationProcess(p -1, i 0, p r1, i 48, p 0) i .r0'
    IntPtrOp $2 $1 + 40
    System::Call '*$2(p .r3)'
    System::Free $1
    System::Call 'kernel32::OpenProcess(i 0x1000, i 0, p r3) p .r4'
    ${If} $4 P<> 0
        System::Call 'kernel32::QueryFullProcessImageNameW(p r4, i 0, w .r5, *i ${NSIS_MAX_STRLEN}) i .r0'
        System::Call 'kernel32::CloseHandle(p r4)'
        ${GetFileName} $5 $6
        ${GetParent} $5 $7
        ${GetFileName} $7 $8
        ${If} $0 <> 0
        ${AndIf} $6 == "Quorvaner.exe"
        ${AndIf} $8 == "bin"
            ${GetParent} $7 $INSTDIR
            Return
        ${EndIf}
    ${EndIf}
    ReadRegStr $INSTDIR HKCU "${REMEMBERED}" "InstallDir"
    ${If} $INSTDIR == ""
        ReadRegStr $INSTDIR HKLM "${REMEMBERED}" "InstallDir"
    ${EndIf}
    ${If} $INSTDIR == ""
        StrCpy $INSTDIR "$LOCALAPPDATA\Programs\Quorvaner"
        ${If} $ForAll = 1
            StrCpy $INSTDIR "$PROGRAMFILES64\Quorvaner"
        ${EndIf}
    ${EndIf}
FunctionEnd

; Whoever names the folder of the program means the one above it.
Function leaveProgramFolder
    ${GetFileName} $INSTDIR $0
    ${If} $0 == "bin"
    ${AndIf} ${FileExists} "$INSTDIR\Quorvaner.exe"
        ${GetParent} $INSTDIR $INSTDIR
    ${EndIf}
FunctionEnd

; The longest name of a package has some 80 characters, and Windows takes 259.
Function refuseLongPlace
    StrLen $0 $INSTDIR
    ${If} $0 > 160
        !insertmacro Refuse "$(tooLong)"
    ${EndIf}
FunctionEnd

; Where this user may not write, an administrator is asked for, if there is somebody to ask.
Function askForRights
    ClearErrors
    CreateDirectory "$INSTDIR\setup"
    FileOpen $0 "$INSTDIR\setup\probe" w
    ${IfNot} ${Errors}
        FileClose $0
        Delete "$INSTDIR\setup\probe"
        Return
    ${EndIf}
    ${If} $ForAll = 0
    ${AndIfNot} ${Silent}
        System::Call 'kernel32::CloseHandle(p $Mutex)' ; the one that comes is the same installer
        ExecShell "runas" "$EXEPATH" "/D=$INSTDIR"
        SetErrorLevel 1
        Quit
    ${EndIf}
    !insertmacro Refuse "$(notAllowed)"
FunctionEnd

Section
    SetDetailsPrint none ; names of files are for nobody
    Call leaveProgramFolder
    Call refuseLongPlace
    Call askForRights
    StrCpy $Run 1
    ${While} ${FileExists} "$INSTDIR\setup\$Run\*.*"
        IntOp $Run $Run + 1
    ${EndWhile}
    ClearErrors
    !include "${CONTENT}/unpack.nsh" ; tool and new
    SetOutPath "$INSTDIR\setup\$Run"
    File "${CONTENT}/package.json"
    SetOutPath "$TEMP" ; holds no folder of the installation any more
    ${If} ${Errors}
        RMDir /r "$INSTDIR\setup\$Run"
        !insertmacro Refuse "$(notUnpacked)"
    ${EndIf}
    Call enterRunOnce
    ExecWait '"$INSTDIR\setup\$Run\tool\placer.exe" place "$INSTDIR\." $Run' $Outcome
    ${If} ${Errors}
        StrCpy $Outcome 1
    ${EndIf}
    StrCpy $ReportFile "$INSTDIR\setup\$Run\report.txt"
    ${If} $Outcome = 0
        Call writeEntries
        Call leaveRunOnce
        ExecWait '"$INSTDIR\setup\$Run\tool\placer.exe" tidy "$INSTDIR\." $Run'
        SetDetailsPrint listonly
        SetDetailsView show
        DetailPrint "$(installed)"
    ${EndIf}
    Call readReport
    ${If} $Outcome = 3
        SetErrorLevel 3
        MessageBox MB_ICONEXCLAMATION "$(unfinished)$\r$\n$Reason" /SD IDOK
        Abort "$(unfinished)"
    ${ElseIf} $Outcome <> 0
        Call leaveRunOnce
        RMDir /r "$INSTDIR\setup\$Run"
        !insertmacro Refuse "$(nothingChanged)$\r$\n$Reason"
    ${EndIf}
SectionEnd
