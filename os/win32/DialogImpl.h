// The state behind a dialog's windows, shared by the dialog's calls (Dialog.cpp) and what the windows report
// (DialogWindow.cpp).
#pragma once

#include <windows.h>
// after windows.h
#include <commctrl.h>

#include <optional>
#include <string>
#include <vector>

#include "os/desktop/Dialog.h"
#include "os/desktop/DialogRows.h"
#include "os/win32/DialogTemplate.h"
#include "os/win32/WideText.h"

namespace os {

struct Dialog::Impl {
    struct ControlState {
        HWND window = nullptr;
        bool told = true;   // no notification of it is on its way
        int lastValue = 0;  // of a slider, when its movement was told last
        std::size_t limit = kDefaultTextLimit;
        Handler on;
        Handler onEnter;
        Handler onFull;
        Handler onDelete;
        std::string picture;  // its name
        CellText cellText;
        int firstKnown = 0;  // row of a virtual list from which on `known` has what was drawn last
        std::vector<std::string> known;
        int lastColumn = 0;  // of a list: the width of its last column as the presenter wants it
    };

    Dialog& self;
    const DialogTable& table;
    const UINT codePage = CodePageOf(table);
    HWND window = nullptr;
    std::vector<HWND> pages;
    std::vector<ControlState> controls;
    int quiet = 0;     // above 0 while the program itself changes controls
    int scrolled = 0;  // pixels that the inside has been moved up by
    HFONT fixedFont = nullptr;
    HFONT fixedFontOf = nullptr;  // the dialog's, which it was made after

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

    std::wstring Wide(std::string_view text) const { return WideOf(codePage, text); }
    std::string FromWide(std::wstring_view text) const { return BytesOf(codePage, text, true); }
    std::string TextOf(HWND control) const;

    int Value(std::size_t row) const;
    void SetValue(std::size_t row, int value);
    void ShowPicture(std::size_t row, std::string_view name);
    void ShowCurrentPage();
    void FocusFirst();
    void FocusOn(HWND control);

    // Before the window opens (DialogPlacement.cpp): the middle of the pointer's screen, and so many title
    // bars further. A window that is higher than the screen gets a scroll bar.
    void Place(const Opening& opening);
    // For a window with a scroll bar; others stay as they are.
    void ScrollTo(int position);
    void BringIntoView(HWND control);
    void WhenBarMoved(int request);

    // Of a window that can be resized (DialogResizing.cpp); nothing happens to others.
    void Arrange();
    void TellLeastSize(MINMAXINFO& limits) const;
    INT_PTR WhenLooksChange(HWND changed, UINT message, LPARAM lParam);
    void FitInside(const RECT& area);
    void PlaceAt(const WindowPlace& place);
    void PlacePages();
    void GiveFixedFonts();

    // A cell of the virtual list in a row of the table (DialogLists.cpp), and the answer to what a list asks;
    // nothing when it has not asked.
    void FillLastColumn(std::size_t row) const;
    void DrawRows(std::size_t row, int top, int bottom);
    std::string CellOf(std::size_t row, int listRow, int column) const;
    std::optional<LONG_PTR> WhenListAsks(std::size_t row, NMHDR& header);

    // What the windows report. Each can end in a handler that destroys the dialog, so it is the last thing
    // that its caller does.
    void Raise(std::size_t row, Handler ControlState::*event);
    void PressOrClose(std::size_t row);
    void PressEscape();
    void WhenCommand(int windowId, UINT notification);
    void WhenNotify(HWND parent, NMHDR& header);
    void WhenScrolled(HWND slider);
    bool WhenKey(const MSG& message);

 private:
    void MakePages(const Control& tabStrip, HWND tabs);
    void MakeControl(std::size_t row);
    std::size_t RowOfWindow(HWND control) const;  // the number of rows when it is none of ours
    void PostRaise(std::size_t row, bool full);
    void FitHeight(int most);
    bool CutToLimit(std::size_t row);
    bool CopyReadOnlyText(HWND focused);
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
