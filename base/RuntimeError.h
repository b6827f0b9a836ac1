// RuntimeError: a failure with the three things that an error report names: a number, a description and, for
// components that state one, their source. Inner code throws it; Trap (base/Trap.h) catches and reports.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

class RuntimeError : public std::runtime_error {
 public:
    RuntimeError(std::int32_t number, const std::string& description, std::string source = {})
        : std::runtime_error(description), number_(number), source_(std::move(source)) {}

    std::int32_t Number() const { return number_; }
    const std::string& Source() const { return source_; }

 private:
    std::int32_t number_;
    std::string source_;
};

// The numbers that the program's own checks raise. Failures of the operating system carry its error number.
namespace ErrorNumber {
inline constexpr std::int32_t InvalidArgument = 5;
inline constexpr std::int32_t Overflow = 6;
inline constexpr std::int32_t OutOfMemory = 7;
inline constexpr std::int32_t SubscriptOutOfRange = 9;
inline constexpr std::int32_t TypeMismatch = 13;
inline constexpr std::int32_t FileNotFound = 53;
inline constexpr std::int32_t FileAccess = 75;
inline constexpr std::int32_t ObjectNotSet = 91;
// For a failure that is no RuntimeError, such as std::bad_alloc's relatives.
inline constexpr std::int32_t Unexpected = 51;
}  // namespace ErrorNumber

[[noreturn]] inline void ThrowInvalidArgument() {
    throw RuntimeError(ErrorNumber::InvalidArgument, "Invalid procedure call or argument");
}
[[noreturn]] inline void ThrowOverflow() {
    throw RuntimeError(ErrorNumber::Overflow, "Overflow");
}
[[noreturn]] inline void ThrowObjectNotSet() {
    throw RuntimeError(ErrorNumber::ObjectNotSet, "Object variable or With block variable not set");
}
