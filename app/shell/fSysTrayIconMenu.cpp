#include "app/shell/fSysTrayIconMenu.h"

#include <algorithm>

#include "os/desktop/Foreground.h"
#include "os/desktop/Shell.h"

namespace {

// The mouse messages that the callback's horizontal coordinate carries (WM_MOUSEMOVE and so on).
enum RawMessage : std::uint32_t {
    kMouseMove = 0x200,
    kLeftDown = 0x201,
    kLeftUp = 0x202,
    kLeftDouble = 0x203,
    kRightDown = 0x204,
    kRightUp = 0x205,
    kRightDouble = 0x206,
};

constexpr std::int32_t kLeftButton = 1;
constexpr std::int32_t kRightButton = 2;

void SetTip(os::TrayRecord& record, const std::string& text) {
    record.tip.fill('\0');
    std::copy_n(text.begin(), std::min(text.size(), record.tip.size() - 1), record.tip.begin());
}

}  // namespace

// Marks the host while its menu is open, and learns from it when it is destroyed meanwhile.
struct fSysTrayIconMenu::OpenMenu {
    explicit OpenMenu(fSysTrayIconMenu& host) : host_(host) { host_.open_ = this; }
    ~OpenMenu() {
        if (!hostIsGone) host_.open_ = nullptr;
    }
    OpenMenu(const OpenMenu&) = delete;
    OpenMenu& operator=(const OpenMenu&) = delete;

    bool hostIsGone = false;

 private:
    fSysTrayIconMenu& host_;
};

fSysTrayIconMenu::~fSysTrayIconMenu() {
    if (open_ != nullptr) open_->hostIsGone = true;
    Form_QueryUnload();
}

void fSysTrayIconMenu::Initialise(os::WindowHandle hWndOwner) {
    owner_ = hWndOwner;
    record_.id = kIconId;
    record_.flags = kRecordFlags;
    record_.callbackMessage = kCallbackMessage;
    ChooseIcon();
    SetTip(record_, os::ProgramDescription());

    window_.Callback.Bind<&fSysTrayIconMenu::window_Callback>(*this);
    window_.TaskbarCreated.Bind<&fSysTrayIconMenu::window_TaskbarCreated>(*this);
    retry_.Tick.Bind<&fSysTrayIconMenu::retry_Tick>(*this);
    menu_.hWndOwner(hWndOwner);
    retriesLeft_ = kRetries;
    AddIcon();
}

void fSysTrayIconMenu::ToolTip(const std::string& text) {
    SetTip(record_, text);
    window_.Modify(record_);
}

void fSysTrayIconMenu::IconHandle(os::IconHandle icon) {
    givenIcon_ = icon;
    ChooseIcon();
    window_.Modify(record_);
}

void fSysTrayIconMenu::ChooseIcon() {
    record_.icon = givenIcon_ != 0 ? givenIcon_ : window_.OwnIcon();
}

std::int32_t fSysTrayIconMenu::AddMenuItem(const std::string& sCaption, const std::string& sKey,
                                           bool bDefault, std::int32_t lItemData, std::int32_t lParentIndex,
                                           std::int32_t lIconIndex, bool bChecked, bool bEnabled) {
    return menu_.AddMenuItem(sCaption, sKey, bDefault, lItemData, lParentIndex, lIconIndex, bChecked,
                             bEnabled);
}

void fSysTrayIconMenu::ShowMenu() {
    if (open_ != nullptr) return;
    std::int32_t index = 0;
    {
        OpenMenu open(*this);
        os::BringToForeground(owner_);
        const auto cursor = os::CursorPosition();
        index = menu_.ShowPopupMenu(cursor.x, cursor.y);
        if (open.hostIsGone) return;
    }
    if (index <= 0 || !menu_.Contains(index)) return;
    const auto key = menu_.ItemKey(index);  // a copy: the handler may change the menu
    MenuClick(index, key);
}

void fSysTrayIconMenu::Form_QueryUnload() {
    retry_.Stop();
    window_.TaskbarCreated.Reset();
    window_.Remove();
}

void fSysTrayIconMenu::window_Callback(std::uint32_t message) {
    switch (message) {
        case kMouseMove:
            return SysTrayMouseMove();
        case kLeftDown:
            return SysTrayMouseDown(kLeftButton);
        case kLeftUp:
            return SysTrayMouseUp(kLeftButton);
        case kLeftDouble:
            return SysTrayDoubleClick(kLeftButton);
        case kRightDown:
            return SysTrayMouseDown(kRightButton);
        case kRightUp:
            return SysTrayMouseUp(kRightButton);
        case kRightDouble:
            return SysTrayDoubleClick(kRightButton);
        default:
            return;
    }
}

void fSysTrayIconMenu::window_TaskbarCreated() {
    retriesLeft_ = kRetries;
    ChooseIcon();  // the scale of the screen may be another
    AddIcon();
}

void fSysTrayIconMenu::retry_Tick() {
    AddIcon();
}

void fSysTrayIconMenu::AddIcon() {
    retry_.Stop();
    // An icon that is still there cannot be added again: it is brought up to date instead.
    if (window_.Add(record_) || window_.Modify(record_)) return;
    if (retriesLeft_-- > 0) retry_.StartOnce(kRetryMs);
}
