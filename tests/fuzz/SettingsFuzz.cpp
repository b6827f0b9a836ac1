// The text of a settings file, read and changed. Input: a name and a text, each behind its length in one
// byte, a type in one byte, and then the file.
#include <cstdint>
#include <string>

#include "os/posix/SettingsText.h"
#include "tests/fuzz/Check.h"
#include "tests/fuzz/Input.h"

namespace {

void CheckChanges(const std::string& file, const std::string& name, const os::RegistryValue& value) {
    const std::string neighbour =
        "a name that no input can spell because it is longer than what the input can count " +
        std::string(256, 'n');
    os::SettingsText text(file);
    text.Put(neighbour, {3, "kept"});
    text.Put(name, value);
    Check(text.Find(name) == value, "what is written is read");

    os::SettingsText again(text.Text());
    Check(again.Text() == text.Text(), "a file that was written is read as it is");
    Check(again.Find(name) == value, "what is written is read from the file");

    Check(again.Remove(name), "what is there can be removed");
    Check(!again.Find(name), "what is removed is gone");
    Check(again.Find(neighbour) == os::RegistryValue{3, "kept"}, "a neighbour stays");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    Input input(bytes, size);
    const auto name = input.Bytes(input.Byte());
    const auto data = input.Bytes(input.Byte());
    const os::RegistryValue value{input.Byte(), data};
    CheckChanges(input.Rest(), name, value);
    return 0;
}
