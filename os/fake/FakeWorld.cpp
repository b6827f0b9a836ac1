#include "os/fake/FakeWorld.h"

#include <vector>

#include "os/fake/FakeLoop.h"

namespace {

std::vector<void (*)()>& Parts() {
    static std::vector<void (*)()> parts;
    return parts;
}

}  // namespace

os::fake::WorldPart::WorldPart(void (*reset)()) {
    Parts().push_back(reset);
}

void os::fake::ResetWorld() {
    for (auto* const reset : Parts()) reset();
}
