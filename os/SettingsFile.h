// SettingsFile: where os/RegistryStore.h keeps its values on a system that has no registry. Native only.
//
// A text file in UTF-8 that people may edit. The values of the program's own key stand at its top, those of
// other keys under a line with the key in brackets:
//
//     # a remark
//     logims=1
//     logwhere=C:\AimLogs\              everything up to the line's end, as it stands
//     greeting=" with blanks \x0D\x0A"  quoted where blanks or control bytes count; \\ \" \xHH
//     [Software\Other]
//     "a=b"=names are quoted likewise
//     Port:dword=11080                  other types: dword in decimal, expand (%NAME% in a text) ...
//     Blob:3=0A FF                      ... or the type's number and the bytes
//
// Lines of no such form are kept and ignored. A changed file is replaced as a whole, and two processes that
// change it at the same time wait for each other.
#pragma once

#include <string>

namespace os {

// The path, in the system's own bytes, and the key whose values stand at the top. The file and its folders
// are made when the first value is written.
void SetSettingsFile(std::string path, std::string topKey);

// A text value of the top key for this run: it stands before the file's until somebody in this program
// writes or removes the value.
void OverrideSetting(const std::string& name, const std::string& text);

// A text value of the top key that counts while the file has none.
void SetSettingDefault(const std::string& name, const std::string& text);

}  // namespace os
