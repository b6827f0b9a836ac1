#include "os/fake/FakeMessageBox.h"

#include <deque>
#include <stdexcept>

#include "os/fake/FakeLoop.h"

namespace os {
namespace {

struct State {
    std::vector<fake::ShownBox> shown;
    std::deque<BoxResult> answers;
    std::function<void()> during;
};

State& TheState() {
    static State state;
    return state;
}

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
    auto& state = TheState();
    state.shown.push_back({text, title, icon, buttons});
    if (const auto during = state.during) during();
    if (state.answers.empty()) return HasButton(buttons, BoxResult::Ok) ? BoxResult::Ok : BoxResult::Yes;
    const auto answer = state.answers.front();
    state.answers.pop_front();
    if (!HasButton(buttons, answer)) throw std::logic_error("the box has no such button: " + text);
    return answer;
}

namespace fake {

const std::vector<ShownBox>& ShownBoxes() {
    return TheState().shown;
}

void AnswerBoxes(std::vector<BoxResult> answers) {
    TheState().answers.assign(answers.begin(), answers.end());
}

void SetDuringBox(std::function<void()> action) {
    TheState().during = std::move(action);
}

void ResetMessageBoxes() {
    TheState() = State();
}
const WorldPart part(ResetMessageBoxes);

}  // namespace fake
}  // namespace os
