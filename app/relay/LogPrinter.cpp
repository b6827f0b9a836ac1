#include "app/relay/LogPrinter.h"

#include <cstdint>

#include "app/relay/ConsoleReports.h"
#include "base/Text.h"
#include "core/modTools.h"
#include "net/EventLoop.h"

namespace {
constexpr std::int64_t kMaxWaitMs = 3'600'000;
}

bool LogPrinter::Print(const std::string& name, const std::string& words) {
    library_.Refresh();
    WaitForLibrary();
    if (!words.empty()) return PrintHits(words);
    return name.empty() ? PrintNames() : PrintConversations(name);
}

void LogPrinter::WaitForLibrary() const {
    net::RunEventLoopUntil([this] { return !library_.IsBusy(); }, kMaxWaitMs);
}

bool LogPrinter::PrintNames() const {
    for (const auto& [name, days] : library_.Names())
        PrintLine(name + " (" + std::to_string(days.size()) + (days.size() == 1 ? " day)" : " days)"));
    return !library_.Names().empty();
}

bool LogPrinter::PrintConversations(const std::string& name) const {
    bool found = false;
    const auto wanted = NormalizeScreenName(name);
    for (const auto& [each, days] : library_.Names()) {
        if (NormalizeScreenName(each) != wanted) continue;
        for (const auto& day : days) {
            if (found) print_("\n");
            PrintLine(day.name + " " + day.date);
            for (const auto& line : library_.Read(day)) PrintMessage("", line);
            found = true;
        }
    }
    return found;
}

bool LogPrinter::PrintHits(const std::string& words) const {
    library_.Search(words);
    WaitForLibrary();
    for (const auto& hit : library_.Hits())
        PrintMessage(hit.day.name + " " + hit.day.date + " ", hit.message);
    if (library_.Hits().size() == LogLibrary::kMaxHits) PrintLine("There are more; give more words.");
    return !library_.Hits().empty();
}

void LogPrinter::PrintLine(const std::string& text) const {
    print_(Printable(text) + "\n");
}

// The lines of a message behind its first one stand below its text.
void LogPrinter::PrintMessage(const std::string& before, const LogLine& line) const {
    auto head = before + line.time + (line.time.empty() ? "" : " ") + line.speaker;
    if (!line.speaker.empty()) head += ": ";
    for (std::string_view rest = line.text; !rest.empty(); head = "    ")
        PrintLine(head + std::string(TakeUpTo(rest, '\n')));
}
