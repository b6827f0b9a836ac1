#include "os/fake/FakeMainWindow.h"

#include "os/CommandLine.h"

namespace {
constexpr os::WindowHandle kHandle = 0x4D57;
os::MainWindow* theWindow = nullptr;
std::string theArguments;
}  // namespace

struct os::MainWindow::Impl {};

os::MainWindow::MainWindow(const std::string&) {
    theWindow = this;
}
os::MainWindow::~MainWindow() {
    theWindow = nullptr;
}
os::WindowHandle os::MainWindow::Handle() const {
    return kHandle;
}

std::string os::CommandLineArguments() {
    return theArguments;
}

os::MainWindow* os::fake::TheMainWindow() {
    return theWindow;
}
void os::fake::SetCommandLineArguments(const std::string& arguments) {
    theArguments = arguments;
}
