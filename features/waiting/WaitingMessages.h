// WaitingMessages: instant messages that neither the buddy nor the server would take, kept in "waiting.dat"
// in the data folder until the buddy is back. The file is written whole and renamed with every change, so it
// is all there whenever the program is killed; what it cannot be written for is not taken.
//
// A message leaves the file only when the server has taken it. Where a connection ends before that is known,
// it is sent again later, with the cookie that it had: a buddy may then get it twice, but never not at all.
//
// No call throws. A file that cannot be read or written, or is none of ours, is told once until it works
// again; then it is left alone, messages that come pass unkept, and it is looked at again later.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/modTools.h"

struct WaitingMessage {
    std::uint32_t number = 0;  // its name for as long as it waits; never given again in a run
    std::int64_t since = 0;    // seconds since 1970
    std::uint32_t tried = 0;   // how often it was offered to the server since
    std::string from;          // the user's screen name, as the server has it
    std::string to;            // the buddy's, as the server has it
    std::string shownTo;       // and as the user knows him: the alias, if he has one
    ByteString data;           // of SNAC (0x0004, 0x0006), as it is to be sent
    bool isClaimed = false;    // a session is sending it; not in the file
};

class WaitingMessages {
 public:
    static constexpr std::size_t kMaxMessages = 500;
    static constexpr std::size_t kMaxFileBytes = std::size_t{4} * 1024 * 1024;

    // The messages that wait, oldest first.
    const std::vector<WaitingMessage>& All();
    // nullptr where none has the number.
    const WaitingMessage* Find(std::uint32_t number);

    // Its number; nothing where it could not be kept.
    std::optional<std::uint32_t> Keep(WaitingMessage message);
    void CountTry(std::uint32_t number);
    // Whether there was one of that number.
    bool Drop(std::uint32_t number);

    // While a session sends a message no other may: two of one name see the buddy come. Whether this call
    // took it.
    bool Claim(std::uint32_t number);
    void Unclaim(std::uint32_t number);

    // Writes what could not be written before, if there is something.
    void Settle();

    // What keeps the file from being used, for a person; "" for nothing.
    const std::string& Trouble();

    // Forgets what was read, for tests.
    void Forget() { *this = WaitingMessages(); }

 private:
    void Read();
    bool Write(const std::vector<WaitingMessage>& messages);
    void Fail(std::int64_t begun);
    WaitingMessage* Entry(std::uint32_t number);

    std::vector<WaitingMessage> messages_;
    std::uint32_t lastNumber_ = 0;
    bool isRead_ = false;
    bool isWritten_ = true;  // the file holds what is here
    std::string trouble_;
    std::int64_t nextTry_ = INT64_MIN;  // on the steady clock
};

// The program's.
WaitingMessages& TheWaitingMessages();

// The text of a waiting message, for a person.
std::string TextOf(const WaitingMessage& message);

// The file's bytes, and back. ReadWaiting throws RuntimeError (InvalidArgument) for bytes that are no such
// file, and for messages that could not have been kept.
std::string WaitingBytes(const std::vector<WaitingMessage>& messages);
std::vector<WaitingMessage> ReadWaiting(std::string_view bytes);
