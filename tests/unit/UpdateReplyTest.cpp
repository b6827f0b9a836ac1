#include "desktop/UpdateReply.h"

#include <gtest/gtest.h>

namespace {

using UpdateReply::Download;
using UpdateReply::Version;
using Result = Version::Result;

constexpr int kOwn = 17;
const std::string kOk = "HTTP/1.1 200 OK\r\n";
const std::string kBody = kOk + "\r\n";
const std::string kOffer = "Update: 18 /files/setup18.exe wrenlow18.exe";

std::string Chunked(const std::string& chunks) {
    return kOk + "Transfer-Encoding: Chunked\r\n\r\n" + chunks;
}
std::string Length(const std::string& length, const std::string& body) {
    return kOk + "Content-Length: " + length + "\r\n\r\n" + body;
}

enum class Then { Silence, Close };
using enum Then;

// What a check is told when the reply comes in pieces of that size, which may be before its end.
Result Read(const std::string& reply, std::size_t pieceSize, Then then) {
    Version version(kOwn);
    for (std::size_t i = 0; i < reply.size(); i += pieceSize) {
        const auto result = version.Feed(std::string_view(reply).substr(i, pieceSize));
        if (result != Result::Reading) return result;
    }
    return then == Close ? version.End() : Result::Reading;
}

TEST(UpdateReplyVersion, DecidesByTheFirstWholeUpdateLine) {
    using enum Version::Result;
    const struct {
        const char* fault;  // what would be wrong
        std::string reply;
        Then then;
        Result expected;
    } cases[] = {
        {"a whole line needs no end of the reply", kBody + "<html>\r\n" + kOffer + "\r\n", Silence, Offer},
        {"the line ends with a stated length", kOk + "content-length:  43\r\n\r\n" + kOffer, Silence, Offer},
        {"or with the connection", kBody + kOffer, Close, Offer},
        {"a line that may go on is no line", kBody + kOffer, Silence, Reading},
        {"cut within a line", kBody + "Update: 18 /files/set", Close, Failed},
        {"cut before the stated length", Length("99", kOffer), Close, Failed},
        {"cut within the head", kOk + "Server: x", Close, Failed},
        {"nothing at all", "", Close, Failed},
        {"a line in two chunks", Chunked("10\r\nUpdate: 18 /a/b \r\n8;x=y\r\nsetup\r\nz\r\n0\r\n\r\n"),
         Silence, Offer},
        {"the last chunk ends the line", Chunked("A\r\nUpdate: 17\r\n0\r\n\r\n"), Silence, UpToDate},
        {"cut before the last chunk", Chunked("A\r\nUpdate: 17\r\n"), Close, Failed},
        {"a chunk without its end", Chunked("4\r\nabcdXX\r\n"), Silence, Failed},
        {"a chunk's length that is none", Chunked("4g\r\nabcd\r\n"), Silence, Failed},
        {"a chunk's length that overflows", Chunked("11111111111111111\r\nab"), Silence, Failed},
        {"an unknown coding", kOk + "Transfer-Encoding: gzip\r\n\r\n" + kOffer + "\r\n", Silence, Failed},
        {"two lengths", kOk + "Content-Length: 1\r\nContent-Length: 2\r\n\r\n", Silence, Failed},
        {"our own number", kBody + "Update: 17 /a b\r\n", Silence, UpToDate},
        {"our own number with zeros", kBody + "Update: 0017\r\n", Silence, UpToDate},
        {"a lower number is an offer too", kBody + "Update: 9 /a b\r\n", Silence, Offer},
        {"a huge number is another one", kBody + "Update: 99999999999999999999 /a b\r\n", Silence, Offer},
        {"no number", kBody + "Update: soon /a b\r\n", Silence, Nothing},
        {"an empty number", kBody + "Update:  /a b\r\n", Silence, Nothing},
        {"no such line", kBody + "update: 18 /a b\r\n Update: 18 /a b\r\n", Close, Nothing},
        {"an empty good reply", Length("0", ""), Silence, Nothing},
        {"words that are missing", kBody + "Update: 18 /a\r\n", Silence, Failed},
        {"an empty word", kBody + "Update: 18  b\r\n", Silence, Failed},
        {"a request smuggled in a word", kBody + "Update: 18 /a\nHost:x b\r\n", Silence, Failed},
        {"a tab in a word", kBody + "Update: 18 /a\tb c\r\n", Silence, Failed},
        {"not found", "HTTP/1.1 404 Not Found\r\n\r\n" + kOffer + "\r\n", Silence, Failed},
        {"moved", "HTTP/1.1 302 Found\r\nLocation: /\r\n\r\n", Silence, Failed},
        {"a longer number than 200", "HTTP/1.1 2000 OK\r\n\r\n" + kOffer + "\r\n", Silence, Failed},
        {"no HTTP", kOffer + "\r\n", Silence, Failed},
        {"a status line without a reason", "HTTP/1.0 200\r\n\r\n" + kOffer + "\r\n", Silence, Offer},
        {"the line among the headers", kOk + kOffer + "\r\n\r\n", Silence, Offer},
    };
    for (const auto& [fault, reply, then, expected] : cases) {
        for (const std::size_t pieceSize : {1u, 2u, 3u, 7u, 100'000u})
            EXPECT_EQ(Read(reply, pieceSize, then), expected) << fault << ", in pieces of " << pieceSize;
    }
}

TEST(UpdateReplyVersion, KeepsTheThreeWords) {
    Version version(kOwn);
    ASSERT_EQ(version.Feed(kBody + kOffer + " and more\r\nUpdate: 19 /later one\r\n"), Result::Offer);
    EXPECT_EQ(version.Revision(), "18");
    EXPECT_EQ(version.Path(), "/files/setup18.exe");
    EXPECT_EQ(version.ProposedName(), "wrenlow18.exe");
}

TEST(UpdateReplyVersion, AnEndlessReplyIsGivenUp) {
    for (const std::string& start : {kOk, kBody, Chunked("fffff\r\n"), std::string()}) {
        Version version(kOwn);
        version.Feed(start);
        std::size_t fed = 0;
        while (version.Feed(std::string(1000, 'x')) == Result::Reading) fed += 1000;
        EXPECT_LE(fed, UpdateReply::kMaxReply);
    }
}

TEST(UpdateReplyDownload, TakesExactlyTheFile) {
    using enum Download::State;
    const struct {
        const char* fault;
        std::string reply;
        Then then;
        Download::State state;
        std::string file;
    } cases[] = {
        {"whole", Length("6", "ab\r\n\r\n"), Silence, Complete, "ab\r\n\r\n"},
        {"more than stated", Length("6", "abcdefgh"), Silence, Complete, "abcdef"},
        {"less than stated", Length("6", "abcde"), Close, Failed, "abcde"},
        {"still coming", Length("6", "abcde"), Silence, Body, "abcde"},
        {"an empty file", Length("0", ""), Silence, Complete, ""},
        {"no length stated", kBody + "abc", Close, Complete, "abc"},
        {"no length and no file", kBody, Close, Failed, ""},
        {"chunked", Chunked("3\r\nabc\r\n0\r\n\r\n"), Close, Failed, ""},
        {"more than a bar can count", Length("2147483648", "abc"), Silence, Failed, ""},
        {"a length that is none", Length("-1", "abc"), Silence, Failed, ""},
        {"an error page", "HTTP/1.1 500 Oops\r\nContent-Length: 3\r\n\r\nabc", Silence, Failed, ""},
        {"cut within the head", kOk + "Content-Len", Close, Failed, ""},
    };
    for (const auto& [fault, reply, then, state, expected] : cases) {
        for (const std::size_t pieceSize : {1u, 2u, 5u, 100'000u}) {
            Download download;
            std::string file;
            for (std::size_t i = 0; i < reply.size(); i += pieceSize)
                file += download.Feed(std::string_view(reply).substr(i, pieceSize));
            if (then == Close) download.End();
            EXPECT_EQ(download.GetState(), state) << fault << ", in pieces of " << pieceSize;
            EXPECT_EQ(file, expected) << fault << ", in pieces of " << pieceSize;
            EXPECT_EQ(download.Received(), expected.size()) << fault;
        }
    }
}

}  // namespace
