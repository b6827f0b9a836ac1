#include "os/fake/FakeTray.h"

#include <stdexcept>

#include "os/fake/FakeLoop.h"

namespace os {
namespace {

struct State {
    TrayWindow* window = nullptr;
    std::optional<TrayRecord> shown;
    bool taskbar = true;
    int adds = 0;
};

State& TheState() {
    static State state;
    return state;
}
const fake::WorldPart part([] {
    auto* const window = TheState().window;  // one that still exists stays
    TheState() = State();
    TheState().window = window;
});

}  // namespace

struct TrayWindow::Impl {};

TrayWindow::TrayWindow() {
    if (TheState().window != nullptr) throw std::logic_error("the fake has room for one tray window");
    TheState().window = this;
}

TrayWindow::~TrayWindow() {
    Remove();
    TheState().window = nullptr;
}

IconHandle TrayWindow::OwnIcon() const {
    return 0x2001;
}

bool TrayWindow::Add(const TrayRecord& record) {
    auto& state = TheState();
    ++state.adds;
    if (!state.taskbar || state.shown) return false;  // as the system: one icon per window and id
    state.shown = record;
    return true;
}

bool TrayWindow::Modify(const TrayRecord& record) {
    auto& state = TheState();
    if (!state.taskbar || !state.shown || state.shown->id != record.id) return false;
    state.shown = record;
    return true;
}

void TrayWindow::Remove() {
    TheState().shown.reset();
}

namespace fake {

const std::optional<TrayRecord>& ShownTrayIcon() {
    return TheState().shown;
}

std::string ShownTip() {
    return TheState().shown ? std::string(TheState().shown->tip.data()) : std::string();
}

int TrayAdds() {
    return TheState().adds;
}

void SetTaskbar(bool present) {
    TheState().taskbar = present;
    if (!present) TheState().shown.reset();
}

void RestartTaskbar() {
    SetTaskbar(false);
    SetTaskbar(true);
    if (auto* window = TheState().window) window->TaskbarCreated();
}

void SendTrayCallback(std::uint32_t message) {
    if (auto* window = TheState().window) window->Callback(message);
}

}  // namespace fake
}  // namespace os
