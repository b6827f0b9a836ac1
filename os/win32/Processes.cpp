#include "os/Processes.h"

#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>

#include <memory>

#include "base/RuntimeError.h"

namespace os {
namespace {

// How long a process may take to be gone after it was ended, so that its files and windows are free again.
constexpr DWORD kEndingMs = 1000;

struct CloseIt {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, CloseIt>;

// The program file of a process that may be opened; "" otherwise.
std::string ProgramPath(DWORD id) {
    const Handle process(OpenProcess(PROCESS_ALL_ACCESS, FALSE, id));
    if (!process) return {};
    char path[MAX_PATH + 1] = {};
    GetModuleFileNameExA(process.get(), nullptr, path, MAX_PATH);
    return path;
}

}  // namespace

void VisitProcesses(const std::function<bool(ProcessId, const std::string&)>& visit) {
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (snapshot == INVALID_HANDLE_VALUE) return;
    const Handle owner(snapshot);
    PROCESSENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32First(snapshot, &entry); more != FALSE;
         more = Process32Next(snapshot, &entry)) {
        const auto path = ProgramPath(entry.th32ProcessID);
        if (!path.empty() && visit(entry.th32ProcessID, path)) return;
    }
}

bool EndProcess(ProcessId id) {
    const Handle process(OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id));
    if (!process || TerminateProcess(process.get(), 0) == FALSE) return false;
    WaitForSingleObject(process.get(), kEndingMs);
    return true;
}

void StartMinimized(const std::string& path) {
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_SHOWMINIMIZED;
    PROCESS_INFORMATION started{};
    // Quoted, because the path usually holds blanks.
    std::string commandLine = '"' + path + '"';
    const auto folderEnd = path.find_last_of("\\/");
    const auto folder = path.substr(0, folderEnd == std::string::npos ? 0 : folderEnd);
    if (CreateProcessA(path.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                       folder.empty() ? nullptr : folder.c_str(), &startup, &started) == FALSE) {
        const auto number = static_cast<std::int32_t>(GetLastError());
        throw RuntimeError(number, "Cannot start " + path);
    }
    CloseHandle(started.hThread);
    CloseHandle(started.hProcess);
}

}  // namespace os
