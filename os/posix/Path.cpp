// On a system whose paths are bytes; a text stands for itself. The fakes' paths are these, too.
#include "os/Path.h"

#include <algorithm>

namespace os {

Path Path::FromText(std::string_view text) {
    std::string bytes(text);
    std::replace(bytes.begin(), bytes.end(), '\\', '/');
    return FromSystem(std::move(bytes));
}

std::optional<std::string> Path::Text() const {
    return system_;
}

std::string Path::Shown() const {
    return system_;
}

Path Path::operator/(std::string_view name) const {
    std::string bytes;
    bytes.reserve(system_.size() + 1 + name.size());
    bytes.append(system_).append(1, '/').append(name);
    std::replace(bytes.end() - static_cast<std::ptrdiff_t>(name.size()), bytes.end(), '\\', '/');
    return FromSystem(std::move(bytes));
}

Path Path::operator/(const Path& below) const {
    return FromSystem(system_ + "/" + below.system_);
}

}  // namespace os
