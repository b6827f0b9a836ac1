// What tests/desk does not show of setting up, ending and cleaning up after the AIM client.
#include "app/services/modRegistry.h"
#include "app/services/modSystem.h"
#include "app/windows/AimClient.h"
#include "os/fake/FakeDesktop.h"
#include "os/fake/FakeFiles.h"
#include "tests/unit/FreshWorld.h"
#include "tests/unit/Rig.h"

namespace {

constexpr auto kHive = os::RegistryHive::CurrentUser;
constexpr char kProxyKey[] = "Software\\America Online\\AOL Instant Messenger (TM)\\CurrentVersion\\Proxy";
const std::string kClose = "Wrenlow will now close AIM to finish changing the connection settings.";
const std::string kProblem = "There was a problem closing AIM.";

struct AimClient : FreshWorld {
    static std::string Proxy(const char* name) { return modRegistry::QueryValue(kHive, kProxyKey, name); }
    static void RunAim(bool mayBeEnded = true) {
        os::fake::processes.running = {{7, "C:\\Windows\\explorer.exe"},
                                       {8, "C:\\AIM95\\aim.exe", mayBeEnded}};
    }
    static bool AimRuns() { return os::fake::processes.running.size() == 2; }

    Rig rig;
};

}  // namespace

TEST_F(AimClient, NothingHappensUnlessTheSettingIsExactlyOne) {
    for (const char* value : {"0", "True", "11"}) {
        modRegistry::WriteSetting("setupaim", value);
        modRegistry::WriteSetting("revertsettings", value);
        modSystem::SetupAim(false);
        modSystem::RevertSettings(false);
        EXPECT_EQ(Proxy("Host") + Proxy("Enabled"), "") << value;
    }
}

TEST_F(AimClient, AClientThatCannotBeEndedIsSaidUnlessSilent) {
    const struct {
        bool mayBeEnded, silent;
        Texts told;
    } cases[] = {{false, false, {kClose, kProblem}}, {false, true, {}}, {true, true, {}}};
    for (const auto& [mayBeEnded, silent, told] : cases) {
        RunAim(mayBeEnded);
        modSystem::RestartAIM(silent, silent);
        EXPECT_EQ(TakeBoxes(), told);
        EXPECT_EQ(AimRuns(), !mayBeEnded);
    }
    EXPECT_TRUE(os::fake::processes.started.empty());
}

TEST_F(AimClient, WhatTheClientHadBeforeIsKeptAndGivenBackByteForByte) {
    constexpr const char* kNames[] = {"Enabled", "Host", "Port"};
    using Value = std::optional<os::RegistryValue>;
    using Values = std::vector<Value>;
    const auto number = [](const ByteString& bytes) -> Value { return {{os::RegistryType::DWord, bytes}}; };
    const auto text = [](const char* letters) -> Value { return {{os::RegistryType::String, letters}}; };
    const auto off = number("00 00 00 00"_hex), on = number("01 00 00 00"_hex);
    const Value none;
    const Values nothing = {none, none, none}, switchedOff = {off, none, none};
    const Values another = {on, text("proxy"), number("38 04 00 00"_hex)};
    const Values ours = {off, text("127.0.0.1"), number("48 2B 00 00"_hex)};
    const struct {
        const char* name;
        Values before, after;
    } cases[] = {
        {"nothing: switched off", nothing, ours},
        {"a proxy in use", another, another},
        {"the same, set up over it again", another, another},
        {"a part only", switchedOff, switchedOff},
        {"ours, switched off: what was kept stays", ours, switchedOff},
        {"nothing again: forgotten", nothing, ours},
    };
    for (const auto& [name, before, after] : cases) {
        os::RemoveRegistryValue(kHive, kProxyKey, "Protocol");
        for (std::size_t i = 0; i < before.size(); ++i) {
            os::RemoveRegistryValue(kHive, kProxyKey, kNames[i]);
            if (before[i])
                os::WriteRegistryValue(kHive, kProxyKey, kNames[i], before[i]->type, before[i]->data);
        }
        modSystem::SetupAim(true);
        EXPECT_EQ(Proxy("Host") + Proxy("Port") + Proxy("Enabled"), "127.0.0.1110801") << name;
        for (int time = 0; time < 2; ++time) {
            modSystem::RevertSettings(true, true);
            Values now;
            for (const char* value : kNames)
                now.push_back(os::ReadRegistryValue(kHive, kProxyKey, value, 99));
            EXPECT_TRUE(now == after) << name;
        }
    }
}

TEST_F(AimClient, ABagThatAnotherProgramHoldsIsTriedOncePerNameAndClosing) {
    modRegistry::SetValue(kHive, "Volatile Environment", "APPDATA", "C:\\Roaming", os::RegistryType::String);
    os::fake::files.windowsFolder = "C:\\Windows";
    const std::string bag = "C:\\Roaming\\Aim\\sue\\userinfo.bag";
    os::fake::PutFile(bag, "cache");
    for (const char* name : {"Sue", "s ue", "SUE"}) End(rig.SignOn(name).server);
    rig.SignOn("Sue");
    os::fake::PutFile(bag, "cache");
    os::fake::FailWrites(bag, 32);
    Rig::Reports().clear();
    modSystem::CloseAllConnections();
    ASSERT_EQ(Rig::Reports().size(), 1u);
    EXPECT_EQ(Rig::Reports().front().where, "modSystem:DeleteUserinfoBag");
    os::fake::FailWrites(bag, 0);
    modSystem::CloseAllConnections();
    EXPECT_FALSE(os::fake::FileText(bag));
}

TEST_F(AimClient, FindsTheFirstOfItsThreeFolders) {
    os::fake::files.windowsFolder = "C:\\Windows";
    EXPECT_TRUE(modSystem::GetSNPath("Some User").IsEmpty());
    modRegistry::SetValue(kHive, "Volatile Environment", "APPDATA", "C:\\Roaming", os::RegistryType::String);
    for (const std::string folder : {"C:\\Windows\\Application Data\\Aim\\someuser",
                                     "C:\\Windows\\aim95\\someuser", "C:\\Roaming\\Aim\\someuser"}) {
        os::fake::PutFile(folder + "\\userinfo.bag", "cache");
        EXPECT_EQ(modSystem::GetSNPath("Some User"), os::Path::FromText(folder));
    }
    modSystem::DeleteUserinfoBag("SOME USER");
    EXPECT_FALSE(os::fake::FileText("C:\\Roaming\\Aim\\someuser\\userinfo.bag"));
    EXPECT_TRUE(os::fake::FileText("C:\\Windows\\aim95\\someuser\\userinfo.bag"));
}

TEST_F(AimClient, ANameFromTheWireCannotLeaveItsFolder) {
    for (const char* file : {"\\userinfo.bag", "\\Aim\\userinfo.bag"}) os::fake::PutFile(file, "above");
    for (const char* noName : {"", "  "}) modSystem::DeleteUserinfoBag(noName);
    EXPECT_TRUE(os::fake::FileText("\\userinfo.bag"));
    os::fake::files.windowsFolder = "";
    modSystem::DeleteUserinfoBag("someuser");
    EXPECT_TRUE(os::fake::FileText("\\userinfo.bag")) << "without a Windows there is no AIM client";
    os::fake::files.windowsFolder = "C:\\Windows";
    modSystem::DeleteUserinfoBag("..");
    EXPECT_TRUE(os::fake::FileText("\\Aim\\userinfo.bag"));
}
