// The contract of os/EventLoop.h and of the steady clock it waits by.
#include "os/EventLoop.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "base/Trap.h"
#include "os/Clock.h"
#include "tests/contract/RawPeer.h"

namespace {

constexpr std::int64_t kBoundMs = 20'000;

std::vector<std::string> reported;

class EventLoopContract : public testing::Test {
 protected:
    EventLoopContract() {
        PrepareContract();
        reported.clear();
        before_ = SetErrorReporter([](const std::string& description, std::int32_t, const std::string& where,
                                      std::int16_t) { reported.push_back(where + ": " + description); });
    }
    ~EventLoopContract() override { SetErrorReporter(before_); }

 private:
    ErrorReporter before_;
};

TEST_F(EventLoopContract, PostedCallsRunLaterAndInOrder) {
    std::string order;
    os::Post([&] {
        order += '1';
        os::Post([&] { order += '3'; });
    });
    os::Post([&] { order += '2'; });
    EXPECT_EQ(order, "");
    EXPECT_TRUE(os::RunEventLoopUntil([&] { return order == "123"; }, kBoundMs));
}

TEST_F(EventLoopContract, PendingCallsAreHandledWithoutWaiting) {
    int calls = 0;
    os::Timer timer;
    auto tick = [&] { ++calls; };
    timer.Tick.Bind(tick);
    timer.StartOnce(kBoundMs);
    os::Post(tick);
    os::ProcessPendingEvents();
    EXPECT_EQ(calls, 1);
}

TEST_F(EventLoopContract, QuitReturnsAfterTheEventThatAskedForIt) {
    bool late = false;
    os::Post([] { os::QuitEventLoop(7); });
    os::Post([&] { late = true; });
    EXPECT_EQ(os::RunEventLoop(), 7);
    EXPECT_FALSE(late);
    // The loop can run again, and nothing was lost.
    EXPECT_TRUE(os::RunEventLoopUntil([&] { return late; }, kBoundMs));
}

TEST_F(EventLoopContract, AnExceptionThatLeavesAHandlerIsReportedAndEndsNothing) {
    bool next = false;
    os::Post([] { throw std::runtime_error("thrown"); });
    os::Post([&] { next = true; });
    ASSERT_TRUE(os::RunEventLoopUntil([&] { return next; }, kBoundMs));

    os::Timer timer;
    int ticks = 0;
    auto tick = [&] {
        ++ticks;
        throw std::runtime_error("ticked");
    };
    timer.Tick.Bind(tick);
    timer.StartRepeating(1);
    ASSERT_TRUE(os::RunEventLoopUntil([&] { return ticks >= 2; }, kBoundMs));
    ASSERT_GE(reported.size(), 3u);
    EXPECT_EQ(reported[0], "EventLoop:Dispatch: thrown");
    EXPECT_EQ(reported[1], "EventLoop:Dispatch: ticked");
}

TEST_F(EventLoopContract, ATimerTicksOnceNotBeforeItsTime) {
    os::Timer timer;
    int ticks = 0;
    auto tick = [&] { ++ticks; };
    timer.Tick.Bind(tick);
    const auto start = os::MonotonicMilliseconds();
    timer.StartOnce(30);
    EXPECT_TRUE(timer.IsRunning());
    ASSERT_TRUE(os::RunEventLoopUntil([&] { return ticks > 0; }, kBoundMs));
    EXPECT_GE(os::MonotonicMilliseconds() - start, 30);
    EXPECT_FALSE(timer.IsRunning());
    os::RunEventLoopUntil([] { return false; }, 50);
    EXPECT_EQ(ticks, 1);
}

TEST_F(EventLoopContract, TimersTickInTheOrderOfTheirTimes) {
    struct Row {
        os::Timer timer;
        std::string* order;
        char name;
        void timer_Tick() { *order += name; }
    };
    std::string order;
    Row rows[4];
    const std::int64_t times[] = {40, 5, 60, 20};
    for (int index = 0; index < 4; ++index) {
        auto& row = rows[index];
        row.order = &order;
        row.name = static_cast<char>('a' + index);
        row.timer.Tick.Bind<&Row::timer_Tick>(row);
        row.timer.StartOnce(times[index]);
    }
    ASSERT_TRUE(os::RunEventLoopUntil([&] { return order.size() == 4; }, kBoundMs));
    EXPECT_EQ(order, "bdac");
}

TEST_F(EventLoopContract, StoppedAndRestartedTimersKeepToTheLastCall) {
    os::Timer stopped, restarted;
    int stoppedTicks = 0, restartedTicks = 0;
    auto countStopped = [&] { ++stoppedTicks; };
    auto countRestarted = [&] { ++restartedTicks; };
    stopped.Tick.Bind(countStopped);
    restarted.Tick.Bind(countRestarted);
    stopped.StartOnce(5);
    restarted.StartRepeating(5);
    stopped.Stop();
    restarted.StartOnce(10);
    EXPECT_FALSE(stopped.IsRunning());
    os::RunEventLoopUntil([] { return false; }, 60);
    EXPECT_EQ(stoppedTicks, 0);
    EXPECT_EQ(restartedTicks, 1);
}

TEST_F(EventLoopContract, ATimerMayBeDestroyedByItsOwnTick) {
    auto timer = std::make_unique<os::Timer>();
    auto tick = [&] { timer.reset(); };
    timer->Tick.Bind(tick);
    timer->StartRepeating(1);
    EXPECT_TRUE(os::RunEventLoopUntil([&] { return timer == nullptr; }, kBoundMs));
}

TEST_F(EventLoopContract, ManyTimersMayBeStartedAndStoppedInAnyOrder) {
    constexpr std::size_t kCount = 300;
    struct Row {
        os::Timer timer;
        int ticks = 0;
        void timer_Tick() { ++ticks; }
    };
    std::vector<std::unique_ptr<Row>> rows;
    for (std::size_t index = 0; index < kCount; ++index) {
        rows.push_back(std::make_unique<Row>());
        rows[index]->timer.Tick.Bind<&Row::timer_Tick>(*rows[index]);
        rows[index]->timer.StartOnce(static_cast<std::int64_t>(index * 7919 % 40));
    }
    for (std::size_t index = 0; index < kCount; index += 3) rows[index * 101 % kCount]->timer.Stop();
    std::size_t running = 0;
    for (const auto& row : rows) running += row->timer.IsRunning() ? 1u : 0u;
    ASSERT_TRUE(os::RunEventLoopUntil(
        [&] {
            std::size_t ticks = 0;
            for (const auto& row : rows) ticks += static_cast<std::size_t>(row->ticks);
            return ticks == running;
        },
        kBoundMs));
    for (const auto& row : rows) EXPECT_LE(row->ticks, 1);
}

TEST_F(EventLoopContract, AHandlerMayRunALoopOfItsOwn) {
    std::string order;
    os::Timer timer;
    auto tick = [&] { order += 't'; };
    timer.Tick.Bind(tick);
    os::Post([&] {
        order += '(';
        timer.StartOnce(5);
        os::RunEventLoopUntil([&] { return order == "(t"; }, kBoundMs);
        order += ')';
    });
    EXPECT_TRUE(os::RunEventLoopUntil([&] { return order == "(t)"; }, kBoundMs));
}

TEST_F(EventLoopContract, RunUntilGivesUpWhenTheTimeIsOver) {
    const auto start = os::MonotonicMilliseconds();
    EXPECT_FALSE(os::RunEventLoopUntil([] { return false; }, 20));
    EXPECT_GE(os::MonotonicMilliseconds() - start, 20);
    EXPECT_TRUE(os::RunEventLoopUntil([] { return true; }, 0));
}

TEST_F(EventLoopContract, TheTimeOfDayIsADate) {
    const auto now = os::Now();
    EXPECT_GE(now.year, 2000);
    EXPECT_TRUE(now.month >= 1 && now.month <= 12 && now.day >= 1 && now.day <= 31);
    EXPECT_TRUE(now.hour >= 0 && now.hour <= 23 && now.minute >= 0 && now.minute <= 59);
    EXPECT_TRUE(now.second >= 0 && now.second <= 59);
}

}  // namespace
