// Owners for the graphics handles of Windows, one per way of giving a handle back.
#pragma once

#include <windows.h>

#include <memory>
#include <type_traits>

namespace os {

struct GdiObjectDeleter {
    void operator()(HGDIOBJ object) const { DeleteObject(object); }
};

// UniqueGdi<HFONT>, UniqueGdi<HBRUSH> and so on.
template <typename Handle>
using UniqueGdi = std::unique_ptr<std::remove_pointer_t<Handle>, GdiObjectDeleter>;

struct MemoryDcDeleter {
    void operator()(HDC context) const { DeleteDC(context); }
};
using UniqueMemoryDc = std::unique_ptr<std::remove_pointer_t<HDC>, MemoryDcDeleter>;

// Selects an object into a device context for the length of a scope.
class Selected {
 public:
    Selected(HDC context, HGDIOBJ object) : context_(context), before_(SelectObject(context, object)) {}
    ~Selected() { SelectObject(context_, before_); }
    Selected(const Selected&) = delete;
    Selected& operator=(const Selected&) = delete;

 private:
    HDC context_;
    HGDIOBJ before_;
};

// The screen's device context, for measuring.
class ScreenDc {
 public:
    ScreenDc() : context_(GetDC(nullptr)) {}
    ~ScreenDc() { ReleaseDC(nullptr, context_); }
    ScreenDc(const ScreenDc&) = delete;
    ScreenDc& operator=(const ScreenDc&) = delete;
    operator HDC() const { return context_; }

 private:
    HDC context_;
};

}  // namespace os
