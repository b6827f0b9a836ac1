// frmBug: a form to describe a problem in, with the report on the connections in it to be copied. It collects
// nothing: both of its buttons only close it, and what was typed is forgotten.
#pragma once

#include "os/desktop/Dialog.h"

class frmBug {
 public:
    frmBug();

    // Opens the form, or brings it to the front.
    void Start();

 private:
    void CloseEmpty();

    os::Dialog dialog_;
};
