// winrelay: the least that a SOCKS4 relay on window messages has to do, to measure wrenlow.exe against: one
// window message per socket event (WSAAsyncSelect), one read per message, sent on at once. It copies bytes
// and knows nothing of frames. Usage: winrelay PORT; it ends when it is killed.
#include <winsock2.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace {

constexpr UINT kSocketEvent = WM_USER;
constexpr std::size_t kReadBytes = std::size_t{256} * 1024;
// The shortest request: version, command, port, address, and a user name that is only its end.
constexpr std::size_t kFixedRequest = 8;

HWND window;
SOCKET listener;

// One end of a pair.
struct Side {
    SOCKET handle = INVALID_SOCKET;
    Side* other = nullptr;   // null until the request is whole
    bool connected = false;  // may be sent to
    bool ended = false;      // its peer sends no more
    std::string unsent;      // what its peer has not taken, or the request while it comes
};

std::unordered_map<SOCKET, std::unique_ptr<Side>> sides;

void Watch(SOCKET handle) {
    const BOOL on = TRUE;
    ::setsockopt(handle, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
    ::WSAAsyncSelect(handle, window, kSocketEvent, FD_READ | FD_WRITE | FD_CONNECT | FD_CLOSE);
}

Side& Add(SOCKET handle) {
    auto& side = sides[handle];
    side = std::make_unique<Side>();
    side->handle = handle;
    return *side;
}

void Drop(Side& side) {
    auto* const other = side.other;
    const auto handle = side.handle;
    sides.erase(handle);
    ::closesocket(handle);
    if (other == nullptr) return;
    other->other = nullptr;
    Drop(*other);
}

// Sends until all is taken or more is refused: FD_WRITE comes only after a refusal. What was taken, or
// nothing when the connection is broken.
std::optional<std::size_t> SendSome(SOCKET handle, std::string_view bytes) {
    std::size_t taken = 0;
    while (taken < bytes.size()) {
        const int count = ::send(handle, bytes.data() + taken, static_cast<int>(bytes.size() - taken), 0);
        if (count < 0 && ::WSAGetLastError() == WSAEWOULDBLOCK) break;
        if (count < 0) return std::nullopt;
        taken += static_cast<std::size_t>(count);
    }
    return taken;
}

bool SendUnsent(Side& side) {
    if (!side.connected || side.unsent.empty()) return true;
    const auto taken = SendSome(side.handle, side.unsent);
    if (taken) side.unsent.erase(0, *taken);
    return taken.has_value();
}

// Sends at once; only what the system does not take is kept.
bool Send(Side& side, std::string_view bytes) {
    if (side.connected && side.unsent.empty()) {
        const auto taken = SendSome(side.handle, bytes);
        if (!taken) return false;
        bytes.remove_prefix(*taken);
    }
    side.unsent += bytes;
    return true;
}

// The client's request: opens the way to the server once it is whole.
bool ReadRequest(Side& client, std::string_view bytes) {
    client.unsent += bytes;
    const auto& request = client.unsent;
    if (request.size() <= kFixedRequest || request.back() != '\0') return true;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    request.copy(reinterpret_cast<char*>(&address.sin_port), 2, 2);
    request.copy(reinterpret_cast<char*>(&address.sin_addr), 4, 4);
    client.unsent.clear();

    const auto handle = ::socket(AF_INET, SOCK_STREAM, 0);
    if (handle == INVALID_SOCKET) return false;
    auto& server = Add(handle);
    server.other = &client;
    client.other = &server;
    Watch(handle);
    const int result = ::connect(handle, reinterpret_cast<sockaddr*>(&address), sizeof address);
    return result == 0 || ::WSAGetLastError() == WSAEWOULDBLOCK;
}

// One read. While the other end holds unsent bytes nothing is read, and FD_READ does not come again; the same
// before our reply to the client has gone out, which must come first.
bool Read(Side& side) {
    if (!side.connected) return true;
    if (side.other != nullptr && !side.other->unsent.empty()) return true;
    static char buffer[kReadBytes];
    const int count = ::recv(side.handle, buffer, sizeof buffer, 0);
    if (count < 0) return ::WSAGetLastError() == WSAEWOULDBLOCK;
    if (count == 0) return false;
    const std::string_view bytes(buffer, static_cast<std::size_t>(count));
    return side.other != nullptr ? Send(*side.other, bytes) : ReadRequest(side, bytes);
}

bool Connected(Side& server, int error) {
    if (error != 0) return false;
    server.connected = true;
    return SendUnsent(server) && Send(*server.other, std::string_view("\0\x5A\0\0\0\0\0\0", 8)) &&
           Read(server);
}

// Hands on what is still there before the end, as far as the other end takes it.
bool ReadToEnd(Side& side) {
    side.ended = true;
    while (side.other != nullptr && side.other->unsent.empty()) {
        if (!Read(side)) return false;
    }
    return side.other != nullptr;
}

// Room to send again; whoever waited for it reads on.
bool Writable(Side& side) {
    if (!SendUnsent(side)) return false;
    if (!side.unsent.empty() || side.other == nullptr) return true;
    return side.other->ended ? ReadToEnd(*side.other) : Read(*side.other);
}

void AcceptClient() {
    const auto handle = ::accept(listener, nullptr, nullptr);
    if (handle == INVALID_SOCKET) return;
    Add(handle).connected = true;
    Watch(handle);
}

LRESULT CALLBACK WindowProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != kSocketEvent) return ::DefWindowProcW(handle, message, wParam, lParam);
    if (wParam == listener) return AcceptClient(), 0;
    const auto found = sides.find(wParam);
    if (found == sides.end()) return 0;
    auto& side = *found->second;
    bool alive = true;
    switch (WSAGETSELECTEVENT(lParam)) {
        case FD_CONNECT:
            alive = Connected(side, WSAGETSELECTERROR(lParam));
            break;
        case FD_READ:
            alive = Read(side);
            break;
        case FD_WRITE:
            alive = Writable(side);
            break;
        case FD_CLOSE:
            alive = ReadToEnd(side);
            break;
    }
    if (!alive) Drop(side);
    return 0;
}

bool Listen(std::uint16_t port) {
    listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return ::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
           ::listen(listener, SOMAXCONN) == 0 &&
           ::WSAAsyncSelect(listener, window, kSocketEvent, FD_ACCEPT) == 0;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) return std::fputs("usage: winrelay PORT\n", stderr), 2;
    WSADATA data;
    if (::WSAStartup(MAKEWORD(2, 2), &data) != 0) return 1;
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = WindowProcedure;
    windowClass.lpszClassName = L"winrelay";
    ::RegisterClassW(&windowClass);
    window = ::CreateWindowExW(0, windowClass.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                               nullptr, nullptr);
    if (!Listen(static_cast<std::uint16_t>(std::atoi(arguments[1])))) {
        return std::fputs("winrelay: cannot listen\n", stderr), 1;
    }
    MSG message;
    while (::GetMessageW(&message, nullptr, 0, 0) > 0) ::DispatchMessageW(&message);
    return 0;
}
