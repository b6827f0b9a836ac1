// The contract of net/EventLoop.h and of the steady clock it waits by.
#include "net/EventLoop.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "os/Clock.h"
#include "tests/contract/Implementation.h"
#include "tests/unit/Reported.h"

namespace {

constexpr std::int64_t kBoundMs = 20'000;

// A call that the next turn of the loop makes, or a later one.
class Later {
 public:
    explicit Later(std::function<void()> call, std::int64_t milliseconds = 0) : call_(std::move(call)) {
        timer_.Tick.Bind(call_);
        timer_.StartOnce(milliseconds);
    }

 private:
    std::function<void()> call_;
    net::Timer timer_;
};

class EventLoopContract : public testing::Test {
 protected:
    EventLoopContract() { PrepareContract(); }

 private:
    Reported reported_;
};

TEST_F(EventLoopContract, WhatIsDueRunsLaterAndInOrderAndWhatIsPendingWithoutWaiting) {
    std::string order;
    std::optional<Later> third;
    const Later late([&] { order += "late"; }, kBoundMs);
    const Later first([&] {
        order += '1';
        third.emplace([&] { order += '3'; });
    });
    const Later second([&] { order += '2'; });
    EXPECT_EQ(order, "");
    net::ProcessPendingEvents();
    EXPECT_TRUE(order.starts_with("12")) << order;
    EXPECT_TRUE(net::RunEventLoopUntil([&] { return order == "123"; }, kBoundMs));
}

TEST_F(EventLoopContract, QuitReturnsAfterTheEventThatAskedForIt) {
    bool late = false;
    const Later quit([] { net::QuitEventLoop(7); });
    const Later next([&] { late = true; });
    EXPECT_EQ(net::RunEventLoop(), 7);
    EXPECT_FALSE(late);
    // The loop can run again, and nothing was lost.
    EXPECT_TRUE(net::RunEventLoopUntil([&] { return late; }, kBoundMs));
}

TEST_F(EventLoopContract, AnExceptionThatLeavesAHandlerIsReportedAndEndsNothing) {
    bool next = false;
    const Later thrower([] { throw std::runtime_error("thrown"); });
    const Later behind([&] { next = true; });
    ASSERT_TRUE(net::RunEventLoopUntil([&] { return next; }, kBoundMs));

    net::Timer timer;
    int ticks = 0;
    auto tick = [&] {
        ++ticks;
        throw std::runtime_error("ticked");
    };
    timer.Tick.Bind(tick);
    timer.StartRepeating(1);
    ASSERT_TRUE(net::RunEventLoopUntil([&] { return ticks >= 2; }, kBoundMs));
    ASSERT_GE(Reported::reports.size(), 3u);
    EXPECT_EQ(Reported::reports[0].description, "thrown");
    EXPECT_EQ(Reported::reports[1].description, "ticked");
    EXPECT_EQ(Reported::reports[1].where, "EventLoop:Dispatch");
}

TEST_F(EventLoopContract, ManyTimersTickOnceEachInTheOrderOfTheirTimesAndNotWhenStopped) {
    struct Row {
        net::Timer timer;
        std::int64_t earliest = 0, latest = 0;  // when it may tick: the clock goes on while it is started
        std::vector<Row*>* ticked = nullptr;
        void timer_Tick() {
            EXPECT_GE(os::MonotonicMilliseconds(), earliest);
            EXPECT_FALSE(timer.IsRunning());
            ticked->push_back(this);
        }
    };
    constexpr std::size_t kCount = 300;
    std::vector<Row> rows(kCount);
    std::vector<Row*> ticked;
    for (std::size_t index = 0; index < kCount; ++index) {
        auto& row = rows[index];
        const auto milliseconds = static_cast<std::int64_t>(index * 7919 % 40);
        row.ticked = &ticked;
        row.timer.Tick.Bind<&Row::timer_Tick>(row);
        row.earliest = os::MonotonicMilliseconds() + milliseconds;
        row.timer.StartOnce(milliseconds);
        row.latest = os::MonotonicMilliseconds() + milliseconds;
    }
    for (std::size_t index = 0; index < kCount; index += 3) rows[index * 101 % kCount].timer.Stop();
    std::size_t running = 0;
    for (const auto& row : rows) running += row.timer.IsRunning() ? 1u : 0u;
    ASSERT_EQ(running, kCount - kCount / 3);
    ASSERT_TRUE(net::RunEventLoopUntil([&] { return ticked.size() == running; }, kBoundMs));
    std::int64_t reached = 0;
    for (const auto* row : ticked) {
        EXPECT_GE(row->latest, reached) << "a later one came first";
        reached = std::max(reached, row->earliest);
    }
    net::RunEventLoopUntil([] { return false; }, 50);
    EXPECT_EQ(ticked.size(), running);
}

TEST_F(EventLoopContract, ATimerThatIsStartedAgainKeepsToTheLastCall) {
    net::Timer timer;
    int ticks = 0;
    auto count = [&] { ++ticks; };
    timer.Tick.Bind(count);
    timer.StartRepeating(5);
    timer.StartOnce(10);
    net::RunEventLoopUntil([] { return false; }, 60);
    EXPECT_EQ(ticks, 1);
}

TEST_F(EventLoopContract, ATimerMayBeDestroyedByItsOwnTick) {
    auto timer = std::make_unique<net::Timer>();
    auto tick = [&] { timer.reset(); };
    timer->Tick.Bind(tick);
    timer->StartRepeating(1);
    EXPECT_TRUE(net::RunEventLoopUntil([&] { return timer == nullptr; }, kBoundMs));
}

TEST_F(EventLoopContract, AHandlerMayRunALoopOfItsOwn) {
    std::string order;
    const Later outer([&] {
        order += '(';
        const Later tick([&] { order += 't'; }, 5);
        net::RunEventLoopUntil([&] { return order == "(t"; }, kBoundMs);
        order += ')';
    });
    EXPECT_TRUE(net::RunEventLoopUntil([&] { return order == "(t)"; }, kBoundMs));
}

TEST_F(EventLoopContract, RunUntilGivesUpWhenTheTimeIsOver) {
    const auto start = os::MonotonicMilliseconds();
    EXPECT_FALSE(net::RunEventLoopUntil([] { return false; }, 20));
    EXPECT_GE(os::MonotonicMilliseconds() - start, 20);
    EXPECT_TRUE(net::RunEventLoopUntil([] { return true; }, 0));
}

}  // namespace
