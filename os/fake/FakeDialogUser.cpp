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
    return kind == Kind::DropDownList || kind == Kind::TabStrip || kind == Kind::Slider || IsList(kind);
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
    state.losesLetters = false;
    // The change is raised first and may already close or even destroy the dialog.
    const auto onFull = text.size() > state.limit ? state.onFull : Dialog::Handler();
    impl.Raise(i, &ControlState::on);
    if (onFull) Trap("Dialog:Full", onFull);
}

void DialogUser::TypeBeyondCodePage(ControlId control) {
    Type(control, "C:\\?ukasz");
    DialogAccess::Of(dialog_).Get(control).losesLetters = true;
}

void DialogUser::Choose(ControlId control, int position) {
    auto& impl = DialogAccess::Of(dialog_);
    const auto i = ReachOneOf(impl, control, IsChosenFrom);
    impl.focused = i;
    impl.SetValue(i, position);
    impl.Raise(i, &ControlState::on);
}

void DialogUser::PressDelete(ControlId control) {
    auto& impl = DialogAccess::Of(dialog_);
    const auto i = ReachOneOf(impl, control, IsList);
    impl.focused = i;
    impl.Raise(i, &ControlState::onDelete);
}

void DialogUser::ScrollTo(ControlId list, int row) {
    auto& impl = DialogAccess::Of(dialog_);
    impl.ScrollTo(ReachOneOf(impl, list, IsList), row);
}

int DialogUser::FirstSeen(ControlId list) const {
    return DialogAccess::Of(dialog_).Get(list, IsList).top;
}

int DialogUser::LastSeen(ControlId list) const {
    return std::min(FirstSeen(list) + Impl::kRowsSeen, dialog_.RowCount(list)) - 1;
}

void DialogUser::Resize(int width, int height) {
    auto& impl = DialogAccess::Of(dialog_);
    if (!impl.shown || !CanBeResized(impl.table)) throw std::logic_error("a window of one size");
    impl.place.width = std::max<int>(width, impl.table.leastWidth);
    impl.place.height = std::max<int>(height, impl.table.leastHeight);
}

DialogRect DialogUser::PlaceOf(ControlId control) const {
    const auto& impl = DialogAccess::Of(dialog_);
    const DialogRect& units = impl.table.controls[impl.Find(control)].rect;
    struct {
        int left, top, right, bottom;
    } place{units.left, units.top, units.left + units.width, units.top + units.height};
    Stretch(units.anchors, impl.place.width - impl.table.width, impl.place.height - impl.table.height, place);
    const auto narrow = [](int value) { return static_cast<short>(value); };
    return {narrow(place.left), narrow(place.top), narrow(place.right - place.left),
            narrow(place.bottom - place.top)};
}

std::string DialogUser::Marked(ControlId control) const {
    const auto& state = DialogAccess::Of(dialog_).Get(control);
    return state.text.substr(state.markBegin, state.markLength);
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

bool DialogUser::IsActive() const {
    return Impl::active == &DialogAccess::Of(dialog_);
}

}  // namespace os::fake
