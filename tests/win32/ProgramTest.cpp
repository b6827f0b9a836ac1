// The whole program on a real desktop: its windows, hotkeys and settings are real, other programs too; the
// network and the time are faked.
#include <gtest/gtest.h>

#include <optional>

#include "app/services/modRegistry.h"
#include "app/shell/frmMain.h"
#include "app/shell/modMenu.h"
#include "features/modAwayIdleProf.h"
#include "os/RegistryStore.h"
#include "os/fake/FakeClock.h"
#include "os/fake/FakeDialog.h"
#include "os/fake/FakeMessageBox.h"
#include "os/fake/FakeNetwork.h"
#include "os/fake/FakeWorld.h"
#include "tests/unit/Rig.h"
#include "tests/win32/DesktopRig.h"

namespace {

using os::fake::DialogUser;

constexpr const char* kProxyKey =
    "software\\America Online\\AOL Instant Messenger (TM)\\CurrentVersion\\Proxy";

// What stands in the registry, read past our own code.
std::string Stored(const std::string& key, const char* name) {
    char data[1024] = "";
    DWORD size = sizeof data - 1;
    HKEY opened = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, key.c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS) return "";
    if (RegQueryValueExA(opened, name, nullptr, nullptr, reinterpret_cast<BYTE*>(data), &size) !=
        ERROR_SUCCESS) {
        size = 0;
    }
    RegCloseKey(opened);
    return std::string(data, size).c_str();
}
std::string StoredSetting(const char* name) {
    return Stored("software\\Wrenlow", name);
}
std::string RunEntry() {
    return Stored("software\\microsoft\\windows\\CurrentVersion\\run", "Wrenlow");
}

class Program : public testing::Test {
 protected:
    void SetUp() override {
        os::fake::ResetWorld();
        os::fake::ResetMessageBoxes();
        ForgetSettings();
        for (const char* off : {"checkupdate", "setupaim", "onstartup"}) modRegistry::WriteSetting(off, "0");
    }
    void TearDown() override {
        form.reset();
        modRegistry::DeleteValue(os::RegistryHive::CurrentUser, kProxyKey, "Enabled");
        ForgetSettings();
    }

    void Start() {
        form.emplace();
        form->Form_Load();
    }

    static void StoreHotkeys(std::initializer_list<std::initializer_list<const char*>> hotkeys) {
        const auto store = [](const std::string& name, const std::string& data) {
            modRegistry::SetValue(os::RegistryHive::CurrentUser, "software\\Wrenlow\\hotkeys\\", name, data,
                                  os::RegistryType::String);
        };
        store("n", std::to_string(hotkeys.size()));
        int number = 0;
        for (const auto& hotkey : hotkeys) {
            const auto prefix = std::to_string(++number);
            const char* const suffixes[] = {"n", "nt", "na"};
            const char* const* suffix = suffixes;
            for (const char* part : hotkey) store(prefix + *suffix++, part);
        }
        modRegistry::WriteSetting("enablehotkey", "1");
    }

    // A client signs on through the program; the server's side of its connection.
    os::fake::Peer& SignOn() {
        auto& client = os::fake::ConnectTo(Rig::kPort);
        os::ProcessPendingEvents();
        client.Feed(Rig::kRequest);
        auto& server = os::fake::Outgoing(os::fake::OutgoingCount() - 1);
        server.AcceptConnect();
        os::ProcessPendingEvents();
        client.Feed(Frame(1, 1, "00 00 00 01"_hex));
        server.Feed(Frame(1, 100, "00 00 00 01"_hex));
        server.Feed(Frame(2, 101, Snac(1, 0xF, ByteToStr(3) + "Bob")));
        server.TakeReceived();
        return server;
    }

    // Waits for the key's effect: whether the server is sent this away message, and nothing else.
    static bool AwayArrives(os::fake::Peer& server, std::int32_t sequence, const std::string& text) {
        const auto expected = Frame(2, sequence, modAwayIdleProf::MakeAwayFlap(text).Data());
        Eventually([&] {
            os::ProcessPendingEvents();
            return server.Received().size() >= expected.size();
        });
        return server.TakeReceived() == expected;
    }

    std::optional<frmMain> form;
};

TEST_F(Program, StoredHotkeysSetAndClearTheAwayMessageFromTheStart) {
    StoreHotkeys({{"Ctrl+Shift+F8", "Set Away", "Out for lunch"}, {"Ctrl+Alt+K", "Clear Away"}});
    Start();
    auto& server = SignOn();
    PressKeys({VK_CONTROL, VK_SHIFT, VK_F8});
    EXPECT_TRUE(AwayArrives(server, 2, "Out for lunch"));
    PressKeys({VK_CONTROL, VK_MENU, 'K'});
    EXPECT_TRUE(AwayArrives(server, 3, ""));
    EXPECT_TRUE(os::fake::ShownBoxes().empty());
}

