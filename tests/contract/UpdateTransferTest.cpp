// The update window over real sockets: a small web server in the same loop plays the update server, boxes are
// faked. Natively the files are real and the window is faked; on Windows it is the other way.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

#include "desktop/frmUpdate.h"
#include "os/EventLoop.h"
#include "os/Files.h"
#include "os/Tcp.h"
#include "os/fake/FakeDialog.h"
#include "os/fake/FakeFileDialogs.h"
#include "os/fake/FakeMessageBox.h"

namespace {

constexpr std::int64_t kBoundMs = 60'000;
constexpr std::size_t kMegabyte = 1024 * 1024;
const std::string kOk = "HTTP/1.1 200 OK\r\n";

// Answers each request by its path; closes after the answer only when told to.
class WebServer {
 public:
    struct Answer {
        std::string reply;
        bool close = false;
    };
    std::function<Answer(const std::string& path)> answer;

    WebServer() {
        listener_.ConnectionRequest.Bind<&WebServer::listener_ConnectionRequest>(*this);
        listener_.Listen(0);
    }

    std::string Address() const { return "127.0.0.1:" + std::to_string(listener_.Port()); }
    void Stop() { listener_.Close(); }
    // How many connections the other side has ended, in whatever way.
    std::size_t Ended() const { return ended_; }

 private:
    struct Visitor {
        explicit Visitor(WebServer& owner) : server(owner) {
            socket.Data.Bind<&Visitor::socket_Data>(*this);
            socket.Closed.Bind<&Visitor::socket_Closed>(*this);
            socket.Failed.Bind<&Visitor::socket_Failed>(*this);
        }
        void socket_Data(std::span<char> bytes) {
            request.append(bytes.data(), bytes.size());
            if (!request.starts_with("GET ") || !request.ends_with("\r\n\r\n")) return;
            const auto answer = server.answer(request.substr(4, request.find(' ', 4) - 4));
            socket.Send(answer.reply);
            if (answer.close) socket.Close();
        }
        void socket_Closed() {
            ++server.ended_;
            socket.Close();
        }
        void socket_Failed(std::int32_t) { ++server.ended_; }

        WebServer& server;
        os::TcpSocket socket;
        std::string request;
    };

    void listener_ConnectionRequest(std::int32_t id) {
        visitors_.push_back(std::make_unique<Visitor>(*this));
        visitors_.back()->socket.Accept(id);
    }

    os::TcpListener listener_;
    std::vector<std::unique_ptr<Visitor>> visitors_;
    std::size_t ended_ = 0;
};

std::string Pattern(std::size_t size) {
    std::string bytes(size, '\0');
    std::uint32_t state = 1;
    for (auto& byte : bytes) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

class UpdateTransfer : public testing::Test {
 protected:
    void SetUp() override {
        os::fake::ResetMessageBoxes();
        os::fake::ResetFileDialogs();
        folder = os::ProgramFolder() + "/update-transfer";
        os::MakeFolder(folder);
        place = folder + "/chosen.exe";
        os::RemoveFile(place);
        server.answer = [this](const std::string& path) {
            if (path == "/setup.exe") return file;
            return WebServer::Answer{kOk +
                                         "Transfer-Encoding: chunked\r\n\r\n24\r\nUpdate: 18 /setup.exe "
                                         "wrenlow18.exe\r\r\n2\r\n\n\r\r\n",
                                     false};
        };
        form = std::make_unique<frmUpdate>(server.Address());
    }
    void TearDown() override {
        form.reset();
        os::RemoveFile(place);
    }

    bool Eventually(const std::function<bool()>& done) { return os::RunEventLoopUntil(done, kBoundMs); }

    // The check, the offer, and Download pressed; the user has chosen the place.
    void BeginDownload() {
        form->CheckForUpdate(false);
        ASSERT_TRUE(Eventually([&] { return form->Window().IsShown(); }));
        os::fake::AnswerSaveFile(place);
        os::fake::DialogUser(form->Window()).Press("cmdDownload");
    }

    bool BoxComes() {
        return Eventually([] { return !os::fake::ShownBoxes().empty(); });
    }

    bool NothingIsLeft() { return !os::FileExists(place) && !os::FileExists(place + ".0.tmp"); }

    std::string folder;
    std::string place;
    WebServer server;
    WebServer::Answer file;
    std::unique_ptr<frmUpdate> form;
};

TEST_F(UpdateTransfer, FiftyMegabytesArriveWholeWithProgress) {
    const auto setup = Pattern(50 * kMegabyte);
    file.reply = kOk + "Content-Length: " + std::to_string(setup.size()) + "\r\n\r\n" + setup;
    BeginDownload();
    int steps = 0;
    int last = 0;
    const auto finished = [&] {
        const int progress = form->Window().Value("prgDownload");
        EXPECT_GE(progress, last);
        if (progress > last) ++steps;
        last = progress;
        return !os::fake::ShownBoxes().empty();
    };
    ASSERT_TRUE(Eventually(finished));
    EXPECT_EQ(os::fake::ShownBoxes().front().title, "Download Complete");
    EXPECT_GT(steps, 10);
    EXPECT_EQ(last, static_cast<int>(setup.size()));
    EXPECT_TRUE(os::ReadWholeFile(place, setup.size() + 1) == setup);
    EXPECT_FALSE(os::FileExists(place + ".0.tmp"));
}

TEST_F(UpdateTransfer, OneCutOffHalfWayIsToldAndLeavesNothing) {
    file.reply =
        kOk + "Content-Length: " + std::to_string(4 * kMegabyte) + "\r\n\r\n" + Pattern(2 * kMegabyte);
    file.close = true;
    BeginDownload();
    ASSERT_TRUE(BoxComes());
    EXPECT_EQ(os::fake::ShownBoxes().front().text, "The connection ended before the whole file was there.");
    EXPECT_TRUE(NothingIsLeft());
    EXPECT_TRUE(form->Window().IsShown()) << "back at the offer";
}

TEST_F(UpdateTransfer, CancelEndsTheConnectionInTheMiddle) {
    file.reply =
        kOk + "Content-Length: " + std::to_string(4 * kMegabyte) + "\r\n\r\n" + Pattern(2 * kMegabyte);
    BeginDownload();
    ASSERT_TRUE(Eventually([&] { return form->Window().Value("prgDownload") > 0; }));
    const auto before = server.Ended();
    os::fake::DialogUser(form->Window()).Press("cmdClose");
    EXPECT_TRUE(Eventually([&] { return server.Ended() > before; }));
    EXPECT_TRUE(NothingIsLeft());
    EXPECT_TRUE(os::fake::ShownBoxes().empty());
}

TEST_F(UpdateTransfer, WithoutALengthTheFileEndsWithTheConnection) {
    const auto setup = Pattern(kMegabyte);
    file = {kOk + "\r\n" + setup, true};
    BeginDownload();
    ASSERT_TRUE(BoxComes());
    EXPECT_EQ(os::fake::ShownBoxes().front().title, "Download Complete");
    EXPECT_TRUE(os::ReadWholeFile(place, 2 * kMegabyte) == setup);
}

TEST_F(UpdateTransfer, ARefusedConnectionIsToldToWhomAsked) {
    server.Stop();
    form->CheckForUpdate(true);
    ASSERT_TRUE(BoxComes());
    EXPECT_EQ(os::fake::ShownBoxes().front().text, "The connection to the update server failed.");
}

}  // namespace
