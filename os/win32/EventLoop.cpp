// The loop is the message loop. Sockets, timers and posted calls announce themselves by messages to one
// hidden window and are handled in turns, which these messages start: so everything goes on inside modal
// loops, whoever runs them.
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
#include "os/win32/SocketMessages.h"

namespace os {
namespace {

constexpr UINT kWork = WM_APP;
constexpr UINT kFirstSocketMessage = WM_APP + 1;
constexpr UINT kSocketMessages = 0x2000;
constexpr UINT_PTR kTimerId = 1;
constexpr std::int64_t kLongestWaitMs = 60'000;

// Posted messages come before input and painting: busy sockets must not keep a person waiting longer.
constexpr std::int64_t kInputMs = 10;
// The most input that is let in between two turns.
constexpr int kMostInput = 16;

// Within one turn sockets may become ready again, or when others let go of them: some may do so for ever.
constexpr int kMostPasses = 4;

// The most messages and turns that ProcessPendingEvents handles: some may cause the next for ever.
constexpr int kMostPending = 64;

class Loop;
Loop& TheLoop();

class Loop : HiddenWindow {
 public:
    Loop() : HiddenWindow("Wrenlow loop"), sockets(Handle(), kFirstSocketMessage, kSocketMessages) {
        OnEnterModalLoop([] { TheLoop().EndTurn(); });
    }

    // Whether anything happened.
    bool Turn();
    // Sees to it that a message starts the next turn when there is something to do. Also before a modal loop,
    // which may run within a turn.
    void EndTurn();
    void HasWork();
    // After a message that came before all input.
    void LetInputIn();

    SocketMessages sockets;
    bool quit = false;
    int exitCode = 0;

 private:
    std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    void ArmTimer();

    bool isInTurn_ = false;
    bool isWorkPosted_ = false;
    std::int64_t armedFor_ = 0;   // the moment that the system's timer is set to, 0 when it has ticked
    std::int64_t lastInput_ = 0;  // the moment when input was let in last
};

// Never destroyed: sockets and timers of static storage end after main.
Loop& TheLoop() {
    static Loop& loop = *new Loop;
    return loop;
}

std::optional<LRESULT> Loop::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (sockets.Owns(message)) {
        sockets.Note(message, wParam, lParam);
    } else if (message == kWork) {
        isWorkPosted_ = false;
    } else if (message == WM_TIMER) {
        armedFor_ = 0;
    } else {
        return {};
    }
    Turn();
    return 0;
}

// A quit ends the turn after the event that asked for it; turns after that (a clean end flushes) are whole
// again.
bool Loop::Turn() {
    const bool quitBefore = std::exchange(quit, false);
    const bool& stop = quit;
    isInTurn_ = true;
    bool any = false;
    {
        const net::TurnScope scope;
        for (int pass = 0; pass < kMostPasses && !stop && sockets.Report(stop); ++pass) any = true;
        if (!stop) any |= net::HandleWoken(stop);
        if (!stop) any |= net::TickDueTimers(stop);
        if (!stop) any |= net::RunPostedCalls(stop);
    }
    quit |= quitBefore;
    EndTurn();
    return any;
}

void Loop::EndTurn() {
    isInTurn_ = false;
    if (sockets.AnyReady() || net::AnyPosted() || net::AnyWoken()) HasWork();
    ArmTimer();
}

// Set anew only when something is due earlier: a tick that comes too early does no harm.
void Loop::ArmTimer() {
    const auto wait = net::MillisecondsToFirstTimer(kLongestWaitMs);
    const auto due = MonotonicMilliseconds() + wait;
    if (armedFor_ != 0 && armedFor_ <= due) return;
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

void Loop::LetInputIn() {
    if (MonotonicMilliseconds() - lastInput_ < kInputMs) return;
    MSG message;
    for (int i = 0; i < kMostInput; ++i) {
        if (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE | PM_QS_INPUT | PM_QS_PAINT) == FALSE) break;
        Dispatch(message);
    }
    lastInput_ = MonotonicMilliseconds();
}

// Handles one message after waiting for it. False for the message that ends the program's loop.
bool HandleNextMessage() {
    MSG message;
    if (GetMessageA(&message, nullptr, 0, 0) <= 0) return false;
    Dispatch(message);
    if (message.message >= WM_APP) TheLoop().LetInputIn();
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
        bool any = loop.Turn();
        MSG message;
        if (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
            quits |= message.message == WM_QUIT;
            // What only announces a turn is no event of its own.
            any |= message.message != kWork;
            if (message.message != WM_QUIT) Dispatch(message);
        }
        if (!any) break;
    }
    if (quits) PostQuitMessage(loop.exitCode);
}

bool RunEventLoopUntil(const std::function<bool()>& done, std::int64_t milliseconds) {
    const auto deadline = MonotonicMilliseconds() + milliseconds;
    auto& loop = TheLoop();
    loop.Turn();
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

void WaitFor(SocketHandle socket, Token token, std::uint32_t events, bool isNew) {
    auto& loop = TheLoop();
    loop.sockets.Watch(static_cast<SOCKET>(socket), token, events, isNew);
    if (loop.sockets.AnyReady()) loop.HasWork();
}

void StopWaitingFor(SocketHandle, Token token) {
    TheLoop().sockets.Unwatch(token);
}
void ForgetWaiting(Token token) {
    TheLoop().sockets.Forget(token);
}
void LoopHasWork() {
    TheLoop().HasWork();
}

}  // namespace os::net
