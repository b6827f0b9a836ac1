// Trap: the one place where failures end. A procedure that can fail names its location tag
// ("module:procedure") and runs its body in a trap; whatever the body throws is reported under the tag, and
// the procedure goes on with a default result. Inner code just throws. Nothing is retried and nobody else is
// told.
#pragma once

#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>

// Receives every trapped failure: description, number, location tag, line marker (0 unless the procedure
// marks how far it got). Must not throw. Without a reporter failures are dropped.
using ErrorReporter = void (*)(const std::string& description, std::int32_t number, const std::string& where,
                               std::int16_t line);

// Sets the program's reporter and returns the one before (tests put theirs in and take it out again).
ErrorReporter SetErrorReporter(ErrorReporter reporter);

// Reports the exception that is being handled under the tag; to be called from a catch block. Never throws.
void ReportCurrentException(const char* where, std::int16_t line) noexcept;

// Runs the body; a body that takes `std::int16_t&` is given its line marker. Returns the body's result, or a
// value-initialised one after a failure.
template <typename Body>
auto Trap(const char* where, Body&& body) {
    std::int16_t line = 0;
    if constexpr (std::is_invocable_v<Body, std::int16_t&>) {
        using Result = std::invoke_result_t<Body, std::int16_t&>;
        try {
            return std::forward<Body>(body)(line);
        } catch (...) {
            ReportCurrentException(where, line);
        }
        return Result();
    } else {
        using Result = std::invoke_result_t<Body>;
        try {
            return std::forward<Body>(body)();
        } catch (...) {
            ReportCurrentException(where, line);
        }
        return Result();
    }
}
