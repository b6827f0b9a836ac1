#include "desktop/UpdateReply.h"

#include <gtest/gtest.h>

namespace {

using UpdateReply::Download;
using UpdateReply::Version;
using Result = Version::Result;

constexpr int kOwn = 17;
const std::string kOk = "HTTP/1.1 200 OK\r\n";
const std::string kOffer = "Update: 18 /files/setup18.exe wrenlow18.exe";

enum class Ending { Open, Close };

struct Case {
    const char* fault;  // what would be wrong
    std::string reply;
    Ending ending;
    Result expected;
};

// Feeds in pieces of that size; the result may come early.
Result Read(Version& version, const std::string& reply, std::size_t pieceSize, Ending ending) {
    auto result = Result::Reading;
    for (std::size_t i = 0; i < reply.size() && result == Result::Reading; i += pieceSize) {
        result = version.Feed(std::string_view(reply).substr(i, pieceSize));
    }
    if (result == Result::Reading && ending == Ending::Close) result = version.End();
    return result;
}

std::string Chunked(const std::string& chunks) {
    return kOk + "Transfer-Encoding: Chunked\r\n\r\n" + chunks;
}

TEST(UpdateReplyVersion, DecidesByTheFirstWholeUpdateLine) {
    const Case cases[] = {
        {"a whole line needs no end of the reply", kOk + "\r\n<html>\r\n" + kOffer + "\r\n", Ending::Open,
         Result::Offer},
        {"the line ends with a stated length", kOk + "content-length:  43\r\n\r\n" + kOffer, Ending::Open,
         Result::Offer},
        {"or with the connection", kOk + "\r\n" + kOffer, Ending::Close, Result::Offer},
        {"a line that may go on is no line", kOk + "\r\n" + kOffer, Ending::Open, Result::Reading},
        {"cut within a line", kOk + "\r\nUpdate: 18 /files/set", Ending::Close, Result::Failed},
        {"cut before the stated length", kOk + "Content-Length: 99\r\n\r\n" + kOffer, Ending::Close,
         Result::Failed},
        {"cut within the head", kOk + "Server: x", Ending::Close, Result::Failed},
        {"nothing at all", "", Ending::Close, Result::Failed},
        {"a line in two chunks", Chunked("10\r\nUpdate: 18 /a/b \r\n8;x=y\r\nsetup\r\nz\r\n0\r\n\r\n"),
         Ending::Open, Result::Offer},
        {"the last chunk ends the line", Chunked("A\r\nUpdate: 17\r\n0\r\n\r\n"), Ending::Open,
         Result::UpToDate},
        {"cut before the last chunk", Chunked("A\r\nUpdate: 17\r\n"), Ending::Close, Result::Failed},
        {"a chunk without its end", Chunked("4\r\nabcdXX\r\n"), Ending::Open, Result::Failed},
        {"a chunk's length that is none", Chunked("4g\r\nabcd\r\n"), Ending::Open, Result::Failed},
        {"a chunk's length that overflows", Chunked("11111111111111111\r\nab"), Ending::Open, Result::Failed},
        {"an unknown coding", kOk + "Transfer-Encoding: gzip\r\n\r\n" + kOffer + "\r\n", Ending::Open,
         Result::Failed},
        {"two lengths", kOk + "Content-Length: 1\r\nContent-Length: 2\r\n\r\n", Ending::Open, Result::Failed},
        {"our own number", kOk + "\r\nUpdate: 17 /a b\r\n", Ending::Open, Result::UpToDate},
        {"our own number with zeros", kOk + "\r\nUpdate: 0017\r\n", Ending::Open, Result::UpToDate},
        {"a lower number is an offer too", kOk + "\r\nUpdate: 9 /a b\r\n", Ending::Open, Result::Offer},
        {"a huge number is another one", kOk + "\r\nUpdate: 99999999999999999999 /a b\r\n", Ending::Open,
         Result::Offer},
        {"no number", kOk + "\r\nUpdate: soon /a b\r\n", Ending::Open, Result::Nothing},
        {"an empty number", kOk + "\r\nUpdate:  /a b\r\n", Ending::Open, Result::Nothing},
        {"no such line", kOk + "\r\nupdate: 18 /a b\r\n Update: 18 /a b\r\n", Ending::Close, Result::Nothing},
        {"an empty good reply", kOk + "Content-Length: 0\r\n\r\n", Ending::Open, Result::Nothing},
        {"words that are missing", kOk + "\r\nUpdate: 18 /a\r\n", Ending::Open, Result::Failed},
        {"an empty word", kOk + "\r\nUpdate: 18  b\r\n", Ending::Open, Result::Failed},
        {"a request smuggled in a word", kOk + "\r\nUpdate: 18 /a\nHost:x b\r\n", Ending::Open,
         Result::Failed},
        {"a tab in a word", kOk + "\r\nUpdate: 18 /a\tb c\r\n", Ending::Open, Result::Failed},
        {"not found", "HTTP/1.1 404 Not Found\r\n\r\n" + kOffer + "\r\n", Ending::Open, Result::Failed},
        {"moved", "HTTP/1.1 302 Found\r\nLocation: /\r\n\r\n", Ending::Open, Result::Failed},
        {"a longer number than 200", "HTTP/1.1 2000 OK\r\n\r\n" + kOffer + "\r\n", Ending::Open,
         Result::Failed},
        {"no HTTP", kOffer + "\r\n", Ending::Open, Result::Failed},
        {"a status line without a reason", "HTTP/1.0 200\r\n\r\n" + kOffer + "\r\n", Ending::Open,
         Result::Offer},
        {"the line among the headers", kOk + kOffer + "\r\n\r\n", Ending::Open, Result::Offer},
    };
    for (const auto& one : cases) {
        for (const std::size_t pieceSize : {1u, 2u, 3u, 7u, 100'000u}) {
            Version version(kOwn);
            EXPECT_EQ(Read(version, one.reply, pieceSize, one.ending), one.expected)
                << one.fault << ", in pieces of " << pieceSize;
        }
    }
}

TEST(UpdateReplyVersion, KeepsTheThreeWords) {
    Version version(kOwn);
    ASSERT_EQ(version.Feed(kOk + "\r\n" + kOffer + " and more\r\nUpdate: 19 /later one\r\n"), Result::Offer);
    EXPECT_EQ(version.Revision(), "18");
    EXPECT_EQ(version.Path(), "/files/setup18.exe");
    EXPECT_EQ(version.ProposedName(), "wrenlow18.exe");
}

TEST(UpdateReplyVersion, AnEndlessReplyIsGivenUp) {
    for (const std::string& start : {kOk, kOk + "\r\n", Chunked("fffff\r\n"), std::string()}) {
        Version version(kOwn);
        version.Feed(start);
        std::size_t fed = 0;
        while (version.Feed(std::string(1000, 'x')) == Result::Reading) fed += 1000;
        EXPECT_LE(fed, UpdateReply::kLongestReply);
    }
}

TEST(UpdateReplyDownload, TakesExactlyTheFile) {
    struct Expected {
        const char* fault;
        std::string reply;
        Ending ending;
        Download::State state;
        std::string file;
    };
    using State = Download::State;
    const std::string length = kOk + "Content-Length: 6\r\n\r\n";
    const Expected cases[] = {
        {"whole", length + "ab\r\n\r\n", Ending::Open, State::Complete, "ab\r\n\r\n"},
        {"more than stated", length + "abcdefgh", Ending::Open, State::Complete, "abcdef"},
        {"less than stated", length + "abcde", Ending::Close, State::Failed, "abcde"},
        {"still coming", length + "abcde", Ending::Open, State::Body, "abcde"},
        {"an empty file", kOk + "Content-Length: 0\r\n\r\n", Ending::Open, State::Complete, ""},
        {"no length stated", kOk + "\r\nabc", Ending::Close, State::Complete, "abc"},
        {"no length and no file", kOk + "\r\n", Ending::Close, State::Failed, ""},
        {"chunked", Chunked("3\r\nabc\r\n0\r\n\r\n"), Ending::Close, State::Failed, ""},
        {"more than a bar can count", kOk + "Content-Length: 2147483648\r\n\r\nabc", Ending::Open,
         State::Failed, ""},
        {"a length that is none", kOk + "Content-Length: -1\r\n\r\nabc", Ending::Open, State::Failed, ""},
        {"an error page", "HTTP/1.1 500 Oops\r\nContent-Length: 3\r\n\r\nabc", Ending::Open, State::Failed,
         ""},
        {"cut within the head", kOk + "Content-Len", Ending::Close, State::Failed, ""},
    };
    for (const auto& one : cases) {
        for (const std::size_t pieceSize : {1u, 2u, 5u, 100'000u}) {
            Download download;
            std::string file;
            for (std::size_t i = 0; i < one.reply.size(); i += pieceSize) {
                file += download.Feed(std::string_view(one.reply).substr(i, pieceSize));
            }
            if (one.ending == Ending::Close) download.End();
            EXPECT_EQ(download.GetState(), one.state) << one.fault << ", in pieces of " << pieceSize;
            EXPECT_EQ(file, one.file) << one.fault << ", in pieces of " << pieceSize;
            EXPECT_EQ(download.Received(), one.file.size()) << one.fault;
        }
    }
}

}  // namespace
