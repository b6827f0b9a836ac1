#include "os/fake/FakeClock.h"

#include "os/fake/FakeLoop.h"

namespace {
constexpr os::LocalTime kBeginning{2000, 1, 1, 0, 0, 0};
os::LocalTime localTime = kBeginning;
const os::fake::WorldPart part([] { localTime = kBeginning; });
}  // namespace

os::LocalTime os::Now() {
    return localTime;
}

void os::fake::SetLocalTime(const LocalTime& time) {
    localTime = time;
}
