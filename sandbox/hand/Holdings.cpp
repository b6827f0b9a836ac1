#include "sandbox/hand/Holdings.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

constexpr int kProcessBasicInformation = 0, kSystemExtendedHandleInformation = 64;
constexpr LONG kLengthMismatch = static_cast<LONG>(0xC0000004);
constexpr std::size_t kGdiTableInPeb = sizeof(void*) == 8 ? 0xF8 : 0x94;  // bytes from its beginning
constexpr std::size_t kGdiEntries = 0x4000;

// An entry of SYSTEM_HANDLE_INFORMATION_EX, behind the number of entries and a reserved word.
struct HandleEntry {
    void* object;
    ULONG_PTR process, handle;
    ULONG access;
    USHORT creator, type;
    ULONG attributes, reserved;
};

struct GdiEntry {
    std::uint64_t object;
    std::uint32_t owner;
    std::uint16_t unique;
    std::uint8_t type, flags;  // type 0: free
    std::uint64_t user;
};

struct BasicInformation {
    LONG status;
    char* peb;
    ULONG_PTR affinity;
    LONG priority;
    ULONG_PTR process, parent;
};

template <typename Function>
Function InNtdll(const char* name) {
    return reinterpret_cast<Function>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ntdll.dll"), name)));
}

std::size_t CountHandles(DWORD process) {
    using Query = LONG(WINAPI*)(int, void*, ULONG, ULONG*);
    const auto query = InNtdll<Query>("NtQuerySystemInformation");
    std::vector<ULONG_PTR> list(0x10000);
    const auto read = [&] {
        return query(kSystemExtendedHandleInformation, list.data(),
                     static_cast<ULONG>(list.size() * sizeof list[0]), nullptr);
    };
    while (read() == kLengthMismatch) list.resize(list.size() * 2);
    const auto* entries = reinterpret_cast<const HandleEntry*>(&list[2]);
    return static_cast<std::size_t>(std::count_if(
        entries, entries + list[0], [=](const HandleEntry& entry) { return entry.process == process; }));
}

std::size_t CountGdiObjects(HANDLE process) {
    using Query = LONG(WINAPI*)(HANDLE, int, void*, ULONG, ULONG*);
    BasicInformation basic{};
    InNtdll<Query>("NtQueryInformationProcess")(process, kProcessBasicInformation, &basic, sizeof basic,
                                                nullptr);
    char* table = nullptr;
    std::vector<GdiEntry> entries(kGdiEntries);
    if (!ReadProcessMemory(process, basic.peb + kGdiTableInPeb, &table, sizeof table, nullptr) ||
        !ReadProcessMemory(process, table, entries.data(), entries.size() * sizeof entries[0], nullptr)) {
        return 0;
    }
    return static_cast<std::size_t>(
        std::count_if(entries.begin(), entries.end(), [](const GdiEntry& entry) { return entry.type != 0; }));
}

struct WindowCount {
    DWORD process;
    std::size_t windows;
};

BOOL CALLBACK CountWindow(HWND window, LPARAM parameter) {
    auto& count = *reinterpret_cast<WindowCount*>(parameter);
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner == count.process) {
        ++count.windows;
        if (GetAncestor(window, GA_PARENT) == GetDesktopWindow())
            EnumChildWindows(window, CountWindow, parameter);
    }
    return TRUE;
}

std::size_t CountWindows(DWORD process) {
    WindowCount count{process, 0};
    EnumWindows(CountWindow, reinterpret_cast<LPARAM>(&count));
    for (HWND window = nullptr;
         (window = FindWindowExA(HWND_MESSAGE, window, nullptr, nullptr)) != nullptr;) {
        CountWindow(window, reinterpret_cast<LPARAM>(&count));
    }
    return count.windows;
}

}  // namespace

std::string Holdings(DWORD process) {
    const HANDLE opened = OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, process);
    if (opened == nullptr) return "no such process";
    const auto gdi = CountGdiObjects(opened);
    CloseHandle(opened);
    return "handles " + std::to_string(CountHandles(process)) + " gdi " + std::to_string(gdi) + " windows " +
           std::to_string(CountWindows(process));
}
