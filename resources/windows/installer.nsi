; The Windows installer: the folder dist/windows into Program Files, a Start-menu entry, and an
; uninstaller registered with the system. Made by scripts/build-windows.sh:
;   makensis -DVERSION=0.1.0 -DDIST=dist/windows -DOUTFILE=Selvane_Setup_0.1.0.exe installer.nsi

; A 64-bit installer for a 64-bit program (it runs where the program runs).
Target amd64-unicode
SetCompressor /SOLID lzma

!ifndef VERSION
  !error "VERSION is not defined"
!endif
!ifndef DIST
  !error "DIST is not defined"
!endif
!ifndef OUTFILE
  !define OUTFILE "Selvane_Setup_${VERSION}.exe"
!endif

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Selvane"

Name "Selvane ${VERSION}"
OutFile "${OUTFILE}"
InstallDir "$PROGRAMFILES64\Selvane"
InstallDirRegKey HKLM "Software\Ostrel\Selvane" "InstallDir"
RequestExecutionLevel admin
Icon "selvane.ico"
UninstallIcon "selvane.ico"

Page directory
Page instfiles
UninstPage uninstConfirm
UninstPage instfiles

Section "Selvane"
  SetRegView 64
  SetOutPath "$INSTDIR"
  File /r "${DIST}\*.*"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  SetShellVarContext all
  CreateDirectory "$SMPROGRAMS\Selvane"
  CreateShortcut "$SMPROGRAMS\Selvane\Selvane.lnk" "$INSTDIR\selvane.exe"
  CreateShortcut "$SMPROGRAMS\Selvane\Uninstall Selvane.lnk" "$INSTDIR\uninstall.exe"
  WriteRegStr HKLM "Software\Ostrel\Selvane" "InstallDir" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "Selvane"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "Publisher" "Ostrel"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\selvane.exe"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoRepair" 1
SectionEnd

Section "Uninstall"
  SetRegView 64
  SetShellVarContext all
  Delete "$SMPROGRAMS\Selvane\Selvane.lnk"
  Delete "$SMPROGRAMS\Selvane\Uninstall Selvane.lnk"
  RMDir "$SMPROGRAMS\Selvane"
  ; Only what the installer put there: recordings and logs live elsewhere.
  RMDir /r "$INSTDIR\platforms"
  RMDir /r "$INSTDIR\plugins"
  RMDir /r "$INSTDIR\translations"
  Delete "$INSTDIR\*.dll"
  Delete "$INSTDIR\selvane.exe"
  Delete "$INSTDIR\qt.conf"
  Delete "$INSTDIR\README-windows.txt"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  DeleteRegKey HKLM "${UNINSTALL_KEY}"
  DeleteRegKey HKLM "Software\Ostrel\Selvane"
SectionEnd
