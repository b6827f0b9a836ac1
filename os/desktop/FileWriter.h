// FileWriter: a file that is written piece by piece and is there as a whole or not at all. The bytes go to a
// temporary file in the same folder, which takes the file's name at the end.
#pragma once

#include <memory>
#include <string_view>

#include "os/Path.h"

namespace os {

class FileWriter {
 public:
    // Begins a file. Throws RuntimeError with the system's error number, for instance when the folder does
    // not exist or cannot be written to.
    explicit FileWriter(const Path& path);
    ~FileWriter();  // deletes what was written, unless Finish() has put it in its place
    FileWriter(const FileWriter&) = delete;
    FileWriter& operator=(const FileWriter&) = delete;

    // Appends bytes. Throws RuntimeError, for instance when the disk is full.
    void Write(std::string_view bytes);

    // Marks the file as one that came from the internet, so that Windows warns before running it (stream
    // Zone.Identifier, zone 3). Does nothing where the system or the disk knows no such mark.
    void MarkFromInternet();

    // Puts the file in its place; a file that was there before, a read-only one too, is replaced. While
    // another program holds one of the two open, as virus scanners do with fresh files, this is tried again
    // for 2 s. Throws RuntimeError; the earlier file is as it was then, and Finish may be called again.
    // Nothing may be written afterwards.
    void Finish();

 private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace os
