// SettingsFile: where os/RegistryStore.h keeps its values on a system that has no registry. Native only.
//
// A text file that people may edit, in UTF-8:
//
//     # a remark
//     logims=1
//     logwhere=/home/ada/logs           everything up to the line's end, as it stands
//     greeting=" with blanks \x0D\x0A"  quoted where blanks or control bytes count; \\ \" \xHH
//     "\\software\\other\\a=b"=x         values of other keys carry their key; names are quoted likewise
//     number:4=48 2B 00 00              other types than text: the type's number and the bytes
//
// Lines of no such form are kept and ignored. A changed file is replaced as a whole, and two processes that
// change it at the same time wait for each other. While the file cannot be read, the values that were read
// last count, and that is reported once, under "modRegistry:QueryValue".
#pragma once

#include <string>
#include <string_view>

namespace os {

// The path, and the key whose values go by their names alone. The file and its folders are made when the
// first value is written.
void SetSettingsFile(std::string path, std::string_view topKey);

// A text value of the top key for this run: it stands before the file's until somebody in this program
// writes or removes the value.
void OverrideSetting(const std::string& name, const std::string& text);

// A text value of the top key that counts while the file has none.
void SetSettingDefault(const std::string& name, const std::string& text);

}  // namespace os
