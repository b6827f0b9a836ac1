#include "os/fake/FakeRegistryStore.h"
#include "os/fake/FakeWorld.h"
#include "tests/contract/Implementation.h"

void PrepareContract() {
    os::fake::ResetWorld();
}

void BeginRegistryTest() {
    os::fake::registry = {};
}
void EndRegistryTest() {
    os::fake::registry = {};
}

bool CanAbort() {
    return true;
}
