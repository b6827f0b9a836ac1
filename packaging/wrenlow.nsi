; The setup program: for one user, without administrator rights, from Windows XP on.
; Made by packaging/make-setup, which defines VERSION, TARGET, OUTFILE, ROOT (of the sources) and LISTS (a folder with
; install.nsh and remove.nsh, the files one by one, so that the uninstaller removes what was installed and nothing else).
;
;   setup.exe [/S] [/D=FOLDER]        /S asks nothing and shows nothing; /D comes last and takes no quotes
;   uninstall.exe [/S] [/SETTINGS]    /SETTINGS removes settings, hotkeys and aliases without asking
;   uninstall.exe /S /MOVED _?=FOLDER for setup.exe: Wrenlow goes on elsewhere, so only what lies in the folder goes
; Exit status: 0 done, 1 cancelled by the user, 2 not done (a file cannot be written, or Wrenlow does not end).

Unicode true
Target ${TARGET}
Name "Wrenlow"
OutFile "${OUTFILE}"
RequestExecutionLevel user
SetCompressor /SOLID lzma
ManifestDPIAware true
ManifestSupportedOS all
BrandingText "Wrenlow ${VERSION}"

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Wrenlow"
!define RUN_KEY "Software\Microsoft\Windows\CurrentVersion\Run"
!define SETTINGS_KEY "Software\Wrenlow"
!define PROXY_KEY "Software\America Online\AOL Instant Messenger (TM)\CurrentVersion\Proxy"
!define KEPT_KEY "${SETTINGS_KEY}\aimproxy" ; what the client had there before us

InstallDir "$LOCALAPPDATA\Programs\Wrenlow"
InstallDirRegKey HKCU "${UNINSTALL_KEY}" "InstallLocation"

VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "Wrenlow"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "Setup of Wrenlow"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "CompanyName" "The Wrenlow authors"
VIAddVersionKey "LegalCopyright" "MIT licence"

!include LogicLib.nsh
!include FileFunc.nsh
!include MUI2.nsh

Var wasRunning
Var outcome ; what the uninstaller tells in the end

!define MUI_ICON "${ROOT}/app/shell/icons/wren.ico"
!define MUI_UNICON "${ROOT}/app/shell/icons/wren.ico"
!define MUI_WELCOMEFINISHPAGE_BITMAP "${ROOT}/app/shell/icons/side.bmp"
!define MUI_FINISHPAGE_RUN "$INSTDIR\wrenlow.exe"
!define MUI_FINISHPAGE_RUN_TEXT "Start Wrenlow"
!define MUI_FINISHPAGE_SHOWREADME "$INSTDIR\manual\index.html"
!define MUI_FINISHPAGE_SHOWREADME_TEXT "Read the manual"
!define MUI_FINISHPAGE_SHOWREADME_NOTCHECKED
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!define MUI_INSTFILESPAGE_FINISHHEADER_SUBTEXT "$outcome"
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

; The box in which the process $1 asks something, as window $5; 0 for none, and when it hangs.
!macro FindQuestion prefix
Function ${prefix}FindQuestion
  StrCpy $5 0
  next:
  FindWindow $5 "#32770" "" 0 $5
  IntPtrCmp $5 0 done
  System::Call 'user32::GetWindowThreadProcessId(p r5, *i 0 r6)'
  IntCmp $6 $1 0 next next
  System::Call 'user32::IsWindowVisible(p r5) i .r6'
  IntCmp $6 0 next
  System::Call 'user32::GetDlgItem(p r5, i 0xFFFF) p .r6' ; the number of a box's text
  IntPtrCmp $6 0 next
  System::Call 'user32::IsHungAppWindow(p r5) i .r6'
  IntCmp $6 0 done
  StrCpy $5 0
  done:
FunctionEnd
!macroend
!insertmacro FindQuestion ""
!insertmacro FindQuestion "un."

; Asks every running Wrenlow to close, as its menu would, and waits until it has: its port and its files are free then.
; While it asks something about AIM, the user answers there, and no box of ours covers the question. One that does not
; close by itself the user is asked to see to. A silent run gives up after 15 s instead.
!macro EndRunning prefix
Function ${prefix}EndRunning
  StrCpy $wasRunning 0
  next:
  FindWindow $0 "WrenlowHidden" "Wrenlow"
  IntPtrCmp $0 0 done
  StrCpy $wasRunning 1
  DetailPrint "Waiting for Wrenlow to close..."
  System::Call 'user32::GetWindowThreadProcessId(p r0, *i 0 r1)'
  System::Call 'user32::AllowSetForegroundWindow(i r1)'             ; for its question
  System::Call 'kernel32::OpenProcess(i 0x100000, i 0, i r1) p .r2' ; SYNCHRONIZE
  System::Call 'user32::PostMessageW(p r0, i 0x10, p 0, p 0)'       ; WM_CLOSE
  System::Call 'kernel32::GetTickCount() i .r4' ; when it was asked, or asked something itself
  StrCpy $7 0 ; the question that the user has been told of
  wait:
  System::Call 'kernel32::WaitForSingleObject(p r2, i 500) i .r3'
  ${IfNot} ${Silent}
    Call ${prefix}FindQuestion
    ${If} $5 != 0
      System::Call 'kernel32::GetTickCount() i .r4'
      ${If} $5 != $7
        DetailPrint "Wrenlow asks something. Please answer it."
        StrCpy $7 $5
      ${EndIf}
    ${EndIf}
  ${EndIf}
  System::Call 'kernel32::GetTickCount() i .r6'
  IntOp $6 $6 - $4
  ${If} $3 <> 0
  ${AndIf} $6 < 15000
    Goto wait
  ${EndIf}
  System::Call 'kernel32::CloseHandle(p r2)'
  IntCmp $3 0 next
  FindWindow $0 "WrenlowHidden" "Wrenlow" ; it may have ended before it could be waited for
  IntPtrCmp $0 0 done
  MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION \
    "Wrenlow is still running. It does not close by itself.$\r$\n$\r$\n\
    Please close it, then press Retry." /SD IDCANCEL IDRETRY next
  SetErrorLevel 2
  Quit
  done:
