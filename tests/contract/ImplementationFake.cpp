#include "os/fake/FakeWorld.h"
#include "tests/contract/Implementation.h"

void PrepareContract() {
    os::fake::ResetWorld();
}

bool CanAbort() {
    return true;
}
