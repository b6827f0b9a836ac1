// The state behind the fake dialogs, shared by the dialog's calls and the user's hand.
#pragma once

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "os/desktop/Dialog.h"
#include "os/desktop/DialogRows.h"
#include "os/desktop/MessageBox.h"

namespace os {

using Kind = ControlKind;

struct ControlState {
    std::string text;
    bool losesLetters = false;
    int value = 0;
    int lowest = 0;
    int highest = 100;
    std::size_t limit = kDefaultTextLimit;
    std::vector<std::string> entries;
    std::size_t columns = 0;
    std::vector<std::vector<std::string>> rows;
    int virtualRows = 0;
    int top = 0;  // the first row that is seen
    Dialog::CellText cellText;
    std::size_t markBegin = 0;
    std::size_t markLength = 0;
    bool enabled = true;
    bool shown = true;
    Dialog::Handler on;
    Dialog::Handler onEnter;
    Dialog::Handler onFull;
    Dialog::Handler onDelete;
};

struct Dialog::Impl {
    static constexpr int kRowsSeen = 3;  // of a virtual list

    Dialog& self;
    const DialogTable& table;
    std::vector<ControlState> controls;
    std::size_t focused = 0;
    bool shown = false;
    Opening opening;
    WindowPlace place = {0, 0, table.width, table.height, false};
    static inline Impl* active = nullptr;  // has the keyboard

    // Every dialog that exists, the one shown last at the end.
    static std::vector<Impl*>& All() {
        static std::vector<Impl*> all;
        return all;
    }

    std::size_t Find(ControlId id) const { return RowOf(table, id); }

    template <typename Fits>
    ControlState& Get(ControlId id, Fits fits) {
        const auto i = Find(id);
        if (!fits(table.controls[i].kind)) ThrowInvalidArgument();
        return controls[i];
    }
    ControlState& Get(ControlId id, Kind kind) {
        return Get(id, [kind](Kind other) { return other == kind; });
    }
    ControlState& Get(ControlId id) { return controls[Find(id)]; }

    int RowCount(std::size_t i) const {
        const bool isVirtual = table.controls[i].kind == Kind::VirtualList;
        return isVirtual ? controls[i].virtualRows : static_cast<int>(controls[i].rows.size());
    }

    // Of a virtual list: as far as its end lets it.
    void ScrollTo(std::size_t i, int row) {
        controls[i].top = std::clamp(row, 0, std::max(controls[i].virtualRows - kRowsSeen, 0));
    }

    void SetValue(std::size_t i, int value) {
        auto& control = controls[i];
        const Control& row = table.controls[i];
        switch (row.kind) {
            case Kind::CheckBox:
                control.value = value != 0;
                return;
            case Kind::OptionButton:
                if (value != 0) ReleaseGroup(i);
                control.value = value != 0;
                return;
            case Kind::DropDownList:
                if (value < -1 || value >= static_cast<int>(control.entries.size())) ThrowInvalidArgument();
                control.value = value;
                return;
            case Kind::ListView:
            case Kind::VirtualList:
                if (value < -1 || value >= RowCount(i)) ThrowInvalidArgument();
                control.value = value;
                return;
            case Kind::TabStrip:
                if (value < 0 || value >= PageCount(row)) ThrowInvalidArgument();
                control.value = value;
                return;
            case Kind::Slider:
            case Kind::ProgressBar:
                control.value = std::clamp(value, control.lowest, control.highest);
                return;
            default:
                ThrowInvalidArgument();
        }
    }

    void ReleaseGroup(std::size_t i) {
        const auto [first, end] = GroupOf(table, i);
        for (auto other = first; other < end; ++other) controls[other].value = 0;
    }

    void ApplyInitial(std::size_t i) {
        const Control& row = table.controls[i];
        controls[i].text = IsText(row.kind) ? row.initial : row.caption;
        if (row.kind == Kind::DropDownList || IsList(row.kind)) controls[i].value = -1;
        if (IsMarked(row.kind) || IsRanged(row.kind)) SetValue(i, InitialValue(row));
    }

    bool Sees(std::size_t i) const {
        const int page = table.controls[i].page;
        if (!controls[i].shown || table.controls[i].kind == Kind::UnseenLabel) return false;
        if (page == kNoPage) return true;
        const auto tabs = FirstOfKind(table, Kind::TabStrip);
        return tabs < controls.size() && controls[tabs].shown && controls[tabs].value == page;
    }

    // The control, if a user can reach it now.
    std::size_t Reach(ControlId id) const {
        const auto i = Find(id);
        const auto fail = [&](const char* why) {
            throw std::logic_error(std::string(id.name) + " of \"" + table.caption + "\" " + why);
        };
        if (!shown) fail("is in a dialog that is not shown");
        if (!Sees(i)) fail("cannot be seen");
        if (!controls[i].enabled) fail("is disabled");
        if (!TakesInput(table.controls[i].kind)) fail("takes no input");
        return i;
    }

    // Last thing in every caller: the handler may destroy the dialog.
    void Raise(std::size_t i, Handler ControlState::*event) {
        const BoxesBefore cause(self.Handle());
        if (const auto handler = controls[i].*event)
            Trap((std::string("Dialog:") + table.controls[i].name).c_str(), handler);
    }

    void PressButton(std::size_t i) {
        const auto kind = table.controls[i].kind;
        focused = i;
        if (!controls[i].on && (kind == Kind::DefaultButton || kind == Kind::CancelButton)) {
            shown = false;
            return;
        }
        Raise(i, &ControlState::on);
    }

    // What Enter or Esc presses; a disabled or hidden button is not pressed.
    void PressFirst(Kind kind) {
        const auto i = FirstOfKind(table, kind);
        if (i < controls.size() && controls[i].enabled && Sees(i)) PressButton(i);
    }
};

struct DialogAccess {
    using Impl = Dialog::Impl;
    static Impl& Of(const Dialog& dialog) { return *dialog.impl_; }
};

}  // namespace os
