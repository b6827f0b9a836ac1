// DialogMessages: what message loops and message boxes ask of the dialogs.
#pragma once

#include "os/desktop/MessageBox.h"

struct HWND__;
struct tagMSG;

namespace os {

// Offers a message to the open dialogs before it is dispatched: keys that move the focus, press the default
// or cancel button or turn a page. Whether it has been handled; the loop then drops it.
bool TakeDialogMessage(tagMSG& message);

// The window itself, or what is open before it and disables it: a box, a dialog of the system.
HWND__* UsableWindow(HWND__* window);

// The window that a box is shown before (os/desktop/MessageBox.h); nullptr when there is none.
HWND__* OwnerOfBoxes();

// What runs a dialog loop of the system's (a box, a file dialog) has one: keys go on working in our dialogs,
// and nobody has caused what comes in meanwhile.
class ForeignDialogLoop {
 public:
    ForeignDialogLoop();
    ~ForeignDialogLoop();
    ForeignDialogLoop(const ForeignDialogLoop&) = delete;
    ForeignDialogLoop& operator=(const ForeignDialogLoop&) = delete;

 private:
    BoxesBefore nobody_;
    bool wasOffering_;
};

}  // namespace os
