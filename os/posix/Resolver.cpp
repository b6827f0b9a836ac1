#include "os/net/Resolver.h"

#include <netdb.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "base/Trap.h"
#include "os/net/Watched.h"
#include "os/posix/FileDescriptor.h"

namespace os::net {
namespace {

// Names that take long, because no server answers, keep others waiting only when so many of them do.
constexpr int kMostThreads = 4;

struct Question {
    QuestionId id;
    std::string host;
};

struct Answer {
    QuestionId id;
    std::int32_t number;
    Address address;
};

// What the loop and the threads share. The last of them to end deletes it: getaddrinfo may sit out its
// time-outs after the program's loop has ended, and must not be waited for.
struct Shared {
    std::mutex mutex;
    std::deque<Question> questions;
    std::vector<Answer> answers;
    int threads = 0;
    posix::FileDescriptor answered{::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)};
};

Answer LookUp(const Question& question) {
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int failure = ::getaddrinfo(question.host.c_str(), nullptr, &hints, &found);
    if (failure != 0) return {question.id, failure == EAI_SYSTEM ? errno : EHOSTUNREACH, {}};
    const auto address = reinterpret_cast<const sockaddr_in*>(found->ai_addr)->sin_addr;
    ::freeaddrinfo(found);
    return {question.id, 0, {address.s_addr}};
}

void AnswerQuestions(const std::shared_ptr<Shared>& shared) {
    std::unique_lock lock(shared->mutex);
    while (!shared->questions.empty()) {
        const auto question = std::move(shared->questions.front());
        shared->questions.pop_front();
        lock.unlock();
        const auto answer = LookUp(question);
        lock.lock();
        shared->answers.push_back(answer);
        ::eventfd_write(shared->answered.Get(), 1);
    }
    --shared->threads;
}

class Resolver : Watched {
 public:
    Resolver() {
        if (!shared_->answered) posix::ThrowLastError();
        Watch(shared_->answered.Get(), kReadable);
    }

    QuestionId Ask(const std::string& host, AddressReceiver& receiver) {
        const std::lock_guard lock(shared_->mutex);
        if (shared_->threads < kMostThreads) {
            std::thread(AnswerQuestions, shared_).detach();  // waits for the lock
            ++shared_->threads;
        }
        shared_->questions.push_back({++lastId_, host});
        receivers_.emplace(lastId_, &receiver);
        return lastId_;
    }

    void Cancel(QuestionId id) { receivers_.erase(id); }

 private:
    void Ready(std::uint32_t) override {
        eventfd_t count = 0;
        ::eventfd_read(shared_->answered.Get(), &count);
        std::vector<Answer> answers;
        {
            const std::lock_guard lock(shared_->mutex);
            answers.swap(shared_->answers);
        }
        for (const auto& answer : answers) {
            const auto asked = receivers_.extract(answer.id);
            if (asked.empty()) continue;
            Trap("EventLoop:Dispatch", [&] { asked.mapped()->AddressFound(answer.number, answer.address); });
        }
    }

    std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
    std::map<QuestionId, AddressReceiver*> receivers_;
    QuestionId lastId_ = 0;
};

// Made with the first question, and never destroyed: sockets of static storage close after the end of main.
Resolver& TheResolver() {
    static Resolver& resolver = *new Resolver;
    return resolver;
}

}  // namespace

QuestionId AskForAddress(const std::string& host, AddressReceiver& receiver) {
    return TheResolver().Ask(host, receiver);
}

void CancelQuestion(QuestionId question) {
    if (question != 0) TheResolver().Cancel(question);
}

}  // namespace os::net
