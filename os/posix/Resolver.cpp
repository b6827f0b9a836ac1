#include <netdb.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "os/net/Questions.h"
#include "os/net/Watched.h"
#include "os/posix/FileDescriptor.h"

namespace os::net {
namespace {

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

class Resolver : Watched, public Questions {
 public:
    Resolver() {
        if (!shared_->answered) posix::ThrowLastError();
        Watch(shared_->answered.Get(), kReadable);
    }

 private:
    void LookUpLater(Question question) override {
        const std::lock_guard lock(shared_->mutex);
        if (shared_->threads < kMostThreads) {
            std::thread(AnswerQuestions, shared_).detach();  // waits for the lock
            ++shared_->threads;
        }
        shared_->questions.push_back(std::move(question));
    }

    void Ready(std::uint32_t) override {
        eventfd_t count = 0;
        ::eventfd_read(shared_->answered.Get(), &count);
        std::vector<Answer> answers;
        {
            const std::lock_guard lock(shared_->mutex);
            answers.swap(shared_->answers);
        }
        Deliver(answers);
    }

    std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
};

}  // namespace

Questions& TheQuestions() {
    static Resolver& resolver = *new Resolver;
    return resolver;
}

}  // namespace os::net
