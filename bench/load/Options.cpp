#include "bench/load/Options.h"

#include <arpa/inet.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "bench/load/Common.h"
#include "bench/load/Frames.h"

namespace bench {

Options options;

namespace {

const char kUsage[] =
    "usage: oscarload [--proxy HOST:PORT] [--socks4|--socks5|--direct] [options]\n"
    "  --proxy HOST:PORT   proxy under test (IPv4); with --direct: a plain TCP relay to --listen\n"
    "  --proxy-pid A[,B]   its processes: CPU and memory are reported (children are added)\n"
    "  --listen PORT       port of the built-in server (default: a free one from 24000)\n"
    "  --scenario A[,B]    throughput latency pace rate scale churn backpressure split (default: all)\n"
    "  --seconds S         length of one run (default 1.5)\n"
    "  --payload N         streams of frames of one length (26 to 65535 bytes) instead of the mix\n"
    "  --text              printable bytes in these frames instead of any\n"
    "  --stream-mb N  --flood-mb N  --churn N  --churn-seconds S  --idle N[,N]\n"
    "  --no-signon         the server sends no sign-on frame\n"
    "  --label NAME  --json FILE\n";

std::vector<std::string> SplitList(const std::string& text) {
    std::vector<std::string> parts;
    std::istringstream in(text);
    for (std::string part; std::getline(in, part, ',');) parts.push_back(part);
    return parts;
}

}  // namespace

void ParseOptions(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        auto value = [&]() -> std::string {
            if (++i >= argc) Fail(a + " needs a value");
            return argv[i];
        };
        if (a == "--direct")
            options.route = Route::Direct;
        else if (a == "--socks4")
            options.route = Route::Socks4;
        else if (a == "--socks5")
            options.route = Route::Socks5;
        else if (a == "--no-signon")
            options.signon = false;
        else if (a == "--proxy") {
            std::string v = value();
            std::size_t colon = v.rfind(':');
            options.proxy.sin_family = AF_INET;
            if (colon == std::string::npos ||
                inet_pton(AF_INET, v.substr(0, colon).c_str(), &options.proxy.sin_addr) != 1)
                Fail("--proxy wants an IPv4 address and a port");
            options.proxy.sin_port = htons(std::uint16_t(std::stoi(v.substr(colon + 1))));
            options.hasProxy = true;
        } else if (a == "--proxy-pid")
            for (const auto& p : SplitList(value())) options.proxyPids.push_back(std::stoi(p));
        else if (a == "--listen")
            options.listenPort = std::uint16_t(std::stoi(value()));
        else if (a == "--scenario")
            for (const auto& s : SplitList(value())) options.scenarios.insert(s);
        else if (a == "--seconds")
            options.seconds = std::stod(value());
        else if (a == "--stream-mb")
            options.streamMb = std::stoull(value());
        else if (a == "--flood-mb")
            options.floodMb = std::stoull(value());
        else if (a == "--payload")
            options.payload = std::stoul(value());
        else if (a == "--text")
            options.text = true;
        else if (a == "--churn")
            options.churn = std::stoi(value());
        else if (a == "--churn-seconds")
            options.churnSeconds = std::stod(value());
        else if (a == "--idle") {
            options.idle.clear();
            for (const auto& n : SplitList(value())) options.idle.push_back(std::stoi(n));
        } else if (a == "--label")
            options.label = value();
        else if (a == "--json")
            options.jsonPath = value();
        else {
            fputs(kUsage, stderr);
            std::exit(2);
        }
    }
    if (options.payload != 0 && (options.payload < kSnacHeader + kMeta || options.payload > 0xFFFF))
        Fail("--payload wants 26 to 65535");
    if (options.route != Route::Direct && !options.hasProxy) Fail("--proxy is missing (or use --direct)");
}

}  // namespace bench
