#include "features/SignedOnNames.h"

#include <algorithm>
#include <utility>

#include "core/modSocket.h"

std::vector<std::string> SignedOnNames() {
    std::vector<std::string> names;
    for (auto& listed : modSocket::ListScreenNames(false, false)) names.push_back(std::move(listed.name));
    return names;
}

std::vector<std::string> SendForEach(const std::vector<std::string>& names, const SessionCommand& command) {
    std::vector<std::string> sent;
    for (const auto& name : names) {
        const auto isSame = [normal = NormalizeScreenName(name)](const auto& other) {
            return NormalizeScreenName(other) == normal;
        };
        if (std::ranges::any_of(sent, isSame) || !modSocket::ConnIndex(name)) continue;
        command(name);
        sent.push_back(name);
    }
    return sent;
}
