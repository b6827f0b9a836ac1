#include <utility>

#include "os/fake/FakeDialogImpl.h"

namespace os {

using Kind = ControlKind;

Dialog::Dialog(const DialogTable& table) : impl_(new Impl{*this, table, {}, 0, false}) {
    impl_->controls.resize(table.controls.size());
    for (std::size_t i = 0; i < table.controls.size(); ++i) impl_->ApplyInitial(i);
    Impl::All().push_back(impl_.get());
}

Dialog::~Dialog() {
    std::erase(Impl::All(), impl_.get());
}

const DialogTable& Dialog::Table() const {
    return impl_->table;
}

WindowHandle Dialog::Handle() const {
    return reinterpret_cast<WindowHandle>(impl_.get());
}

void Dialog::Show() {
    auto& all = Impl::All();
    std::erase(all, impl_.get());
    all.push_back(impl_.get());
    if (std::exchange(impl_->shown, true)) return;
    for (std::size_t i = 0; i < impl_->controls.size(); ++i)
        if (impl_->Sees(i) && impl_->controls[i].enabled && TakesInput(impl_->table.controls[i].kind)) {
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

void Dialog::On(ControlId control, Handler handler) {
    impl_->Get(control, TakesInput).on = std::move(handler);
}

void Dialog::OnEnter(ControlId control, Handler handler) {
    impl_->Get(control, Kind::TextBox).onEnter = std::move(handler);
}

void Dialog::OnFull(ControlId control, Handler handler) {
    impl_->Get(control, IsText).onFull = std::move(handler);
}

std::string Dialog::Text(ControlId control) const {
    const auto& state = impl_->Get(control);
    if (impl_->table.controls[impl_->Find(control)].kind != Kind::DropDownList) return state.text;
    return state.value < 0 ? std::string() : state.entries[static_cast<std::size_t>(state.value)];
}

void Dialog::SetText(ControlId control, const std::string& text) {
    impl_->Get(control, [](Kind kind) { return kind != Kind::DropDownList; }).text = text;
}

void Dialog::LimitText(ControlId control, std::size_t bytes) {
    impl_->Get(control, IsText).limit = bytes;
}

int Dialog::Value(ControlId control) const {
    const auto& state = impl_->Get(control);
    if (impl_->table.controls[impl_->Find(control)].kind != Kind::ListView) return state.value;
    const auto first = std::find(state.selected.begin(), state.selected.end(), true);
    return first == state.selected.end() ? -1 : static_cast<int>(first - state.selected.begin());
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
    ++impl_->Get(control, Kind::ListView).columns;
}

void Dialog::ClearRows(ControlId control) {
    auto& state = impl_->Get(control, Kind::ListView);
    state.rows.clear();
    state.selected.clear();
}

void Dialog::AddRow(ControlId control, const std::vector<std::string>& cells) {
    auto& state = impl_->Get(control, Kind::ListView);
    if (cells.size() > state.columns) ThrowInvalidArgument();
    state.rows.push_back(cells);
    state.rows.back().resize(state.columns);
    state.selected.push_back(false);
}

void Dialog::RemoveRow(ControlId control, int row) {
    auto& state = impl_->Get(control, Kind::ListView);
    if (row < 0 || row >= RowCount(control)) ThrowInvalidArgument();
    state.rows.erase(state.rows.begin() + row);
    state.selected.erase(state.selected.begin() + row);
}

int Dialog::RowCount(ControlId control) const {
    return static_cast<int>(impl_->Get(control, Kind::ListView).rows.size());
}

std::string Dialog::Cell(ControlId control, int row, int column) const {
    const auto& state = impl_->Get(control, Kind::ListView);
    if (row < 0 || row >= RowCount(control) || column < 0 || column >= static_cast<int>(state.columns))
        ThrowInvalidArgument();
    return state.rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
}

bool Dialog::IsRowSelected(ControlId control, int row) const {
    const auto& state = impl_->Get(control, Kind::ListView);
    if (row < 0 || row >= RowCount(control)) ThrowInvalidArgument();
    return state.selected[static_cast<std::size_t>(row)];
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
