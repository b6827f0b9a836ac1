// frmWrenlow: the program's window. It is a tab strip and a button; all else are pages, which know nothing of
// each other (app/windows/WrenlowPage.h). It remembers its place and size for the user.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "app/windows/WrenlowPage.h"
#include "net/EventLoop.h"
#include "os/desktop/Dialog.h"

// In the order of their tabs.
std::span<const WrenlowPageRow* const> WrenlowPages();

class frmWrenlow {
 public:
    explicit frmWrenlow(std::span<const WrenlowPageRow* const> pages = WrenlowPages());
    ~frmWrenlow();
    frmWrenlow(const frmWrenlow&) = delete;
    frmWrenlow& operator=(const frmWrenlow&) = delete;

    // Opens the window where it was the last time, on the page that it was left on.
    void Start();
    // The same, on the page of that caption if there is one.
    void Start(const std::string& caption);

    os::Dialog& Window() { return dialog_; }

 private:
    // The table of a dialog that is put together from its pages; lives as long as the dialog.
    struct Table {
        explicit Table(std::span<const WrenlowPageRow* const> pages);

        std::string captions;
        std::vector<os::Control> controls;
        os::DialogTable table;
    };

    void SSTab1_Click();
    void cmdClose_Click();
    void timer_Tick();
    void OpenPage(WrenlowPage* page);
    void KeepPlace() const;

    std::span<const WrenlowPageRow* const> rows_;
    Table table_;
    os::Dialog dialog_;
    std::vector<std::unique_ptr<WrenlowPage>> pages_;
    WrenlowPage* open_ = nullptr;
    net::Timer timer_;
};
