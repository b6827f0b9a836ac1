// What every part of the load generator uses: bytes, the clock, and failures, which are exceptions that end
// the scenario under way.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

using Bytes = std::vector<std::uint8_t>;

// Seconds of a clock that only goes forward.
double Now();
void PauseMs(int milliseconds);

[[noreturn]] void Fail(const std::string& what);
// The same with the text of errno behind it.
[[noreturn]] void FailErrno(const std::string& what);

}  // namespace bench
