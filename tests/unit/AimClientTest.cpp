// Setting up, restarting and cleaning up after the AIM client.
#include <gtest/gtest.h>

#include "app/services/modRegistry.h"
#include "app/services/modSystem.h"
#include "os/fake/FakeFiles.h"
#include "os/fake/FakeMessageBox.h"
#include "os/fake/FakeProcesses.h"
#include "os/fake/FakeRegistryStore.h"
#include "tests/unit/Rig.h"

namespace {

using os::BoxResult;

constexpr auto kHive = os::RegistryHive::CurrentUser;
constexpr char kProxyKey[] = "Software\\America Online\\AOL Instant Messenger (TM)\\CurrentVersion\\Proxy";
constexpr char kAim[] = "C:\\AIM95\\aim.exe";

struct AimClient : testing::Test {
    AimClient() {
        os::fake::ResetRegistry();
        os::fake::ResetProcesses();
        os::fake::ResetMessageBoxes();
    }

    static std::string Proxy(const char* name) { return modRegistry::QueryValue(kHive, kProxyKey, name); }
    static std::vector<std::string> Texts() {
        std::vector<std::string> texts;
        for (const auto& box : os::fake::ShownBoxes()) texts.push_back(box.text);
        return texts;
    }
    static void RunAim(bool mayBeEnded = true) {
        os::fake::RunningProcesses() = {{7, "C:\\Windows\\explorer.exe"}, {8, kAim, mayBeEnded}};
    }

    Rig rig;
};

const std::string kChange = "Wrenlow will now change AIM's connection preferences";
const std::string kClose = "Wrenlow will now close AIM to finish changing the connection settings.";
const std::string kProblem = "There was a problem closing AIM.";
const std::string kOpen = "Press OK to open AIM.";

}  // namespace

TEST_F(AimClient, SetUpWritesTheFourValuesAndRestartsTheClient) {
    RunAim();
    auto [client, server] = rig.ConnectTalking();
    modSystem::SetupAim(true);
    EXPECT_EQ(Proxy("Enabled") + Proxy("Host") + Proxy("Port") + Proxy("Protocol"), "1127.0.0.111080SOCKS4");
    EXPECT_EQ(os::ReadRegistryValue(kHive, kProxyKey, "Port", 9)->data, "48 2B 00 00"_hex);
    EXPECT_EQ(Texts(), (std::vector<std::string>{kChange, kClose, kOpen}));
    EXPECT_EQ(os::fake::ShownBoxes()[0].title, "Final Setup");
    EXPECT_EQ(os::fake::RunningProcesses().size(), 1u);
    EXPECT_EQ(os::fake::StartedPrograms(), std::vector<std::string>{"c:\\aim95\\aim.exe"});
    EXPECT_TRUE(modSocket::Connection(0)->IsClosed());
}

TEST_F(AimClient, ASetUpClientIsLeftAloneEvenWhenForced) {
    modSystem::SetupAim(true);
    const auto changes = os::fake::RegistryChanges();
    RunAim();
    modSystem::SetupAim(true);
    EXPECT_EQ(os::fake::RegistryChanges(), changes);
    EXPECT_TRUE(os::fake::ShownBoxes().empty());
}

TEST_F(AimClient, NothingHappensUnlessTheSettingIsExactlyOne) {
    for (const char* value : {"0", "True", "11"}) {
        modRegistry::WriteSetting("setupaim", value);
        modRegistry::WriteSetting("revertsettings", value);
        modSystem::SetupAim(false);
        modSystem::RevertSettings(false);
        EXPECT_EQ(Proxy("Host"), "");
        EXPECT_EQ(Proxy("Enabled"), "");
    }
}

TEST_F(AimClient, CancelStopsWhereItIsPressed) {
    const struct {
        std::vector<BoxResult> answers;
        std::vector<std::string> shown;
        bool connectionsClosed;
    } cases[] = {
        {{BoxResult::Cancel}, {kChange}, false},
        {{BoxResult::Ok, BoxResult::Cancel}, {kChange, kClose}, true},
    };
    for (const auto& c : cases) {
        modSocket::InitWs();
        os::fake::ResetRegistry();
        os::fake::ResetMessageBoxes();
        RunAim();
        auto [client, server] = rig.ConnectTalking();
        os::fake::AnswerBoxes(c.answers);
        modSystem::SetupAim(true);
        EXPECT_EQ(Texts(), c.shown);
        EXPECT_EQ(Proxy("Host"), "127.0.0.1");  // written before the question
        EXPECT_EQ(modSocket::Connection(0)->IsClosed(), c.connectionsClosed);
        EXPECT_EQ(os::fake::RunningProcesses().size(), 2u);
    }
}

