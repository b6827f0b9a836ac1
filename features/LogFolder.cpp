#include "features/LogFolder.h"

#include <algorithm>
#include <optional>

#include "app/services/Settings.h"
#include "base/RuntimeError.h"
#include "base/Text.h"
#include "base/Trap.h"
#include "base/Unicode.h"
#include "os/Clock.h"
#include "os/CodePage.h"
#include "os/Files.h"

namespace {

constexpr std::int64_t kSlowMs = 1000;
constexpr std::int64_t kShortestPauseMs = 60'000;
constexpr std::int64_t kMaxPauseMs = 600'000;
// A day of conversation is a hundredth of it.
constexpr std::size_t kMaxConverted = std::size_t{8} * 1024 * 1024;

void Report(std::int32_t number, const std::string& text) {
    Trap("LogFolder:Append", [&] { throw RuntimeError(number, text); });
}

// Plain text may be UTF-8 already, or is to be from now on.
void WriteLine(const os::Path& file, const std::string& line, const std::string& utf8Line) {
    const bool isMarked = os::ReadWholeFile(file, kUtf8Mark.size()) == kUtf8Mark;
    if (isMarked) return os::AppendToFile(file, utf8Line.empty() ? os::Utf8FromText(line) : utf8Line);
    if (utf8Line.empty()) return os::AppendToFile(file, line);
    const auto before = os::ReadWholeFile(file, kMaxConverted + 1);
    const bool canConvert = before ? before->size() <= kMaxConverted : !os::FileExists(file);
    if (!canConvert) return os::AppendToFile(file, line);
    os::ReplaceFileWith(file, std::string(kUtf8Mark) + os::Utf8FromText(before.value_or("")) + utf8Line);
}

void Write(os::Path folder, const std::string& buddy, const std::string& fileName, const std::string& line,
           const std::string& utf8Line) {
    os::MakeFolder(folder);
    if (settings::IsOn("logfolder")) {
        folder = os::InSpellingOfDisk(folder, buddy);
        os::MakeFolder(folder);
    }
    const auto file = os::InSpellingOfDisk(folder, fileName);
    if (fileName.ends_with(".txt"))
        WriteLine(file, line, utf8Line);
    else
        os::AppendToFile(file, line);
}

}  // namespace

void LogFolder::Append(const std::string& buddy, const std::string& fileName, const std::string& line,
                       const std::string& utf8Line) {
    const auto setting = settings::Text("logwhere");
    const auto begun = os::MonotonicMilliseconds();
    const auto known = troubles_.find(setting);
    if (known != troubles_.end() && known->second.standsStill && begun < known->second.until) {
        ++known->second.missing;
        return;
    }

    const auto folder = os::Path::FromText(TrimEnd(setting, "\\"));
    std::optional<RuntimeError> failure;
    try {
        Write(folder, buddy, fileName, line, utf8Line);
    } catch (const RuntimeError& error) {
        failure = error;
    }
    const auto now = os::MonotonicMilliseconds();
    const bool slow = now - begun > kSlowMs;
    if (slow || failure) {
        auto& trouble = troubles_[setting];
        const bool isNew = trouble.pauseMs == 0;
        if (failure) ++trouble.missing;
        trouble.standsStill = slow;
        if (slow || isNew) {
            trouble.pauseMs = std::clamp(2 * trouble.pauseMs, kShortestPauseMs, kMaxPauseMs);
            trouble.until = now + trouble.pauseMs;
        }
        if (!isNew) return;
        if (failure) Report(failure->Number(), "Not logged in " + folder.Shown() + ": " + failure->what());
        if (slow) Report(ErrorNumber::FileAccess, "Slow, so logging pauses: " + folder.Shown());
    } else if (known != troubles_.end() && now >= known->second.until) {
        const auto missing = std::to_string(known->second.missing);
        troubles_.erase(known);
        Report(ErrorNumber::FileAccess,
               "Logging goes on in " + folder.Shown() + "; messages that are missing: " + missing);
    }
}
