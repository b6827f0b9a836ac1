#include "desktop/UpdateReply.h"

#include <algorithm>

#include "base/Text.h"

namespace UpdateReply {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kUpdateKeyword = "Update: ";
// A frame line of a chunk: a length, perhaps with an extension that nobody needs.
constexpr std::size_t kMaxFrameLine = 1024;

bool HasControlBytes(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < 0x20 || byte == 0x7F;
    });
}

bool IsGoodStatusLine(std::string_view line) {
    return line.starts_with("HTTP/1.") && line.size() >= 12 && line.substr(8, 4) == " 200" &&
           (line.size() == 12 || line[12] == ' ');
}

}  // namespace

std::size_t Head::Feed(std::string_view bytes) {
    std::size_t taken = 0;
    while (state_ == State::Reading && taken < bytes.size()) {
        const auto rest = bytes.substr(taken);
        const auto upToLineFeed = std::min(rest.find('\n'), rest.size() - 1) + 1;
        text_.append(rest.substr(0, upToLineFeed));
        taken += upToLineFeed;
        if (text_.size() > kMaxReply) state_ = State::Failed;
        if (!text_.ends_with(kLineEnd)) continue;
        const auto line = std::string_view(text_).substr(lineStart_);
        lineStart_ = text_.size();
        TakeLine(line.substr(0, line.size() - kLineEnd.size()));
    }
    return taken;
}

void Head::TakeLine(std::string_view line) {
    if (line.size() + kLineEnd.size() == text_.size()) {  // the first one
        if (!IsGoodStatusLine(line)) state_ = State::Failed;
        return;
    }
    if (line.empty()) {
        if (state_ == State::Reading) state_ = State::Done;
        return;
    }
    const auto colon = line.find(':');
    if (colon != line.npos) TakeHeader(line.substr(0, colon), Trim(line.substr(colon + 1)));
}

void Head::TakeHeader(std::string_view name, std::string_view value) {
    if (SameWithoutCase(name, "Content-Length")) {
        const auto length = ParseNumber<std::uint64_t>(value);
        if (!length || (contentLength_ && contentLength_ != length)) state_ = State::Failed;
        contentLength_ = length;
    } else if (SameWithoutCase(name, "Transfer-Encoding")) {
        chunked_ = SameWithoutCase(value, "chunked");
        if (!chunked_) state_ = State::Failed;
    }
}

Body::Body(const Head& head) : remaining_(head.ContentLength()) {
    if (head.IsChunked()) {
        state_ = State::ChunkSize;
    } else if (remaining_ == 0u) {
        state_ = State::Complete;
    }
}

bool Body::Feed(std::string_view bytes, std::string& text) {
    while (!bytes.empty() && state_ != State::Complete) {
        if (state_ == State::Plain || state_ == State::ChunkData) {
            bytes.remove_prefix(TakeData(bytes, text));
            continue;
        }
        line_.push_back(bytes.front());
        bytes.remove_prefix(1);
        if (line_.size() > kMaxFrameLine) return false;
        if (line_.ends_with(kLineEnd) && !TakeFrameLine()) return false;
    }
    return true;
}

std::size_t Body::TakeData(std::string_view bytes, std::string& text) {
    const auto wanted = remaining_.value_or(bytes.size());
    const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(wanted, bytes.size()));
    text.append(bytes.substr(0, size));
    if (!remaining_) return size;
    *remaining_ -= size;
    if (*remaining_ == 0) state_ = state_ == State::ChunkData ? State::ChunkEnd : State::Complete;
    return size;
}

bool Body::TakeFrameLine() {
    const auto line = std::string_view(line_).substr(0, line_.size() - kLineEnd.size());
    if (state_ == State::ChunkEnd) {
        if (!line.empty()) return false;
        state_ = State::ChunkSize;
    } else {
        remaining_ = ParseNumber<std::uint64_t>(Trim(line.substr(0, line.find(';'))), 16);
        if (!remaining_) return false;
        // Trailing headers that may follow the last chunk say nothing that we want to know.
        state_ = *remaining_ == 0 ? State::Complete : State::ChunkData;
    }
    line_.clear();
    return true;
}

