// Path: a file or folder by its name in the file system, whatever its characters are. A user may be called
// so that no text of the program's code page says it (os/CodePage.h), and his folders are named after him.
//
// Texts (settings, dialogs, what stands on the wire) are in the code page; paths hold what the system holds:
// natively its bytes, on Windows its wide characters, kept here as UTF-8. The two meet in FromText, Text and
// Shown, and in what is put behind a path, which is a text; nowhere else.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace os {

class Path {
 public:
    Path() = default;  // names nothing

    // The path that a text names. "/" and "\" both separate folders.
    static Path FromText(std::string_view text);

    // The path as a text; nothing when the code page lacks one of its characters.
    std::optional<std::string> Text() const;
    // The same for people to read, with "?" for what the code page lacks.
    std::string Shown() const;

    // A file or folder in this folder; an end added to the name.
    Path operator/(std::string_view name) const;
    Path operator/(const Path& below) const;
    Path operator+(std::string_view end) const { return FromSystem(system_ + FromText(end).system_); }

    bool IsEmpty() const { return system_.empty(); }
    bool operator==(const Path&) const = default;

    // For os/ and for what the system hands over: the bytes described above.
    static Path FromSystem(std::string bytes);
    const std::string& System() const { return system_; }

 private:
    std::string system_;
};

inline Path Path::FromSystem(std::string bytes) {
    Path path;
    path.system_ = std::move(bytes);
    return path;
}

}  // namespace os
