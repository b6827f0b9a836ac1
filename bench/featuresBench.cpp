// What the session features cost per frame: aliases (1 to 1000 pairs) on frames that hold none of them,
// on frames that do, and a logged message. "bytes_per_second" is of payload.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <random>

#include "app/services/modRegistry.h"
#include "features/modLogging.h"
#include "features/modSNReplace.h"
#include "features/waiting/FetchMessages.h"
#include "features/waiting/KeepMessages.h"
#include "os/SettingsFile.h"
#include "tests/unit/Messages.h"

namespace {

ReplacementList MakeList(std::int64_t pairs) {
    std::mt19937 random(1);
    std::vector<Replacement> list;
    for (std::int64_t i = 0; i < pairs; ++i) {
        std::string name;
        for (int c = 0; c < 8; ++c) name += static_cast<char>('a' + random() % 26);
        list.push_back({name + std::to_string(i % 100), "Alias " + std::to_string(i)});
    }
    return ReplacementList(std::move(list));
}

// A SNAC header and then text, as messages and profiles are.
ByteString TextPayload(std::size_t size) {
    std::mt19937 random(2);
    ByteString payload("\0\4\0\7\0\0\0\0\0\1", 10);
    while (payload.size() < size) payload += static_cast<char>(' ' + random() % 95);
    return payload;
}

// Any byte alike: far more length bytes than real data have.
ByteString RandomPayload(std::size_t size) {
    std::mt19937 random(3);
    ByteString payload(size, '\0');
    for (auto& byte : payload) byte = static_cast<char>(random());
    return payload;
}

// A buddy list: a name behind its length in every 20 bytes, none of them listed.
ByteString NamesPayload(std::size_t size) {
    std::mt19937 random(4);
    ByteString payload;
    while (payload.size() < size) {
        payload += ByteString("\0\1\0\2\0\0\0\x0A", 8);
        for (int c = 0; c < 10; ++c) payload += static_cast<char>('a' + random() % 26);
    }
    payload.resize(size);
    return payload;
}

void Search(benchmark::State& state, ByteString (*makePayload)(std::size_t)) {
    const auto list = MakeList(state.range(0));
    const auto payload = makePayload(static_cast<std::size_t>(state.range(1)));
    ByteString rewritten;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            modSNReplace::ReplaceScreenNames(list, Direction::ToClient, 2, payload, rewritten));
    }
    state.SetBytesProcessed(state.iterations() * state.range(1));
}

// Without a pair the relay has no list and asks nothing.
const std::vector<std::int64_t> kPairs = {1, 10, 50, 100, 200, 500, 1000};
const std::vector<std::int64_t> kSizes = {120, 461, 8192};
BENCHMARK_CAPTURE(Search, text, TextPayload)->ArgsProduct({kPairs, kSizes});
BENCHMARK_CAPTURE(Search, random, RandomPayload)->ArgsProduct({kPairs, kSizes});
BENCHMARK_CAPTURE(Search, names, NamesPayload)->ArgsProduct({kPairs, kSizes});

// One listed name in a message of 461 bytes.
void Rewrite(benchmark::State& state) {
    const ReplacementList list(std::vector<Replacement>{{"asdf1234", "Fred"}});
    auto payload = TextPayload(461);
    payload.replace(40, 9,
                    "\x08"
                    "asdf1234");
    ByteString rewritten;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            modSNReplace::ReplaceScreenNames(list, Direction::ToClient, 2, payload, rewritten));
    }
}
BENCHMARK(Rewrite);

// Every name of the list in one frame.
void RewriteAll(benchmark::State& state) {
    std::vector<Replacement> list;
    ByteString payload("\0\4\0\7\0\0\0\0\0\1", 10);
    std::mt19937 random(5);
    for (int i = 0; i < state.range(0); ++i) {
        list.push_back({"name number " + std::to_string(i), "Alias " + std::to_string(i)});
        const auto& name = list.back().screenName;
        payload += static_cast<char>(name.size()) + name;
        for (int c = 0; c < 34; ++c) payload += static_cast<char>(' ' + random() % 95);
    }
    const ReplacementList aliases(std::move(list));
    ByteString rewritten;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            modSNReplace::ReplaceScreenNames(aliases, Direction::ToClient, 2, payload, rewritten));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(payload.size()));
}
BENCHMARK(RewriteAll)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

// Four settings read from the settings file, the folder looked at, one open, write and close.
void LogLine(benchmark::State& state, const char* on, const char* asHtml) {
    const char* const temporary = std::getenv("TMPDIR");
    const std::string folder = temporary != nullptr ? temporary : "/tmp";
    os::SetSettingsFile(folder + "/wrenlow-bench.conf", modRegistry::kSettingsKey);
    modRegistry::WriteSetting("logwhere", folder);
    modRegistry::WriteSetting("logfolder", "0");
    modRegistry::WriteSetting("logims", on);
    modRegistry::WriteSetting("loghowhtm", asHtml);
    const std::string message =
        "<HTML><BODY BGCOLOR=\"#ffffff\"><FONT>how are you today?</FONT></BODY></HTML>";
    clsHeaderSNAC snac;
    snac.Create(4, 7, 0, 0, IncomingData("wrenlowbench", Tlv(2, MessageData(message))));
    modLogging::MessageLog log;
    for (auto _ : state) log.LogMessage(Direction::ToClient, snac, "");
}
BENCHMARK_CAPTURE(LogLine, off, "0", "False");
BENCHMARK_CAPTURE(LogLine, text, "1", "False");
BENCHMARK_CAPTURE(LogLine, html, "1", "True");

// A message that passes the features that keep and fetch messages: nothing has to be done.
struct NoSession final : Session {
    std::size_t Slot() const override { return 0; }
    const Place& Asked() const override { return place; }
    TrafficCount Received(Direction) const override { return {}; }
    os::Ends EndsOf(Direction) const override { return {}; }
    bool IsIPv6Only() const override { return false; }
    const ScreenNames& Names(Direction) const override { return names; }
    void Learn(Direction, ScreenNames, bool) override {}
    void Send(Direction, ByteString, std::uint8_t) override {}

    Place place;
    ScreenNames names{"me", "me"};
};
void PassingMessage(benchmark::State& state, FeatureEntry (*feature)(), Direction way) {
    NoSession session;
    const auto made = feature().make(session);
    const ByteString text(static_cast<std::size_t>(state.range(0)), 'x');
    const auto tlvs = Tlv(2, MessageData(text));
    const auto payload = way == Direction::ToServer ? Snac(4, 6, OutgoingData("wrenlowbench", tlvs))
                                                    : Snac(4, 7, IncomingData("wrenlowbench", tlvs));
    for (auto _ : state) {
        FrameView frame(way, 2, payload);
        benchmark::DoNotOptimize(made->Frame(frame));
    }
}
BENCHMARK_CAPTURE(PassingMessage, keep, KeepMessages, Direction::ToServer)->Arg(100)->Arg(2000);
BENCHMARK_CAPTURE(PassingMessage, fetch, FetchMessages, Direction::ToClient)->Arg(100)->Arg(2000);

}  // namespace
