#include "os/desktop/MainWindow.h"

#include "os/win32/HiddenWindow.h"

namespace os {

struct MainWindow::Impl : HiddenWindow {
    Impl(MainWindow& owner, const std::string& title) : HiddenWindow(title.c_str()), owner_(owner) {}

    std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM) override {
        switch (message) {
            case WM_QUERYENDSESSION:
                return TRUE;
            case WM_ENDSESSION:
                owner_.EndSession(wParam != FALSE);
                return 0;
            case WM_CLOSE:
                owner_.CloseRequested();
                return 0;
            default:
                return {};
        }
    }

    MainWindow& owner_;
};

MainWindow::MainWindow(const std::string& title) : impl_(std::make_unique<Impl>(*this, title)) {}
MainWindow::~MainWindow() = default;

WindowHandle MainWindow::Handle() const {
    return reinterpret_cast<WindowHandle>(impl_->Handle());
}

}  // namespace os
