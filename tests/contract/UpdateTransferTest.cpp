// The update window over real sockets: a small web server in the same loop plays the update server, boxes are
// faked. Natively the files are real and the window is faked; on Windows it is the other way.
#include <vector>

#include "desktop/frmUpdate.h"
#include "os/Files.h"
#include "os/fake/FakeDialog.h"
#include "os/fake/FakeFileDialogs.h"
#include "os/fake/FakeMessageBox.h"
#include "tests/contract/TcpRig.h"

namespace {

constexpr std::int64_t kPatienceMs = 60'000;
constexpr std::size_t kMegabyte = 1024 * 1024;
const std::string kOk = "HTTP/1.1 200 OK\r\n";
const std::string kOffer =
    kOk + "Transfer-Encoding: chunked\r\n\r\n24\r\nUpdate: 18 /setup.exe wrenlow18.exe\r\r\n2\r\n\n\r\r\n";

// Offers an update and answers the request for it; leaves its connections open.
class WebServer {
 public:
    explicit WebServer(const std::string& answer) : answer_(answer) {
        listener_.ConnectionRequest.Bind<&WebServer::listener_ConnectionRequest>(*this);
        listener_.Listen(0);
    }

    std::string Address() const { return "127.0.0.1:" + std::to_string(listener_.Port()); }

    // Whether the other side has ended the connection that it made last, in whatever way.
    bool LastHasEnded() const { return visitors_.back()->events.find_first_of("EF") != std::string::npos; }

 private:
    void listener_ConnectionRequest(std::int32_t id) {
        auto& visitor = *visitors_.emplace_back(std::make_unique<Recorder>());
        visitor.onData = [this, &visitor](std::span<char> bytes) {
            visitor.received.append(bytes.data(), bytes.size());
            if (!visitor.received.ends_with("\r\n\r\n")) return;
            visitor.socket->Send(visitor.received.starts_with("GET /setup.exe ") ? answer_ : kOffer);
        };
        visitor.socket->Accept(id);
    }

    std::string answer_;
    os::TcpListener listener_;
    std::vector<std::unique_ptr<Recorder>> visitors_;
};

class UpdateTransfer : public testing::Test {
 protected:
    UpdateTransfer() : folder(os::ProgramFolder() + "/update-transfer"), place(folder + "/chosen.exe") {
        os::fake::ResetMessageBoxes();
        os::fake::ResetFileDialogs();
        os::MakeFolder(folder);
        os::RemoveFile(place);
    }
    ~UpdateTransfer() override { os::RemoveFile(place); }

    static bool Eventually(const std::function<bool()>& done) {
        return os::RunEventLoopUntil(done, kPatienceMs);
    }

    // The check, the offer, and Download pressed; the user has chosen the place.
    void BeginDownload(frmUpdate& form) const {
        form.CheckForUpdate(false);
        ASSERT_TRUE(Eventually([&] { return form.Window().IsShown(); }));
        os::fake::AnswerSaveFile(place);
        os::fake::DialogUser(form.Window()).Press("cmdDownload");
    }

    std::string folder;
    std::string place;
};

TEST_F(UpdateTransfer, AFileOfManyMegabytesArrivesWholeWithProgress) {
    const auto setup = Pattern(16 * kMegabyte);
    const WebServer server(kOk + "Content-Length: " + std::to_string(setup.size()) + "\r\n\r\n" + setup);
    frmUpdate form(server.Address());
    BeginDownload(form);
    int steps = 0;
    int last = 0;
    ASSERT_TRUE(Eventually([&] {
        const int progress = form.Window().Value("prgDownload");
        EXPECT_GE(progress, last);
        if (progress > last) ++steps;
        last = progress;
        return !os::fake::ShownBoxes().empty();
    }));
    EXPECT_EQ(os::fake::ShownBoxes().front().title, "Download Complete");
    EXPECT_GT(steps, 10);
    EXPECT_EQ(last, static_cast<int>(setup.size()));
    EXPECT_TRUE(os::ReadWholeFile(place, setup.size() + 1) == setup);
    EXPECT_FALSE(os::FileExists(place + ".0.tmp"));
}

TEST_F(UpdateTransfer, CancelEndsTheConnectionInTheMiddle) {
    const WebServer server(kOk + "Content-Length: 4194304\r\n\r\n" + Pattern(2 * kMegabyte));
    frmUpdate form(server.Address());
    BeginDownload(form);
    ASSERT_TRUE(Eventually([&] { return form.Window().Value("prgDownload") > 0; }));
    os::fake::DialogUser(form.Window()).Press("cmdClose");
    EXPECT_TRUE(Eventually([&] { return server.LastHasEnded(); }));
    EXPECT_FALSE(os::FileExists(place));
    EXPECT_FALSE(os::FileExists(place + ".0.tmp"));
    EXPECT_TRUE(os::fake::ShownBoxes().empty());
}

}  // namespace
