#include "os/fake/FakeFileDialogs.h"

#include "os/fake/FakeLoop.h"

namespace os {
namespace {

struct State {
    std::vector<fake::AskedSaveFile> asked;
    std::optional<std::string> answer;
    std::function<void()> during;
};

State& TheState() {
    static State state;
    return state;
}

}  // namespace

std::optional<std::string> AskSaveFileName(WindowHandle owner, const std::string& title,
                                           const std::string& proposedName) {
    auto& state = TheState();
    state.asked.push_back({owner, title, proposedName});
    if (const auto during = state.during) during();
    return state.answer;
}

namespace fake {

const std::vector<AskedSaveFile>& AskedSaveFiles() {
    return TheState().asked;
}

void AnswerSaveFile(std::optional<std::string> path) {
    TheState().answer = std::move(path);
}

void SetDuringSaveFile(std::function<void()> action) {
    TheState().during = std::move(action);
}

void ResetFileDialogs() {
    TheState() = State();
}
const WorldPart part(ResetFileDialogs);

}  // namespace fake
}  // namespace os
