; The plug-in's installer for 64-bit Windows: both DLLs go into the player's
; plug-in folder (the plug-in looks for the player's files beside itself),
; the 64-bit one registered with the native regsvr32 and the 32-bit one with
; the 32-bit regsvr32 under SysWOW64, each in its own registry view; an
; uninstaller in the system's list of programs takes them out again and keeps
; the user's data folder unless asked.
;
; scripts/release.sh builds it:
;   makensis -DVERSION=1.0.0.1 -DDLL64=FILE -DDLL32=FILE -DOUTFILE=FILE CVAudioScrobbler.nsi
;
; Exit codes: 0 installed (a 32-bit registration that failed is reported and
; logged, not counted: 64-bit players use the plug-in as usual); 1 cancelled
; by the user; 2 stopped: a DLL it would replace is held by a running
; program, or a file could not be written; 3 installed, but the 64-bit
; registration failed. What it did is written to CVAudioScrobbler-setup.log
; beside the DLLs, and by the uninstaller to %TEMP%\CVAudioScrobbler-uninstall.log.
;
; Uninstaller: /S silent; /REMOVEDATA also removes the data folder
; (%APPDATA%\Ostrana\last.fm), which it keeps otherwise (interactively it asks).

!ifndef VERSION | DLL64 | DLL32 | OUTFILE
  !error "define VERSION, DLL64, DLL32 and OUTFILE (makensis -DVERSION=...)"
!endif

Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
RequestExecutionLevel admin
ManifestDPIAware true
; No file times in the installer, so that the same DLLs give the same bytes.
SetDateSave off
; A file that cannot be written stops the installation; nothing is ever
; left for replacement at the next start of Windows.
AllowSkipFiles off

!define PRODUCT "CVAudioScrobbler"
!define PUBLISHER "CVAudioScrobbler team"
!define CLSID "{1E0C5BAE-BD48-48CD-B03E-CE3B3761106C}"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\CVAudioScrobbler"
; The player's own entries for the plug-in, which registration writes.
!define HOST_KEY "Software\Ostrana\Corvina 14\Plugins\Interface\last.fm"
!define OLDER_HOST_KEY "Software\Ostrana\Belvox 12\Plugins\Interface\last.fm"
!define DLL64_NAME "CVAudioScrobbler.dll"
!define DLL32_NAME "CVAudioScrobbler32.dll"
!define UNINSTALLER "CVAudioScrobbler-uninstall.exe"
!define SETUP_LOG "CVAudioScrobbler-setup.log"
!define UNINSTALL_LOG "CVAudioScrobbler-uninstall.log"
!define DATA_FOLDER "$APPDATA\Ostrana\last.fm"

Name "${PRODUCT} ${VERSION}"
Caption "${PRODUCT} ${VERSION}: last.fm plug-in for Corvina"
OutFile "${OUTFILE}"
InstallDir "$PROGRAMFILES64\Corvina\Plugins"
; An upgrade goes where the earlier version is.
InstallDirRegKey HKLM "${UNINSTALL_KEY}" "InstallLocation"
ShowInstDetails show
ShowUninstDetails show

VIProductVersion ${VERSION}
VIFileVersion ${VERSION}
VIAddVersionKey /LANG=1033 "ProductName" "${PRODUCT}"
VIAddVersionKey /LANG=1033 "ProductVersion" "${VERSION}"
VIAddVersionKey /LANG=1033 "FileVersion" "${VERSION}"
VIAddVersionKey /LANG=1033 "FileDescription" "Installer of the last.fm plug-in for the Corvina player"
VIAddVersionKey /LANG=1033 "CompanyName" "${PUBLISHER}"
VIAddVersionKey /LANG=1033 "LegalCopyright" "Copyright (C) 2026 the CVAudioScrobbler team"

!include MUI2.nsh
!include LogicLib.nsh
!include FileFunc.nsh

!define MUI_ABORTWARNING
!define MUI_DIRECTORYPAGE_TEXT_TOP "Choose the player's plug-in folder. The plug-in looks for the player's files beside itself, so it belongs in the folder of the player's other plug-ins."
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

Var LogFile
Var Failed64

; --- Functions that the installer and the uninstaller both have ------------

!macro LogCall text
  Push "${text}"
  !ifdef __UNINSTALL__
    Call un.LogLine
  !else
    Call LogLine
  !endif
!macroend
!define Log "!insertmacro LogCall"

!macro RefuseIfInUseCall path
  Push "${path}"
  !ifdef __UNINSTALL__
    Call un.RefuseIfInUse
  !else
    Call RefuseIfInUse
  !endif
!macroend
!define RefuseIfInUse "!insertmacro RefuseIfInUseCall"

!macro SharedFunctions un
; Writes a line to the details list and to the log file. Stack: the text.
Function ${un}LogLine
  Exch $R9
  DetailPrint "$R9"
  ${If} $LogFile != ""
    FileWriteUTF16LE $LogFile "$R9$\r$\n"
  ${EndIf}
  Pop $R9
FunctionEnd

; Opens the log file afresh (UTF-16LE with its byte-order mark). Stack: its path.
Function ${un}OpenLog
  Exch $R9
  ClearErrors
  FileOpen $LogFile "$R9" w
  ${If} ${Errors}
    StrCpy $LogFile ""
  ${Else}
    FileWriteWord $LogFile 0xFEFF
  ${EndIf}
  Pop $R9
FunctionEnd

; A DLL that a running program (the player) has loaded cannot be opened for
; writing. The user closes the program and retries, or cancels; a silent run
; cancels. Nothing has been changed at that point. Stack: the file's path.
Function ${un}RefuseIfInUse
  Exch $R9
  Push $R8
  ${If} ${FileExists} "$R9"
    ${Do}
      ClearErrors
      FileOpen $R8 "$R9" a
      ${IfNot} ${Errors}
        FileClose $R8
        ${Break}
      ${EndIf}
      ${IfNot} ${Cmd} `MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$R9 is in use: a running program holds it, the player most likely.$\r$\n$\r$\nClose the player, then choose Retry. Cancel leaves everything as it is." /SD IDCANCEL IDRETRY`
        ${Log} "Stopped: $R9 is in use by a running program (the player?); nothing was changed. Close the player and run this again."
        ${If} $LogFile != ""
          FileClose $LogFile
          StrCpy $LogFile ""
        ${EndIf}
        SetErrorLevel 2
        Abort
      ${EndIf}
    ${Loop}
  ${EndIf}
  Pop $R8
  Pop $R9
FunctionEnd

!macroend
!insertmacro SharedFunctions ""
!insertmacro SharedFunctions "un."

; The 32-bit regsvr32 exists where Windows runs 32-bit programs.
!define REGSVR32_32 "$WINDIR\SysWOW64\regsvr32.exe"

; --- Installing ------------------------------------------------------------

Section "CVAudioScrobbler"
  SetShellVarContext current
  SetRegView 64
  StrCpy $Failed64 0
  SetOutPath "$INSTDIR"
  Push "$INSTDIR\${SETUP_LOG}"
  Call OpenLog
  ${Log} "${PRODUCT} ${VERSION}: installing into $INSTDIR"
  ReadRegStr $0 HKLM "${UNINSTALL_KEY}" "DisplayVersion"
  ReadRegStr $1 HKLM "${UNINSTALL_KEY}" "InstallLocation"
  ${If} $0 != ""
    ${Log} "Replacing version $0 (installed in $1) in place"
  ${EndIf}

  ${RefuseIfInUse} "$INSTDIR\${DLL64_NAME}"
  ${RefuseIfInUse} "$INSTDIR\${DLL32_NAME}"
  File "/oname=${DLL64_NAME}" "${DLL64}"
  File "/oname=${DLL32_NAME}" "${DLL32}"
  ${Log} "Installed $INSTDIR\${DLL64_NAME} (64-bit) and $INSTDIR\${DLL32_NAME} (32-bit)"

  WriteUninstaller "$INSTDIR\${UNINSTALLER}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "${PRODUCT}: last.fm plug-in for Corvina"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "Publisher" "${PUBLISHER}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\${UNINSTALLER}"'
  WriteRegStr HKLM "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\${UNINSTALLER}" /S'
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoRepair" 1
  ${Log} "Uninstaller: $INSTDIR\${UNINSTALLER}, listed as ${PRODUCT} ${VERSION} in the installed programs"

  ; 64-bit players: the native regsvr32, the 64-bit registry view.
  ClearErrors
  StrCpy $0 ""
  ExecWait '"$SYSDIR\regsvr32.exe" /s "$INSTDIR\${DLL64_NAME}"' $0
  ${If} ${Errors}
  ${OrIf} $0 != 0
    StrCpy $Failed64 1
    ${Log} "FAILED: not registered for 64-bit players: $SYSDIR\regsvr32.exe ended with code $0 for ${DLL64_NAME}"
    MessageBox MB_OK|MB_ICONSTOP "The plug-in could not be registered for 64-bit players ($SYSDIR\regsvr32.exe ended with code $0).$\r$\n$\r$\nA 64-bit player will not find it. The details are in $INSTDIR\${SETUP_LOG}." /SD IDOK
  ${Else}
    ${Log} "Registered for 64-bit players: ${DLL64_NAME}"
  ${EndIf}

  ; 32-bit players: the 32-bit regsvr32, the 32-bit registry view. Where it
  ; fails, 64-bit players still use the plug-in: the user is told, the
  ; installation counts as done.
  ${If} ${FileExists} "${REGSVR32_32}"
    ClearErrors
    StrCpy $0 ""
    ExecWait '"${REGSVR32_32}" /s "$INSTDIR\${DLL32_NAME}"' $0
    ${If} ${Errors}
    ${OrIf} $0 != 0
      ${Log} "NOT registered for 32-bit players: ${REGSVR32_32} ended with code $0 for ${DLL32_NAME}; 64-bit players use the plug-in as usual"
      MessageBox MB_OK|MB_ICONEXCLAMATION "The plug-in could not be registered for 32-bit players (${REGSVR32_32} ended with code $0).$\r$\n$\r$\nA 64-bit player uses it as usual; a 32-bit player will not find it." /SD IDOK
    ${Else}
      ${Log} "Registered for 32-bit players: ${DLL32_NAME}"
    ${EndIf}
  ${Else}
    ${Log} "NOT registered for 32-bit players: this Windows runs no 32-bit programs (there is no ${REGSVR32_32}); 64-bit players use the plug-in as usual"
    MessageBox MB_OK|MB_ICONINFORMATION "This Windows runs no 32-bit programs (there is no ${REGSVR32_32}), so the plug-in is registered for 64-bit players only." /SD IDOK
  ${EndIf}

  ${If} $Failed64 == 1
    ${Log} "Done, with the 64-bit registration FAILED"
    SetErrorLevel 3
  ${Else}
    ${Log} "Done"
  ${EndIf}
  FileClose $LogFile
  StrCpy $LogFile ""
SectionEnd

; --- Uninstalling ----------------------------------------------------------

; Removes the player's entry for the plug-in from the current registry view,
; if it is this plug-in's. Stack: the key.
Function un.RemoveHostEntry
  Exch $R9
  Push $R8
  ReadRegStr $R8 HKLM "$R9" "CLSID"
  ${If} $R8 == "${CLSID}"
    DeleteRegKey HKLM "$R9"
    ${Log} "Removed the player's entry HKLM\$R9"
  ${EndIf}
  Pop $R8
  Pop $R9
FunctionEnd

Section "Uninstall"
  SetShellVarContext current
  SetRegView 64
  Push "$TEMP\${UNINSTALL_LOG}"
  Call un.OpenLog
  ${Log} "${PRODUCT} ${VERSION}: uninstalling from $INSTDIR"
  ${RefuseIfInUse} "$INSTDIR\${DLL64_NAME}"
  ${RefuseIfInUse} "$INSTDIR\${DLL32_NAME}"

  ${If} ${FileExists} "$INSTDIR\${DLL64_NAME}"
    ClearErrors
    StrCpy $0 ""
    ExecWait '"$SYSDIR\regsvr32.exe" /s /u "$INSTDIR\${DLL64_NAME}"' $0
    ${If} ${Errors}
    ${OrIf} $0 != 0
      ${Log} "FAILED: not unregistered for 64-bit players: $SYSDIR\regsvr32.exe ended with code $0"
    ${Else}
      ${Log} "Unregistered for 64-bit players: ${DLL64_NAME}"
    ${EndIf}
  ${EndIf}
  ${If} ${FileExists} "$INSTDIR\${DLL32_NAME}"
    ${If} ${FileExists} "${REGSVR32_32}"
      ClearErrors
      StrCpy $0 ""
      ExecWait '"${REGSVR32_32}" /s /u "$INSTDIR\${DLL32_NAME}"' $0
      ${If} ${Errors}
      ${OrIf} $0 != 0
        ${Log} "NOT unregistered for 32-bit players: ${REGSVR32_32} ended with code $0"
      ${Else}
        ${Log} "Unregistered for 32-bit players: ${DLL32_NAME}"
      ${EndIf}
    ${Else}
      ${Log} "Nothing to unregister for 32-bit players: this Windows runs no 32-bit programs"
    ${EndIf}
  ${EndIf}

  ; The player's entries for the plug-in, in both views.
  Push "${HOST_KEY}"
  Call un.RemoveHostEntry
  Push "${OLDER_HOST_KEY}"
  Call un.RemoveHostEntry
  SetRegView 32
  Push "${HOST_KEY}"
  Call un.RemoveHostEntry
  Push "${OLDER_HOST_KEY}"
  Call un.RemoveHostEntry
  SetRegView 64

  Delete "$INSTDIR\${DLL64_NAME}"
  Delete "$INSTDIR\${DLL32_NAME}"
  Delete "$INSTDIR\${SETUP_LOG}"
  Delete "$INSTDIR\${UNINSTALLER}"
  ; The folder goes only when nothing else is in it: it is the player's.
  RMDir "$INSTDIR"
  DeleteRegKey HKLM "${UNINSTALL_KEY}"
  ${If} ${FileExists} "$INSTDIR\${DLL64_NAME}"
  ${OrIf} ${FileExists} "$INSTDIR\${DLL32_NAME}"
    ${Log} "FAILED: a DLL could not be removed from $INSTDIR"
  ${Else}
    ${Log} "Removed ${DLL64_NAME}, ${DLL32_NAME}, the uninstaller and the setup log from $INSTDIR"
  ${EndIf}

  ; The data folder holds the user's settings, the plays not sent yet, the
  ; logs and the replacements: kept unless the user asks.
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/REMOVEDATA" $1
  ${If} ${Errors}
    StrCpy $1 0
    ${IfNot} ${Silent}
    ${AndIf} ${FileExists} "${DATA_FOLDER}\*.*"
      MessageBox MB_YESNO|MB_ICONQUESTION|MB_DEFBUTTON2 "Remove your settings, your plays not sent yet, the logs and the replacements too?$\r$\n$\r$\n${DATA_FOLDER}$\r$\n$\r$\nNo keeps them for a later installation." IDNO +2
        StrCpy $1 1
    ${EndIf}
  ${Else}
    StrCpy $1 1
  ${EndIf}
  ${If} $1 == 1
    RMDir /r "${DATA_FOLDER}"
    RMDir "$APPDATA\Ostrana"
    ${Log} "Removed the data folder ${DATA_FOLDER}"
  ${Else}
    ${Log} "Kept the data folder ${DATA_FOLDER}"
  ${EndIf}
  ${Log} "Done"
  FileClose $LogFile
  StrCpy $LogFile ""
SectionEnd
