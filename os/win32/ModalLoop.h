// ModalLoop: what runs a message loop of the system's (a message box, a menu, a file dialog) says so first.
#pragma once

namespace os {

// Makes sure that sockets wake the modal loop that is about to run, also when an event of theirs has led to
// it.
void EnterModalLoop();

// For the event loop. A program without one (a test on the fakes) has nothing to make sure of.
void OnEnterModalLoop(void (*handler)());

}  // namespace os
