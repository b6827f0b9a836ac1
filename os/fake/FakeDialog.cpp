#include <utility>

#include "os/fake/FakeDialogImpl.h"

namespace os {

using Kind = ControlKind;

Dialog::Dialog(const DialogTable& table) : impl_(new Impl{*this, table, {}, 0, false, {}}) {
    impl_->controls.resize(table.controls.size());
    for (std::size_t i = 0; i < table.controls.size(); ++i) impl_->ApplyInitial(i);
    Impl::All().push_back(impl_.get());
}

Dialog::~Dialog() {
    std::erase(Impl::All(), impl_.get());
    if (Impl::active == impl_.get()) Impl::active = nullptr;
}

const DialogTable& Dialog::Table() const {
    return impl_->table;
}

WindowHandle Dialog::Handle() const {
    return reinterpret_cast<WindowHandle>(impl_.get());
}

void Dialog::Show(Opening opening) {
    auto& all = Impl::All();
    std::erase(all, impl_.get());
    all.push_back(impl_.get());
    if (opening.takesFocus) Impl::active = impl_.get();
    if (std::exchange(impl_->shown, true)) return;
    impl_->opening = opening;
    if (CanBeResized(impl_->table) && opening.place.width > 0) impl_->place = opening.place;
    for (std::size_t i = 0; i < impl_->controls.size(); ++i)
        if (impl_->Sees(i) && impl_->controls[i].enabled && TakesFocusFirst(impl_->table.controls[i].kind)) {
            impl_->focused = i;
            return;
        }
}

void Dialog::Close() {
    impl_->shown = false;
}

bool Dialog::IsShown() const {
    return impl_->shown;
}

WindowPlace Dialog::Place() const {
    return CanBeResized(impl_->table) ? impl_->place : WindowPlace();
}

void Dialog::On(ControlId control, Handler handler) {
    impl_->Get(control, TakesInput).on = std::move(handler);
}

void Dialog::OnEnter(ControlId control, Handler handler) {
    impl_->Get(control, [](Kind kind) { return kind == Kind::TextBox || IsList(kind); }).onEnter =
        std::move(handler);
}

void Dialog::OnFull(ControlId control, Handler handler) {
    impl_->Get(control, IsText).onFull = std::move(handler);
}

void Dialog::OnDelete(ControlId control, Handler handler) {
    impl_->Get(control, IsList).onDelete = std::move(handler);
}

std::string Dialog::Text(ControlId control) const {
    const auto& state = impl_->Get(control);
    if (impl_->table.controls[impl_->Find(control)].kind != Kind::DropDownList) return state.text;
    return state.value < 0 ? std::string() : state.entries[static_cast<std::size_t>(state.value)];
}

void Dialog::SetText(ControlId control, const std::string& text) {
    auto& state = impl_->Get(control, [](Kind kind) { return kind != Kind::DropDownList; });
    state.text = text;
    state.losesLetters = false;
}

bool Dialog::LosesLetters(ControlId control) const {
    return impl_->Get(control, IsText).losesLetters;
}

void Dialog::LimitText(ControlId control, std::size_t bytes) {
    impl_->Get(control, IsText).limit = bytes;
}

int Dialog::Value(ControlId control) const {
    return impl_->Get(control).value;
}

void Dialog::SetValue(ControlId control, int value) {
    impl_->SetValue(impl_->Find(control), value);
}

void Dialog::SetRange(ControlId control, int lowest, int highest) {
    auto& state = impl_->Get(control, IsRanged);
    state.lowest = lowest;
    state.highest = highest;
    state.value = std::clamp(state.value, lowest, highest);
}

void Dialog::ClearEntries(ControlId control) {
    auto& state = impl_->Get(control, Kind::DropDownList);
    state.entries.clear();
    state.value = -1;
}

void Dialog::AddEntry(ControlId control, const std::string& text) {
    impl_->Get(control, Kind::DropDownList).entries.push_back(text);
}

int Dialog::EntryCount(ControlId control) const {
    return static_cast<int>(impl_->Get(control, Kind::DropDownList).entries.size());
}

std::string Dialog::Entry(ControlId control, int position) const {
    const auto& entries = impl_->Get(control, Kind::DropDownList).entries;
    if (position < 0 || position >= static_cast<int>(entries.size())) ThrowInvalidArgument();
    return entries[static_cast<std::size_t>(position)];
}

void Dialog::AddColumn(ControlId control, const std::string&, int) {
    ++impl_->Get(control, IsList).columns;
}

void Dialog::ClearRows(ControlId control) {
    auto& state = impl_->Get(control, Kind::ListView);
    state.rows.clear();
    state.value = -1;
}

void Dialog::AddRow(ControlId control, const std::vector<std::string>& cells) {
    auto& state = impl_->Get(control, Kind::ListView);
    if (cells.size() > state.columns) ThrowInvalidArgument();
    state.rows.push_back(cells);
    state.rows.back().resize(state.columns);
}

void Dialog::RemoveRow(ControlId control, int row) {
    auto& state = impl_->Get(control, Kind::ListView);
    if (row < 0 || row >= RowCount(control)) ThrowInvalidArgument();
    state.rows.erase(state.rows.begin() + row);
    if (state.value == row)
        state.value = std::min(row, RowCount(control) - 1);
    else if (state.value > row)
        --state.value;
}

int Dialog::RowCount(ControlId control) const {
    impl_->Get(control, IsList);
    return impl_->RowCount(impl_->Find(control));
}

std::string Dialog::Cell(ControlId control, int row, int column) const {
    const auto& state = impl_->Get(control, IsList);
    if (row < 0 || row >= RowCount(control) || column < 0 || column >= static_cast<int>(state.columns))
        ThrowInvalidArgument();
    if (state.cellText) return Trap("Dialog:Cell", [&] { return state.cellText(row, column); });
    return state.rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
}

void Dialog::ProvideRows(ControlId control, CellText text) {
    impl_->Get(control, Kind::VirtualList).cellText = std::move(text);
}

void Dialog::SetRows(ControlId control, int count, int gone) {
    auto& state = impl_->Get(control, Kind::VirtualList);
    const bool follows = state.value < 0 && state.top + Impl::kRowsSeen >= state.virtualRows;
    state.virtualRows = count;
    state.value = state.value >= gone && state.value - gone < count ? state.value - gone : -1;
    impl_->ScrollTo(impl_->Find(control), follows ? count : state.top - gone);
}

void Dialog::ShowRow(ControlId control, int row) {
    const auto& state = impl_->Get(control, IsList);
    if (row < state.top) impl_->ScrollTo(impl_->Find(control), row);
    if (row >= state.top + Impl::kRowsSeen) impl_->ScrollTo(impl_->Find(control), row - Impl::kRowsSeen + 1);
}

void Dialog::MarkText(ControlId control, std::size_t begin, std::size_t length) {
    auto& state = impl_->Get(control, [](Kind kind) { return IsText(kind) || IsReadOnly(kind); });
    state.markBegin = std::min(begin, state.text.size());
    state.markLength = length;
}

void Dialog::Enable(ControlId control, bool enabled) {
    impl_->Get(control).enabled = enabled;
}

bool Dialog::IsEnabled(ControlId control) const {
    return impl_->Get(control).enabled;
}

void Dialog::ShowControl(ControlId control, bool shown) {
    impl_->Get(control).shown = shown;
}

void Dialog::Focus(ControlId control) {
    impl_->Get(control, TakesInput);
    impl_->focused = impl_->Find(control);
}

void SetDialogOwner(WindowHandle) {}

}  // namespace os
