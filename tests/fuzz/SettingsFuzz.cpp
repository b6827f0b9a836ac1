// The text of a settings file, read and changed. Input: a name and a text, each behind its length in one
// byte, a type in one byte, and then the file.
#include <algorithm>
#include <cstdint>
#include <string>

#include "os/posix/SettingsText.h"
#include "tests/fuzz/Check.h"

namespace {

std::string Take(std::string& input, std::size_t size) {
    auto taken = input.substr(0, size);
    input.erase(0, taken.size());
    return taken;
}

std::string TakeCounted(std::string& input) {
    const auto count = Take(input, 1);
    return count.empty() ? count : Take(input, static_cast<unsigned char>(count.front()));
}

bool Same(const std::optional<os::RegistryValue>& a, const std::optional<os::RegistryValue>& b) {
    if (!a || !b) return !a && !b;
    return a->type == b->type && a->data == b->data;
}

void CheckChanges(const std::string& file, const std::string& name, const os::RegistryValue& value) {
    const std::string neighbour =
        "a name that no input can spell because it is longer than what the input can count " +
        std::string(256, 'n');
    os::SettingsText text(file);
    text.Put(neighbour, {3, "kept"});
    text.Put(name, value);
    Check(Same(text.Find(name), value), "what is written is read");

    os::SettingsText again(text.Text());
    Check(again.Text() == text.Text(), "a file that was written is read as it is");
    Check(Same(again.Find(name), value), "what is written is read from the file");

    Check(again.Remove(name), "what is there can be removed");
    Check(!again.Find(name), "what is removed is gone");
    Check(Same(again.Find(neighbour), os::RegistryValue{3, "kept"}), "a neighbour stays");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    std::string input(reinterpret_cast<const char*>(bytes), size);
    const auto name = TakeCounted(input);
    const auto data = TakeCounted(input);
    const auto type = Take(input, 1);
    const os::RegistryValue value{type.empty() ? 1U : static_cast<unsigned char>(type.front()), data};
    CheckChanges(input, name, value);
    return 0;
}
