#include "os/fake/FakeConnection.h"

#include <algorithm>

void os::fake::Join(const std::shared_ptr<Connection>& one, const std::shared_ptr<Connection>& other) {
    one->opposite = other;
    other->opposite = one;
    one->state = other->state = TcpSocket::State::Connected;
}

void os::fake::LetKnow(Connection& side) {
    side.state = TcpSocket::State::Connecting;
    side.established = true;
}

void os::fake::Flow(Connection& side) {
    const auto opposite = side.opposite.lock();
    if (!opposite) {
        side.queue.clear();
        return;
    }
    // Nobody listens at a closed side: it takes everything and forgets it.
    if (opposite->state == TcpSocket::State::Closed) side.queue.clear();
    const auto room = opposite->inboxLimit - std::min(opposite->inboxLimit, opposite->inbox.size());
    const auto moved = std::min(room, side.queue.size());
    opposite->inbox.append(side.queue, 0, moved);
    side.queue.erase(0, moved);
    if (side.ending && side.queue.empty()) opposite->ended = true;
}

void os::fake::End(Connection& side) {
    side.state = TcpSocket::State::Closed;
    side.inbox.clear();
    side.ending = true;
    Flow(side);
    if (const auto opposite = side.opposite.lock()) Flow(*opposite);
}

void os::fake::Abort(Connection& side, std::int32_t number) {
    side.queue.clear();
    side.inbox.clear();
    side.state = TcpSocket::State::Closed;
    const auto opposite = side.opposite.lock();
    side.opposite.reset();
    if (!opposite || opposite->state == TcpSocket::State::Closed) return;
    opposite->failure = number;
    opposite->opposite.reset();
    opposite->queue.clear();
}
