#include "os/win32/ModalLoop.h"

namespace os {
namespace {
void (*enterHandler)() = nullptr;
}

void EnterModalLoop() {
    if (enterHandler != nullptr) enterHandler();
}

void OnEnterModalLoop(void (*handler)()) {
    enterHandler = handler;
}

}  // namespace os
