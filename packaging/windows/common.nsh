; What the installer and the uninstaller share: entries in registry and start menu, and how they tell what the
; placer has reported.
Unicode true
Target amd64-unicode
!ifdef QUICKLY
SetCompressor zlib
!else
SetCompressor /SOLID lzma
!endif
SetDateSave off ; two builds give the same bytes
ManifestDPIAware true
ManifestSupportedOS all
RequestExecutionLevel user
XPStyle on
InstallColors /windows
AllowSkipFiles off
Icon "quorvaner.ico"
BrandingText "Quorvaner ${VERSION}"
!pragma warning disable 6010 ; each of the two leaves some functions to the other
!include "LogicLib.nsh"
!include "FileFunc.nsh"
!include "TextFunc.nsh"
!include "WordFunc.nsh"
!include "x64.nsh"
!include "texts.nsh"

!define REMEMBERED "Software\Quorvane\Quorvaner"
!define RUN_ONCE "Software\Microsoft\Windows\CurrentVersion\RunOnce"
!define ENTRIES "Software\Microsoft\Windows\CurrentVersion\Uninstall"
!define RUN_ONCE_NAME "!Quorvaner $INSTDIR" ; the mark: Windows removes it only once it has run

Var Run        ; the number of this run's folder
Var Outcome    ; of the placer
Var ReportFile
Var Told       ; notes of the report, one a line
Var Reason     ; why it is not done
Var InForce    ; the run whose files are installed
Var ForAll     ; 1: for all users, since an administrator has started this

!macro FileVersion name description
    VIProductVersion "${VERSION}.0"
    VIFileVersion "${VERSION}.0"
    VIAddVersionKey /LANG=1033 "ProductName" "Quorvaner"
    VIAddVersionKey /LANG=1033 "CompanyName" "Quorvane"
    VIAddVersionKey /LANG=1033 "FileDescription" "${description}"
    VIAddVersionKey /LANG=1033 "FileVersion" "${VERSION}.0"
    VIAddVersionKey /LANG=1033 "ProductVersion" "${VERSION}"
    VIAddVersionKey /LANG=1033 "LegalCopyright" ""
!macroend

!macro Refuse text
    SetErrorLevel 2
    MessageBox MB_ICONSTOP "${text}" /SD IDOK
    Abort "${text}"
!macroend

Function chooseContext
    StrCpy $ForAll 0
    SetShellVarContext current
    UserInfo::GetAccountType
    Pop $0
    ${If} $0 == "Admin"
        StrCpy $ForAll 1
        SetShellVarContext all
    ${EndIf}
    SetRegView 64
FunctionEnd

; On the disk before the first file is moved, as the journal is.
Function enterRunOnce
    WriteRegStr SHCTX "${RUN_ONCE}" "${RUN_ONCE_NAME}" '"$INSTDIR\setup\$Run\tool\uninstall.exe" /finish'
    StrCpy $0 0x80000001
    ${If} $ForAll = 1
        StrCpy $0 0x80000002
    ${EndIf}
    System::Call 'advapi32::RegOpenKeyExW(p r0, w "${RUN_ONCE}", i 0, i 0x20019, *p .r1) i .r2'
    ${If} $2 = 0
        System::Call 'advapi32::RegFlushKey(p r1)'
        System::Call 'advapi32::RegCloseKey(p r1)'
    ${EndIf}
FunctionEnd

Function leaveRunOnce
    DeleteRegValue SHCTX "${RUN_ONCE}" "${RUN_ONCE_NAME}"
FunctionEnd

; One entry under the installed programs for each folder.
Function nameEntry
    ${WordReplace} "Quorvaner $INSTDIR" "\" "/" "+" $9
    StrCpy $9 "${ENTRIES}\$9"
FunctionEnd

Function writeEntries
    Call nameEntry
    WriteRegStr SHCTX "$9" "DisplayName" "Quorvaner"
    WriteRegStr SHCTX "$9" "DisplayVersion" "${VERSION}"
    WriteRegStr SHCTX "$9" "Publisher" "Quorvane"
    WriteRegStr SHCTX "$9" "DisplayIcon" "$INSTDIR\bin\Quorvaner.exe"
    WriteRegStr SHCTX "$9" "InstallLocation" "$INSTDIR"
    WriteRegStr SHCTX "$9" "UninstallString" '"$INSTDIR\setup\$Run\tool\uninstall.exe"'
    WriteRegStr SHCTX "$9" "QuietUninstallString" '"$INSTDIR\setup\$Run\tool\uninstall.exe" /S'
    WriteRegDWORD SHCTX "$9" "EstimatedSize" ${SIZE}
    WriteRegDWORD SHCTX "$9" "NoModify" 1
    WriteRegDWORD SHCTX "$9" "NoRepair" 1
    ${If} $ForAll = 1
        DeleteRegKey HKCU "$9" ; was this user's alone, and leads nowhere now
    ${EndIf}
    WriteRegStr SHCTX "${REMEMBERED}" "InstallDir" "$INSTDIR"
    SetOutPath "$INSTDIR\bin" ; the shortcut's folder
    CreateShortcut "$SMPROGRAMS\Quorvaner.lnk" "$INSTDIR\bin\Quorvaner.exe"
    SetOutPath "$TEMP"
FunctionEnd

; A shortcut of another installation stays.
Function removeEntries
    Call nameEntry
    DeleteRegKey SHCTX "$9"
    ReadRegStr $0 SHCTX "${REMEMBERED}" "InstallDir"
    ${If} $0 == $INSTDIR
        Delete "$SMPROGRAMS\Quorvaner.lnk"
        DeleteRegKey SHCTX "${REMEMBERED}"
        DeleteRegKey /ifempty SHCTX "Software\Quorvane"
    ${EndIf}
FunctionEnd

Function tell
    Exch $0
    DetailPrint "$0"
    StrCpy $Told "$Told$0$\r$\n"
    Pop $0
FunctionEnd

!macro Tell text
    Push "${text}"
    Call tell
!macroend

; Lines of a letter, a blank and a text.
Function readReport
    StrCpy $Told ""
    StrCpy $Reason ""
    StrCpy $InForce ""
    ClearErrors
    FileOpen $1 "$ReportFile" r
    ${If} ${Errors}
        Return
    ${EndIf}
    FileReadUTF16LE $1 $2
    ${DoUntil} ${Errors}
        ${TrimNewLines} $2 $2
        StrCpy $3 $2 1
        StrCpy $4 $2 "" 2
        ${Select} $3
            ${Case} "U"
                StrCpy $InForce $4
            ${Case} "N"
                !insertmacro Tell "$(laidBeside)"
            ${Case} "A"
                !insertmacro Tell "$(setAside)"
            ${Case} "K"
                !insertmacro Tell "$(otherKey)"
            ${Case} "L"
                !insertmacro Tell "$(leftBehind)"
            ${Case} "R"
                StrCpy $Reason $4
        ${EndSelect}
        FileReadUTF16LE $1 $2
    ${Loop}
    FileClose $1
    ClearErrors
FunctionEnd
