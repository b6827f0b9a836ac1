// Icons: pictures that lie in the program file as resources.
#pragma once

#include <cstdint>
#include <utility>

namespace os {

// An icon of the operating system; 0 is none. Nothing outside os/ looks into it.
using IconHandle = std::uintptr_t;

// In pixels; (0, 0) lies on the first screen, which has the notification area.
struct ScreenPoint {
    int x = 0;
    int y = 0;
};

// Width and height, in pixels, that menus and the notification area use on the screen that this place lies
// on. It changes when the user gives the screen another scale.
int SmallIconSize(ScreenPoint place);

// Owns an icon of the program's resources.
class Icon {
 public:
    Icon() = default;  // none
    // In the size that fits best (icons are square); none when there is no such resource.
    Icon(int resourceId, int pixels);
    Icon(Icon&& other) noexcept : handle_(std::exchange(other.handle_, 0)) {}
    Icon& operator=(Icon&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~Icon();

    IconHandle Handle() const { return handle_; }

 private:
    IconHandle handle_ = 0;
};

}  // namespace os
