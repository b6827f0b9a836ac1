// frmSettings: the program's settings window. A control with a tag is bound to the setting of that name;
// loading and saving are loops over the table of controls (frmSettings.cpp), so a new setting is one row.
// The list of hotkeys is stored beside them by modHotKeys.
#pragma once

#include <optional>
#include <vector>

#include "base/RuntimeError.h"
#include "desktop/modHotKeys.h"
#include "os/Dialog.h"

class frmSettings {
 public:
    frmSettings();

    // Loads the settings, writing the default of each that is missing. With `bDontShow` they are put in
    // force and the window stays hidden (failures are reported under "frmSettings:Apply"); otherwise the
    // window opens. A window that is open already keeps what the user has changed in it.
    void Start(bool bDontShow);

    os::Dialog& Window() { return dialog_; }

 private:
    void Load();
    void Save();
    std::optional<RuntimeError> Apply();
    void ApplyOrTell();
    void cmdOK_Click();
    void cmdApply_Click();
    void cmdHKAdd_Click();
    void cmdDeleteHotkey_Click();
    void SSTab1_Click();
    void sldTrans_Change();
    void cmbHKAction_Click();

    void ShowTranslucencyPage();
    void FillHotkeyLists();
    bool HasHotkeyRow(const std::string& combination) const;
    std::vector<modHotKeys::StoredHotkey> HotkeyRows() const;

    os::Dialog dialog_;
};
