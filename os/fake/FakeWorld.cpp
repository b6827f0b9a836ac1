#include "os/fake/FakeWorld.h"

#include <vector>

namespace {

std::vector<void (*)()>& Parts() {
    static std::vector<void (*)()> parts;
    return parts;
}

}  // namespace

os::fake::WorldPart::WorldPart(void (*reset)()) {
    Parts().push_back(reset);
}

void os::fake::ResetFakes() {
    for (auto* const reset : Parts()) reset();
}
