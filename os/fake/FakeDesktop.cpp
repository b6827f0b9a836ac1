#include "os/fake/FakeDesktop.h"

#include <algorithm>
#include <utility>

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "os/Files.h"
#include "os/desktop/FileDialogs.h"
#include "os/desktop/FileWriter.h"
#include "os/desktop/Shell.h"

namespace os {

std::optional<Path> AskSaveFileName(WindowHandle owner, const std::string& title, const Path& proposedName,
                                    const std::string&) {
    auto& dialogs = fake::fileDialogs;
    dialogs.asked.push_back({owner, title, proposedName.Shown()});
    if (const auto during = dialogs.during) during();
    if (!dialogs.answer) return std::nullopt;
    return Path::FromText(*dialogs.answer);
}

std::optional<Path> AskOpenFileName(WindowHandle owner, const std::string& title, const std::string&,
                                    const std::string&) {
    return AskSaveFileName(owner, title, {}, {});
}

bool OpenWebPage(WindowHandle, const std::string& address) {
    if (!address.starts_with("http://") && !address.starts_with("https://")) return false;
    fake::shell.opened.push_back(address);
    return true;
}

bool OpenDocument(WindowHandle, const Path& file) {
    fake::shell.opened.push_back(file.System());
    return true;
}

bool PrintDocument(WindowHandle, const Path& file) {
    fake::shell.opened.push_back("print " + file.System());
    return true;
}

bool CopyText(WindowHandle, const std::string& text) {
    fake::shell.clipboard = text;
    return true;
}

std::string ProgramDescription() {
    return "Wrenlow, the program under test";
}

void VisitProcesses(const std::function<bool(const Path&)>& isWanted,
                    const std::function<bool(ProcessId, const Path&)>& visit) {
    for (const auto& process : std::vector(fake::processes.running)) {
        const auto fileName = process.path.substr(process.path.find_last_of('\\') + 1);
        if (isWanted(Path::FromText(fileName)) && visit(process.id, Path::FromText(process.path))) return;
    }
}

bool EndProcess(ProcessId id) {
    return std::erase_if(fake::processes.running,
                         [=](const auto& process) { return process.id == id && process.mayBeEnded; }) > 0;
}

void StartMinimized(const Path& path) {
    fake::processes.started.push_back(path.Shown());
}

struct FileWriter::Impl {
    Path path;
    Path temporaryPath;
    std::string bytes;
    bool marked = false;

    ~Impl() {
        try {
            RemoveFile(temporaryPath);
        } catch (const RuntimeError&) {
        }
    }
};

FileWriter::FileWriter(const Path& path) : impl_(std::make_unique<Impl>()) {
    impl_->path = path;
    impl_->temporaryPath = path + ".0.tmp";
    AppendToFile(impl_->temporaryPath, "");
}

FileWriter::~FileWriter() = default;

void FileWriter::Write(std::string_view bytes) {
    constexpr std::int32_t kDiskFull = 112;
    impl_->bytes += bytes;
    if (impl_->bytes.size() > fake::fileWriters.room) throw RuntimeError(kDiskFull, "Disk full.");
}

void FileWriter::MarkFromInternet() {
    impl_->marked = true;
}

void FileWriter::Finish() {
    ReplaceFileWith(impl_->path, impl_->bytes);
    if (impl_->marked) fake::fileWriters.isFromInternet.insert(impl_->path.Shown());
}

namespace {

std::vector<std::pair<WindowHandle, WindowHook*>>& Hooks() {
    static std::vector<std::pair<WindowHandle, WindowHook*>> hooks;
    return hooks;
}

}  // namespace

struct WindowHook::Impl {};

WindowHook::WindowHook(WindowHandle window) {
    Hooks().emplace_back(window, this);
}

WindowHook::~WindowHook() {
    std::erase_if(Hooks(), [this](const auto& entry) { return entry.second == this; });
}

void fake::SendWindowMessage(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                             std::intptr_t lParam) {
    const auto hooks = Hooks();
    for (auto entry = hooks.rbegin(); entry != hooks.rend(); ++entry) {
        const bool stillThere = std::find(Hooks().begin(), Hooks().end(), *entry) != Hooks().end();
        if (entry->first != window || !stillThere) continue;
        Trap("WindowHook:Message", [&] { entry->second->Message(message, wParam, lParam); });
    }
}

}  // namespace os
