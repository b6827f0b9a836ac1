#include "ui/popupmenu/cPopupMenu.h"

#include "base/RuntimeError.h"
#include "os/desktop/MenuLetters.h"
#include "os/fake/FakeTray.h"
#include "tests/unit/FreshWorld.h"
#include "ui/popupmenu/ColourSchemes.h"
#include "ui/popupmenu/ImageList.h"

namespace {

using Indices = std::vector<std::int32_t>;

struct PopupMenu : FreshWorld {
    // What the menu hands to the operating system.
    static os::MenuRequest Shown(const cPopupMenu& menu) {
        os::MenuRequest shown;
        os::fake::menus.chooser = [&](const os::MenuRequest& request) {
            shown = request;
            return 0;
        };
        EXPECT_EQ(menu.ShowPopupMenu(0, 0), 0);
        return shown;
    }

    static cPopupMenu Restored(std::string_view stream) {
        cPopupMenu menu;
        menu.Restore(stream);
        return menu;
    }

    static cPopupMenu SampleMenu() {
        cPopupMenu menu;
        const auto file = menu.AddMenuItem("&File", "file");
        menu.AddMenuItem("-");
        const auto deeper = menu.AddMenuItem("Deeper", "deeper", false, -7, file, 3);
        menu.AddMenuItem("Deepest", "deepest", true, 0x7FFFFFFF, deeper, 0, true, false);
        menu.AddMenuItem(std::string("zero \0 \xE9", 8), "", false, 0, file);
        menu.MakeHeader(menu.AddMenuItem("Recent"));
        menu.ColourScheme(kDarkScheme);
        return menu;
    }
};

}  // namespace

TEST_F(PopupMenu, IndicesStayWithTheirEntriesAndAreNotGivenAgain) {
    cPopupMenu menu;
    const auto parent = menu.AddMenuItem("parent");
    EXPECT_EQ(menu.AddMenuItem("a", "a", false, 0, parent), 2);
    EXPECT_EQ(menu.AddMenuItem("c", "c", false, 0, parent), 3);
    EXPECT_EQ(menu.InsertMenuItem(3, "b", "b"), 4);
    EXPECT_EQ(menu.Entries(parent), (Indices{2, 4, 3}));
    menu.RemoveMenuItem(4);
    EXPECT_EQ(menu.AddMenuItem("d", "d"), 5);
    EXPECT_EQ(menu.Entries(parent), (Indices{2, 3}));
    EXPECT_EQ(menu.ItemKey(3), "c");
    EXPECT_EQ(menu.IndexForKey("d"), 5);
    EXPECT_EQ(menu.IndexForKey("D"), 0);
    menu.RemoveMenuItem(parent);  // with its sub-menu
    EXPECT_EQ(menu.Count(), 1u);
}

TEST_F(PopupMenu, AMenuHasOneDefaultEntryAtMost) {
    cPopupMenu menu;
    const auto first = menu.AddMenuItem("first", "", true);
    const auto below = menu.AddMenuItem("below", "", true, 0, first);
    const auto second = menu.AddMenuItem("second", "", true);
    EXPECT_FALSE(menu.Default(first));
    menu.Default(first, false);
    EXPECT_TRUE(menu.Default(second));
    EXPECT_TRUE(menu.Default(below));
}

TEST_F(PopupMenu, RefusesWhatNoMenuCanHold) {
    auto menu = SampleMenu();
    const auto before = menu.Store();
    const auto separator = menu.Entries()[1];
    EXPECT_THROW(menu.AddMenuItem("x", "", false, 0, 99), RuntimeError);
    EXPECT_THROW(menu.AddMenuItem("x", "", false, 0, separator), RuntimeError);
    EXPECT_THROW(menu.InsertMenuItem(0, "x"), RuntimeError);
    EXPECT_THROW(menu.MakeHeader(menu.IndexForKey("file")), RuntimeError);
    EXPECT_THROW(menu.RemoveMenuItem(-1), RuntimeError);
    EXPECT_THROW(menu.ItemKey(0), RuntimeError);
    EXPECT_EQ(menu.Store(), before);
}

