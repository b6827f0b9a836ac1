// HeldFile: renaming and deleting files that we have just written. Virus scanners and indexers open a fresh
// file for a moment and let nobody rename or delete it meanwhile; what fails for that is tried again.
#pragma once

#include <windows.h>

#include "os/win32/WidePath.h"

namespace os {

// How long is tried, and how long is waited between two times.
inline constexpr DWORD kHeldForMs = 2000;
inline constexpr DWORD kHeldPauseMs = 50;

// Whether the attempt worked in the end; the last error tells why not. Other failures than those of a file
// that is held are not tried again.
template <typename Attempt>
bool TriedWhileHeld(Attempt attempt) {
    for (DWORD waited = 0;; waited += kHeldPauseMs) {
        if (attempt()) return true;
        const DWORD error = GetLastError();
        // Access is denied while a deleted file is still open, and when the file to be replaced is.
        const bool held = error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION ||
                          error == ERROR_ACCESS_DENIED || error == ERROR_USER_MAPPED_FILE;
        if (!held || waited >= kHeldForMs) {
            SetLastError(error);
            return false;
        }
        Sleep(kHeldPauseMs);
    }
}

// Renames a fresh file, in place of another one if need be. A folder or a read-only file there refuses at
// once.
inline bool MoveOver(const Path& fresh, const Path& path) {
    const auto from = Wide(fresh);
    const auto to = Wide(path);
    const auto move = [&] {
        return MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) !=
               FALSE;
    };
    const DWORD attributes = GetFileAttributesW(to.c_str());
    constexpr DWORD kNever = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY;
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & kNever) != 0) return move();
    return TriedWhileHeld(move);
}

inline void DeleteFresh(const Path& fresh) {
    const auto name = Wide(fresh);
    TriedWhileHeld([&] { return DeleteFileW(name.c_str()) != FALSE; });
}

}  // namespace os
