#include "os/net/Questions.h"

#include "base/Trap.h"

namespace os::net {

QuestionId Questions::Ask(const std::string& host, AddressReceiver& receiver) {
    LookUpLater({lastId_ + 1, host});
    receivers_.emplace(++lastId_, &receiver);
    return lastId_;
}

void Questions::Deliver(const std::vector<Answer>& answers) {
    for (const auto& answer : answers) {
        const auto asked = receivers_.extract(answer.id);
        if (asked.empty()) continue;
        Trap("EventLoop:Dispatch", [&] { asked.mapped()->AddressFound(answer.number, answer.address); });
    }
}

QuestionId AskForAddress(const std::string& host, AddressReceiver& receiver) {
    return TheQuestions().Ask(host, receiver);
}

void CancelQuestion(QuestionId question) {
    if (question != 0) TheQuestions().Cancel(question);
}

}  // namespace os::net
