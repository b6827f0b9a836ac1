#include "app/services/modRegistry.h"

#include "app/services/Settings.h"
#include "os/fake/FakeRegistryStore.h"
#include "tests/unit/FreshWorld.h"
#include "tests/unit/Hex.h"

namespace {
constexpr auto kHive = os::RegistryHive::CurrentUser;
struct modRegistryTest : FreshWorld {};
}  // namespace

TEST_F(modRegistryTest, EachKindOfValueIsReadAsText) {
    namespace Type = os::RegistryType;
    const struct {
        std::uint32_t type;
        ByteString data;
        std::string text;
    } cases[] = {
        {Type::String, "without end", "without end"},
        {Type::String, "'cut' 00 'here'"_hex, "cut"},
        {Type::ExpandableString, "%APPDATA%", "%APPDATA%"},
        {Type::Binary, "x", ""},
        {Type::DWord, "01 00 00 00"_hex, "1"},
        {Type::DWord, "48 2B 00 00"_hex, "11080"},
        {Type::DWord, "05 01 00 00"_hex, "21"},  // the byte below 16 loses its leading zero
        {Type::DWord, "07 00 01 00"_hex, "7"},   // what is above a zero byte is lost
        {Type::DWord, "00 01 00 00"_hex, ""},    // no digits remain
        {Type::DWord, "FF FF FF FF"_hex, "4294967295"},
        {Type::DWord, ByteString(900, '\xFF'), "4294967295"},
        {77, "x", ""},
    };
    for (const auto& [type, data, text] : cases) {
        EXPECT_EQ(modRegistry::ValueAsText({type, data}), text) << type << " " << HexDump(data).substr(0, 40);
    }
}

TEST_F(modRegistryTest, AValueIsNeverAnEmptyString) {
    EXPECT_EQ(modRegistry::ReadSetting("logims"), "");
    EXPECT_TRUE(modRegistry::WriteSetting("logims", ""));
    EXPECT_EQ(modRegistry::QueryValue(kHive, "SOFTWARE\\wrenlow", "LogIMs"), " ");
}

TEST_F(modRegistryTest, ANumberIsAlwaysFourBytes) {
    for (const auto& [data, stored] :
         {std::pair{"05"_hex, "05 00 00 00"_hex}, std::pair{"01 02 03 04 05"_hex, "01 02 03 04"_hex}}) {
        modRegistry::SetValue(kHive, "key", "name", data, os::RegistryType::DWord);
        EXPECT_EQ(os::ReadRegistryValue(kHive, "key", "name", 100)->data, stored);
    }
}

TEST_F(modRegistryTest, AValueOfAThousandAndTwentyFourBytesReadsAsNothing) {
    for (const std::size_t length : {1023u, 1024u}) {
        modRegistry::WriteSetting("logwhere", std::string(length, 'x'));
        EXPECT_EQ(modRegistry::ReadSetting("logwhere").size(), length == 1023 ? length : 0);
    }
}

TEST_F(modRegistryTest, FailuresComeOutAsFalse) {
    EXPECT_FALSE(modRegistry::DeleteValue(kHive, modRegistry::kSettingsKey, "missing"));
    os::fake::registry.failWrites = true;
    EXPECT_FALSE(modRegistry::WriteSetting("logims", "1"));
}

TEST_F(modRegistryTest, ASettingIsReadByItsKindAndRefusesWhatMeansNothing) {
    const struct {
        const char *name, *stored;
        bool on;
        const char* fault;
    } cases[] = {
        {"logims", "1", true, ""},        {"logims", "11", false, "logims is 1 or 0"},
        {"TRANS1", "0", false, ""},       {"trans1", "", true, "trans1 is 1 or 0"},
        {"loghowhtm", "True", true, ""},  {"loghowhtm", "1", false, "loghowhtm is True or False"},
        {"transamount", "-5", false, ""}, {"transamount", "5 ", false, "transamount is a whole number"},
        {"logwhere", "", false, ""},
    };
    for (const auto& [name, stored, on, fault] : cases) {
        const auto& setting = *settings::Find(name);
        EXPECT_EQ(settings::FaultOf(setting, stored), fault) << name;
        EXPECT_EQ(settings::IsMark(setting.kind) && settings::MeansOn(setting, stored), on) << name << stored;
    }
    EXPECT_NE(settings::FaultOf(*settings::Find("logwhere"), std::string(1024, 'x')), "");
    EXPECT_EQ(settings::Find("logim"), nullptr);
}
