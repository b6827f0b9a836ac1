// DialogMessages: what the message loop asks of the dialogs.
#pragma once

struct tagMSG;

namespace os {

// Offers a message to the open dialogs before it is dispatched: keys that move the focus, press the default
// or cancel button or turn a page. Whether it has been handled; the loop then drops it.
bool TakeDialogMessage(tagMSG& message);

}  // namespace os
