#include <winsock2.h>

#include <windows.h>
#include <ws2tcpip.h>

#include <deque>
#include <vector>

#include "os/net/Questions.h"
#include "os/net/Turn.h"
#include "os/win32/HiddenWindow.h"
#include "os/win32/SystemError.h"

namespace os::net {
namespace {

constexpr UINT kAnswered = WM_APP + 1;

Answer LookUp(const Question& question) {
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int failure = getaddrinfo(question.host.c_str(), nullptr, &hints, &found);
    if (failure != 0) return {question.id, failure, {}};
    const auto address = reinterpret_cast<const sockaddr_in*>(found->ai_addr)->sin_addr;
    freeaddrinfo(found);
    return {question.id, 0, {address.s_addr}};
}

// What the loop and the threads share.
class Lock {
 public:
    explicit Lock(CRITICAL_SECTION& section) : section_(section) { EnterCriticalSection(&section_); }
    ~Lock() { LeaveCriticalSection(&section_); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

 private:
    CRITICAL_SECTION& section_;
};

class Resolver : HiddenWindow, public Questions {
 public:
    Resolver() : HiddenWindow("Wrenlow resolver") { InitializeCriticalSection(&section_); }

 private:
    void LookUpLater(Question question) override {
        const Lock lock(section_);
        questions_.push_back(std::move(question));
        if (threads_ < kMostThreads) StartThread();
    }

    void StartThread() {
        const HANDLE thread = CreateThread(nullptr, 0, Run, this, 0, nullptr);  // waits for the lock
        if (thread != nullptr) {
            CloseHandle(thread);
            ++threads_;
        } else if (threads_ == 0) {
            questions_.pop_back();
            ThrowLastError();
        }
    }

    static DWORD CALLBACK Run(void* self) {
        static_cast<Resolver*>(self)->AnswerQuestions();
        return 0;
    }

    void AnswerQuestions() {
        while (true) {
            Question question;
            {
                const Lock lock(section_);
                if (questions_.empty()) {
                    --threads_;
                    return;
                }
                question = std::move(questions_.front());
                questions_.pop_front();
            }
            const auto answer = LookUp(question);
            const Lock lock(section_);
            answers_.push_back(answer);
            PostMessageA(Handle(), kAnswered, 0, 0);
        }
    }

    std::optional<LRESULT> OnMessage(UINT message, WPARAM, LPARAM) override {
        if (message != kAnswered) return {};
        std::vector<Answer> answers;
        {
            const Lock lock(section_);
            answers.swap(answers_);
        }
        const TurnScope scope;
        Deliver(answers);
        return 0;
    }

    CRITICAL_SECTION section_;  // guards the questions, the answers and the number of threads
    std::deque<Question> questions_;
    std::vector<Answer> answers_;
    int threads_ = 0;
};

}  // namespace

Questions& TheQuestions() {
    static Resolver& resolver = *new Resolver;
    return resolver;
}

}  // namespace os::net
