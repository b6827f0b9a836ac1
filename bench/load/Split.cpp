#include <sys/socket.h>

#include <algorithm>

#include "bench/load/Client.h"
#include "bench/load/Options.h"
#include "bench/load/ProxyUse.h"
#include "bench/load/Results.h"
#include "bench/load/Scenarios.h"

namespace bench {

// A frame cut at every place of its header (and a little beyond), alone and behind
// a whole frame. What comes back must be intact wherever the cut falls.
void Split() {
    std::string bad;
    for (int behind = 0; behind < 2; ++behind) {
        for (std::size_t cut = 1; cut <= 12; ++cut) {
            try {
                StreamPtr s = OpenConnection();
                std::uint64_t expect = s->rxFrames + 1 + std::uint64_t(behind);
                if (behind) s->Queue(PingTemplate());
                s->Queue(PingTemplate());
                Bytes wire = s->TakeOutput();
                std::size_t at = std::size_t(behind) * PingTemplate().bytes.size() + cut;
                ::send(s->fd, wire.data(), at, MSG_NOSIGNAL);
                PauseMs(5);
                ::send(s->fd, wire.data() + at, wire.size() - at, MSG_NOSIGNAL);
                timeval limit{2, 0};
                setsockopt(s->fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
                AwaitFrames(*s, expect);
            } catch (const std::exception& e) {
                bad += (behind ? " frame+" : " ") + std::to_string(cut);
            }
        }
    }
    Report("split.cases_intact", 24 - double(std::count(bad.begin(), bad.end(), ' ')), "of 24");
    if (!bad.empty()) Fail("not intact when cut after byte" + bad);
}

}  // namespace bench
