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
    return *this + "/" + name;
}

Path Path::operator/(const Path& below) const {
    return FromSystem(system_ + "/" + below.system_);
}

}  // namespace os
