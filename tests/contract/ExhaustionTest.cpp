// What the native sockets do when the system runs out of open files, or does not even try.
#include <sys/resource.h>
#include <unistd.h>

#include "tests/contract/TcpRig.h"

namespace {

// Leaves so many descriptors for the rest of the test.
class FewFiles {
 public:
    explicit FewFiles(rlim_t free) {
        ::getrlimit(RLIMIT_NOFILE, &before_);
        const int next = ::dup(STDIN_FILENO);
        ::close(next);
        const rlimit few{static_cast<rlim_t>(next) + free, before_.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &few);
    }
    ~FewFiles() { ::setrlimit(RLIMIT_NOFILE, &before_); }

 private:
    rlimit before_{};
};

TEST_F(TcpContract, WithoutFreeFilesAcceptingPausesAndRecovers) {
    Recorder first, second;
    toAccept = {&first, &second};
    auto files = std::make_unique<FewFiles>(2);
    RawPeer peer(listener.Port()), waiting(listener.Port());
    peer.Send("1");
    waiting.Send("2");

    int turns = 0;
    net::RunEventLoopUntil([&] { return ++turns, false; }, 300);
    EXPECT_EQ(requests, 0);
    EXPECT_LT(turns, 50);  // a loop that spun would make some hundred thousand

    files.reset();
    EXPECT_TRUE(Wait([&] { return first.received == "1" && second.received == "2"; }));
}

TEST_F(TcpContract, WithoutFreeFilesConnectingFailsFromTheLoop) {
    Recorder client;
    {
        const FewFiles files(0);
        client.socket->Connect("127.0.0.1", listener.Port());
        EXPECT_EQ(client.events, "");
        EXPECT_TRUE(Wait([&] { return client.events == "F"; }));
        EXPECT_EQ(client.failure, EMFILE);
    }
    client.events.clear();
    client.socket->Connect("127.0.0.1", listener.Port());
    EXPECT_TRUE(Wait([&] { return client.events.starts_with('C'); }));
}

TEST_F(TcpContract, AnAddressThatTheSystemRefusesAtOnceFailsFromTheLoop) {
    Recorder client;
    client.socket->Connect("255.255.255.255", 5190);
    EXPECT_EQ(client.events, "");
    EXPECT_TRUE(Wait([&] { return client.events == "F"; }));
}

}  // namespace