TEST_F(PopupMenu, ShowsEntriesWithTheIconsOfTheirIndices) {
    auto menu = SampleMenu();
    {
        ImageList images;
        images.Add(3, 301);
        images.Add(0, 0);  // a resource that the program lacks
        menu.ImageList(&images);
        menu.hWndOwner(42);
        const auto shown = Shown(menu);
        ASSERT_EQ(shown.entries.size(), 6u);
        EXPECT_EQ(shown.owner, 42u);
        EXPECT_EQ(shown.colours, kDarkScheme);
        EXPECT_EQ(shown.entries[2].icon, 16'301u);
        EXPECT_EQ(shown.entries[3].icon, 0u);
        EXPECT_TRUE(shown.entries[3].isDefault && shown.entries[3].checked && !shown.entries[3].enabled);
        EXPECT_EQ(shown.entries[1].kind, os::MenuEntryKind::Separator);
        EXPECT_EQ(shown.entries[5].kind, os::MenuEntryKind::Header);
        images.Add(3, 302);             // takes the place of the icon before, which is released
        os::fake::menus.iconSize = 32;  // another screen, or another scale
        EXPECT_EQ(Shown(menu).entries[2].icon, 32'302u);
        EXPECT_EQ(os::fake::menus.icons, 1);
    }
    EXPECT_EQ(os::fake::menus.icons, 0);
}

TEST_F(PopupMenu, TheMenuMayGoWhileItIsOnTheScreen) {
    auto menu = std::make_unique<cPopupMenu>(SampleMenu());
    os::fake::menus.chooser = [&](const os::MenuRequest& request) {
        return menu.reset(), request.entries[4].id;
    };
    EXPECT_EQ(menu->ShowPopupMenu(1, 2), 5);
}

TEST_F(PopupMenu, AStoredMenuComesBackWholeWithNewNumbers) {
    auto menu = SampleMenu();
    menu.InsertMenuItem(1, "first", "first");  // index 7, stored as the first
    menu.RemoveMenuItem(2);
    auto copy = Restored(menu.Store());
    const auto a = Shown(menu).entries, b = Shown(copy).entries;
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        EXPECT_EQ(a[i].caption, b[i].caption);
        EXPECT_EQ(a[i].kind, b[i].kind);
    }
    EXPECT_EQ(copy.IndexForKey("first"), 1);
    EXPECT_EQ(copy.ItemParent(copy.IndexForKey("deepest")), copy.IndexForKey("deeper"));
    EXPECT_EQ(copy.ItemData(copy.IndexForKey("deeper")), -7);
    EXPECT_EQ(copy.ItemData(copy.IndexForKey("deepest")), 0x7FFFFFFF);
    EXPECT_EQ(copy.ItemIcon(copy.IndexForKey("file")), cPopupMenu::kNoIcon);
    EXPECT_EQ(copy.ColourScheme(), kDarkScheme);
    EXPECT_EQ(copy.Store(), menu.Store());
    EXPECT_EQ(copy.AddMenuItem("new"), 7);  // six entries came back
    EXPECT_EQ(Restored(cPopupMenu().Store()).Count(), 0u);
}

// What is damaged in another way would be stored in another way, which the fuzz target of the streams finds.
TEST_F(PopupMenu, AStreamOfWhatNoMenuCanHoldIsRefusedAndLeavesTheMenuAsItWas) {
    const auto changed = [](std::string stream, std::size_t at, char byte) {
        stream.at(at) = byte;
        return stream;
    };
    cPopupMenu two;
    two.AddMenuItem("");
    two.AddMenuItem("", "", false, 0, 1);
    two.AddMenuItem("");
    const std::size_t first = 8, third = first + 2 * 16, kind = 2, flags = 3;  // without colours and texts
    const auto good = two.Store();
    const std::pair<std::string, const char*> cases[] = {
        {changed(good, first + kind, 3), "no known kind"},
        {changed(good, first + kind, 1), "has a sub-menu"},
        {changed(changed(good, first + flags, 4), third + flags, 4), "two default"},
    };
    cPopupMenu menu;
    menu.AddMenuItem("kept", "kept");
    const auto kept = menu.Store();
    for (const auto& [stream, what] : cases) {
        try {
            menu.Restore(stream);
            ADD_FAILURE() << "accepted: " << what;
        } catch (const RuntimeError& error) {
            EXPECT_NE(std::string(error.what()).find(what), std::string::npos) << error.what();
        }
        EXPECT_EQ(menu.Store(), kept);
    }
}

TEST_F(PopupMenu, RefusesToStoreTextsThatTheStreamCannotHold) {
    cPopupMenu menu;
    const auto index = menu.AddMenuItem(std::string(0xFFFF, 'x'));
    EXPECT_EQ(Restored(menu.Store()).Caption(1).size(), 0xFFFFu);
    menu.Caption(index, std::string(0x10000, 'x'));
    EXPECT_THROW(menu.Store(), RuntimeError);
}

TEST(MenuLetters, ChooseTheOnlyEntryAndTakeTurnsAmongSeveral) {
    std::vector<os::MenuEntry> all(6);
    const char* captions[] = {"Settings...", "R&&D", "Set &away", "Save", "apple", "S off"};
    std::vector<const os::MenuEntry*> entries;
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i].caption = captions[i];
        entries.push_back(&all[i]);
    }
    all[3].kind = os::MenuEntryKind::Header;
    all[5].enabled = false;

    const auto none = os::LetterHit::npos;
    const struct {
        std::size_t selected;
        char letter;
        std::size_t position;
        bool choose;
    } cases[] = {
        {none, 's', 0, true},   // headers and disabled entries do not count
        {none, 'R', 1, true},   // "&&" marks nothing
        {none, 'A', 2, false},  // marked letter and first letter are worth the same
        {2, 'a', 4, false},    {4, 'a', 2, false}, {0, 's', 0, true}, {0, 'x', none, true},
    };
    for (const auto& [selected, letter, position, choose] : cases) {
        const auto hit = os::FindMenuLetter(entries, selected, letter);
        EXPECT_EQ(hit.position, position) << letter;
        EXPECT_EQ(hit.choose, choose) << letter;
    }
}
