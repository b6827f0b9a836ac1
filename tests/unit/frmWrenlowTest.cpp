// The Wrenlow window and its pages.
#include "desktop/frmWrenlow.h"

#include <stdexcept>

#include "app/services/modRegistry.h"
#include "desktop/Report.h"
#include "desktop/frmBug.h"
#include "os/Files.h"
#include "os/fake/FakeDesktop.h"
#include "tests/unit/FormRig.h"

namespace {

using os::fake::DialogUser;

std::string told;  // what the pages below were told

struct ToldPage : WrenlowPage {
    explicit ToldPage(char name) : name_(name) {}
    void Opened() override { told += std::string("+") + name_; }
    void Left() override { told += std::string("-") + name_; }
    void Refresh() override {
        told += name_;
        if (name_ == 'b') throw std::runtime_error("on purpose");
    }

 private:
    char name_;
};

constexpr os::Control kFirst[] = {{os::ControlKind::TextBox, "firstText", "", {7, 7, 80, 12}}};
constexpr os::Control kSecond[] = {
    {os::ControlKind::VirtualList, "secondList", "", {7, 7, 80, 60, os::kFill}}};
const WrenlowPageRow kA{"First", kFirst, [](os::Dialog&) -> std::unique_ptr<WrenlowPage> {
                            return std::make_unique<ToldPage>('a');
                        }};
const WrenlowPageRow kB{"Second", kSecond, [](os::Dialog&) -> std::unique_ptr<WrenlowPage> {
                            return std::make_unique<ToldPage>('b');
                        }};
constexpr const WrenlowPageRow* kPages[] = {&kA, &kB};

struct Wrenlow : FreshWorld {
    Wrenlow() { told.clear(); }
    static std::string Told() { return std::exchange(told, ""); }
};

// The pages that the program has.
struct WindowPages : FormRig {
    void Open(const char* page) { form.Start(page); }
    void Tick() { os::fake::AdvanceClock(WrenlowPage::kRefreshMs); }
    Texts Kinds() {
        auto kinds = Rows(form.Window(), "trFrames", 8);
        for (auto& kind : kinds) kind.erase(0, kind.rfind('|') + 1);
        return kinds;
    }

    frmWrenlow form;
    User user{form.Window()};
};

constexpr int kLegColumns = 8;

}  // namespace

TEST_F(Wrenlow, TellsItsPagesWhichOneIsLookedAt) {
    Rig rig;
    frmWrenlow form(kPages);
    DialogUser user(form.Window());
    form.Start();
    EXPECT_EQ(Told(), "+aa");
    EXPECT_TRUE(user.HasFocus("SSTab1"));
    form.Start();
    EXPECT_EQ(Told(), "") << "open already";
    user.Choose("SSTab1", 1);
    EXPECT_EQ(Told(), "-a+bb");
    EXPECT_TRUE(user.Sees("secondList"));
    form.Start("First");
    EXPECT_EQ(Told(), "-b+aa");
    form.Start("no page");
    user.PressEscape();
    EXPECT_EQ(Told(), "-a");
    EXPECT_FALSE(form.Window().IsShown());
    form.Start("Second");
    EXPECT_EQ(Told(), "+bb");
    EXPECT_EQ(rig.Reports().back().where, "frmWrenlow:Refresh");
}

TEST_F(Wrenlow, OpensWhereItWas) {
    const os::WindowPlace place{40, 30, 420, 260, true};
    {
        frmWrenlow form(kPages);
        form.Window().Show({.place = place});
        DialogUser(form.Window()).PressEscape();
    }
    frmWrenlow form(kPages);
    form.Start();
    EXPECT_EQ(form.Window().Place(), place);
    for (const char* text : {"", "1 2 3", "a b c d e"}) {
        modRegistry::SetValue(os::RegistryHive::CurrentUser, "software\\Wrenlow\\window\\", "place", text,
                              os::RegistryType::String);
        frmWrenlow other(kPages);
        other.Start();
        EXPECT_EQ(other.Window().Place().left, 0) << text;
    }
}

TEST_F(WindowPages, ConnectionsShowsEachLegAndWhatBecameOfTheSignOn) {
    os::fake::PutFile("/program/manual/why.html", "");
    os::fake::PutFile("/program/manual/why-aim-is-not-set-up.html", "");
    os::fake::processes.running = {{8, "C:\\AIM95\\aim.exe"}};
    Open("Connections");
    EXPECT_EQ(form.Window().Text("conVerdict"),
              "No client has connected yet. AIM runs, but it is not set up to use Wrenlow.");
    user.Press("conWhatToDo");
    auto pair = rig.SignOn("My Name");
    Tick();
    EXPECT_EQ(form.Window().Text("conVerdict"), "My Name is signed on.");
    EXPECT_EQ(form.Window().Text("conIcon"), "information");
    ASSERT_EQ(form.Window().RowCount("conLegs"), 1);
    EXPECT_EQ(Rows(form.Window(), "conLegs", kLegColumns)[0].substr(19),
              "|My Name|BOS|10.0.0.5:5190|10.0.0.5:5190|1 / 10 B|2 / 34 B|connected");

    pair.server.Feed(Frame(4, 102, Tlv(9, "00 01"_hex)));
    pair.server.Close();
    auto& refused = rig.Connect();
    Rig::LastServer().RefuseConnect();
    net::ProcessPendingEvents();
    Tick();
    EXPECT_EQ(form.Window().Text("conVerdict"),
              "The server 10.0.0.5:5190 refuses the connection: nothing listens there.");
    EXPECT_EQ(form.Window().Text("conIcon"), "warning");
    EXPECT_EQ(form.Window().Cell("conLegs", 1, kLegColumns - 1), "refused by 10.0.0.5:5190");
    EXPECT_TRUE(refused.SawClose());
    user.Press("conWhatToDo");
    EXPECT_EQ(os::fake::shell.opened,
              (Texts{"/program/manual/why-aim-is-not-set-up.html", "/program/manual/why.html"}));
    os::RemoveFile(os::ProgramFolder() / "manual" / "why.html");
    user.Press("conWhatToDo");
    EXPECT_EQ(TakeBoxes().size(), 1u) << "the manual is missing, and nobody says so";

    user.Press("conCopy");
    EXPECT_EQ(os::fake::shell.clipboard, ReportText());
    EXPECT_NE(ReportText().find("\r\nVerdict: The server 10.0.0.5:5190 refuses"), std::string::npos)
        << ReportText();
    SharedForm<frmBug>().Start();
    EXPECT_EQ(User("Reprot A Bug").Window().Text("txtComments"), ReportText());
}