TEST_F(AimClient, AClientThatCannotBeEndedIsSaidUnlessSilent) {
    RunAim(false);
    modSystem::RestartAIM(false, false);
    EXPECT_EQ(Texts(), (std::vector<std::string>{kClose, kProblem}));
    os::fake::ResetMessageBoxes();
    modSystem::RestartAIM(true, true);
    EXPECT_TRUE(Texts().empty());
    RunAim();
    modSystem::RestartAIM(true, true);
    EXPECT_EQ(os::fake::RunningProcesses().size(), 1u);
    EXPECT_TRUE(Texts().empty());
    EXPECT_TRUE(os::fake::StartedPrograms().empty());
}

TEST_F(AimClient, RevertingSwitchesOnlyTheProxyOff) {
    modSystem::SetupAim(true);
    RunAim();
    modSystem::RevertSettings(true, true);
    EXPECT_NE(Proxy("Enabled"), "1");
    EXPECT_EQ(Proxy("Host"), "127.0.0.1");
    EXPECT_TRUE(Texts().empty());
    EXPECT_EQ(os::fake::RunningProcesses().size(), 2u);
    modSystem::RevertSettings(true);
    EXPECT_EQ(Texts(), (std::vector<std::string>{kClose, kOpen}));
}

TEST_F(AimClient, FindsTheFirstOfItsThreeFolders) {
    os::fake::SetWindowsFolder("C:\\Windows");
    const auto expectFolder = [](const std::string& folder) {
        EXPECT_EQ(modSystem::GetSNPath("Some User"), folder);
    };
    expectFolder("");
    for (const char* folder : {"C:\\Windows\\Application Data\\Aim\\someuser", "C:\\Windows\\aim95\\someuser",
                               "C:\\Roaming\\Aim\\someuser"}) {
        os::fake::PutFile(std::string(folder) + "\\userinfo.bag", "cache");
        modRegistry::SetValue(kHive, "Volatile Environment", "APPDATA", "C:\\Roaming",
                              os::RegistryType::String);
        expectFolder(folder);
    }
    modSystem::DeleteUserinfoBag("SOME USER");
    EXPECT_FALSE(os::fake::FileText("C:\\Roaming\\Aim\\someuser\\userinfo.bag"));
    EXPECT_TRUE(os::fake::FileText("C:\\Windows\\aim95\\someuser\\userinfo.bag"));
}

TEST_F(AimClient, ANameFromTheWireCannotLeaveItsFolder) {
    os::fake::PutFile("\\userinfo.bag", "root");
    os::fake::PutFile("\\Aim\\userinfo.bag", "above");
    modSystem::DeleteUserinfoBag("");
    modSystem::DeleteUserinfoBag("  ");
    EXPECT_TRUE(os::fake::FileText("\\userinfo.bag"));
    modSystem::DeleteUserinfoBag("..");
    EXPECT_TRUE(os::fake::FileText("\\Aim\\userinfo.bag"));
}

TEST_F(AimClient, ClosingAllConnectionsClearsEachNamesCache) {
    os::fake::PutFile("\\Aim\\me\\userinfo.bag", "cache");
    auto [client, server] = rig.SignOn("Me");
    auto other = rig.ConnectTalking();
    modSystem::CloseAllConnections();
    os::ProcessPendingEvents();
    EXPECT_TRUE(client.SawClose() && server.SawClose() && other.client.SawClose());
    EXPECT_FALSE(os::fake::FileText("\\Aim\\me\\userinfo.bag"));
}

TEST_F(AimClient, ExplainsAMissingSignOnWithTheListenersPort) {
    modSystem::doErr(false);
    ASSERT_EQ(os::fake::ShownBoxes().size(), 1u);
    const auto& box = os::fake::ShownBoxes()[0];
    EXPECT_EQ(box.icon, os::BoxIcon::Error);
    EXPECT_TRUE(box.text.starts_with(
        "You must be signed on to at least one screenname to use this feature.\r\n\r\n"));
    EXPECT_TRUE(box.text.ends_with("\r\nProxy Host: 127.0.0.1\r\nProxy Port: 11080"));
}
