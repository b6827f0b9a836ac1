// UpdateReply: what the update server answers, read piece by piece as it arrives. No socket, file or window
// is known here. The server is not trusted: everything is bounded, and anything that is not clearly a good
// answer is a failed one. HTTP/1.1 is read as far as RFC 9112 makes two small questions need it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace UpdateReply {

// Bytes that the head of a reply, and a whole version reply, may have.
inline constexpr std::size_t kMaxReply = std::size_t{64} * 1024;
// Bytes that a download may have, stated or not: what a progress bar can count to.
inline constexpr std::uint64_t kMaxDownload = 0x7FFFFFFF;

// The status line and the headers.
class Head {
 public:
    enum class State { Reading, Done, Failed };

    // Takes bytes up to the empty line that ends the head and returns how many those were.
    std::size_t Feed(std::string_view bytes);

    State GetState() const { return state_; }
    // All lines with their ends, the empty one too; whole once the state is Done.
    const std::string& Text() const { return text_; }
    std::optional<std::uint64_t> ContentLength() const { return contentLength_; }
    bool IsChunked() const { return chunked_; }

 private:
    void TakeLine(std::string_view line);
    void TakeHeader(std::string_view name, std::string_view value);

    State state_ = State::Reading;
    std::string text_;
    std::size_t lineStart_ = 0;
    std::optional<std::uint64_t> contentLength_;
    bool chunked_ = false;
};

// The body of a reply as one run of bytes, with the lengths of chunks taken out.
class Body {
 public:
    explicit Body(const Head& head);

    // Appends the bytes that belong to the body to `text`. False when a chunk's frame is broken.
    bool Feed(std::string_view bytes, std::string& text);

    // All of it is there.
    bool IsComplete() const { return state_ == State::Complete; }
    // Nothing says where it ends, so it ends where the connection does.
    bool EndsAtClose() const { return state_ == State::Plain && !remaining_; }

 private:
    enum class State { Plain, ChunkSize, ChunkData, ChunkEnd, Complete };

    std::size_t TakeData(std::string_view bytes, std::string& text);
    bool TakeFrameLine();

    State state_ = State::Plain;
    std::optional<std::uint64_t> remaining_;  // bytes of the body, or of the chunk
    std::string line_;                        // a frame line that has not ended yet
};

// The answer to "which is the latest version?": lines, one of which reads "Update: 18 /path/of/setup name".
class Version {
 public:
    enum class Result {
        Reading,   // go on feeding
        Offer,     // another version than ours, and where it lies
        UpToDate,  // the number is ours
        Nothing,   // a good reply that offers nothing: no such line, or no number in it
        Failed,
    };

    explicit Version(int ownRevision) : ownRevision_(ownRevision) {}

    Result Feed(std::string_view bytes);
    // The server has closed in good order.
    Result End();

    // Words 1 to 3 of the line; whole when the result is Offer.
    const std::string& Revision() const { return words_[0]; }
    const std::string& Path() const { return words_[1]; }
    const std::string& ProposedName() const { return words_[2]; }

 private:
    void FeedBody(std::string_view bytes);
    void TakeLines();
    void TakeLine(std::string_view line);
    void Decide();

    int ownRevision_;
    Result result_ = Result::Reading;
    std::size_t received_ = 0;
    Head head_;
    std::optional<Body> body_;
    std::string line_;  // a line that has not ended yet
    std::array<std::string, 3> words_;
};

// The reply that carries the setup file.
class Download {
 public:
    enum class State { Head, Body, Complete, Failed };

    // Takes bytes and returns those among them that belong in the file: a part of `bytes` itself.
    std::string_view Feed(std::string_view bytes);
    // The server has closed in good order.
    State End();

    State GetState() const { return state_; }
    // Nothing when the server did not say; then the file ends where the connection does.
    std::optional<std::uint64_t> ExpectedLength() const { return head_.ContentLength(); }
    std::uint64_t Received() const { return received_; }

 private:
    State state_ = State::Head;
    Head head_;
    std::uint64_t received_ = 0;
};

}  // namespace UpdateReply
