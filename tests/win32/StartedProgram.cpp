#include "tests/win32/StartedProgram.h"

#include <iterator>
#include <stdexcept>

#include "tests/contract/RawPeer.h"
#include "tests/win32/DesktopUser.h"

namespace {

constexpr DWORD kPatienceMs = 10'000;

// It lies in the same build tree as the tests.
std::string ProgramFile() {
    char path[MAX_PATH] = "";
    GetModuleFileNameA(nullptr, path, sizeof path);
    const std::string file(path);
    return file.substr(0, file.find_last_of('\\')) + "\\..\\..\\app\\shell\\wrenlow.exe";
}

// Only the wide form of the message comes over whole from another process.
BOOL CALLBACK AddText(HWND window, LPARAM parameter) {
    wchar_t wide[1024] = L"";
    char text[1024] = "";
    SendMessageW(window, WM_GETTEXT, std::size(wide), reinterpret_cast<LPARAM>(wide));
    WideCharToMultiByte(CP_ACP, 0, wide, -1, text, sizeof text, nullptr, nullptr);
    auto& texts = *reinterpret_cast<std::string*>(parameter);
    texts += text + std::string("\n");
    return TRUE;
}

}  // namespace

StartedProgram::StartedProgram() {
    auto command = "\"" + ProgramFile() + "\" d";
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process_))
        throw std::runtime_error("the program does not start: " + command);
}

StartedProgram::~StartedProgram() {
    if (IsRunning()) TerminateProcess(process_.hProcess, 0);
    WaitForSingleObject(process_.hProcess, kPatienceMs);
    CloseHandle(process_.hThread);
    CloseHandle(process_.hProcess);
}

bool StartedProgram::ShowsItsIcon() {
    return Eventually([] { return TrayWindowHandle() != nullptr; });
}

bool StartedProgram::Listens() {
    return Eventually([] {
        try {
            return RawPeer(kProgramPort), true;
        } catch (const std::runtime_error&) {
            return false;
        }
    });
}

bool StartedProgram::IsRunning() const {
    return WaitForSingleObject(process_.hProcess, 0) == WAIT_TIMEOUT;
}

int StartedProgram::ExitCode() const {
    DWORD code = 0;
    if (WaitForSingleObject(process_.hProcess, kPatienceMs) != WAIT_OBJECT_0) return -1;
    return GetExitCodeProcess(process_.hProcess, &code) ? static_cast<int>(code) : -1;
}

HWND StartedProgram::Window(const char* caption) {
    HWND window = nullptr;
    Eventually([&] {
        window = FindWindowA("#32770", caption);
        return window != nullptr && IsWindowVisible(window);
    });
    return window;
}

std::string StartedProgram::TextsIn(HWND window) {
    std::string texts;
    EnumChildWindows(window, AddText, reinterpret_cast<LPARAM>(&texts));
    return texts;
}
