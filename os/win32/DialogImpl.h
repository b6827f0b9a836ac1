// The state behind a dialog's windows, shared by the dialog's calls (Dialog.cpp) and what the windows report
// (DialogWindow.cpp).
#pragma once

#include <windows.h>
// after windows.h
#include <commctrl.h>

#include <vector>

#include "os/Dialog.h"
#include "os/DialogRows.h"

namespace os {

struct Dialog::Impl {
    struct ControlState {
        HWND window = nullptr;
        bool told = true;   // no notification of it is on its way
        int lastValue = 0;  // of a slider, when its movement was told last
        Handler on;
        Handler onEnter;
        Handler onFull;
    };

    Dialog& self;
    const DialogTable& table;
    HWND window = nullptr;
    std::vector<HWND> pages;
    std::vector<ControlState> controls;
    int quiet = 0;  // above 0 while the program itself changes controls

    Impl(Dialog& dialog, const DialogTable& dialogTable);
    ~Impl();
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    // The control's window. Throws RuntimeError (InvalidArgument) when its kind does not fit.
    template <typename Fits>
    HWND Window(ControlId id, Fits fits) const {
        const auto row = RowOf(table, id);
        if (!fits(table.controls[row].kind)) ThrowInvalidArgument();
        return controls[row].window;
    }
    HWND Window(ControlId id, ControlKind kind) const {
        return Window(id, [kind](ControlKind other) { return other == kind; });
    }

    int Value(std::size_t row) const;
    void SetValue(std::size_t row, int value);
    void ShowCurrentPage();
    void FocusFirst();
    void FocusOn(HWND control);

    // What the windows report. Each can end in a handler that destroys the dialog, so it is the last thing
    // that its caller does.
    void Raise(std::size_t row, Handler ControlState::*event);
    void PressOrClose(std::size_t row);
    void PressEscape();
    void WhenCommand(int windowId, UINT notification);
    void WhenNotify(const NMHDR& header);
    void WhenScrolled(HWND slider);
    bool WhenKey(const MSG& message);

 private:
    void MakePages(const Control& tabStrip, HWND tabs);
    void MakeControl(std::size_t row);
    std::size_t RowOfWindow(HWND control) const;  // the number of rows when it is none of ours
    void PostRaise(std::size_t row, bool full);
    bool TurnPage(int step);
};

// Lets the code beside the class name its state.
struct DialogAccess {
    using Impl = Dialog::Impl;
    static Impl& Of(const Dialog& dialog) { return *dialog.impl_; }
    // nullptr when the window is no dialog of ours, or one whose Dialog is gone.
    static Dialog* OfWindow(HWND window);
};

// What the program does to a dialog's controls while it lives raises nothing.
class Quiet {
 public:
    explicit Quiet(int& count) : count_(count) { ++count_; }
    ~Quiet() { --count_; }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

 private:
    int& count_;
};

}  // namespace os
