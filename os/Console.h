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
    // as a line when the input ends. A line longer than kLongestLine comes in pieces.
    Event<const std::string&> Line;
    // Standard input has ended; no more lines come.
    Event<> InputEnded;
    // SIGINT, SIGTERM or SIGHUP. From the construction on they end the program no more.
    Event<> Interrupted;

    static constexpr std::size_t kLongestLine = std::size_t{64} * 1024;

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

// Writes text of the system as far as that can be done at once. Whoever has stopped reading it, a pager for
// instance, loses lines and does not hold the program up.
enum class Output : std::uint8_t { Standard, Error };
void Print(Output output, std::string_view systemText);

// The text in the program's code page for an argument or a variable of the system.
std::string TextFromSystem(std::string_view systemText);
// And back, for output.
std::string SystemFromText(std::string_view text);

}  // namespace os
