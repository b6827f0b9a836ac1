#include "features/logs/LogReader.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "base/Text.h"
#include "base/Unicode.h"
#include "core/modTools.h"

namespace {

constexpr std::string_view kHtmlBegin = "<b><font color=#";
constexpr std::string_view kOwnColour = "ff0000";
constexpr std::string_view kHtmlAfterSpeaker = " </font><font color=#0000ff size=-1>(";
constexpr std::string_view kHtmlAfterTime = "):</font> </b>";
constexpr std::size_t kTimeLength = 8;

bool IsTime(std::string_view text) {
    constexpr std::string_view kForm = "00:00:00";
    return text.size() == kForm.size() &&
           std::equal(text.begin(), text.end(), kForm.begin(),
                      [](char c, char form) { return form == ':' ? c == ':' : c >= '0' && c <= '9'; });
}

// What stands in front of a message in its first line; `length` is 0 when the line begins none.
struct Head {
    std::string_view speaker, time;
    std::size_t length = 0;
    bool own = false;
};

Head ReadTextHead(std::string_view line) {
    for (auto at = line.find(" ("); at != std::string_view::npos; at = line.find(" (", at + 1)) {
        const auto time = line.substr(at + 2, kTimeLength);
        if (IsTime(time) && line.substr(at + 2 + kTimeLength).starts_with("): ")) {
            return {line.substr(0, at), time, at + 2 + kTimeLength + 3, false};
        }
    }
    return {};
}

Head ReadHtmlHead(std::string_view line) {
    if (!line.starts_with(kHtmlBegin)) return {};
    const auto colour = line.substr(kHtmlBegin.size(), kOwnColour.size());
    const auto begin = kHtmlBegin.size() + kOwnColour.size() + 1;
    const auto end = line.find(kHtmlAfterSpeaker);
    if (end == std::string_view::npos || end < begin) return {};
    const auto timeBegin = end + kHtmlAfterSpeaker.size();
    const auto time = line.substr(timeBegin, kTimeLength);
    if (!IsTime(time) || !line.substr(timeBegin + kTimeLength).starts_with(kHtmlAfterTime)) return {};
    return {line.substr(begin, end - begin), time, timeBegin + kTimeLength + kHtmlAfterTime.size(),
            colour == kOwnColour};
}

// A screen name never has 25 characters; looking no further keeps a long line of text cheap.
Head ReadHead(std::string_view line, bool isHtml) {
    constexpr std::size_t kMaxTextHead = 300;
    return isHtml ? ReadHtmlHead(line) : ReadTextHead(line.substr(0, kMaxTextHead));
}

// The character that a reference stands for, and its length; length 0 when there is none.
std::pair<char32_t, std::size_t> ReadReference(std::string_view text) {
    constexpr std::size_t kMaxReference = 10;
    const auto end = text.substr(0, kMaxReference).find(';');
    if (end == std::string_view::npos) return {};
    constexpr std::pair<std::string_view, char32_t> kNamed[] = {
        {"&lt", '<'}, {"&gt", '>'}, {"&amp", '&'}, {"&quot", '"'}, {"&nbsp", ' '}, {"&apos", '\''}};
    for (const auto& [name, character] : kNamed) {
        if (text.substr(0, end) == name) return {character, end + 1};
    }
    if (!text.starts_with("&#") || end == 2) return {};
    char32_t number = 0;
    for (const char digit : text.substr(2, end - 2)) {
        if (digit < '0' || digit > '9') return {};
        number = number * 10 + static_cast<char32_t>(digit - '0');
    }
    return {number, end + 1};
}

// What a tag becomes in plain text.
std::string_view TextOfTag(std::string_view tag) {
    const auto name = LowerCase(tag.substr(1, tag.find_first_of(" \t\r\n/>", 2) - 1));
    if (name == "br") return "\n";
    if (name == "b" || name == "/b") return "*";
    if (name == "i" || name == "/i") return "/";
    if (name == "u" || name == "/u") return "_";
    return {};
}

bool BeginsTag(std::string_view text) {
    return text.size() > 1 &&
           (text[1] == '/' || text[1] == '!' || (LowerAscii(text[1]) >= 'a' && LowerAscii(text[1]) <= 'z'));
}

}  // namespace

std::string PlainText(std::string_view html) {
    std::string text;
    text.reserve(html.size());
    while (!html.empty()) {
        if (html.front() == '<' && BeginsTag(html)) {
            const auto end = html.find('>');
            if (end != std::string_view::npos) {
                text += TextOfTag(html.substr(0, end + 1));
                html.remove_prefix(end + 1);
                continue;
            }
        }
        if (html.front() == '&') {
            const auto [character, length] = ReadReference(html);
            if (length > 0) {
                AppendUtf8(text, character);
                html.remove_prefix(length);
                continue;
            }
        }
        if (html.front() != '\r') text += html.front();
        html.remove_prefix(1);
    }
    return text;
}

LogReader::LogReader(std::string_view content, bool isHtml, std::string name)
    : rest_(content), isHtml_(isHtml), name_(NormalizeScreenName(name)) {}

// Where the next message begins: a message may have several lines.
std::size_t LogReader::MessageEnd() const {
    std::size_t end = 0;
    do {
        const auto lineEnd = rest_.find('\n', end);
        end = lineEnd == std::string_view::npos ? rest_.size() : lineEnd + 1;
    } while (end < rest_.size() &&
             ReadHead(rest_.substr(end, rest_.find('\n', end) - end), isHtml_).length == 0);
    return end;
}

// Letters of other scripts and references ("&#233;") can stand for the same in several ways: what has them
// is not passed over.
std::size_t LogReader::SkipWithout(std::string_view word) {
    if (!std::all_of(word.begin(), word.end(), [](char c) { return c > 0; })) return 0;
    const auto begins = [](char a, char b) { return LowerAscii(a) == b; };
    std::size_t skipped = 0;
    for (; !rest_.empty(); ++skipped) {
        const auto message = rest_.substr(0, MessageEnd());
        if (message.find("&#") != std::string_view::npos ||
            std::search(message.begin(), message.end(), word.begin(), word.end(), begins) != message.end())
            break;
        rest_.remove_prefix(message.size());
    }
    return skipped;
}

bool LogReader::Next(LogLine& line) {
    if (rest_.empty()) return false;
    auto message = rest_.substr(0, MessageEnd());
    rest_.remove_prefix(message.size());
    while (message.ends_with('\n') || message.ends_with('\r')) message.remove_suffix(1);
    const auto head = ReadHead(message.substr(0, message.find('\n')), isHtml_);
    auto body = message.substr(head.length);
    if (isHtml_ && head.length > 0 && body.ends_with("<br>")) body.remove_suffix(4);
    line.time = head.time;
    line.speaker = PlainText(head.speaker);
    line.text = PlainText(body);
    line.own = isHtml_ ? head.own : head.length > 0 && NormalizeScreenName(line.speaker) != name_;
    return true;
}
