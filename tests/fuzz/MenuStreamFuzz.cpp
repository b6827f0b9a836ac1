// Stored menus from anywhere: what Restore takes, Store gives back byte for byte, and what it refuses changes
// nothing.
#include <cstdint>

#include "base/RuntimeError.h"
#include "tests/fuzz/Check.h"
#include "ui/popupmenu/cPopupMenu.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string stream(bytes, bytes + size);
    cPopupMenu menu;
    menu.AddMenuItem("kept", "kept");
    const auto kept = menu.Store();
    try {
        menu.Restore(stream);
    } catch (const RuntimeError&) {
        Check(menu.Store() == kept, "a refused stream leaves the menu as it was");
        return 0;
    }
    Check(menu.Store() == stream, "a restored menu is stored as it was");

    // The menu works: it can be shown, grows under its last entry, and shrinks to nothing.
    menu.ShowPopupMenu(0, 0);
    const auto count = menu.Count();
    if (count == 0) return 0;
    const auto last = static_cast<std::int32_t>(count);
    if (menu.Kind(last) == os::MenuEntryKind::Item) {
        const auto added = menu.AddMenuItem("new", "", true, 0, last);
        Check(menu.ItemParent(added) == last, "the new entry hangs where it was put");
    }
    for (const auto index : menu.Entries()) menu.RemoveMenuItem(index);
    Check(menu.Count() == 0, "every entry hangs in the menu");
    return 0;
}