Version::Result Version::Feed(std::string_view bytes) {
    if (result_ != Result::Reading) return result_;
    received_ += bytes.size();
    const auto headBytes = head_.Feed(bytes);
    if (head_.GetState() == Head::State::Done) {
        if (!body_) {
            body_.emplace(head_);
            line_ = head_.Text();
            TakeLines();
        }
        FeedBody(bytes.substr(headBytes));
    }
    if (head_.GetState() == Head::State::Failed) result_ = Result::Failed;
    if (result_ == Result::Reading && received_ > kMaxReply) result_ = Result::Failed;
    return result_;
}

void Version::FeedBody(std::string_view bytes) {
    if (result_ != Result::Reading) return;
    const bool good = body_->Feed(bytes, line_);
    TakeLines();
    if (result_ != Result::Reading) return;
    if (!good) {
        result_ = Result::Failed;
    } else if (body_->IsComplete()) {
        TakeLine(line_);
        if (result_ == Result::Reading) result_ = Result::Nothing;
    }
}

Version::Result Version::End() {
    if (result_ != Result::Reading) return result_;
    if (!body_ || !body_->EndsAtClose()) return result_ = Result::Failed;
    TakeLine(line_);
    if (result_ == Result::Reading) result_ = Result::Nothing;
    return result_;
}

void Version::TakeLines() {
    std::size_t start = 0;
    while (result_ == Result::Reading) {
        const auto end = line_.find(kLineEnd, start);
        if (end == line_.npos) break;
        TakeLine(std::string_view(line_).substr(start, end - start));
        start = end + kLineEnd.size();
    }
    line_.erase(0, start);
}

void Version::TakeLine(std::string_view line) {
    if (!line.starts_with(kUpdateKeyword)) return;
    if (HasControlBytes(line)) {
        result_ = Result::Failed;
        return;
    }
    line.remove_prefix(kUpdateKeyword.size());
    for (auto& word : words_) {
        const auto blank = std::min(line.find(' '), line.size());
        word = line.substr(0, blank);
        line.remove_prefix(std::min(blank + 1, line.size()));
    }
    Decide();
}

// By equality and not by order: a withdrawn version is replaced by offering an older one.
void Version::Decide() {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (Revision().empty() || !std::all_of(Revision().begin(), Revision().end(), isDigit)) {
        result_ = Result::Nothing;
    } else if (ParseNumber<std::uint64_t>(Revision()) == static_cast<std::uint64_t>(ownRevision_)) {
        result_ = Result::UpToDate;
    } else {
        result_ = Path().empty() || ProposedName().empty() ? Result::Failed : Result::Offer;
    }
}

std::string_view Download::Feed(std::string_view bytes) {
    if (state_ == State::Head) {
        bytes.remove_prefix(head_.Feed(bytes));
        if (head_.GetState() == Head::State::Reading) return {};
        const bool tooLarge = head_.ContentLength().value_or(0) > kMaxDownload;
        const bool good = head_.GetState() == Head::State::Done && !head_.IsChunked() && !tooLarge;
        state_ = good ? State::Body : State::Failed;
    }
    if (state_ != State::Body) return {};
    // What comes after the stated length is not part of the file.
    const auto room = ExpectedLength().value_or(kMaxDownload + 1) - received_;
    bytes = bytes.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(room, bytes.size())));
    received_ += bytes.size();
    if (received_ == ExpectedLength()) state_ = State::Complete;
    if (received_ > kMaxDownload) state_ = State::Failed;
    return bytes;
}

Download::State Download::End() {
    if (state_ == State::Complete) return state_;
    const bool endsHere = state_ == State::Body && !ExpectedLength() && received_ > 0;
    return state_ = endsHere ? State::Complete : State::Failed;
}

}  // namespace UpdateReply
