#include "base/Trap.h"

#include <exception>
#include <new>

#include "base/RuntimeError.h"

namespace {
ErrorReporter currentReporter = nullptr;
}

ErrorReporter SetErrorReporter(ErrorReporter reporter) {
    return std::exchange(currentReporter, reporter);
}

void ReportCurrentException(const char* where, std::int16_t line) noexcept {
    if (currentReporter == nullptr) return;
    // Building the report can itself run out of memory; a failure that cannot be told is dropped, because
    // the program going on matters more than the message.
    try {
        try {
            throw;
        } catch (const RuntimeError& error) {
            currentReporter(error.what(), error.Number(), where, line);
        } catch (const std::bad_alloc&) {
            currentReporter("Out of memory", ErrorNumber::OutOfMemory, where, line);
        } catch (const std::exception& error) {
            currentReporter(error.what(), ErrorNumber::Unexpected, where, line);
        } catch (...) {
            currentReporter("Unexpected error", ErrorNumber::Unexpected, where, line);
        }
    } catch (...) {
    }
}
