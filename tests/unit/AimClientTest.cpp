// Setting up, restarting and cleaning up after the AIM client.
#include "app/services/modRegistry.h"
#include "app/services/modSystem.h"
#include "os/fake/FakeFiles.h"
#include "os/fake/FakeProcesses.h"
#include "os/fake/FakeRegistryStore.h"
#include "tests/unit/FreshWorld.h"
#include "tests/unit/Rig.h"

namespace {

using os::BoxResult;

constexpr auto kHive = os::RegistryHive::CurrentUser;
constexpr char kProxyKey[] = "Software\\America Online\\AOL Instant Messenger (TM)\\CurrentVersion\\Proxy";
const std::string kChange = "Wrenlow will now change AIM's connection preferences";
const std::string kClose = "Wrenlow will now close AIM to finish changing the connection settings.";
const std::string kProblem = "There was a problem closing AIM.";
const std::string kOpen = "Press OK to open AIM.";

struct AimClient : FreshWorld {
    static std::string Proxy(const char* name) { return modRegistry::QueryValue(kHive, kProxyKey, name); }
    static void RunAim(bool mayBeEnded = true) {
        os::fake::RunningProcesses() = {{7, "C:\\Windows\\explorer.exe"},
                                        {8, "C:\\AIM95\\aim.exe", mayBeEnded}};
    }
    static bool AimRuns() { return os::fake::RunningProcesses().size() == 2; }

    Rig rig;
};

}  // namespace

TEST_F(AimClient, SetUpWritesTheFourValuesAndRestartsTheClientOnce) {
    RunAim();
    auto [client, server] = rig.ConnectTalking();
    modSystem::SetupAim(true);
    EXPECT_EQ(Proxy("Enabled") + Proxy("Host") + Proxy("Port") + Proxy("Protocol"), "1127.0.0.111080SOCKS4");
    EXPECT_EQ(os::ReadRegistryValue(kHive, kProxyKey, "Port", 9)->data, "48 2B 00 00"_hex);
    EXPECT_EQ(os::fake::ShownBoxes()[0].title, "Final Setup");
    EXPECT_EQ(TakeBoxes(), (Texts{kChange, kClose, kOpen}));
    EXPECT_FALSE(AimRuns());
    EXPECT_EQ(os::fake::StartedPrograms(), Texts{"c:\\aim95\\aim.exe"});
    EXPECT_TRUE(modSocket::Connection(0)->IsClosed());

    RunAim();
    const auto changes = os::fake::RegistryChanges();
    modSystem::SetupAim(true);
    EXPECT_EQ(os::fake::RegistryChanges(), changes) << "it is set up already, even when forced";
    EXPECT_EQ(TakeBoxes(), Texts());
}

TEST_F(AimClient, NothingHappensUnlessTheSettingIsExactlyOne) {
    for (const char* value : {"0", "True", "11"}) {
        modRegistry::WriteSetting("setupaim", value);
        modRegistry::WriteSetting("revertsettings", value);
        modSystem::SetupAim(false);
        modSystem::RevertSettings(false);
        EXPECT_EQ(Proxy("Host") + Proxy("Enabled"), "") << value;
    }
}

TEST_F(AimClient, CancelStopsWhereItIsPressedWithTheProxyWrittenBeforeTheQuestion) {
    const struct {
        std::vector<BoxResult> answers;
        Texts shown;
        bool connectionsClosed;
    } cases[] = {
        {{BoxResult::Cancel}, {kChange}, false},
        {{BoxResult::Ok, BoxResult::Cancel}, {kChange, kClose}, true},
    };
    for (const auto& [answers, shown, connectionsClosed] : cases) {
        modSocket::InitWs();
        os::fake::ResetRegistry();
        RunAim();
        auto [client, server] = rig.ConnectTalking();
        os::fake::AnswerBoxes(answers);
        modSystem::SetupAim(true);
        EXPECT_EQ(TakeBoxes(), shown);
        EXPECT_EQ(Proxy("Host"), "127.0.0.1");
        EXPECT_EQ(modSocket::Connection(0)->IsClosed(), connectionsClosed);
        EXPECT_TRUE(AimRuns());
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
    EXPECT_TRUE(os::fake::StartedPrograms().empty());
}

TEST_F(AimClient, RevertingSwitchesOnlyTheProxyOff) {
    modSystem::SetupAim(true);
    RunAim();
    modSystem::RevertSettings(true, true);
    EXPECT_NE(Proxy("Enabled"), "1");
    EXPECT_EQ(Proxy("Host"), "127.0.0.1");
    EXPECT_EQ(TakeBoxes(), Texts());
    EXPECT_TRUE(AimRuns());
    modSystem::RevertSettings(true);
    EXPECT_EQ(TakeBoxes(), (Texts{kClose, kOpen}));
}

TEST_F(AimClient, FindsTheFirstOfItsThreeFolders) {
    os::fake::SetWindowsFolder("C:\\Windows");
    EXPECT_EQ(modSystem::GetSNPath("Some User"), "");
    modRegistry::SetValue(kHive, "Volatile Environment", "APPDATA", "C:\\Roaming", os::RegistryType::String);
    for (const std::string folder : {"C:\\Windows\\Application Data\\Aim\\someuser",
                                     "C:\\Windows\\aim95\\someuser", "C:\\Roaming\\Aim\\someuser"}) {
        os::fake::PutFile(folder + "\\userinfo.bag", "cache");
        EXPECT_EQ(modSystem::GetSNPath("Some User"), folder);
    }
    modSystem::DeleteUserinfoBag("SOME USER");
    EXPECT_FALSE(os::fake::FileText("C:\\Roaming\\Aim\\someuser\\userinfo.bag"));
    EXPECT_TRUE(os::fake::FileText("C:\\Windows\\aim95\\someuser\\userinfo.bag"));
}

TEST_F(AimClient, ANameFromTheWireCannotLeaveItsFolder) {
    for (const char* file : {"\\userinfo.bag", "\\Aim\\userinfo.bag"}) os::fake::PutFile(file, "above");
    for (const char* noName : {"", "  "}) modSystem::DeleteUserinfoBag(noName);
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
