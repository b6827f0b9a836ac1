// PutBack: a kept buddy list goes back to a server, under the name that it had or another one, there or
// elsewhere. The server is asked for the list that it has; what is missing there is shown, and added when the
// user agrees: request by request, each when the one before is answered and the rate limits allow it. Nothing
// is changed or deleted but the groups' lists of their members. The client learns of it at its next sign-on.
//
// One list is put back at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/Event.h"
#include "features/buddies/BuddyList.h"
#include "net/EventLoop.h"

// A connection on which a user is signed on who can have a list at the server.
class ListLine {
 public:
    virtual const std::string& User() const = 0;
    // Sends a SNAC (0x0013, subtype) now. Throws RuntimeError when it cannot.
    virtual void SendToList(std::uint16_t subtype, std::uint32_t request, std::string_view data) = 0;
    // Whether one more would leave the rate limits at peace.
    virtual bool MaySend() const = 0;

 protected:
    ~ListLine() = default;
};

class PutBack {
 public:
    enum class Stage : std::uint8_t {
        Idle,
        Asking,   // the server is asked for the list that it has
        Preview,  // Additions() tells what would be added; Go() or Cancel()
        Adding,
        Done,
        Failed,
    };

    // The stage is another, or more has been added.
    Event<> Changed;

    PutBack();

    // Begins with the list for the screen name, on its first connection. Whether there is one, and nothing
    // else is being put back.
    bool Begin(std::string_view screenName, BuddyList wanted);
    void Go();
    void Cancel();

    Stage At() const { return stage_; }
    const std::vector<std::string>& Additions() const { return additions_; }
    // Where it stands, as a sentence for a person.
    std::string Sentence() const;

    // For connections: they come and go, and hand on what the server answers to requests of ours. Whether it
    // was one of these.
    void Add(ListLine& line) { lines_.push_back(&line); }
    void Remove(ListLine& line);
    bool IsOurs(const ListLine& line, std::uint32_t request) const;
    void ListCame(const BuddyList& present);
    void Answered(std::string_view codes);
    void Refused();

 private:
    void Become(Stage stage, std::string trouble = {});
    void Plan();
    void pause_Tick();
    void silence_Tick();
    void Ask(std::uint16_t subtype, std::string_view data);

    struct Step {
        std::uint16_t subtype;
        ByteString data;
        std::size_t items;
    };

    std::vector<ListLine*> lines_;
    ListLine* line_ = nullptr;  // where a list is being put back
    Stage stage_ = Stage::Idle;
    std::string trouble_;
    BuddyList wanted_, added_, changed_;
    std::vector<std::string> additions_;
    std::vector<Step> steps_;
    std::size_t next_ = 0;  // of the steps
    std::size_t done_ = 0;  // items that the server has taken
    std::size_t refused_ = 0;
    std::uint32_t request_ = 0x58000000;  // the last of ours; clients, who count from 0, do not reach it
    net::Timer pause_;
    net::Timer silence_;
};

// The program's.
PutBack& ThePutBack();
