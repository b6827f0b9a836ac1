// LogIndex: which log files hold which words. It narrows a search down to a few files; the files themselves
// are read for the answer, so the index can be old, but an answer is never wrong.
//
// For each word it keeps the numbers of the files that hold it, each as the distance to the one before, seven
// bits a byte. A file that has changed gets a new number, and its old one means nobody any more.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "features/logs/Words.h"

class LogIndex {
 public:
    struct File {
        std::string path;  // within the log folder
        std::int64_t changed = 0;
        std::uint64_t size = 0;
        bool gone = false;
    };
    using FileNumber = std::uint32_t;

    // Adds a file, and a word to the file that was added last. A file of the same path is to be removed
    // before.
    FileNumber Add(File file);
    void AddWord(const std::string& word);
    void Remove(FileNumber number);

    const std::vector<File>& Files() const { return files_; }
    // Whether so many files are gone that making the index anew is worth its time.
    bool IsWorn() const { return gone_ > 1000 && gone_ > files_.size() / 2; }

    // The files in which each word of the question begins a word, in the order of their numbers.
    std::vector<FileNumber> Find(const Question& question) const;

    // The index as bytes for a file, and back; a part at a time, because all of it takes long.
    class Writer;
    class Loader;

 private:
    struct Postings {
        std::string distances;
        FileNumber last = 0;  // the number of the last file, plus 1
    };
    using Words = std::unordered_map<std::string, Postings>;
    void Mark(const Postings& postings, std::vector<bool>& marked) const;

    std::vector<File> files_;
    // In no order: a question looks at each word, which takes less than to keep them in order.
    Words words_;
    std::size_t gone_ = 0;
};

// The index must not change meanwhile.
class LogIndex::Writer {
 public:
    explicit Writer(const LogIndex& index);

    // The next part; empty behind the last.
    std::string Next();

 private:
    const LogIndex& index_;
    std::size_t file_ = 0;  // that comes next
    Words::const_iterator word_;
    std::string pending_;
    std::uint64_t sum_;
    bool isEnded_ = false;
};

class LogIndex::Loader {
 public:
    // The bytes from `begin` on.
    Loader(std::string bytes, std::size_t begin);
    Loader(const Loader&) = delete;
    Loader& operator=(const Loader&) = delete;

    // Reads the next part; false when there is none.
    bool Next();
    // Then the index; nothing of bytes that are no index of this version, or damaged.
    std::optional<LogIndex> Take();

 private:
    const std::string bytes_;
    std::string_view toSum_, toRead_;
    std::uint64_t sum_;
    std::optional<std::uint64_t> filesLeft_;
    LogIndex index_;
    bool failed_ = false;
};