TEST_F(Program, PanicEndsTheAimClientAndTheProgramWithoutAWord) {
    StoreHotkeys({{"Ctrl+Shift+F9", "Panic!"}});
    modRegistry::WriteSetting("revertsettings", "1");
    modRegistry::SetValue(os::RegistryHive::CurrentUser, kProxyKey, "Enabled", std::string("\x01\0\0\0", 4),
                          os::RegistryType::DWord);
    char temporary[MAX_PATH] = "";
    GetTempPathA(sizeof temporary, temporary);
    OtherProcess aim("windows", std::string(temporary) + "aim.exe");
    ASSERT_NE(OtherProcess::Window(kOtherTitle), nullptr);
    Start();
    auto& server = SignOn();

    PressKeys({VK_CONTROL, VK_SHIFT, VK_F9});
    EXPECT_TRUE(Eventually([&] { return form->IsUnloaded(); }));
    EXPECT_TRUE(aim.HasEnded());
    EXPECT_TRUE(server.SawClose());
    EXPECT_NE(modRegistry::QueryValue(os::RegistryHive::CurrentUser, kProxyKey, "Enabled"), "1");
    EXPECT_TRUE(os::fake::ShownBoxes().empty());
    EXPECT_EQ(FindWindowA(nullptr, kOtherTitle), nullptr) << "the client was started again";
    EXPECT_TRUE(RegisterHotKey(nullptr, 1, MOD_CONTROL | MOD_SHIFT, VK_F9)) << "the hotkey is still held";
    UnregisterHotKey(nullptr, 1);
}

TEST_F(Program, EverySettingChangedInTheWindowIsStoredAndInForceOnApply) {
    OtherProcess other("windows");
    const HWND im = OtherProcess::Window(kImTitle);
    const HWND chat = OtherProcess::Window(kChatTitle);
    Start();
    auto& server = SignOn();
    modMenu::DoMenuCommand("settings");
    DialogUser user("Settings");
    for (int box = 0; box < 4; ++box) user.Press({"Check1", box});
    user.Choose("SSTab1", 1);
    user.Press("Check14");
    user.Type("Text1", "D:\\Talk\\");
    user.Press("Check3");
    user.Press({"Option2", 0});
    user.Choose("SSTab1", 2);
    user.Press("Check2");
    user.Choose("SSTab1", 3);
    for (int kind = 0; kind < 3; ++kind) user.Press({"chkTrans", kind});
    user.Choose("sldTrans", 50);
    user.Choose("SSTab1", 4);
    user.Press("chkHotkey");
    user.Choose({"cmbHK", 0}, 2);   // Ctrl
    user.Choose({"cmbHK", 1}, 3);   // Shift
    user.Choose({"cmbHK", 2}, 61);  // F8
    user.Type("txtHKText", "Gone");
    user.Press("cmdHKAdd");
    user.Press("cmdApply");

    const std::pair<const char*, const char*> settings[] = {
        {"onstartup", "1"},
        {"setupaim", "1"},
        {"revertsettings", "1"},
        {"checkupdate", "1"},
        {"logims", "1"},
        {"logfolder", "1"},
        {"logwhere", "D:\\Talk\\"},
        {"loghowtxt", "True"},
        {"seehtml", "1"},
        {"loghowhtm", "False"},
        {"logwhat", "True"},
        {"trans1", "1"},
        {"trans2", "1"},
        {"trans3", "1"},
        {"trans4", "0"},
        {"transamount", "50"},
        {"enablehotkey", "1"},
    };
    for (const auto& [name, value] : settings) EXPECT_EQ(StoredSetting(name), value) << name;
    EXPECT_EQ(Stored("software\\Wrenlow\\hotkeys", "1n"), "Ctrl+Shift+F8");
    EXPECT_EQ(RunEntry(), "/program\\wrenlow.exe");
    os::fake::AdvanceClock(200);
    EXPECT_EQ(AlphaOf(im), 128);
    EXPECT_EQ(AlphaOf(chat), -1);
    PressKeys({VK_CONTROL, VK_SHIFT, VK_F8});
    EXPECT_TRUE(AwayArrives(server, 2, "Gone"));

    user.Press("chkHotkey");
    user.Choose("SSTab1", 3);
    user.Press({"chkTrans", 0});
    user.Choose("SSTab1", 0);
    user.Press({"Check1", 0});
    user.Press({"Check1", 2});  // the end of the program restores nothing
    user.Press("cmdOK");
    EXPECT_EQ(RunEntry(), "");
    EXPECT_EQ(AlphaOf(im), -1) << "opaque again at once";
    EXPECT_TRUE(RegisterHotKey(nullptr, 1, MOD_CONTROL | MOD_SHIFT, VK_F8)) << "the hotkey is still held";
    UnregisterHotKey(nullptr, 1);
    EXPECT_EQ(Stored("software\\Wrenlow\\hotkeys", "n"), "1") << "the list stays";
}

}  // namespace
