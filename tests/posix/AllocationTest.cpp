// A session in which one allocation fails, the first, the second and so on until a session needs no more: the
// connection ends, on both sides, and nothing else does. A program of its own, because it has its own
// operator new.
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <new>

#include "app/services/modRegistry.h"
#include "core/modSocket.h"
#include "features/SessionFeatures.h"
#include "net/EventLoop.h"
#include "os/Clock.h"
#include "os/SettingsFile.h"
#include "os/Sockets.h"
#include "tests/unit/Messages.h"

namespace {

std::atomic<bool> isCounting = false;
std::atomic<long> left = 0;  // allocations until the one that fails
thread_local bool isTest = false;

void* Allocate(std::size_t size) {
    if (isCounting && !isTest && left.fetch_sub(1) == 1) throw std::bad_alloc();
    if (auto* const memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) {
    return Allocate(size);
}
void* operator new[](std::size_t size) {
    return Allocate(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

constexpr std::int64_t kBoundMs = 20'000;
constexpr std::size_t kQueued = 800'000;  // more than a small receiver and the system's buffers hold
constexpr int kMuch = 4'000'000;          // of a buffer

// Turns of the loop, the only code of which allocations fail, until the condition holds.
template <typename Condition>
bool RunUntil(Condition&& condition, std::int64_t milliseconds = kBoundMs) {
    const auto end = os::MonotonicMilliseconds() + milliseconds;
    for (int turns = 0; !condition(); ++turns) {
        if (os::MonotonicMilliseconds() > end) return false;
        isTest = false;
        net::ProcessPendingEvents();
        isTest = true;
        if (turns > 100) ::poll(nullptr, 0, 1);
    }
    return true;
}

// One end of a connection; never blocks.
class Peer {
 public:
    static Peer Connect(std::uint16_t port) {
        constexpr os::Address kLoopback{{127, 0, 0, 1}, false};
        Peer peer;
        peer.socket_ = os::OpenSocket(kLoopback);
        peer.LimitBuffer(4096);
        os::StartConnecting(peer.socket_.Get(), kLoopback, port);
        return peer;
    }
    bool Accept(const os::Socket& listening) {
        if (!socket_) os::AcceptClient(listening.Get(), socket_);
        return IsOpen();
    }
    bool IsOpen() const { return static_cast<bool>(socket_); }

    void Send(const ByteString& bytes) {
        unsent_ += bytes;
        SendMore();
    }
    void SendMore() {
        const os::Part part{unsent_.data(), unsent_.size()};
        unsent_.erase(0, os::Send(socket_.Get(), {&part, 1}).bytes);
    }
    bool HasSent() const { return unsent_.empty() || hasEnded; }
    void Read() {
        static char bytes[65536];
        while (IsOpen() && !hasEnded) {
            const auto taken = os::Receive(socket_.Get(), bytes);
            if (taken.outcome == os::Outcome::WouldBlock) return;
            hasEnded = taken.bytes == 0;
            received.append(bytes, taken.bytes);
        }
    }
    // What the system may hold for it.
    void LimitBuffer(int bytes) {
        ::setsockopt(static_cast<int>(socket_.Get()), SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes);
    }
    void End() { os::EndSending(socket_.Get()); }

    ByteString received;
    bool hasEnded = false;

 private:
    os::Socket socket_;
    ByteString unsent_;
};

const std::string kName = "A User With A Long Name";
const std::string kText(3000, 't');

ByteString Bulk() {
    ByteString bytes;
    for (std::int32_t number = 200; bytes.size() < kQueued; ++number)
        bytes += Frame(2, number, Snac(9, 9, ByteString(1500, static_cast<char>('a' + number % 26))));
    return bytes;
}

class AllocationTest : public testing::Test {
 protected:
    AllocationTest() {
        isTest = true;
        char pattern[] = "/tmp/wrenlow-allocations-XXXXXX";
        folder_ = ::mkdtemp(pattern);
        os::SetSettingsFile(folder_ + "/settings", modRegistry::kSettingsKey);
        modRegistry::WriteSetting("logims", "1");
        modRegistry::WriteSetting("logwhere", folder_ + "/logs");
        std::ofstream(folder_ + "/repl.dat") << "asdf1234\r\nFred, a friend\r\n";
        relay_.emplace(SessionFeatures(), os::Path::FromSystem(folder_), std::uint16_t{0});
        relay_->Listen();
        port_ = os::PortOf(listening_.Get());
    }
    ~AllocationTest() override {
        relay_.reset();
        os::SetSettingsFile("", "");
        EXPECT_EQ(std::system(("rm -rf " + folder_).c_str()), 0);
    }

    // What the two ends of a session have received, and after which step how many bytes.
    struct Session {
        ByteString toClient, toServer;
        std::vector<std::size_t> sizes;
        bool haveEnded = false;
    };

    bool BothEnded() const { return client_.hasEnded && (server_.hasEnded || !server_.IsOpen()); }

    // Waits for what the step brought in the session that went well, or until nothing changes any more where
    // that is this one.
    void Settle(Session& session, const Session* good) {
        const auto total = [&] {
            server_.Accept(listening_);
            if (isReading_) client_.Read();
            server_.Read();
            client_.SendMore();
            if (server_.IsOpen()) server_.SendMore();
            return client_.received.size() + server_.received.size();
        };
        if (good != nullptr) {
            const auto wanted = good->sizes[session.sizes.size()];
            EXPECT_TRUE(RunUntil([&] { return total() >= wanted || BothEnded(); }))
                << "step " << session.sizes.size() << ": half a session is left";
        } else {
            for (std::size_t before = SIZE_MAX; before != total();) {
                before = total();
                RunUntil([&] { return total() != before; }, 100);
            }
        }
        session.sizes.push_back(total());
    }

    // Sign-on by a name, messages under an alias that are logged, frames in pieces, a receiver that does not
    // read for a while, a command if wanted, and the server's goodbye.
    Session Talk(const Session* good, bool hasCommand) {
        Session session;
        const auto settle = [&] { Settle(session, good); };
        client_ = Peer::Connect(relay_->Port());
        server_ = Peer();
        isReading_ = true;
        const auto say = [&](Peer& peer, const ByteString& bytes) {
            if (peer.IsOpen()) peer.Send(bytes);
            settle();
        };
        say(client_, "04 01"_hex + Word(port_) + "00 00 00 01 'us'"_hex);
        client_.Send("'er' 00 'localhost' 00"_hex);
        // A thread of its own looks the name up: quiet does not mean that nothing will come.
        if (good == nullptr)
            RunUntil(
                [&] { return server_.Accept(listening_) && (client_.Read(), !client_.received.empty()); });
        settle();
        say(client_, Frame(1, 1, "00 00 00 01"_hex));
        say(server_, Frame(1, 100, "00 00 00 01"_hex));
        say(client_, Frame(2, 2, Snac(0x17, 2, Tlv(1, kName))));
        say(server_, Frame(2, 101, Snac(1, 0xF, Named(kName))));
        say(client_, Frame(2, 3, Snac(4, 6, OutgoingData("Fred, a friend", Tlv(2, MessageData(kText))))));
        const auto heard = Frame(2, 102, Snac(4, 7, IncomingData("asdf1234", Tlv(2, MessageData(kText)))));
        say(server_, heard.substr(0, 40));
        say(server_, heard.substr(40));
        isReading_ = false;
        say(server_, Bulk());
        if (hasCommand) {
            isTest = false;
            modSocket::SetAwayMessage(kName, kText);
            isTest = true;
        }
        say(client_, Frame(2, 4, Snac(9, 9, kText)) + Frame(2, 5, Snac(9, 9, "")).substr(0, 9));
        if (server_.IsOpen()) {
            // The goodbye stands right behind a whole frame.
            server_.Send(Frame(2, 0x7000, "") + "2A 02 70 01"_hex);
        }
        settle();
        isReading_ = true;
        client_.LimitBuffer(kMuch);
        settle();
        if (server_.IsOpen() && server_.HasSent()) server_.End();
        session.haveEnded = RunUntil([&] {
            client_.Read();
            server_.Read();
            if (client_.hasEnded) client_.End();
            return BothEnded();
        });
        session.toClient = client_.received;
        session.toServer = server_.received;
        return session;
    }

    std::string folder_;
    std::optional<Relay> relay_;
    os::Socket listening_ = os::ListenOnLoopback(0);
    std::uint16_t port_ = 0;
    Peer client_, server_;
    bool isReading_ = true;
};

TEST_F(AllocationTest, OneThatFailsEndsItsConnectionAndNothingElse) {
    const auto good = Talk(nullptr, false);
    ASSERT_TRUE(good.haveEnded);
    const auto goodWithCommand = Talk(nullptr, true);
    ASSERT_LT(good.toServer.size() + kText.size(), goodWithCommand.toServer.size());

    // Beside it stands a client that does not read for now what its server sends: the relay holds it.
    Peer stuckClient = Peer::Connect(relay_->Port()), stuckServer;
    stuckClient.Send("04 01"_hex + Word(port_) + "7F 00 00 01 00"_hex);
    ASSERT_TRUE(RunUntil([&] {
        return stuckClient.SendMore(), stuckClient.Read(),
               stuckServer.Accept(listening_) && !stuckClient.received.empty();
    }));
    stuckClient.Send(Frame(1, 1, "hello"));
    stuckServer.Send(Bulk());
    RunUntil([&] { return stuckServer.SendMore(), false; }, 200);

    long tries = 0;
    for (bool hasFailed = true; hasFailed && !HasFailure(); ++tries) {
        left = tries + 1;
        isCounting = true;
        const auto session = Talk(&good, true);
        isCounting = false;
        hasFailed = left < 1;
        SCOPED_TRACE("allocation " + std::to_string(tries + 1));
        EXPECT_TRUE(session.haveEnded) << "a side is left";
        EXPECT_TRUE(good.toClient.starts_with(session.toClient));
        EXPECT_TRUE(good.toServer.starts_with(session.toServer) ||
                    goodWithCommand.toServer.starts_with(session.toServer));
        if (!hasFailed) {
            EXPECT_EQ(session.toClient.size(), good.toClient.size());
        }
    }
    EXPECT_GT(tries, 100);

    stuckClient.LimitBuffer(kMuch);
    ASSERT_TRUE(RunUntil([&] {
        stuckClient.Read();
        stuckServer.SendMore();
        stuckServer.Read();
        return stuckClient.received.size() >= 8 + Bulk().size() && stuckServer.HasSent();
    }));
    EXPECT_TRUE(stuckClient.received.substr(8) == Bulk());
    EXPECT_EQ(stuckServer.received, Frame(1, 1, "hello"));
    EXPECT_FALSE(stuckClient.hasEnded || stuckServer.hasEnded);
}

}  // namespace
