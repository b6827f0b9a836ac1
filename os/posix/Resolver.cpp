#include "os/Resolver.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <list>
#include <memory>
#include <mutex>
#include <new>
#include <thread>

#include "base/Trap.h"
#include "os/SystemAddress.h"
#include "os/Watched.h"
#include "os/posix/FileDescriptor.h"

namespace os {
namespace {

struct LookUp {
    std::uint64_t id;
    std::string host;
    LookUpReceiver* receiver;
    std::int32_t number = 0;
    std::vector<Address> addresses;
};

// What the loop and the threads share. The last of them to end deletes it: getaddrinfo may sit out its
// time-outs after the program's loop has ended, and must not be waited for.
struct Shared {
    std::mutex mutex;
    std::list<LookUp> running, done;
    posix::FileDescriptor answered{::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)};
};

void Ask(LookUp& lookUp) {
    const int failure = LookUpAddresses(lookUp.host, lookUp.addresses);
    if (failure == EAI_SYSTEM) {
        lookUp.number = errno;
    } else if (failure != 0) {
        lookUp.number = posix::NumberOfLookUp(failure);
    }
}

// The thread. Nothing that it does after the look-up can fail.
void Answer(const std::shared_ptr<Shared>& shared, std::list<LookUp>::iterator lookUp) noexcept {
    try {
        Ask(*lookUp);
    } catch (const std::bad_alloc&) {
        lookUp->number = ENOMEM;
    }
    const std::lock_guard lock(shared->mutex);
    shared->done.splice(shared->done.end(), shared->running, lookUp);
    ::eventfd_write(shared->answered.Get(), 1);
}

class Resolver : Watched {
 public:
    Resolver() {
        if (!shared_->answered) posix::ThrowLastError();
        Watch(shared_->answered.Get(), kReadable);
    }

    void Start(LookUp lookUp) {
        const std::lock_guard lock(shared_->mutex);
        const auto place = shared_->running.insert(shared_->running.end(), std::move(lookUp));
        try {
            std::thread(Answer, shared_, place).detach();
        } catch (...) {
            shared_->running.erase(place);
            throw;
        }
    }

 private:
    void Ready(std::uint32_t) override {
        eventfd_t count = 0;
        ::eventfd_read(shared_->answered.Get(), &count);
        std::list<LookUp> done;
        {
            const std::lock_guard lock(shared_->mutex);
            done.swap(shared_->done);
        }
        for (const auto& one : done) {
            Trap("EventLoop:Dispatch", [&] { one.receiver->LookedUp(one.id, one.number, one.addresses); });
        }
    }

    std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
};

}  // namespace

// Made with the first question, and never destroyed: sockets of static storage close after the end of main.
void StartLookUp(std::uint64_t id, const std::string& host, LookUpReceiver& receiver) {
    static Resolver& resolver = *new Resolver;
    resolver.Start({id, host, &receiver, 0, {}});
}

}  // namespace os
