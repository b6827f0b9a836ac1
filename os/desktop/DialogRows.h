// DialogRows: what every implementation of os/desktop/Dialog.h reads out of a table in the same way.
// Presenters do not need it.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string_view>
#include <utility>

#include "base/RuntimeError.h"
#include "os/desktop/Dialog.h"

namespace os {

constexpr bool IsText(ControlKind kind) {
    return kind == ControlKind::TextBox || kind == ControlKind::MultiLineText;
}

constexpr bool IsReadOnly(ControlKind kind) {
    return kind == ControlKind::ReadOnlyText || kind == ControlKind::FixedText;
}

constexpr bool IsList(ControlKind kind) {
    return kind == ControlKind::ListView || kind == ControlKind::VirtualList;
}

constexpr bool IsRanged(ControlKind kind) {
    return kind == ControlKind::Slider || kind == ControlKind::ProgressBar;
}

constexpr bool IsButton(ControlKind kind) {
    return kind == ControlKind::Button || kind == ControlKind::DefaultButton ||
           kind == ControlKind::CancelButton;
}

constexpr bool IsMarked(ControlKind kind) {
    return kind == ControlKind::CheckBox || kind == ControlKind::OptionButton;
}

constexpr bool TakesInput(ControlKind kind) {
    return kind != ControlKind::Label && kind != ControlKind::UnseenLabel &&
           kind != ControlKind::IconPicture && kind != ControlKind::ProgressBar &&
           kind != ControlKind::GroupFrame;
}

// Whether it may be the control that has the focus when the window opens.
constexpr bool TakesFocusFirst(ControlKind kind) {
    return TakesInput(kind) && !IsReadOnly(kind);
}

constexpr bool CanBeResized(const DialogTable& table) {
    return table.leastWidth > 0;
}

// Where a control's rectangle goes (left, top, right, bottom) in a window that is so much larger than its
// table.
template <typename Number, typename Rect>
constexpr void Stretch(unsigned char anchors, Number wider, Number higher, Rect& rect) {
    if ((anchors & kRight) != 0) rect.right += wider;
    if ((anchors & kLeft) == 0) rect.left += wider;
    if ((anchors & kBottom) != 0) rect.bottom += higher;
    if ((anchors & kTop) == 0) rect.top += higher;
}

// The position of the control's row. Throws RuntimeError (InvalidArgument) when there is none.
inline std::size_t RowOf(const DialogTable& table, ControlId id) {
    for (std::size_t row = 0; row < table.controls.size(); ++row)
        if (id.name == table.controls[row].name && id.index == table.controls[row].index) return row;
    ThrowInvalidArgument();
}

// The first row of a kind; the number of rows when there is none.
inline std::size_t FirstOfKind(const DialogTable& table, ControlKind kind) {
    const auto& rows = table.controls;
    const auto found =
        std::find_if(rows.begin(), rows.end(), [=](const Control& row) { return row.kind == kind; });
    return static_cast<std::size_t>(found - rows.begin());
}

// The rows of the option button's group: first, and one past the last.
inline std::pair<std::size_t, std::size_t> GroupOf(const DialogTable& table, std::size_t row) {
    const auto& rows = table.controls;
    const std::string_view name = rows[row].name;
    const auto belongs = [&](std::size_t other) {
        return rows[other].kind == ControlKind::OptionButton && rows[other].name == name;
    };
    auto first = row;
    while (first > 0 && belongs(first - 1)) --first;
    auto end = row + 1;
    while (end < rows.size() && belongs(end)) ++end;
    return {first, end};
}

inline int PageCount(const Control& tabStrip) {
    const std::string_view captions = tabStrip.caption;
    return 1 + static_cast<int>(std::count(captions.begin(), captions.end(), '|'));
}

// Calls `take` with the caption of each page.
template <typename Take>
void ForEachPage(const Control& tabStrip, Take take) {
    std::string_view rest = tabStrip.caption;
    for (int left = PageCount(tabStrip); left > 0; --left) {
        const auto end = std::min(rest.find('|'), rest.size());
        take(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
}

// The first Value() that a row asks for; 0 for kinds that have none.
inline int InitialValue(const Control& row) {
    const std::string_view initial = row.initial;
    if (IsMarked(row.kind)) return initial == "1" || initial == "True";
    int value = 0;
    if (IsRanged(row.kind)) std::from_chars(initial.data(), initial.data() + initial.size(), value);
    return value;
}

}  // namespace os
