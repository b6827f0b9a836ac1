#include "core/DataFolder.h"

#include <utility>

#include "os/Files.h"

namespace {
std::string chosenFolder;
}

std::string DataFolder() {
    return chosenFolder.empty() ? os::ProgramFolder() : chosenFolder;
}

void SetDataFolder(std::string folder) {
    chosenFolder = std::move(folder);
}
