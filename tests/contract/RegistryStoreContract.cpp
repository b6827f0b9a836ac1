// What every implementation of os/RegistryStore.h does.
#include "os/RegistryStore.h"

#include <gtest/gtest.h>

#include <vector>

#include "base/Text.h"
#include "tests/contract/Implementation.h"

namespace {

constexpr auto kHive = os::RegistryHive::CurrentUser;
constexpr std::size_t kMaxBytes = 4096;
// Three levels, none of which exists at first.
const std::string kKey = std::string(kContractKey) + "\\One\\Two";

struct RegistryStoreContract : testing::Test {
    RegistryStoreContract() { PrepareContract(); }
};

std::string Read(const std::string& key, const std::string& name, std::size_t maxBytes = kMaxBytes) {
    const auto value = os::ReadRegistryValue(kHive, key, name, maxBytes);
    return value ? value->data : "(nothing)";
}

TEST_F(RegistryStoreContract, ReadsNothingWhereNothingIs) {
    EXPECT_EQ(Read(kKey, "name"), "(nothing)");
    ASSERT_TRUE(os::WriteRegistryValue(kHive, kKey, "other", 1, "x"));
    EXPECT_EQ(Read(kKey, "name"), "(nothing)");
    EXPECT_EQ(Read(kContractKey, "other"), "(nothing)");
}

TEST_F(RegistryStoreContract, KeepsEveryTypeAndTextAndNumberOfBytes) {
    std::string all;
    for (int byte = 255; byte >= 0; --byte) all += static_cast<char>(byte);
    std::vector<os::RegistryValue> values = {
        {os::RegistryType::Binary, all},
        {os::RegistryType::Binary, ""},
        {os::RegistryType::DWord, std::string("\x48\x2B\0\0", 4)},
        {os::RegistryType::DWord, std::string("\xFF\xFF\xFF\xFF", 4)},
        {os::RegistryType::DWord, "\x01"},
        {os::RegistryType::String, ""},
        {11, std::string("\1\2\3\4\5\6\7\0", 8)},
        {77, "of no known type"},
    };
    for (const std::string text :
         {" ", "1", "C:\\AimLogs\\", "  blanks on both sides  ", "%APPDATA%\\Aim", "a=b:c#d;[e]", "#x", "[x]",
          "\"quoted\"", "\"", "\\", "two\r\nlines\tand a tab", "caf\xE9 \x80 \x9C"}) {
        for (const auto type : {os::RegistryType::String, os::RegistryType::ExpandableString}) {
            values.push_back({type, text});
            ASSERT_TRUE(os::WriteRegistryValue(kHive, kKey, "ended", type, text + '\0'));
            EXPECT_EQ(Read(kKey, "ended"), text);
        }
    }
    for (const auto& value : values) {
        ASSERT_TRUE(os::WriteRegistryValue(kHive, kKey, "name", value.type, value.data));
        EXPECT_TRUE(os::ReadRegistryValue(kHive, kKey, "name", kMaxBytes) == value)
            << value.type << " " << value.data << " is read as " << Read(kKey, "name");
    }
}

TEST_F(RegistryStoreContract, KeepsValuesApartByAnyName) {
    const std::string names[] = {"a",    "a b", "a=b", "a:b", "[a]", "#a",     "\"a\"",
                                 "a\\b", " a ", "",    ":",   "=",   "caf\xE9"};
    for (const auto& name : names)
        ASSERT_TRUE(os::WriteRegistryValue(kHive, kKey, name, os::RegistryType::Binary, "of " + name));
    for (const auto& name : names) EXPECT_EQ(Read(kKey, name), "of " + name);
    for (const auto& name : names) EXPECT_TRUE(os::RemoveRegistryValue(kHive, kKey, name)) << name;
    for (const auto& name : names) EXPECT_EQ(Read(kKey, name), "(nothing)");
}

TEST_F(RegistryStoreContract, CaseAndATrailingSeparatorDoNotMatter) {
    ASSERT_TRUE(os::WriteRegistryValue(kHive, kKey + "\\", "Name", os::RegistryType::Binary, "first"));
    std::string upper = kKey;
    for (char& c : upper) c = UpperAscii(c);
    EXPECT_EQ(Read(upper, "nAME"), "first");
    ASSERT_TRUE(os::WriteRegistryValue(kHive, upper, "NAME", os::RegistryType::Binary, "second"));
    EXPECT_EQ(Read(kKey, "Name"), "second");
    EXPECT_TRUE(os::RemoveRegistryValue(kHive, upper, "name"));
    EXPECT_EQ(Read(kKey, "Name"), "(nothing)");
}

TEST_F(RegistryStoreContract, ReadsNothingOfAValueThatIsTooLong) {
    for (const std::size_t size : {1023u, 1024u}) {
        ASSERT_TRUE(
            os::WriteRegistryValue(kHive, kKey, "name", os::RegistryType::String, std::string(size, 'x')));
        EXPECT_EQ(Read(kKey, "name", 1023), size == 1023 ? std::string(size, 'x') : "(nothing)");
    }
}

TEST_F(RegistryStoreContract, RemovesOnlyWhatWasThere) {
    EXPECT_FALSE(os::RemoveRegistryValue(kHive, kKey, "name"));
    ASSERT_TRUE(os::WriteRegistryValue(kHive, kKey, "name", os::RegistryType::Binary, "x"));
    ASSERT_TRUE(os::WriteRegistryValue(kHive, kKey, "kept", os::RegistryType::Binary, "y"));
    EXPECT_TRUE(os::RemoveRegistryValue(kHive, kKey, "name"));
    EXPECT_FALSE(os::RemoveRegistryValue(kHive, kKey, "name"));
    EXPECT_EQ(Read(kKey, "kept"), "y");
}

}  // namespace
