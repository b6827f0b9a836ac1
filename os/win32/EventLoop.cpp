// The loop is the message loop. Everything that is not a window message (sockets, timers, posted calls) is
// done in turns, which messages to one hidden window start: so it goes on inside modal loops, whoever runs
// them.
#include "os/EventLoop.h"

#include <winsock2.h>

#include <windows.h>

#include <algorithm>

#include "os/Clock.h"
#include "os/net/Turn.h"
#include "os/net/Waiting.h"
#include "os/win32/DialogMessages.h"
#include "os/win32/HiddenWindow.h"
#include "os/win32/ModalLoop.h"
#include "os/win32/SocketWaiter.h"

namespace os {
namespace {

constexpr UINT kSocketsReady = WM_APP + 1;
constexpr UINT kWork = WM_APP + 2;
constexpr UINT_PTR kTimerId = 1;
constexpr std::int64_t kLongestWaitMs = 60'000;

// While several sockets are ready they are polled again at once, for so long; then messages get their turn.
constexpr std::int64_t kBusyTurnMs = 10;
constexpr std::size_t kSeveral = 2;

// The most messages and turns that ProcessPendingEvents handles: some may cause the next for ever.
constexpr int kMostPending = 256;
// The most input that is let in between two turns.
constexpr int kMostInput = 16;

class Loop;
Loop& TheLoop();

class Loop : HiddenWindow {
 public:
    Loop() : HiddenWindow("Wrenlow loop"), waiter(Handle(), kSocketsReady) {
        OnEnterModalLoop([] { TheLoop().EndTurn(); });
    }

    // Whether anything happened. With `now` nothing that is ready is missed.
    bool Turn(bool now);
    // Sees to it that a message starts the next turn when there is something to do. Also before a modal loop,
    // which may run within a turn.
    void EndTurn();
    void HasWork();

    SocketWaiter waiter;
    bool quit = false;
    int exitCode = 0;

 private:
    std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    bool HandleSockets(bool now, const bool& stop);
    void ArmTimer();

    bool isInTurn_ = false;
    bool isWorkPosted_ = false;
    std::int64_t armedFor_ = 0;  // the moment that the system's timer is set to
};

// Never destroyed: sockets and timers of static storage end after main.
Loop& TheLoop() {
    static Loop& loop = *new Loop;
    return loop;
}

std::optional<LRESULT> Loop::OnMessage(UINT message, WPARAM, LPARAM) {
    switch (message) {
        case kWork:
            isWorkPosted_ = false;
            [[fallthrough]];
        case kSocketsReady:
            Turn(false);
            return 0;
        case WM_TIMER:
            armedFor_ = 0;
            Turn(false);
            return 0;
        default:
            return {};
    }
}

// A quit ends the turn after the event that asked for it; turns after that (a clean end flushes) are whole
// again.
bool Loop::Turn(bool now) {
    const bool quitBefore = std::exchange(quit, false);
    const bool& stop = quit;
    isInTurn_ = true;
    bool any = false;
    {
        const net::TurnScope scope;
        any = HandleSockets(now, stop);
        if (!stop) any |= net::HandleWoken(stop);
        if (!stop) any |= net::TickDueTimers(stop);
        if (!stop) any |= net::RunPostedCalls(stop);
    }
    quit |= quitBefore;
    EndTurn();
    return any;
}

bool Loop::HandleSockets(bool now, const bool& stop) {
    const auto until = MonotonicMilliseconds() + kBusyTurnMs;
    auto reports = waiter.TakeBack(now);
    if (now && reports.empty()) reports = waiter.Poll();
    bool any = false;
    while (!reports.empty() && !stop) {
        for (const auto& report : reports) {
            net::ReportReady(report.token, report.events);
            if (stop) return true;
        }
        any = true;
        if (reports.size() < kSeveral || MonotonicMilliseconds() >= until) break;
        reports = waiter.Poll();
    }
    return any;
}

void Loop::EndTurn() {
    isInTurn_ = false;
    waiter.HandOver();
    if (net::AnyPosted() || net::AnyWoken()) HasWork();
    ArmTimer();
}

// The system's timer goes on ticking with its period; it is set anew only when another moment is due.
void Loop::ArmTimer() {
    const auto wait = net::MillisecondsToFirstTimer(kLongestWaitMs);
    const auto due = MonotonicMilliseconds() + wait;
    if (due == armedFor_) return;
    armedFor_ = due;
    SetTimer(Handle(), kTimerId, static_cast<UINT>(std::max<std::int64_t>(wait, 1)), nullptr);
}

// Within a turn its end sees to the rest.
void Loop::HasWork() {
    if (isInTurn_ || std::exchange(isWorkPosted_, true)) return;
    PostMessageA(Handle(), kWork, 0, 0);
}

void Dispatch(MSG& message) {
    if (TakeDialogMessage(message)) return;
    TranslateMessage(&message);
    DispatchMessageA(&message);
}

// Posted messages come before input and painting; busy sockets must not keep a person waiting.
void LetInputIn() {
    MSG message;
    for (int i = 0; i < kMostInput; ++i) {
        if (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE | PM_QS_INPUT | PM_QS_PAINT) == FALSE) return;
        Dispatch(message);
    }
}

// Handles one message after waiting for it. False for the message that ends the program's loop.
bool HandleNextMessage() {
    MSG message;
    if (GetMessageA(&message, nullptr, 0, 0) <= 0) return false;
    Dispatch(message);
    if (message.message == kSocketsReady) LetInputIn();
    return true;
}

}  // namespace

int RunEventLoop() {
    auto& loop = TheLoop();
    while (!loop.quit && HandleNextMessage()) {
    }
    // The message is still on its way when a turn has set the flag.
    MSG message;
    while (PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) != FALSE) {
    }
    loop.quit = false;
    return loop.exitCode;
}

// The message ends modal loops as well, in which the one who asked may stand.
void QuitEventLoop(int exitCode) {
    auto& loop = TheLoop();
    loop.quit = true;
    loop.exitCode = exitCode;
    PostQuitMessage(exitCode);
}

void ProcessPendingEvents() {
    auto& loop = TheLoop();
    bool quits = false;
    for (int i = 0; i < kMostPending; ++i) {
        bool any = loop.Turn(true);
        MSG message;
        if (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
            quits |= message.message == WM_QUIT;
            // What only announces a turn is no event of its own.
            any |= message.message < WM_APP;
            if (message.message != WM_QUIT) Dispatch(message);
        }
        if (!any) break;
    }
    if (quits) PostQuitMessage(loop.exitCode);
}

bool RunEventLoopUntil(const std::function<bool()>& done, std::int64_t milliseconds) {
    const auto deadline = MonotonicMilliseconds() + milliseconds;
    auto& loop = TheLoop();
    loop.Turn(true);
    Timer alarm;
    alarm.StartOnce(milliseconds);
    bool quits = false;
    bool isDone = done();
    while (!isDone && MonotonicMilliseconds() < deadline) {
        quits |= !HandleNextMessage();
        isDone = done();
    }
    if (quits) PostQuitMessage(loop.exitCode);
    return isDone;
}

}  // namespace os

namespace os::net {

void WaitFor(SocketHandle socket, Token token, std::uint32_t events, bool) {
    TheLoop().waiter.Add(static_cast<SOCKET>(socket), token, events);
}

void StopWaitingFor(SocketHandle, Token token) {
    TheLoop().waiter.Remove(token);
}
void ForgetWaiting(Token token) {
    TheLoop().waiter.Remove(token);
}
void LoopHasWork() {
    TheLoop().HasWork();
}

}  // namespace os::net
