#include "ui/popupmenu/cPopupMenu.h"

#include <gtest/gtest.h>

#include "base/RuntimeError.h"
#include "os/MenuLetters.h"
#include "os/fake/FakePopupMenu.h"
#include "ui/popupmenu/ColourSchemes.h"
#include "ui/popupmenu/ImageList.h"

namespace {

using Indices = std::vector<std::int32_t>;

class PopupMenu : public testing::Test {
 protected:
    void TearDown() override { os::fake::ResetPopupMenu(); }

    // What the menu hands to the operating system.
    os::MenuRequest Shown(const cPopupMenu& menu) {
        os::MenuRequest shown;
        os::fake::SetMenuChooser([&](const os::MenuRequest& request) {
            shown = request;
            return 0;
        });
        EXPECT_EQ(menu.ShowPopupMenu(0, 0), 0);
        return shown;
    }
};

// A stream is compared by what it restores to, and two menus by their streams.
cPopupMenu Restored(std::string_view stream) {
    cPopupMenu menu;
    menu.Restore(stream);
    return menu;
}

cPopupMenu SampleMenu() {
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

}  // namespace

TEST_F(PopupMenu, IndicesStayWithTheirEntriesAndAreNotGivenAgain) {
    cPopupMenu menu;
    EXPECT_EQ(menu.AddMenuItem("a", "a"), 1);
    EXPECT_EQ(menu.AddMenuItem("c", "c"), 2);
    EXPECT_EQ(menu.InsertMenuItem(2, "b", "b"), 3);
    EXPECT_EQ(menu.Entries(), (Indices{1, 3, 2}));
    menu.RemoveMenuItem(3);
    EXPECT_EQ(menu.AddMenuItem("d", "d"), 4);
    EXPECT_EQ(menu.Entries(), (Indices{1, 2, 4}));
    EXPECT_EQ(menu.ItemKey(2), "c");
    EXPECT_EQ(menu.IndexForKey("d"), 4);
    EXPECT_EQ(menu.IndexForKey("D"), 0);
}

TEST_F(PopupMenu, InsertingStaysInTheMenuOfTheEntryBelow) {
    cPopupMenu menu;
    const auto parent = menu.AddMenuItem("parent");
    const auto child = menu.AddMenuItem("child", "", false, 0, parent);
    const auto inserted = menu.InsertMenuItem(child, "inserted");
    EXPECT_EQ(menu.Entries(parent), (Indices{inserted, child}));
    EXPECT_EQ(menu.Entries(), (Indices{parent}));
}

TEST_F(PopupMenu, RemovingAnEntryTakesItsWholeSubMenu) {
    auto menu = SampleMenu();
    menu.RemoveMenuItem(menu.IndexForKey("file"));
    EXPECT_EQ(menu.Count(), 2u);
    EXPECT_EQ(menu.IndexForKey("deepest"), 0);
}

TEST_F(PopupMenu, AMenuHasOneDefaultEntryAtMost) {
    cPopupMenu menu;
    const auto first = menu.AddMenuItem("first", "", true);
    const auto below = menu.AddMenuItem("below", "", true, 0, first);
    const auto second = menu.AddMenuItem("second", "", true);
    EXPECT_FALSE(menu.Default(first));
    EXPECT_TRUE(menu.Default(second));
    EXPECT_TRUE(menu.Default(below));
    menu.Default(first, false);
    EXPECT_TRUE(menu.Default(second));
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
        EXPECT_EQ(shown.entries[2].icon, images.Icon(3));
        EXPECT_NE(shown.entries[2].icon, 0u);
        EXPECT_EQ(shown.entries[3].icon, 0u);
        EXPECT_TRUE(shown.entries[3].isDefault && shown.entries[3].checked && !shown.entries[3].enabled);
        EXPECT_EQ(shown.entries[1].kind, os::MenuEntryKind::Separator);
        EXPECT_EQ(shown.entries[5].kind, os::MenuEntryKind::Header);
        images.Add(3, 302);  // takes the place of the icon before, which is released
        EXPECT_EQ(os::fake::LoadedIcons(), 1);
    }
    EXPECT_EQ(os::fake::LoadedIcons(), 0);
}

