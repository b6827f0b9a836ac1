#include "features/waiting/WaitingMessages.h"

#include <algorithm>
#include <utility>

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "core/DataFolder.h"
#include "features/ImMessage.h"
#include "features/SnacBytes.h"
#include "features/modLogging.h"
#include "features/waiting/ImFrames.h"
#include "features/waiting/SentMessages.h"
#include "os/Clock.h"
#include "os/Files.h"

namespace {

// The file: this head, then for each message, each field behind its length in four bytes (big-endian): since
// and tried as decimal digits, from, to, shownTo, data.
constexpr std::string_view kHead = "Wrenlow waiting messages 1\n";

// A file that is in trouble is left alone for so long; sooner where its failure held nobody up.
constexpr std::int64_t kPauseMs = 60'000;
constexpr std::int64_t kSlowMs = 1000;

void AppendField(std::string& bytes, std::string_view field) {
    bytes += DWordToStr(static_cast<std::int32_t>(field.size()));
    bytes += field;
}

std::string TakeField(std::string_view& bytes) {
    return std::string(TakeBytes(bytes, TakeDWord(bytes)));
}

template <typename Number>
Number TakeDigits(std::string_view& bytes) {
    const auto number = ParseNumber<Number>(TakeField(bytes));
    if (!number || *number < 0) ThrowInvalidArgument();
    return *number;
}

// What stands in the file goes to a server in the user's name, whoever wrote it there.
void Check(const WaitingMessage& message) {
    const bool isSound = message.data.size() <= SentMessages::kMaxBytes + 8 && CanWait(message.data) &&
                         ReadOutgoingIm(message.data).receiver == message.to && !message.from.empty();
    if (!isSound) ThrowInvalidArgument();
}

auto WaitingFile() {
    return DataFolder() / "waiting.dat";
}

}  // namespace

std::string WaitingBytes(const std::vector<WaitingMessage>& messages) {
    std::string bytes(kHead);
    for (const auto& message : messages) {
        AppendField(bytes, std::to_string(message.since));
        AppendField(bytes, std::to_string(message.tried));
        AppendField(bytes, message.from);
        AppendField(bytes, message.to);
        AppendField(bytes, message.shownTo);
        AppendField(bytes, message.data);
    }
    return bytes;
}

std::vector<WaitingMessage> ReadWaiting(std::string_view bytes) {
    if (!bytes.starts_with(kHead)) ThrowInvalidArgument();
    bytes.remove_prefix(kHead.size());
    std::vector<WaitingMessage> messages;
    while (!bytes.empty()) {
        if (messages.size() == WaitingMessages::kMaxMessages) ThrowInvalidArgument();
        WaitingMessage message;
        message.since = TakeDigits<std::int64_t>(bytes);
        message.tried = TakeDigits<std::uint32_t>(bytes);
        message.from = TakeField(bytes);
        message.to = TakeField(bytes);
        message.shownTo = TakeField(bytes);
        message.data = TakeField(bytes);
        Check(message);
        messages.push_back(std::move(message));
    }
    return messages;
}

std::string TextOf(const WaitingMessage& message) {
    return modLogging::StripHtml(ReadOutgoingMessage(message.data).text);
}

// From a catch block.
void WaitingMessages::Fail(std::int64_t begun) {
    const auto now = os::MonotonicMilliseconds();
    nextTry_ = now + kPauseMs;
    if (now - begun <= kSlowMs && isRead_) nextTry_ = now;
    const bool isTold = !trouble_.empty();
    try {
        throw;
    } catch (const std::exception& failure) {
        trouble_ = failure.what();
    }
    if (!isTold) ReportCurrentException("WaitingMessages:File", 0);
}

void WaitingMessages::Read() {
    const auto begun = os::MonotonicMilliseconds();
    if (isRead_ || begun < nextTry_) return;
    const auto file = WaitingFile();
    try {
        if (os::FileExists(file)) {
            const auto bytes = os::ReadWholeFile(file, kMaxFileBytes + 1);
            if (!bytes || bytes->size() > kMaxFileBytes)
                throw RuntimeError(ErrorNumber::FileAccess, "Cannot be read: " + file.Shown());
            try {
                messages_ = ReadWaiting(*bytes);
            } catch (const RuntimeError&) {
                throw RuntimeError(ErrorNumber::FileAccess,
                                   "Not a file of waiting messages: " + file.Shown());
            }
        }
        for (auto& message : messages_) message.number = ++lastNumber_;
        isRead_ = true;
        trouble_.clear();
    } catch (...) {
        Fail(begun);
    }
}

bool WaitingMessages::Write(const std::vector<WaitingMessage>& messages) {
    const auto begun = os::MonotonicMilliseconds();
    if (!isRead_ || begun < nextTry_) return false;
    try {
        const auto bytes = WaitingBytes(messages);
        if (messages.size() > kMaxMessages || bytes.size() > kMaxFileBytes)
            throw RuntimeError(ErrorNumber::Overflow, "Too many messages wait");
        if (messages.empty()) {
            os::RemoveFile(WaitingFile());
        } else {
            os::ReplaceFileWith(WaitingFile(), bytes);
        }
        trouble_.clear();
        return true;
    } catch (...) {
        Fail(begun);
        return false;
    }
}

void WaitingMessages::Settle() {
    if (!isWritten_) isWritten_ = Write(messages_);
}

const std::vector<WaitingMessage>& WaitingMessages::All() {
    Read();
    return messages_;
}

WaitingMessage* WaitingMessages::Entry(std::uint32_t number) {
    Read();
    const auto found = std::find_if(messages_.begin(), messages_.end(),
                                    [&](const auto& message) { return message.number == number; });
    return found != messages_.end() ? &*found : nullptr;
}

const WaitingMessage* WaitingMessages::Find(std::uint32_t number) {
    return Entry(number);
}

std::optional<std::uint32_t> WaitingMessages::Keep(WaitingMessage message) {
    auto messages = All();
    message.number = lastNumber_ + 1;
    messages.push_back(std::move(message));
    if (!Write(messages)) return {};
    isWritten_ = true;
    messages_ = std::move(messages);
    return ++lastNumber_;
}

// What has happened has happened, whether the file can be written now or later.
void WaitingMessages::CountTry(std::uint32_t number) {
    auto* const message = Entry(number);
    if (message == nullptr) return;
    ++message->tried;
    isWritten_ = false;
    Settle();
}

bool WaitingMessages::Drop(std::uint32_t number) {
    Read();
    if (std::erase_if(messages_, [&](const auto& message) { return message.number == number; }) == 0)
        return false;
    isWritten_ = false;
    Settle();
    return true;
}

bool WaitingMessages::Claim(std::uint32_t number) {
    auto* const message = Entry(number);
    return message != nullptr && !std::exchange(message->isClaimed, true);
}

void WaitingMessages::Unclaim(std::uint32_t number) {
    if (auto* const message = Entry(number)) message->isClaimed = false;
}

const std::string& WaitingMessages::Trouble() {
    Read();
    return trouble_;
}

WaitingMessages& TheWaitingMessages() {
    static WaitingMessages messages;
    return messages;
}
