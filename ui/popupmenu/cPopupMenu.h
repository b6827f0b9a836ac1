// cPopupMenu: a popup menu as a model: entries, sub-menus to any depth, colours, and a stream form. Showing
// it is the operating system's part (os/desktop/PopupMenu.h).
//
// An entry is known by its index: positive, given when the entry is added, never given again while the menu
// lives and not changed by what happens to other entries. (Restoring a stored menu numbers anew.) Operations
// on an index that the menu does not have throw RuntimeError (SubscriptOutOfRange).
//
// With os/desktop/PopupMenu.h and os/desktop/Icons.h the folder is a component of its own; it knows nothing
// of this program.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "os/desktop/PopupMenu.h"

class ImageList;

class cPopupMenu {
 public:
    static constexpr std::int32_t kNoIcon = -1;

    // Adds an entry below the others of its menu and returns its index. The caption "-" makes a separator.
    // `lParentIndex` names the entry whose sub-menu gets the new one, 0 the menu itself; a separator or
    // header cannot have a sub-menu: RuntimeError (InvalidArgument). A default entry is bold; it takes the
    // place of the default entry that its menu had. `lIconIndex` counts in the image list.
    std::int32_t AddMenuItem(const std::string& sCaption, const std::string& sKey = {}, bool bDefault = false,
                             std::int32_t lItemData = 0, std::int32_t lParentIndex = 0,
                             std::int32_t lIconIndex = kNoIcon, bool bChecked = false, bool bEnabled = true);
    // The same, but above the entry `lBeforeIndex`, in the menu which that one is in.
    std::int32_t InsertMenuItem(std::int32_t lBeforeIndex, const std::string& sCaption,
                                const std::string& sKey = {}, bool bDefault = false,
                                std::int32_t lItemData = 0, std::int32_t lIconIndex = kNoIcon,
                                bool bChecked = false, bool bEnabled = true);
    // Removes the entry with its whole sub-menu.
    void RemoveMenuItem(std::int32_t lIndex);
    void Clear();

    std::size_t Count() const { return items_.size(); }
    bool Contains(std::int32_t lIndex) const;
    // The first entry with the key, 0 when there is none. Keys are compared exactly.
    std::int32_t IndexForKey(std::string_view sKey) const;
    // The indices of one menu in the order of display; 0 is the menu itself, else the owner of the sub-menu.
    std::vector<std::int32_t> Entries(std::int32_t lParentIndex = 0) const;
    std::int32_t ItemParent(std::int32_t lIndex) const { return Find(lIndex).parent; }

    const std::string& ItemKey(std::int32_t lIndex) const { return Find(lIndex).key; }
    void ItemKey(std::int32_t lIndex, const std::string& sKey) { Find(lIndex).key = sKey; }
    const std::string& Caption(std::int32_t lIndex) const { return Find(lIndex).caption; }
    // A caption is only text here: changing one never turns an entry into a separator or back.
    void Caption(std::int32_t lIndex, const std::string& sCaption) { Find(lIndex).caption = sCaption; }
    std::int32_t ItemData(std::int32_t lIndex) const { return Find(lIndex).itemData; }
    void ItemData(std::int32_t lIndex, std::int32_t lItemData) { Find(lIndex).itemData = lItemData; }
    std::int32_t ItemIcon(std::int32_t lIndex) const { return Find(lIndex).icon; }
    void ItemIcon(std::int32_t lIndex, std::int32_t lIconIndex) { Find(lIndex).icon = lIconIndex; }
    bool Checked(std::int32_t lIndex) const { return Find(lIndex).checked; }
    void Checked(std::int32_t lIndex, bool bChecked) { Find(lIndex).checked = bChecked; }
    bool Enabled(std::int32_t lIndex) const { return Find(lIndex).enabled; }
    void Enabled(std::int32_t lIndex, bool bEnabled) { Find(lIndex).enabled = bEnabled; }
    bool Default(std::int32_t lIndex) const { return Find(lIndex).isDefault; }
    void Default(std::int32_t lIndex, bool bDefault);
    os::MenuEntryKind Kind(std::int32_t lIndex) const { return Find(lIndex).kind; }
    // A header is a caption on a band of its own that cannot be chosen. Only entries without a sub-menu can
    // become one: RuntimeError (InvalidArgument).
    void MakeHeader(std::int32_t lIndex);

    os::WindowHandle hWndOwner() const { return owner_; }
    void hWndOwner(os::WindowHandle window) { owner_ = window; }
    // The icons; must outlive the menu or be taken away with nullptr.
    void ImageList(::ImageList* images) { images_ = images; }
    // Nothing: the system's colours.
    const std::optional<os::MenuColours>& ColourScheme() const { return colours_; }
    void ColourScheme(const std::optional<os::MenuColours>& colours) { colours_ = colours; }

    // Shows the menu at a place in screen pixels and waits. The index of the chosen entry, or 0 when nothing
    // was chosen. Events arrive meanwhile: they may change or destroy this menu, which the one on the screen
    // does not notice. So the chosen entry may be gone (Contains).
    std::int32_t ShowPopupMenu(int x, int y) const;

    // The menu as bytes (entries and colours; neither window nor images), and back. The format is written
    // down in MenuStream.cpp and has a version. Store throws RuntimeError (Overflow) for a text of more than
    // 65535 bytes or as many entries. Restore throws RuntimeError (InvalidArgument) that says what is wrong
    // with the bytes, and then leaves the menu as it was.
    std::string Store() const;
    void Restore(std::string_view stream);

 private:
    struct Item {
        std::int32_t index = 0;
        std::int32_t parent = 0;
        os::MenuEntryKind kind = os::MenuEntryKind::Item;
        std::string caption;
        std::string key;
        std::int32_t itemData = 0;
        std::int32_t icon = kNoIcon;
        bool checked = false;
        bool enabled = true;
        bool isDefault = false;
    };
    using Items = std::vector<Item>;
    class Reader;
    class Writer;

    Items::const_iterator Position(std::int32_t lIndex) const;
    const Item& Find(std::int32_t lIndex) const { return *Position(lIndex); }
    Item& Find(std::int32_t lIndex) { return const_cast<Item&>(*Position(lIndex)); }
    bool HasSubMenu(std::int32_t lIndex) const;
    static Item ReadItem(Reader& reader, std::int32_t number);
    std::int32_t Place(Items::const_iterator before, Item item);

    // Flat and in the order of display within each menu; a parent stands before its entries. So nothing here
    // recurses, however deep the menu is.
    Items items_;
    std::int32_t lastIndex_ = 0;
    os::WindowHandle owner_ = 0;
    ::ImageList* images_ = nullptr;
    std::optional<os::MenuColours> colours_;
};
