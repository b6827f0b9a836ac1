// The loop is the message loop. Sockets, timers and woken watches announce themselves by messages to one
// hidden window and are handled in turns, which these messages start: so everything goes on inside modal
// loops, whoever runs them.
#include "net/EventLoop.h"

#include <winsock2.h>

#include <windows.h>

#include <algorithm>

#include "net/Turn.h"
#include "os/Clock.h"
#include "os/Watched.h"
#include "os/win32/DialogMessages.h"
#include "os/win32/HiddenWindow.h"
#include "os/win32/ModalLoop.h"
#include "os/win32/SocketMessages.h"

namespace net {
namespace {

constexpr UINT kWork = WM_APP;
constexpr UINT kFirstSocketMessage = WM_APP + 1;
constexpr UINT kSocketMessages = 0x2000;
constexpr UINT_PTR kTimerId = 1;
constexpr std::int64_t kMaxWaitMs = 60'000;
constexpr std::int64_t kPostAgainMs = 10;

// Posted messages come before input and painting: busy sockets must not keep a person waiting longer.
constexpr std::int64_t kInputMs = 10;
// The most input that is let in between two turns.
constexpr int kMaxInput = 16;

// Within one turn sockets may become ready again, or when others let go of them: some may do so for ever.
constexpr int kMaxPasses = 4;

// The most messages and turns that ProcessPendingEvents handles: some may cause the next for ever.
constexpr int kMaxPending = 64;

class Loop;
Loop& TheLoop();

class Loop : os::HiddenWindow {
 public:
    Loop() : os::HiddenWindow("Wrenlow loop"), sockets(Handle(), kFirstSocketMessage, kSocketMessages) {
        os::OnEnterModalLoop([] { TheLoop().EndTurn(); });
    }

    // Whether anything happened.
    bool Turn();
    // Sees to it that a message starts the next turn when there is something to do. Also before a modal loop,
    // which may run within a turn.
    void EndTurn();
    void HasWork();
    // After a message that came before all input.
    void LetInputIn();

    os::SocketMessages sockets;
    bool quit = false;
    int exitCode = 0;

 private:
    std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    void ArmTimer();
    void SetSystemTimer(std::int64_t wait);

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
        const TurnScope scope;
        for (int pass = 0; pass < kMaxPasses && !stop && sockets.Report(stop); ++pass) any = true;
        if (!stop) any |= os::HandleWoken(stop);
        if (!stop) any |= TickDueTimers(stop);
    }
    quit |= quitBefore;
    EndTurn();
    return any;
}

void Loop::EndTurn() {
    isInTurn_ = false;
    if (sockets.AnyReady() || os::AnyWoken()) HasWork();
    ArmTimer();
}

// Set anew only when something is due earlier: a tick that comes too early does no harm.
void Loop::ArmTimer() {
    const auto wait = MillisecondsToFirstTimer(kMaxWaitMs);
    const auto due = os::MonotonicMilliseconds() + wait;
    if (armedFor_ != 0 && armedFor_ <= due) return;
    SetSystemTimer(std::max<std::int64_t>(wait, 1));
}

void Loop::SetSystemTimer(std::int64_t wait) {
    armedFor_ = os::MonotonicMilliseconds() + wait;
    SetTimer(Handle(), kTimerId, static_cast<UINT>(wait), nullptr);
}

// Within a turn its end sees to the rest.
void Loop::HasWork() {
    if (isInTurn_ || isWorkPosted_) return;
    isWorkPosted_ = PostMessageW(Handle(), kWork, 0, 0) != FALSE;
    // A full queue takes no message, but a timer needs no place in it.
    if (!isWorkPosted_) SetSystemTimer(kPostAgainMs);
}

void Dispatch(MSG& message) {
    if (os::TakeDialogMessage(message)) return;
    TranslateMessage(&message);
    DispatchMessageW(&message);
}

void Loop::LetInputIn() {
    if (os::MonotonicMilliseconds() - lastInput_ < kInputMs) return;
    MSG message;
    for (int i = 0; i < kMaxInput; ++i) {
        if (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE | PM_QS_INPUT | PM_QS_PAINT) == FALSE) break;
        Dispatch(message);
    }
    lastInput_ = os::MonotonicMilliseconds();
}

// Handles one message after waiting for it. False for the message that ends the program's loop.
bool HandleNextMessage() {
    MSG message;
    if (GetMessageW(&message, nullptr, 0, 0) <= 0) return false;
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
    while (PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) != FALSE) {
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
    for (int i = 0; i < kMaxPending; ++i) {
        bool any = loop.Turn();
        MSG message;
        if (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
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
    const auto deadline = os::MonotonicMilliseconds() + milliseconds;
    auto& loop = TheLoop();
    loop.Turn();
    Timer alarm;
    alarm.StartOnce(milliseconds);
    bool quits = false;
    bool isDone = done();
    while (!isDone && os::MonotonicMilliseconds() < deadline) {
        quits |= !HandleNextMessage();
        isDone = done();
    }
    if (quits) PostQuitMessage(loop.exitCode);
    return isDone;
}

}  // namespace net

namespace os {

void WaitFor(SocketHandle socket, Token token, std::uint32_t events, bool isNew) {
    auto& loop = net::TheLoop();
    loop.sockets.Watch(static_cast<SOCKET>(socket), token, events, isNew);
    if (loop.sockets.AnyReady()) loop.HasWork();
}

void StopWaitingFor(SocketHandle, Token token) {
    net::TheLoop().sockets.Unwatch(token);
}
void ForgetWaiting(Token token) {
    net::TheLoop().sockets.Forget(token);
}
void LoopHasWork() {
    net::TheLoop().HasWork();
}

}  // namespace os
