// FakeRegistryStore: a registry in memory, empty at first. Tests use os/RegistryStore.h to fill and read it.
#pragma once

namespace os::fake {

// Makes every write and removal fail, as a registry without permission does.
void FailRegistryWrites(bool fail);

// How many values have been written or removed since the reset.
int RegistryChanges();

void ResetRegistry();

}  // namespace os::fake