FunctionEnd
!macroend
!insertmacro EndRunning ""
!insertmacro EndRunning "un."

; A user has one Wrenlow, because its port is one, and so are settings and the entry in Windows' list of programs. One in
; another folder would be left behind without an entry that removes it.
Function RemoveElsewhere
  ReadRegStr $0 HKCU "${UNINSTALL_KEY}" "InstallLocation"
  ${If} $0 == ""
  ${OrIf} $0 == $INSTDIR
  ${OrIfNot} ${FileExists} "$0\uninstall.exe"
    Return
  ${EndIf}
  CreateDirectory "$INSTDIR"
  Rename "$0\repl.dat" "$INSTDIR\repl.dat" ; does nothing if one is there
  ExecWait '"$0\uninstall.exe" /S /MOVED _?=$0'
  Delete "$0\uninstall.exe" ; which runs from its place then
  RMDir "$0"
  ReadRegStr $1 HKCU "${RUN_KEY}" "Wrenlow"
  ${If} $1 != ""
    WriteRegStr HKCU "${RUN_KEY}" "Wrenlow" "$INSTDIR\wrenlow.exe"
  ${EndIf}
FunctionEnd

Section
  Call EndRunning
  SetShellVarContext current
  Call RemoveElsewhere
  ; Pages that this version has no more. Only where an earlier version was: any other folder "manual" is not ours.
  ${If} ${FileExists} "$INSTDIR\wrenlow.exe"
    RMDir /r "$INSTDIR\manual"
  ${EndIf}
  !include "${LISTS}/install.nsh"
  SetOutPath "$INSTDIR"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  CreateShortcut "$SMPROGRAMS\Wrenlow.lnk" "$INSTDIR\wrenlow.exe"

  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "Wrenlow"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\wrenlow.exe"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "Publisher" "The Wrenlow authors"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
  SectionGetSize 0 $0
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "EstimatedSize" $0

  ; A silent update leaves the user as it found him; otherwise the last page offers to start the program.
  ${If} ${Silent}
  ${AndIf} $wasRunning = 1
    Exec '"$INSTDIR\wrenlow.exe"'
  ${EndIf}
SectionEnd

; AIM could not sign on any more through a proxy that is gone. A proxy of somebody else's is not touched.
; What the client had before is given back as it was, of whatever type; without it the proxy is switched off.
Function un.GiveProxyBack
  ReadRegStr $0 HKCU "${PROXY_KEY}" "Host"
  ReadRegDWORD $1 HKCU "${PROXY_KEY}" "Port"
  ${If} $0 != "127.0.0.1"
  ${OrIf} $1 <> 11080
    Return
  ${EndIf}
  EnumRegValue $0 HKCU "${KEPT_KEY}" 0
  ${If} $0 == ""
    WriteRegDWORD HKCU "${PROXY_KEY}" "Enabled" 0
  ${Else}
    DeleteRegValue HKCU "${PROXY_KEY}" "Enabled"
    DeleteRegValue HKCU "${PROXY_KEY}" "Host"
    DeleteRegValue HKCU "${PROXY_KEY}" "Port"
    DeleteRegValue HKCU "${PROXY_KEY}" "Protocol"
    StrCpy $0 "${PROXY_KEY}"
    StrCpy $1 "${KEPT_KEY}"
    System::Call 'advapi32::RegOpenKeyW(p 0x80000001, w r0, *p .r2)' ; HKEY_CURRENT_USER
    System::Call 'shlwapi::SHCopyKeyW(p 0x80000001, w r1, p r2, i 0)'
    System::Call 'advapi32::RegCloseKey(p r2)'
  ${EndIf}
  StrCpy $outcome "AIM connects without Wrenlow now. If AIM is open, close it and open it again."
FunctionEnd

Function un.RemoveSettings
  DeleteRegKey HKCU "${SETTINGS_KEY}"
  Delete "$INSTDIR\repl.dat"
FunctionEnd

; What a user without Wrenlow does not need any more; of the settings, what he decides.
Function un.LeaveUser
  DeleteRegValue HKCU "${RUN_KEY}" "Wrenlow"
  Call un.GiveProxyBack
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/SETTINGS" $1
  ${IfNot} ${Errors}
    Call un.RemoveSettings
  ${ElseIf} ${Cmd} `MessageBox MB_YESNO|MB_ICONQUESTION|MB_DEFBUTTON2 \
      "Remove your settings, hotkeys and aliases too? Your logs stay in any case." /SD IDNO IDYES`
    Call un.RemoveSettings
  ${EndIf}
FunctionEnd

Section "Uninstall"
  Call un.EndRunning
  SetShellVarContext current
  StrCpy $outcome "Wrenlow was removed."
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/MOVED" $1
  ${If} ${Errors}
    Call un.LeaveUser
  ${EndIf}

  !include "${LISTS}/remove.nsh"
  Delete "$INSTDIR\localdata.txt"
  Delete "$INSTDIR\remotedata.txt"
  Delete "$INSTDIR\uninstall.exe"
  Delete "$SMPROGRAMS\Wrenlow.lnk"
  DeleteRegKey HKCU "${UNINSTALL_KEY}"
  RMDir "$INSTDIR" ; stays when aliases, logs or the user's own files are in it
SectionEnd
