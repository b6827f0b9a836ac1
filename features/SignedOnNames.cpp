#include "features/SignedOnNames.h"

#include <utility>

#include "core/modSocket.h"

namespace {

class Names final : public NameList {
 public:
    void Clear() override { names.clear(); }
    void AddEntry(const std::string& entry) override { names.push_back(entry); }
    std::size_t EntryCount() const override { return names.size(); }
    std::string EntryText(std::size_t index) const override { return names.at(index); }

    std::vector<std::string> names;
};

}  // namespace

std::vector<std::string> SignedOnNames() {
    Names list;
    modSocket::ListScreenNames(list, false, false);
    return std::move(list.names);
}

std::vector<std::string> SendForEach(const std::vector<std::string>& names, const SessionCommand& command) {
    std::vector<std::string> sent;
    for (const auto& name : names) {
        if (!modSocket::ConnIndex(name)) continue;
        command(name);
        sent.push_back(name);
    }
    return sent;
}
