#include "features/logs/Conversation.h"

#include <algorithm>

#include "base/Unicode.h"
#include "features/SafeHtml.h"

namespace {

constexpr std::size_t kMaxShownLines = 5000;
constexpr std::string_view kSetIn = "        ";
constexpr std::string_view kBelow = "    ";

std::string HeadOf(const LogLine& line) {
    std::string head(line.own ? kSetIn : "");
    if (!line.time.empty()) head += line.time + " ";
    if (!line.speaker.empty()) head += line.speaker + ": ";
    return head;
}

// Further lines stand below the first.
std::string BodyOf(const LogLine& line, std::string_view text) {
    std::string body;
    for (const char c : text) {
        if (c != '\n') {
            body += c;
            continue;
        }
        body += "\r\n";
        if (line.own) body += kSetIn;
        body += kBelow;
    }
    return body;
}

template <typename Write>
void ForEachDay(const LogLibrary& library, const std::string& name, const Write& write) {
    const auto found = library.Names().find(name);
    if (found == library.Names().end()) return;
    for (const auto& day : found->second) write(day, library.Read(day));
}

}  // namespace

ConversationText TextOf(const std::vector<LogLine>& lines, const LogHit* hit) {
    auto begin = lines.size() - std::min(lines.size(), kMaxShownLines);
    if (hit != nullptr) begin = std::min(begin, hit->line - std::min(hit->line, kMaxShownLines / 2));
    const auto end = std::min(lines.size(), begin + kMaxShownLines);
    ConversationText shown;
    for (auto number = begin; number < end; ++number) {
        const auto& line = lines[number];
        shown.text += HeadOf(line);
        if (hit != nullptr && number == hit->line && !hit->marks.empty()) {
            const std::string_view text = line.text;
            const auto& mark = hit->marks.front();
            // The file may have changed since it was searched.
            const auto markBegin = std::min(mark.begin, text.size());
            const auto part = [&](std::string_view of) { return BodyOf(line, of).size(); };
            shown.markBegin = shown.text.size() + part(text.substr(0, markBegin));
            shown.markLength = part(text.substr(markBegin, mark.end - mark.begin));
        }
        shown.text += BodyOf(line, line.text) + "\r\n";
    }
    return shown;
}

std::string TextOf(const LogHit& hit) {
    auto text = hit.message.text;
    for (auto mark = hit.marks.rbegin(); mark != hit.marks.rend(); ++mark) {
        text.insert(mark->end, "]");
        text.insert(mark->begin, "[");
    }
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

std::string HistoryAsText(const LogLibrary& library, const std::string& name) {
    std::string text;
    ForEachDay(library, name, [&](const LogDay& day, const std::vector<LogLine>& lines) {
        text += (text.empty() ? std::string(kUtf8Mark) : "\r\n") + day.name + " " + day.date + "\r\n";
        for (const auto& line : lines) text += HeadOf(line) + BodyOf(line, line.text) + "\r\n";
    });
    return text;
}

std::string HistoryAsPage(const LogLibrary& library, const std::string& name) {
    std::string days;
    ForEachDay(library, name, [&](const LogDay& day, const std::vector<LogLine>& lines) {
        days += "<h2>" + HtmlText(day.date) + "</h2>\r\n";
        for (const auto& line : lines) {
            days += line.own ? "<p class=\"own\">" : "<p>";
            days += "<b>" + HtmlText(line.speaker) + "</b> <small>" + HtmlText(line.time) + "</small> " +
                    HtmlText(line.text) + "</p>\r\n";
        }
    });
    if (days.empty()) return days;
    return "<!DOCTYPE html>\r\n<html><head><meta charset=\"utf-8\"><title>" + HtmlText(name) +
           "</title>\r\n<style>p { margin: 0.2em 0 } b { color: #0000c0 } .own { margin-left: 2em } "
           ".own b { color: #c00000 }</style></head>\r\n<body><h1>" +
           HtmlText(name) + "</h1>\r\n" + days + "</body></html>\r\n";
}
