#include "net/Resolver.h"

#include <algorithm>
#include <exception>
#include <list>

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "net/EventLoop.h"
#include "os/Resolver.h"

namespace net {
namespace {

class Resolver : os::LookUpReceiver {
 public:
    QuestionId Ask(const std::string& host, AddressReceiver& receiver) {
        if (questions_.size() == kMaxQuestions)
            throw RuntimeError(os::kTryAgain, "Too many names are asked for");
        auto& question = questions_.emplace_back(++lastId_, host, receiver, *this);
        question.limit.StartOnce(kAnswerLimitMs);
        LookUpMore();
        return lastId_;
    }

    void Cancel(QuestionId id) {
        const auto found = Find(id);
        if (found == questions_.end()) return;
        questions_.erase(found);
        LookUpMore();
    }

 private:
    struct Question {
        Question(QuestionId questionId, const std::string& name, AddressReceiver& asker, Resolver& owner)
            : id(questionId), host(name), receiver(&asker), resolver(&owner) {
            limit.Tick.Bind<&Question::limit_Tick>(*this);
        }
        void limit_Tick() { resolver->Answer(id, failure, {}); }

        QuestionId id;
        std::string host;
        AddressReceiver* receiver;
        Resolver* resolver;
        Timer limit;
        std::int32_t failure = os::kTimedOut;
        bool isLookedUp = false;
    };

    std::list<Question>::iterator Find(QuestionId id) {
        return std::find_if(questions_.begin(), questions_.end(),
                            [=](const auto& one) { return one.id == id; });
    }

    void LookUpMore() {
        auto running = std::count_if(questions_.begin(), questions_.end(),
                                     [](const auto& question) { return question.isLookedUp; });
        for (auto& question : questions_) {
            if (static_cast<std::size_t>(running) == kMaxLookUps || threads_ == kMaxThreads) return;
            if (question.isLookedUp) continue;
            question.isLookedUp = true;
            ++running;
            try {
                os::StartLookUp(question.id, question.host, *this);
                ++threads_;
            } catch (const std::exception&) {
                question.failure = os::kTryAgain;
                question.limit.StartOnce(0);
            }
        }
    }

    void LookedUp(std::uint64_t id, std::int32_t number, const std::vector<os::Address>& addresses) override {
        --threads_;
        Answer(id, number, addresses);
    }

    void Answer(QuestionId id, std::int32_t number, const std::vector<os::Address>& addresses) {
        std::list<Question> answered;
        if (const auto found = Find(id); found != questions_.end())
            answered.splice(answered.end(), questions_, found);
        LookUpMore();
        for (auto& question : answered) question.receiver->AddressesFound(number, addresses);
    }

    std::list<Question> questions_;  // in the order in which they were asked
    std::size_t threads_ = 0;
    QuestionId lastId_ = 0;
};

// Never destroyed: sockets of static storage close after the end of main.
Resolver& TheResolver() {
    static Resolver& resolver = *new Resolver;
    return resolver;
}

}  // namespace

QuestionId AskForAddresses(const std::string& host, AddressReceiver& receiver) {
    return TheResolver().Ask(host, receiver);
}

void CancelQuestion(QuestionId question) {
    if (question != 0) TheResolver().Cancel(question);
}

}  // namespace net
