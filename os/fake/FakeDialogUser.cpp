#include "os/fake/FakeDialog.h"
#include "os/fake/FakeDialogImpl.h"

namespace os::fake {
namespace {

using Impl = DialogAccess::Impl;
using Kind = ControlKind;

bool HasCaption(const Impl* dialog, const std::string& caption) {
    return dialog->shown && dialog->table.caption == caption;
}

std::size_t ReachOneOf(const Impl& dialog, ControlId control, bool (*fits)(Kind)) {
    const auto i = dialog.Reach(control);
    if (!fits(dialog.table.controls[i].kind))
        throw std::logic_error("not a thing to do to " + std::string(control.name));
    return i;
}

bool IsPressed(Kind kind) {
    return IsButton(kind) || IsMarked(kind);
}

bool IsChosenFrom(Kind kind) {
    return kind == Kind::DropDownList || kind == Kind::TabStrip || kind == Kind::Slider;
}

}  // namespace

Dialog& ShownDialog(const std::string& caption) {
    const auto& all = Impl::All();
    const auto last = std::find_if(all.rbegin(), all.rend(),
                                   [&](const Impl* dialog) { return HasCaption(dialog, caption); });
    if (last == all.rend()) throw std::logic_error("no dialog is shown with the caption " + caption);
    return (*last)->self;
}

int ShownDialogCount(const std::string& caption) {
    const auto& all = Impl::All();
    return static_cast<int>(std::count_if(all.begin(), all.end(),
                                          [&](const Impl* dialog) { return HasCaption(dialog, caption); }));
}

void DialogUser::Press(ControlId control) {
    auto& impl = DialogAccess::Of(dialog_);
    const auto i = ReachOneOf(impl, control, IsPressed);
    const auto kind = impl.table.controls[i].kind;
    if (IsButton(kind)) return impl.PressButton(i);
    impl.focused = i;
    impl.SetValue(i, kind == Kind::OptionButton || impl.controls[i].value == 0);
    impl.Raise(i, &ControlState::on);
}

void DialogUser::Type(ControlId control, const std::string& text) {
    auto& impl = DialogAccess::Of(dialog_);
    const auto i = ReachOneOf(impl, control, IsText);
    auto& state = impl.controls[i];
    impl.focused = i;
    state.text = text.substr(0, state.limit);
    // The change is raised first and may already close or even destroy the dialog.
    const auto onFull = text.size() > state.limit ? state.onFull : Dialog::Handler();
    impl.Raise(i, &ControlState::on);
    if (onFull) Trap("Dialog:Full", onFull);
}

void DialogUser::Choose(ControlId control, int position) {
    auto& impl = DialogAccess::Of(dialog_);
    const auto i = ReachOneOf(impl, control, IsChosenFrom);
    impl.focused = i;
    impl.SetValue(i, position);
    impl.Raise(i, &ControlState::on);
}

void DialogUser::SelectRows(ControlId control, const std::vector<int>& rows) {
    auto& impl = DialogAccess::Of(dialog_);
    const auto i = ReachOneOf(impl, control, [](Kind kind) { return kind == Kind::ListView; });
    impl.focused = i;
    impl.SetValue(i, -1);
    for (const int row : rows) impl.controls[i].selected.at(static_cast<std::size_t>(row)) = true;
    impl.Raise(i, &ControlState::on);
}

void DialogUser::PressEnter(ControlId control) {
    auto& impl = DialogAccess::Of(dialog_);
    const auto i = impl.Reach(control);
    impl.focused = i;
    if (impl.controls[i].onEnter) return impl.Raise(i, &ControlState::onEnter);
    if (impl.table.controls[i].kind == Kind::MultiLineText)
        return Type(control, dialog_.Text(control) + "\r\n");
    if (IsButton(impl.table.controls[i].kind)) return impl.PressButton(i);
    impl.PressFirst(Kind::DefaultButton);
}

void DialogUser::PressEscape() {
    auto& impl = DialogAccess::Of(dialog_);
    if (!impl.shown) throw std::logic_error("Esc in a dialog that is not shown");
    const bool canCancel = FirstOfKind(impl.table, Kind::CancelButton) < impl.controls.size();
    impl.PressFirst(canCancel ? Kind::CancelButton : Kind::DefaultButton);
}

bool DialogUser::Sees(ControlId control) const {
    const auto& impl = DialogAccess::Of(dialog_);
    return impl.shown && impl.Sees(impl.Find(control));
}

bool DialogUser::HasFocus(ControlId control) const {
    const auto& impl = DialogAccess::Of(dialog_);
    return impl.shown && impl.focused == impl.Find(control);
}

}  // namespace os::fake
