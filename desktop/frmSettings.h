// frmSettings: the program's settings window. A control with a tag is bound to the setting of that name
// (app/services/Settings.h); loading and saving are loops over the table of controls (frmSettings.cpp), so a
// new setting's control is one row. The list of hotkeys is stored beside them by modHotKeys.
#pragma once

#include <string>
#include <vector>

#include "desktop/modHotKeys.h"
#include "os/desktop/Dialog.h"

class frmSettings {
 public:
    frmSettings();

    // Loads the settings, storing the default of each that is missing, and opens the window. A window that is
    // open already keeps what the user has changed in it.
    void Start();

    os::Dialog& Window() { return dialog_; }

 private:
    void Load();
    void Save();
    bool CanLog();
    bool RefuseFolder(const std::string& folder, const std::string& why);
    bool HasServer();
    void cmdOK_Click();
    void cmdApply_Click();
    void cmdHKAdd_Click();
    void cmdDeleteHotkey_Click();
    void SSTab1_Click();
    void sldTrans_Change();
    void cmbHKAction_Click();

    void ShowTranslucencyPage();
    void FillHotkeyLists();
    std::vector<modHotKeys::StoredHotkey> HotkeyRows() const;

    os::Dialog dialog_;
};
