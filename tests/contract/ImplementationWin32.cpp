#include <windows.h>

#include "tests/contract/Implementation.h"

// Key by key, deepest first: SHDeleteKey would be one more library.
void PrepareContract() {
    const std::string root = kContractKey;
    for (const auto& key : {root + "\\One\\Two", root + "\\One", root})
        RegDeleteKeyA(HKEY_CURRENT_USER, key.c_str());
}

bool CanAbort() {
    return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") == nullptr;
}
