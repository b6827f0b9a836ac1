// What tests/desk does not show of setting up, ending and cleaning up after the AIM client.
#include "app/services/modRegistry.h"
#include "app/services/modSystem.h"
#include "os/fake/FakeFiles.h"
#include "os/fake/FakeProcesses.h"
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
        os::fake::RunningProcesses() = {{7, "C:\\Windows\\explorer.exe"},
                                        {8, "C:\\AIM95\\aim.exe", mayBeEnded}};
    }
    static bool AimRuns() { return os::fake::RunningProcesses().size() == 2; }

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
    EXPECT_TRUE(os::fake::StartedPrograms().empty());
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