TEST_F(WindowPages, TrafficKeepsFramesOnlyWhileItIsLookedAt) {
    auto& traffic = rig.TheOverview().traffic;
    auto pair = rig.SignOn("My Name");
    Open("Connections");
    EXPECT_FALSE(traffic.IsOn());
    Open("Traffic");
    pair.client.Feed(Frame(2, 2, Snac(2, 4, Tlv(4, "gone"))));
    pair.server.Feed(Frame(2, 102, Snac(4, 7, IncomingData("tom", Tlv(2, MessageData("hello you"))))));
    Tick();
    ASSERT_EQ(Kinds().size(), 2u);
    EXPECT_EQ(Rows(form.Window(), "trFrames", 7)[0].substr(12), "|My Name|0|to server|2|2|");
    EXPECT_EQ(form.Window().Text("trCount"), "2 frames kept, 2 shown");

    user.Choose("trFrames", 1);
    const auto detail = form.Window().Text("trDetail");
    EXPECT_TRUE(detail.starts_with("FLAP: channel 2\r\n  number at the sender: 102\r\n")) << detail;
    EXPECT_NE(detail.find("hello you"), std::string::npos) << detail;

    user.Press("trPause");
    pair.client.Feed(Frame(2, 3, Snac(2, 4, Tlv(4, "paused"))));
    Tick();
    EXPECT_EQ(Kinds().size(), 2u);
    user.Press("trPause");
    EXPECT_TRUE(traffic.IsOn());
    user.Choose("SSTab1", 0);
    EXPECT_FALSE(traffic.IsOn()) << "another page";
    Open("Traffic");
    EXPECT_EQ(Kinds().size(), 2u) << "what was seen is still there";
    user.Press("trClear");
    EXPECT_EQ(Kinds().size(), 0u);
    EXPECT_EQ(form.Window().Text("trDetail"), "");
    user.PressEscape();
    EXPECT_FALSE(traffic.IsOn()) << "the window is closed";
}

TEST_F(WindowPages, TrafficIsFilteredByNameDirectionFamilyAndText) {
    auto walter = rig.SignOn("Walter");
    auto ada = rig.SignOn("Ada");
    Open("Traffic");
    walter.client.Feed(Frame(2, 2, Snac(2, 4, Tlv(4, "gone fishing"))));
    ada.server.Feed(Frame(2, 102, Snac(4, 7, IncomingData("tom", Tlv(2, MessageData("hello"))))));
    ada.client.Feed(Frame(2, 2, Snac(1, 0x11, "00 00 00 00"_hex)));
    Tick();
    const auto all = Kinds();
    ASSERT_EQ(all.size(), 3u);
    const auto shows = [&](Texts kinds) { EXPECT_EQ(Kinds(), kinds); };
    user.Type("trName", "ad a");
    shows({all[1], all[2]});
    user.Choose("trDirection", 1);
    shows({all[2]});
    user.Choose("trDirection", 2);
    shows({all[1]});
    user.Type("trName", "");
    user.Choose("trDirection", 0);
    user.Choose("trFamily", 2);
    shows({all[0]});
    user.Choose("trFamily", 0);
    user.Type("trText", "HELLO");
    shows({all[1]});
}

TEST_F(WindowPages, ASavedCaptureHasThePasswordsOnlyIfTheUserSaysSo) {
    auto pair = rig.ConnectTalking();
    Open("Traffic");
    pair.client.Feed(Frame(2, 2, Snac(0x17, 2, Tlv(1, "walter") + Tlv(0x25, "0123456789abcdef"))));
    Tick();
    using enum os::BoxResult;
    for (const auto& [answer, isThere, hasHash] :
         {std::tuple{Cancel, false, false}, {Yes, true, false}, {No, true, true}}) {
        os::fake::fileDialogs.answer = "/program/walter.pcapng";
        os::fake::boxes.answers = {answer};
        user.Press("trSave");
        const auto file = os::fake::FileText("/program/walter.pcapng");
        EXPECT_EQ(file.has_value(), isThere);
        EXPECT_EQ(file.value_or("").find("0123456789abcdef") != std::string::npos, hasHash);
    }
    EXPECT_EQ(os::fake::fileDialogs.asked.back().proposedName, "wrenlow.pcapng");
}
