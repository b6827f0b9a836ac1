// Questions: which host's address was asked for by whom, the same on every system. The system's half looks
// the hosts up on threads of its own and brings the answers back into the loop.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "os/net/Resolver.h"

namespace os::net {

// Names that take long, because no server answers, keep others waiting only when so many of them do.
inline constexpr int kMostThreads = 4;

struct Question {
    QuestionId id;
    std::string host;
};

struct Answer {
    QuestionId id;
    std::int32_t number;
    Address address;
};

class Questions {
 public:
    QuestionId Ask(const std::string& host, AddressReceiver& receiver);
    void Cancel(QuestionId id) { receivers_.erase(id); }

 protected:
    ~Questions() = default;

    // Tells the receivers; who has cancelled is told nothing.
    void Deliver(const std::vector<Answer>& answers);

 private:
    // Has the question looked up. Throws when no thread can be started.
    virtual void LookUpLater(Question question) = 0;

    std::map<QuestionId, AddressReceiver*> receivers_;
    QuestionId lastId_ = 0;
};

// The system's half. Made with the first question, and never destroyed: sockets of static storage close after
// the end of main.
Questions& TheQuestions();

}  // namespace os::net
