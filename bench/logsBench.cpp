// logsbench FOLDER INDEX WORD...: how long the log library takes on a folder, in ms of CPU
// time, as JSON: until its first page
// stands, until all is indexed, the longest slice that held the loop, and for each word the search.
#include <algorithm>

#include <cstdio>
#include <ctime>
#include <functional>

#include "features/logs/LogLibrary.h"

namespace {

// CPU time, which the load of the machine hardly moves; the work is done on one thread.
double Ms() {
    return static_cast<double>(std::clock()) * 1000 / CLOCKS_PER_SEC;
}

// Until the condition holds; keeps the longest turn of the loop.
double longestTurn = 0;
void Until(const std::function<bool()>& done) {
    while (!done()) {
        const auto turn = Ms();
        net::RunEventLoopUntil(done, 1);
        longestTurn = std::max(longestTurn, Ms() - turn);
    }
}

}  // namespace

int main(int count, char** arguments) {
    LogLibrary library(os::Path::FromSystem(arguments[1]), os::Path::FromSystem(arguments[2]));
    library.Refresh();
    Until([&] { return !library.IsRefreshing(); });
    std::printf("{\"names_ms\": %.1f", Ms());
    Until([&] { return !library.IsBusy(); });
    std::printf(", \"indexed_ms\": %.1f, \"searches\": {", Ms());
    for (int i = 3; i < count; ++i) {
        const auto asked = Ms();
        library.Search(arguments[i]);
        Until([&] { return !library.IsSearching(); });
        std::printf("%s\"%s\": [%.1f, %zu]", i > 3 ? ", " : "", arguments[i], Ms() - asked,
                    library.Hits().size());
    }
    std::printf("}, \"longest_turn_ms\": %.1f}\n", longestTurn);
    return 0;
}
