#include "os/fake/FakeRegistryStore.h"
#include "tests/contract/RegistryStoreContract.h"

void BeginRegistryTest() {
    os::fake::ResetRegistry();
}
void EndRegistryTest() {
    os::fake::ResetRegistry();
}
