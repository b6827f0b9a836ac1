// frmSNReplacer: edits the list of aliases in "repl.dat". Connections keep the list that they began with, so
// a saved change counts from the next sign-on; the dialog says so.
#pragma once

#include <string>

#include "features/ScreenNameChooser.h"
#include "os/Dialog.h"

class frmSNReplacer {
 public:
    frmSNReplacer();

    // Opens the dialog with the list of the file, or brings it to the front. A file that cannot be read is
    // reported instead, so that saving cannot replace it with less.
    void Start();

 private:
    void txtScreenname_Enter();
    void cmdAdd_Click();
    void cmdRemove_Click();
    void cmdSave_Click();

    void AddRow(const std::string& screenName, const std::string& replacement);
    bool IsTaken(const std::string& screenName);

    os::Dialog dialog_;
    ScreenNameChooser chooser_;
};
