#include <stdlib.h>
#include <unistd.h>

#include <string>

#include "os/SettingsFile.h"
#include "tests/contract/RegistryStoreContract.h"

namespace {
std::string folder;
}

void BeginRegistryTest() {
    char pattern[] = "/tmp/wrenlow-settings-XXXXXX";
    folder = mkdtemp(pattern);
    os::SetSettingsFile(folder + "/new/settings", "software\\Wrenlow\\");
}

void EndRegistryTest() {
    unlink((folder + "/new/settings").c_str());
    rmdir((folder + "/new").c_str());
    rmdir(folder.c_str());
    os::SetSettingsFile("", "");
}
