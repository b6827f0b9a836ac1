#include "os/Resolver.h"

#include <winsock2.h>

#include <windows.h>
#include <ws2tcpip.h>

#include <list>
#include <memory>
#include <new>

#include "base/Trap.h"
#include "os/SystemAddress.h"
#include "os/Watched.h"
#include "os/win32/Handle.h"
#include "os/win32/HiddenWindow.h"
#include "os/win32/SystemError.h"

namespace os {
namespace {

constexpr UINT kAnswered = WM_APP + 1;
constexpr DWORD kPostAgainMs = 50;

class Resolver;

struct LookUp {
    Resolver* resolver;
    std::uint64_t id;
    std::string host;
    LookUpReceiver* receiver;
    std::int32_t number = 0;
    std::vector<Address> addresses;
    std::list<LookUp>::iterator place{};
};

class Lock {
 public:
    explicit Lock(CRITICAL_SECTION& section) : section_(section) { EnterCriticalSection(&section_); }
    ~Lock() { LeaveCriticalSection(&section_); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

 private:
    CRITICAL_SECTION& section_;
};

// Told by a message, and heard in the next turn of the loop.
class Resolver : HiddenWindow, Watched {
 public:
    Resolver() : HiddenWindow("Wrenlow resolver") {
        InitializeCriticalSection(&section_);
        TakeSlot();
    }

    void Start(LookUp lookUp) {
        const Lock lock(section_);
        const auto place = running_.insert(running_.end(), std::move(lookUp));
        place->place = place;
        const os::Handle thread(CreateThread(nullptr, 0, Run, &*place, 0, nullptr));
        if (!thread) {
            const auto number = GetLastError();
            running_.erase(place);
            ThrowSystemError(number);
        }
    }

 private:
    static DWORD CALLBACK Run(void* argument) noexcept {
        auto& lookUp = *static_cast<LookUp*>(argument);
        try {
            lookUp.number = LookUpAddresses(lookUp.host, lookUp.addresses);
        } catch (const std::bad_alloc&) {
            lookUp.number = WSA_NOT_ENOUGH_MEMORY;
        }
        auto& resolver = *lookUp.resolver;
        {
            const Lock lock(resolver.section_);
            resolver.done_.splice(resolver.done_.end(), resolver.running_, lookUp.place);
        }
        while (PostMessageA(resolver.Handle(), kAnswered, 0, 0) == FALSE) Sleep(kPostAgainMs);
        return 0;
    }

    std::optional<LRESULT> OnMessage(UINT message, WPARAM, LPARAM) override {
        if (message != kAnswered) return {};
        Wake();
        return 0;
    }

    void Ready(std::uint32_t) override {
        std::list<LookUp> done;
        {
            const Lock lock(section_);
            done.swap(done_);
        }
        for (const auto& one : done) {
            Trap("EventLoop:Dispatch", [&] { one.receiver->LookedUp(one.id, one.number, one.addresses); });
        }
    }

    CRITICAL_SECTION section_;  // guards the lists; a running look-up is its thread's
    std::list<LookUp> running_, done_;
};

}  // namespace

// Made with the first question, and never destroyed: sockets of static storage close after the end of main.
void StartLookUp(std::uint64_t id, const std::string& host, LookUpReceiver& receiver) {
    static Resolver& resolver = *new Resolver;
    resolver.Start({&resolver, id, host, &receiver, 0, {}});
}

}  // namespace os
