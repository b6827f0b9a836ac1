#include "os/Path.h"

#include "os/win32/WidePath.h"
#include "os/win32/WideText.h"

namespace os {

std::wstring Wide(const Path& path) {
    return WideOf(CP_UTF8, path.System());
}

Path FromWide(std::wstring_view wide) {
    return Path::FromSystem(BytesOf(CP_UTF8, wide));
}

Path ModulePath() {
    wchar_t path[MAX_PATH + 1] = {};
    return FromWide({path, GetModuleFileNameW(nullptr, path, MAX_PATH)});
}

Path Path::FromText(std::string_view text) {
    return FromWide(WideOf(CP_ACP, text));
}

std::optional<std::string> Path::Text() const {
    bool lossy = false;
    auto text = BytesOf(CP_ACP, Wide(*this), false, &lossy);
    if (lossy) return std::nullopt;
    return text;
}

std::string Path::Shown() const {
    return BytesOf(CP_ACP, Wide(*this));
}

Path Path::operator/(std::string_view name) const {
    return *this + "\\" + name;
}

Path Path::operator/(const Path& below) const {
    return FromSystem(system_ + "\\" + below.system_);
}

}  // namespace os
