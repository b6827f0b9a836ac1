#include <stdlib.h>
#include <unistd.h>

#include "os/SettingsFile.h"
#include "tests/contract/Implementation.h"

namespace {
std::string folder;  // of the settings file
}

void PrepareContract() {}

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

bool CanAbort() {
    return true;
}
