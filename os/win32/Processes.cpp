#include "os/desktop/Processes.h"

#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>

#include "base/RuntimeError.h"
#include "os/win32/Handle.h"
#include "os/win32/WidePath.h"

namespace os {
namespace {

// How long a process may take to be gone after it was ended, so that its files and windows are free again.
constexpr DWORD kEndingMs = 1000;

// A right that Vista has first, and the function that is content with it; XP has neither.
constexpr DWORD kAskLimited = 0x1000;  // PROCESS_QUERY_LIMITED_INFORMATION
using PathFunction = BOOL(WINAPI*)(HANDLE, DWORD, wchar_t*, DWORD*);

PathFunction LimitedPathFunction() {
    const auto function = GetProcAddress(GetModuleHandleA("kernel32.dll"), "QueryFullProcessImageNameW");
    return reinterpret_cast<PathFunction>(reinterpret_cast<void*>(function));
}

// The program file of a process; an empty path when we may not know.
Path ProgramPath(DWORD id) {
    wchar_t path[MAX_PATH + 1] = {};
    if (const auto tellPath = LimitedPathFunction()) {
        DWORD size = MAX_PATH;
        const Handle process(OpenProcess(kAskLimited, FALSE, id));
        if (!process || !tellPath(process.Get(), 0, path, &size)) return {};
        return FromWide({path, size});
    }
    const Handle process(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, id));
    if (!process) return {};
    return FromWide({path, GetModuleFileNameExW(process.Get(), nullptr, path, MAX_PATH)});
}

bool IsInOurSession(DWORD id) {
    DWORD session = 0, ours = 0;
    return ProcessIdToSessionId(id, &session) && ProcessIdToSessionId(GetCurrentProcessId(), &ours) &&
           session == ours;
}

}  // namespace

void VisitProcesses(const std::function<bool(const Path&)>& isWanted,
                    const std::function<bool(ProcessId, const Path&)>& visit) {
    const Handle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    if (!snapshot) return;
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(snapshot.Get(), &entry); more != FALSE;
         more = Process32NextW(snapshot.Get(), &entry)) {
        if (!isWanted(FromWide(entry.szExeFile)) || !IsInOurSession(entry.th32ProcessID)) continue;
        const auto path = ProgramPath(entry.th32ProcessID);
        if (!path.IsEmpty() && visit(entry.th32ProcessID, path)) return;
    }
}

bool EndProcess(ProcessId id) {
    const Handle process(OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id));
    if (!process || TerminateProcess(process.Get(), 0) == FALSE) return false;
    WaitForSingleObject(process.Get(), kEndingMs);
    return true;
}

void StartMinimized(const Path& path) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_SHOWMINIMIZED;
    PROCESS_INFORMATION started{};
    // Quoted, because the path usually holds blanks.
    const auto program = Wide(path);
    auto commandLine = L'"' + program + L'"';
    const auto folderEnd = program.find_last_of(L"\\/");
    const auto folder = program.substr(0, folderEnd == std::wstring::npos ? 0 : folderEnd);
    if (CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                       folder.empty() ? nullptr : folder.c_str(), &startup, &started) == FALSE) {
        const auto number = static_cast<std::int32_t>(GetLastError());
        throw RuntimeError(number, "Cannot start " + path.Shown());
    }
    const Handle thread(started.hThread), process(started.hProcess);
}

}  // namespace os
