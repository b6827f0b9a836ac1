// FakeMessageBox: the boxes that the program under test shows, and the answers they get.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "os/MessageBox.h"

namespace os::fake {

struct ShownBox {
    std::string text;
    std::string title;
    BoxIcon icon;
    BoxButtons buttons;
};

// All boxes since the last reset, oldest first.
const std::vector<ShownBox>& ShownBoxes();

// Queues the answers of the next boxes. A box without a queued answer is answered by its default button, Ok
// or Yes. An answer that the box has no button for throws std::logic_error from ShowMessageBox.
void AnswerBoxes(std::vector<BoxResult> answers);

// Runs inside every box while it is "open": what real messages could do meanwhile. Empty by default.
void SetDuringBox(std::function<void()> action);

void ResetMessageBoxes();

}  // namespace os::fake
