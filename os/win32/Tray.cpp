#include "os/desktop/Tray.h"

#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <utility>

#include "os/win32/HiddenWindow.h"

namespace os {
namespace {

// The record's first form ends with the tip; newer forms have a longer tip and more behind it.
constexpr DWORD kRecordSize = NOTIFYICONDATAA_V1_SIZE;
#ifndef _WIN64
static_assert(kRecordSize == 88);
#endif
static_assert(sizeof(NOTIFYICONDATAA::szTip) >= kTrayTipLength);

// The resource number of the program's icon: the first, which Windows shows for the file too.
constexpr int kProgramIcon = 1;

}  // namespace

struct TrayWindow::Impl final : HiddenWindow {
    explicit Impl(TrayWindow& owner)
        : HiddenWindow("Wrenlow tray"),
          events(owner),
          taskbarCreated(RegisterWindowMessageA("TaskbarCreated")),
          systemsIcon(LoadIconA(nullptr, IDI_APPLICATION)) {}

    bool Notify(DWORD what, const TrayRecord& record) const {
        NOTIFYICONDATAA data{};
        data.cbSize = kRecordSize;
        data.hWnd = Handle();
        data.uID = record.id;
        data.uFlags = record.flags;
        data.uCallbackMessage = record.callbackMessage;
        data.hIcon = reinterpret_cast<HICON>(record.icon);
        std::copy(record.tip.begin(), record.tip.end(), data.szTip);
        return Shell_NotifyIconA(what, &data) != FALSE;
    }

    // Both handlers may destroy this window: nothing follows them.
    std::optional<LRESULT> OnMessage(UINT message, WPARAM, LPARAM lParam) override {
        if (added.callbackMessage != 0 && message == added.callbackMessage) {
            events.Callback(LOWORD(lParam));
            return 0;
        }
        if (message == taskbarCreated) {
            events.TaskbarCreated();
            return 0;
        }
        return std::nullopt;
    }

    TrayWindow& events;
    const UINT taskbarCreated;
    Icon icon;
    int iconSize = 0;
    const HICON systemsIcon;  // when the program has none
    TrayRecord added;         // what Remove takes away
};

TrayWindow::TrayWindow() : impl_(std::make_unique<Impl>(*this)) {}

TrayWindow::~TrayWindow() {
    Remove();
}

IconHandle TrayWindow::OwnIcon() {
    const int size = SmallIconSize({});
    if (std::exchange(impl_->iconSize, size) != size) impl_->icon = Icon(kProgramIcon, size);
    const auto own = impl_->icon.Handle();
    return own != 0 ? own : reinterpret_cast<IconHandle>(impl_->systemsIcon);
}

bool TrayWindow::Add(const TrayRecord& record) {
    impl_->added = record;
    return impl_->Notify(NIM_ADD, record);
}

bool TrayWindow::Modify(const TrayRecord& record) {
    return impl_->Notify(NIM_MODIFY, record);
}

void TrayWindow::Remove() {
    if (impl_->added.flags == 0) return;
    impl_->Notify(NIM_DELETE, impl_->added);
    impl_->added = TrayRecord();
}

}  // namespace os
