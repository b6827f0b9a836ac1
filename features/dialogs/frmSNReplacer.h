// frmSNReplacer: edits the list of aliases in "repl.dat". Connections keep the list that they began with, so
// a saved change counts from the next sign-on; the dialog says so. Pairs are kept as the file has them,
// beside the rows that show them, and bytes that nobody reads go back into the file.
#pragma once

#include <optional>
#include <string>

#include "features/dialogs/ScreenNameChooser.h"
#include "features/modSNReplace.h"
#include "os/desktop/Dialog.h"

class frmSNReplacer {
 public:
    frmSNReplacer();

    // Opens the dialog with the list of the file, or brings it to the front. A file that cannot be read is
    // reported instead, so that saving cannot replace it with less.
    void Start();

 private:
    struct Refusal {
        const char* box;  // where it can be mended
        std::string why;
    };

    void txtScreenname_Enter();
    void cmdRemove_Click();
    void cmdSave_Click();
    void cmdCancel_Click();

    // Whether what stands in the boxes has become a pair; if not, the user has been told why.
    bool AddTyped();
    void ShowRow(const Replacement& pair);
    // Nothing for a pair that can be added.
    std::optional<Refusal> RefusalOf(const Replacement& pair) const;

    os::Dialog dialog_;
    ScreenNameChooser chooser_;
    modSNReplace::AliasFile stored_;
    modSNReplace::AliasFile edited_;  // a pair for each row
};
