#include "bench/load/Common.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <thread>

namespace bench {

double Now() {
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

void PauseMs(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

void Fail(const std::string& what) {
    throw std::runtime_error(what);
}

void FailErrno(const std::string& what) {
    Fail(what + ": " + std::strerror(errno));
}

}  // namespace bench
