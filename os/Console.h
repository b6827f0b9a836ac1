// Console: what a command-line program hears besides its sockets: lines of standard input and the wish that
// it end. Natively only.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "base/Event.h"

namespace os {

class Console {
 public:
    // A line of standard input, without its line end ("\n" or "\r\n"); what follows the last line end counts
    // as a line when the input ends.
    Event<const std::string&> Line;
    // A line longer than kMaxLine has come and is left out, as a whole.
    Event<> LineTooLong;
    // Standard input has ended; no more lines come.
    Event<> InputEnded;
    // SIGINT, SIGTERM or SIGHUP. From the construction on they end the program no more.
    Event<> Interrupted;

    static constexpr std::size_t kMaxLine = std::size_t{64} * 1024;

    // To be made before any thread is started, and once; its handlers must not destroy it. From then on a
    // reader of the output who goes away does not end the program either. Throws RuntimeError.
    Console();
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    // Starts to read lines. A program that is not asked to leaves standard input alone.
    void ReadLines();

 private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// Writes text as far as that can be done at once: never does it wait. Whoever has stopped reading it, a pager
// for instance, loses lines, but gets those that come whole.
enum class Output : std::uint8_t { Standard, Error };
void Print(Output output, std::string_view text);

// Opens standard input and outputs that whoever started the program has closed, on nothing. Their numbers
// would otherwise be those of the next files and sockets, to which the output would go. To be called first.
void OpenStandardStreams();

}  // namespace os
