// LogLibrary: the log folder as names, days and conversations, and the search in it.
//
// Two layouts are read, as modLogging writes them: "Fred 2026-05-06.htm" in the folder itself or in a folder
// for the name. Without its index (LogIndex.h) everything works, only the first search waits for it. Looking
// at the folder, indexing and searching go on in slices of the event loop, each of a few milliseconds, so
// that traffic never waits for them. What a search tells was read from the files at that moment.
#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Event.h"
#include "features/logs/LogIndex.h"
#include "features/logs/LogReader.h"
#include "features/logs/Words.h"
#include "net/EventLoop.h"
#include "os/Files.h"
#include "os/Path.h"

// A log file by what its name says.
struct LogDay {
    std::string name;  // UTF-8
    std::string date;  // "2026-05-06"
    bool isHtml = false;
    std::string path;  // within the log folder
};

struct LogHit {
    LogDay day;
    std::size_t line = 0;  // the number of the message in the file, from 0
    LogLine message;
    std::vector<Question::Mark> marks;  // in the message's text
};

class LogLibrary {
 public:
    static constexpr std::size_t kMaxHits = 300;

    // The index is kept in a file that may be deleted at any time.
    LogLibrary(os::Path folder, os::Path indexFile);
    ~LogLibrary();
    LogLibrary(const LogLibrary&) = delete;
    LogLibrary& operator=(const LogLibrary&) = delete;

    // More is known than before: of the folder, or of the answer to the search.
    Event<> Changed;

    // Looks for files that came, changed or went; goes on in the background.
    void Refresh();
    // Whether the folder is still being looked at, and how many of its files wait to be indexed; whether any
    // work is left, a search included.
    bool IsRefreshing() const { return refreshing_; }
    std::size_t FilesToIndex() const { return toIndex_.size(); }
    bool IsBusy() const;

    // The names in the order of the alphabet, each with its days, the oldest first.
    const std::map<std::string, std::vector<LogDay>>& Names() const { return names_; }

    // The conversation of a day, read now; empty when the file has gone.
    std::vector<LogLine> Read(const LogDay& day) const;
    os::Path PathOf(const LogDay& day) const;

    // Begins a search, which ends the one before; an empty question finds nothing. Hits come newest day
    // first, kMaxHits at most. Once more is known of the folder the same is searched for anew.
    void Search(std::string_view question);
    const std::vector<LogHit>& Hits() const { return hits_; }
    bool IsSearching() const { return !toSearch_.empty(); }

 private:
    struct Known {
        std::int64_t changed;
        std::uint64_t size;
        LogIndex::FileNumber number;
        unsigned seenIn;  // the refresh
    };
    struct Job;

    void slice_Tick();
    void LookAtFolder();
    void IndexSome();
    void SearchAnew();
    void SearchSome();
    void FinishRefresh();
    void Found(LogIndex::File file);
    void StartIndexing(LogIndex::File file);
    void StartLoading();
    void LoadSome();
    void SaveSome();
    LogIndex& IndexToChange();

    const os::Path folder_;
    const os::Path indexFile_;
    LogIndex index_;
    bool isLoaded_ = false;  // or is being loaded
    bool isDirty_ = false;   // to be saved
    std::unique_ptr<LogIndex::Loader> loader_;
    std::optional<LogIndex::Writer> saver_;

    bool refreshing_ = false;
    unsigned refresh_ = 0;             // its number
    std::deque<std::string> folders_;  // still to be listed, the first one from where `entries_` stands
    std::optional<os::FolderReader> entries_;
    std::map<std::string, Known> known_;  // what the index has, by path
    std::deque<LogIndex::File> toIndex_;
    std::unique_ptr<Job> job_;
    std::map<std::string, std::vector<LogDay>> names_;
    std::map<std::string, std::vector<LogDay>> comingNames_;

    Question question_{""};
    bool isOutdated_ = false;  // the index has changed since the search began
    std::deque<LogDay> toSearch_;
    std::vector<LogHit> hits_;
    net::Timer slice_;
};

// What a file's name says of it: "Fred 2026-05-06.htm". Nothing for a file that is no log.
std::optional<LogDay> LogDayOf(std::string_view path);
