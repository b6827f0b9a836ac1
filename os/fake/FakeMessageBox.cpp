#include "os/fake/FakeMessageBox.h"

#include <algorithm>
#include <stdexcept>

namespace os {
namespace {

bool HasButton(BoxButtons buttons, BoxResult answer) {
    switch (answer) {
        case BoxResult::Ok:
            return buttons == BoxButtons::Ok || buttons == BoxButtons::OkCancel;
        case BoxResult::Cancel:
            return buttons == BoxButtons::OkCancel || buttons == BoxButtons::YesNoCancel;
        default:
            return buttons == BoxButtons::YesNo || buttons == BoxButtons::YesNoCancel;
    }
}

}  // namespace

BoxResult ShowMessageBox(const std::string& text, const std::string& title, BoxIcon icon,
                         BoxButtons buttons) {
    auto& state = fake::boxes;
    if (buttons == BoxButtons::Ok &&
        std::find(state.open.begin(), state.open.end(), title + text) != state.open.end())
        return BoxResult::Ok;
    state.shown.push_back({text, title, icon, buttons, BoxesBefore::Current()});
    if (const auto during = state.during) {
        const BoxesBefore nobody(0);
        state.open.push_back(title + text);
        during();
        if (!state.open.empty()) state.open.pop_back();  // a reset meanwhile has emptied it
    }
    if (state.answers.empty()) return HasButton(buttons, BoxResult::Ok) ? BoxResult::Ok : BoxResult::Yes;
    const auto answer = state.answers.front();
    state.answers.pop_front();
    if (!HasButton(buttons, answer)) throw std::logic_error("the box has no such button: " + text);
    return answer;
}

}  // namespace os
