// wrenlow.exe: the main form and the loop that everything runs in.
#include "app/shell/StartUp.h"
#include "app/shell/frmMain.h"
#include "base/Trap.h"
#include "net/EventLoop.h"

// The system's entry point for window programs is the run time's; it calls this one.
int main() {
    return Trap("main", [] {
        if (modSystem::IsSecondStart()) return 0;
        frmMain form;
        form.Form_Load();
        return form.IsUnloaded() ? 0 : net::RunEventLoop();
    });
}
