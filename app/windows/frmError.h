// frmError: the window of one error report. Every report has its own; whoever opens it keeps it until the
// user has closed it.
#pragma once

#include <cstdint>
#include <string>

#include "base/Event.h"
#include "os/desktop/Dialog.h"

class frmError {
 public:
    // The user has closed the window; the handler may destroy the form.
    Event<frmError&> Closed;

    frmError();

    // Fills the text, which can be marked and copied (Ctrl+C takes all of it), and shows the window; returns
    // at once.
    void Start(const std::string& strDesc, const std::string& strNumber, const std::string& strWhere,
               std::int16_t linenum, os::Opening opening = {});

 private:
    void cmdOK_Click();

    os::Dialog dialog_;
};
