#include "os/fake/FakePopupMenu.h"

#include <algorithm>
#include <stdexcept>

#include "os/fake/FakeLoop.h"

namespace os {
namespace {

struct State {
    std::function<std::int32_t(const MenuRequest&)> chooser;
    ScreenPoint cursor{0, 0};
    int icons = 0;
};

State& TheState() {
    static State state;
    return state;
}
const fake::WorldPart part([] { TheState() = State(); });

bool CanBeChosen(const MenuRequest& request, std::int32_t id) {
    const auto& entries = request.entries;
    const bool isItem = std::any_of(entries.begin(), entries.end(), [=](const MenuEntry& entry) {
        return entry.id == id && entry.kind == MenuEntryKind::Item && entry.enabled;
    });
    return isItem && std::none_of(entries.begin(), entries.end(),
                                  [=](const MenuEntry& entry) { return entry.parent == id; });
}

}  // namespace

std::int32_t PopUpMenu(const MenuRequest& request) {
    const auto chooser = TheState().chooser;
    const auto id = chooser ? chooser(request) : 0;
    if (id != 0 && !CanBeChosen(request, id)) throw std::logic_error("nobody could choose this entry");
    return id;
}

ScreenPoint CursorPosition() {
    return TheState().cursor;
}

int SmallIconSize() {
    return 16;
}

IconHandle LoadIconResource(int resourceId, int) {
    if (resourceId == 0) return 0;
    ++TheState().icons;
    return 0x1000 + static_cast<IconHandle>(resourceId);
}

void ReleaseIcon(IconHandle icon) {
    if (icon != 0) --TheState().icons;
}

namespace fake {

void SetMenuChooser(std::function<std::int32_t(const MenuRequest&)> chooser) {
    TheState().chooser = std::move(chooser);
}

void SetCursorPosition(ScreenPoint position) {
    TheState().cursor = position;
}

int LoadedIcons() {
    return TheState().icons;
}

}  // namespace fake
}  // namespace os
