// WrenlowPage: a page of the Wrenlow window (desktop/frmWrenlow). A page is a file of its own, with a table
// of controls, a class and a WrenlowPageRow that names both, and a line in desktop/WrenlowPages.cpp. The
// window's texts are UTF-8, so that every letter is seen; os::Utf8FromText makes it of what is in the code
// page.
#pragma once

#include <memory>
#include <span>

#include "os/desktop/Dialog.h"

class WrenlowPage {
 public:
    virtual ~WrenlowPage() = default;

    // The page has come to the front of the shown window.
    virtual void Opened() {}
    // Another page has come to the front, or the window has been closed.
    virtual void Left() {}
    // So many times a second while it is in front; a window that draws itself more often than eyes can follow
    // takes its time from the relay. After a failure not again until the page is opened anew.
    virtual void Refresh() {}

    static constexpr int kRefreshMs = 200;
};

// The inside of a page in dialog units, when the window opens for the first time. Controls keep a margin of
// kPageMargin; they follow the window by their anchors, so that lists fill it.
inline constexpr short kPageWidth = 524;
inline constexpr short kPageHeight = 254;
inline constexpr short kPageMargin = 7;
inline constexpr short kPageInside = kPageWidth - 2 * kPageMargin;

// A page before its window is made.
struct WrenlowPageRow {
    const char* caption;
    // Names are unique in the window, so they begin with a word of the page's own. Column "page" is filled in
    // by the window.
    std::span<const os::Control> controls;
    // Sets columns and handlers. The dialog outlives the page.
    std::unique_ptr<WrenlowPage> (*make)(os::Dialog& dialog);
};

// For column "make".
template <typename Page>
std::unique_ptr<WrenlowPage> MakeWrenlowPage(os::Dialog& dialog) {
    return std::make_unique<Page>(dialog);
}
