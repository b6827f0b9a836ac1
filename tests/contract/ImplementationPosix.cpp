#include <netinet/in.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <stdexcept>

#include "os/SettingsFile.h"
#include "tests/contract/Implementation.h"

namespace {
std::string folder;  // of the settings file
}

void PrepareContract() {}

void BeginRegistryTest() {
    char pattern[] = "/tmp/wrenlow-settings-XXXXXX";
    folder = mkdtemp(pattern);
    os::SetSettingsFile(folder + "/new/settings", "software\\Wrenlow\\");
}

void EndRegistryTest() {
    unlink((folder + "/new/settings").c_str());
    rmdir((folder + "/new").c_str());
    rmdir(folder.c_str());
    os::SetSettingsFile("", "");
}

struct RawPeer::Impl {
    ~Impl() { ::close(descriptor); }
    int descriptor;
};

RawPeer::RawPeer(std::uint16_t port) : impl_(new Impl{::socket(AF_INET, SOCK_STREAM, 0)}) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(impl_->descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("the raw peer cannot connect");
    const timeval limit{5, 0};
    ::setsockopt(impl_->descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
}

RawPeer::~RawPeer() = default;

void RawPeer::Send(std::string_view bytes) {
    if (::send(impl_->descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL) < 0)
        throw std::runtime_error("the raw peer cannot send");
}

void RawPeer::EndDirection() {
    ::shutdown(impl_->descriptor, SHUT_WR);
}

void RawPeer::Abort() {
    const linger reset{1, 0};
    ::setsockopt(impl_->descriptor, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
    impl_.reset();
}

std::string RawPeer::Receive(std::size_t count) {
    std::string bytes(count, '\0');
    const auto received = ::recv(impl_->descriptor, bytes.data(), count, MSG_WAITALL);
    bytes.resize(received > 0 ? static_cast<std::size_t>(received) : 0);
    return bytes;
}

bool CanAbort() {
    return true;
}