TEST_F(PopupMenu, TheMenuMayChangeWhileItIsOnTheScreen) {
    auto menu = std::make_unique<cPopupMenu>(SampleMenu());
    os::fake::SetMenuChooser([&](const os::MenuRequest& request) {
        menu.reset();
        return request.entries[4].id;
    });
    EXPECT_EQ(menu->ShowPopupMenu(1, 2), 5);
}

TEST_F(PopupMenu, AStoredMenuComesBackWhole) {
    const auto menu = SampleMenu();
    const auto copy = Restored(menu.Store());
    const auto a = Shown(menu), b = Shown(copy);
    ASSERT_EQ(a.entries.size(), b.entries.size());
    for (std::size_t i = 0; i < a.entries.size(); ++i) {
        EXPECT_EQ(a.entries[i].caption, b.entries[i].caption);
        EXPECT_EQ(a.entries[i].parent, b.entries[i].parent);
        EXPECT_EQ(a.entries[i].kind, b.entries[i].kind);
    }
    EXPECT_EQ(copy.ItemData(copy.IndexForKey("deeper")), -7);
    EXPECT_EQ(copy.ItemData(copy.IndexForKey("deepest")), 0x7FFFFFFF);
    EXPECT_EQ(copy.ItemIcon(copy.IndexForKey("file")), cPopupMenu::kNoIcon);
    EXPECT_EQ(copy.ColourScheme(), kDarkScheme);
    EXPECT_EQ(copy.Store(), menu.Store());
    EXPECT_EQ(Restored(cPopupMenu().Store()).Count(), 0u);
}

TEST_F(PopupMenu, StreamsDoNotFollowTheOrderOfAdding) {
    auto menu = SampleMenu();
    menu.InsertMenuItem(1, "first", "first");  // index 7, stored as the first
    menu.RemoveMenuItem(2);
    auto copy = Restored(menu.Store());
    EXPECT_EQ(copy.IndexForKey("first"), 1);
    EXPECT_EQ(copy.ItemParent(copy.IndexForKey("deepest")), copy.IndexForKey("deeper"));
    EXPECT_EQ(copy.AddMenuItem("new"), 7);  // six entries came back
}

TEST_F(PopupMenu, DamagedStreamsAreRefusedAndLeaveTheMenuAsItWas) {
    const auto good = SampleMenu().Store();
    cPopupMenu menu;
    menu.AddMenuItem("kept", "kept");
    const auto kept = menu.Store();
    const auto refused = [&](const std::string& stream, const char* what) {
        try {
            menu.Restore(stream);
            ADD_FAILURE() << "accepted: " << what;
        } catch (const RuntimeError& error) {
            EXPECT_NE(std::string(error.what()).find(what), std::string::npos) << error.what();
        }
        EXPECT_EQ(menu.Store(), kept);
    };
    const auto changed = [&](std::size_t at, int byte) {
        auto stream = good;
        stream.at(at) = static_cast<char>(byte);
        return stream;
    };
    for (std::size_t length = 0; length < good.size(); ++length) refused(good.substr(0, length), "too early");
    refused(good + '\0', "follows its end");
    refused(changed(0, 'X'), "no menu");
    refused(changed(4, 2), "another version");
    refused(changed(5, 2), "colours");
    const std::size_t first = 4 + 1 + 1 + 8 * 3 + 2;  // the first entry
    refused(changed(first + 1, 1), "before its parent");
    refused(changed(first + 2, 3), "no known kind");
    refused(changed(first + 2, 1), "has a sub-menu");  // "File" as a separator
    refused(changed(first + 3, 8), "unknown flags");
    refused(changed(first - 1, 7), "too early");  // one entry more than there is

    cPopupMenu twoDefaults;
    twoDefaults.AddMenuItem("");
    twoDefaults.AddMenuItem("");
    auto stream = twoDefaults.Store();
    stream.at(8 + 3) = stream.at(8 + 16 + 3) = 4;
    refused(stream, "two default");
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
    for (std::size_t i = 0; i < all.size(); ++i) all[i].caption = captions[i];
    all[3].kind = os::MenuEntryKind::Header;
    all[5].enabled = false;
    std::vector<const os::MenuEntry*> entries;
    for (const auto& entry : all) entries.push_back(&entry);

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
    for (const auto& test : cases) {
        const auto hit = os::FindMenuLetter(entries, test.selected, test.letter);
        EXPECT_EQ(hit.position, test.position) << test.letter;
        EXPECT_EQ(hit.choose, test.choose) << test.letter;
    }
}
