// The conversions of values that other programs may have put into the real registry.
#include <windows.h>

#include <gtest/gtest.h>

#include "app/services/modRegistry.h"
#include "tests/unit/Hex.h"

namespace {

constexpr char kTestKey[] = "software\\Wrenlow registry test";
constexpr auto kHive = os::RegistryHive::CurrentUser;

class RealRegistry : public testing::Test {
 protected:
    RealRegistry() { RegCreateKeyA(HKEY_CURRENT_USER, kTestKey, &key_); }
    ~RealRegistry() override {
        RegCloseKey(key_);
        RegDeleteKeyA(HKEY_CURRENT_USER, kTestKey);
    }

    void Store(DWORD type, const ByteString& data) const {
        ASSERT_EQ(RegSetValueExA(key_, "name", 0, type, reinterpret_cast<const BYTE*>(data.data()),
                                 static_cast<DWORD>(data.size())),
                  ERROR_SUCCESS);
    }
    static std::string Read() { return modRegistry::QueryValue(kHive, kTestKey, "name"); }

    HKEY key_ = nullptr;
};

TEST_F(RealRegistry, WhateverStandsThereComesOutAsText) {
    EXPECT_EQ(Read(), "");
    const struct {
        DWORD type;
        ByteString data;
        std::string text;
    } cases[] = {
        {REG_SZ, "without end", "without end"},
        {REG_SZ, "'with' 00"_hex, "with"},
        {REG_SZ, "'cut' 00 'here' 00"_hex, "cut"},
        {REG_SZ, "", ""},
        {REG_SZ, ByteString(1023, 'x'), std::string(1023, 'x')},
        {REG_SZ, ByteString(1024, 'x'), ""},
        {REG_SZ, ByteString(5000, 'x'), ""},
        {REG_EXPAND_SZ, "%APPDATA%", "%APPDATA%"},
        {REG_DWORD, "01 00 00 00"_hex, "1"},
        {REG_DWORD, "48 2B 00 00"_hex, "11080"},
        {REG_DWORD, "05 01 00 00"_hex, "21"},
        {REG_DWORD, "00 00 00 00"_hex, ""},
        {REG_BINARY, "text", ""},
        {REG_MULTI_SZ, "'one' 00 'two' 00 00"_hex, ""},
    };
    for (const auto& c : cases) {
        Store(c.type, c.data);
        EXPECT_EQ(Read(), c.text) << c.type << " " << HexDump(c.data).substr(0, 40);
    }
}

TEST_F(RealRegistry, WhatIsWrittenStandsThereForOthers) {
    EXPECT_TRUE(modRegistry::SetValue(kHive, std::string(kTestKey) + "\\", "name", "", REG_SZ));
    EXPECT_EQ(Read(), " ");
    EXPECT_TRUE(modRegistry::SetValue(kHive, kTestKey, "name", "48 2B 00 00"_hex, REG_DWORD));
    DWORD type = 0, number = 0, size = sizeof number;
    RegQueryValueExA(key_, "name", nullptr, &type, reinterpret_cast<BYTE*>(&number), &size);
    EXPECT_EQ(type, DWORD{REG_DWORD});
    EXPECT_EQ(number, 11080u);
    EXPECT_TRUE(modRegistry::DeleteValue(kHive, kTestKey, "name"));
    EXPECT_FALSE(modRegistry::DeleteValue(kHive, kTestKey, "name"));
}

}  // namespace
