#include "features/logs/LogLibrary.h"

#include <algorithm>
#include <utility>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "base/Unicode.h"
#include "os/CodePage.h"
#include "os/Files.h"

namespace {

// A slice: so much is read at most before the loop looks after the traffic.
constexpr std::size_t kSliceFiles = 24;
constexpr std::size_t kSliceBytes = std::size_t{96} * 1024;
constexpr std::size_t kSliceEntries = 200;
constexpr std::int64_t kBetweenSlicesMs = 1;
// The most of a file that is looked at; a day of conversation is a hundredth of it.
constexpr std::size_t kMaxFileBytes = std::size_t{32} * 1024 * 1024;
constexpr std::size_t kMaxIndexBytes = std::size_t{256} * 1024 * 1024;

std::string ContentOf(const os::Path& file) {
    return os::Utf8FromText(os::ReadWholeFile(file, kMaxFileBytes).value_or(""));
}

void Discard(const os::Path& file) {
    try {
        os::RemoveFile(file);
    } catch (const RuntimeError&) {
    }
}

bool IsDate(std::string_view text) {
    constexpr std::string_view kForm = "0000-00-00";
    return text.size() == kForm.size() &&
           std::equal(text.begin(), text.end(), kForm.begin(),
                      [](char c, char form) { return form == '-' ? c == '-' : c >= '0' && c <= '9'; });
}

bool IsOlder(const LogDay& a, const LogDay& b) {
    return a.date != b.date ? a.date < b.date : a.path < b.path;
}

}  // namespace

std::optional<LogDay> LogDayOf(std::string_view path) {
    constexpr std::size_t kDate = 10;
    constexpr std::size_t kEnd = 4;
    auto file = path.substr(path.rfind('/') + 1);
    if (file.size() < 1 + 1 + kDate + kEnd) return {};
    const auto end = LowerCase(file.substr(file.size() - kEnd));
    if (end != ".htm" && end != ".txt") return {};
    file.remove_suffix(kEnd);
    const auto date = file.substr(file.size() - kDate);
    file.remove_suffix(kDate);
    if (!IsDate(date) || !file.ends_with(' ')) return {};
    file.remove_suffix(1);
    return LogDay{AsUtf8(file), std::string(date), end == ".htm", std::string(path)};
}

// A file that is being indexed; a long one takes several slices.
struct LogLibrary::Job {
    Job(LogIndex::File which, std::string text, const LogDay& day)
        : file(std::move(which)), content(std::move(text)), reader(content, day.isHtml, day.name) {}

    LogIndex::File file;
    std::string content;
    LogReader reader;
    LogIndex::FileNumber number = 0;
};

LogLibrary::LogLibrary(os::Path folder, os::Path indexFile)
    : folder_(std::move(folder)), indexFile_(std::move(indexFile)) {
    slice_.Tick.Bind<&LogLibrary::slice_Tick>(*this);
}

LogLibrary::~LogLibrary() {
    if (job_) IndexToChange().Remove(job_->number);
    while (isDirty_ || saver_) SaveSome();
}

os::Path LogLibrary::PathOf(const LogDay& day) const {
    return folder_ / os::Path::FromSystem(day.path);
}

std::vector<LogLine> LogLibrary::Read(const LogDay& day) const {
    const auto content = ContentOf(PathOf(day));
    LogReader reader(content, day.isHtml, day.name);
    std::vector<LogLine> lines;
    for (LogLine line; reader.Next(line);) lines.push_back(std::move(line));
    return lines;
}

void LogLibrary::Refresh() {
    StartLoading();
    refreshing_ = true;
    ++refresh_;
    toIndex_.clear();  // what still waits is found again
    comingNames_.clear();
    folders_ = {""};
    entries_.reset();
    slice_.StartOnce(kBetweenSlicesMs);
}

void LogLibrary::Search(std::string_view question) {
    StartLoading();
    question_ = Question(question);
    SearchAnew();
}

void LogLibrary::SearchAnew() {
    isOutdated_ = false;
    hits_.clear();
    toSearch_.clear();
    for (const auto number : index_.Find(question_)) {
        if (auto day = LogDayOf(index_.Files()[number].path)) toSearch_.push_back(std::move(*day));
    }
    std::sort(toSearch_.begin(), toSearch_.end(), [](const auto& a, const auto& b) { return IsOlder(b, a); });
    SearchSome();  // the first hits at once
    if (IsBusy()) slice_.StartOnce(kBetweenSlicesMs);
}

bool LogLibrary::IsBusy() const {
    return !toSearch_.empty() || loader_ || !folders_.empty() || job_ || !toIndex_.empty() || isOutdated_ ||
           isDirty_ || saver_;
}

// Somebody waits for a search; then come the names of the folder, and last the index.
void LogLibrary::slice_Tick() {
    if (!toSearch_.empty()) {
        SearchSome();
    } else if (loader_) {
        LoadSome();
    } else if (!folders_.empty()) {
        LookAtFolder();
    } else if (job_ || !toIndex_.empty()) {
        IndexSome();
    } else if (isOutdated_) {
        SearchAnew();
    } else {
        SaveSome();
    }
    if (IsBusy()) slice_.StartOnce(kBetweenSlicesMs);
    Changed();
}

// In the log folder lie files, and folders of names with files.
void LogLibrary::LookAtFolder() {
    const auto& folder = folders_.front();
    if (!entries_) entries_.emplace(folder_ / os::Path::FromSystem(folder));
    for (std::size_t count = 0; count < kSliceEntries; ++count) {
        auto entry = entries_->Next();
        if (!entry) {
            entries_.reset();
            folders_.pop_front();
            if (folders_.empty()) FinishRefresh();
            return;
        }
        auto path = folder + entry->name;
        if (!entry->isFolder) {
            Found({std::move(path), entry->changed, entry->size});
        } else if (folder.empty()) {
            folders_.push_back(path + "/");
        }
    }
}

void LogLibrary::Found(LogIndex::File file) {
    auto day = LogDayOf(file.path);
    if (!day) return;
    comingNames_[day->name].push_back(std::move(*day));
    const auto known = known_.find(file.path);
    if (known != known_.end()) known->second.seenIn = refresh_;
    if (known == known_.end() || known->second.changed != file.changed || known->second.size != file.size)
        toIndex_.push_back(std::move(file));
}

void LogLibrary::FinishRefresh() {
    for (auto known = known_.begin(); known != known_.end();) {
        const auto each = known++;
        if (each->second.seenIn == refresh_) continue;
        IndexToChange().Remove(each->second.number);
        known_.erase(each);
    }
    for (auto& [name, days] : comingNames_) std::sort(days.begin(), days.end(), IsOlder);
    names_ = std::exchange(comingNames_, {});
    refreshing_ = false;
}

void LogLibrary::StartIndexing(LogIndex::File file) {
    const auto day = LogDayOf(file.path);
    auto content = ContentOf(PathOf(*day));
    job_ = std::make_unique<Job>(std::move(file), std::move(content), *day);
    job_->number = IndexToChange().Add(job_->file);
}

void LogLibrary::IndexSome() {
    std::size_t bytes = 0;
    for (std::size_t files = 0; files < kSliceFiles && bytes < kSliceBytes; ++files) {
        if (job_ == nullptr) {
            if (toIndex_.empty()) return;
            StartIndexing(std::move(toIndex_.front()));
            toIndex_.pop_front();
        }
        bool more = true;
        for (LogLine line; bytes < kSliceBytes && (more = job_->reader.Next(line));) {
            bytes += line.text.size();
            for (WordCutter cutter(line.text); cutter.Next();) index_.AddWord(cutter.Word());
        }
        if (more) return;
        const auto done = std::move(job_);
        auto& known = known_[done->file.path];
        if (known.changed != 0 || known.size != 0) IndexToChange().Remove(known.number);
        known = {done->file.changed, done->file.size, done->number, refresh_};
    }
}

void LogLibrary::SearchSome() {
    std::size_t bytes = 0;
    for (std::size_t files = 0; !toSearch_.empty() && files < kSliceFiles && bytes < kSliceBytes; ++files) {
        const auto day = std::move(toSearch_.front());
        toSearch_.pop_front();
        const auto content = ContentOf(PathOf(day));
        bytes += content.size();
        LogReader reader(content, day.isHtml, day.name);
        const auto& word = question_.Words().front();
        auto number = reader.SkipWithout(word);
        for (LogLine line; reader.Next(line); number += 1 + reader.SkipWithout(word)) {
            auto marks = question_.Find(line.text);
            if (marks.empty()) continue;
            hits_.push_back({day, number, std::move(line), std::move(marks)});
            if (hits_.size() < kMaxHits) continue;
            toSearch_.clear();
            return;
        }
    }
}

// The file: the log folder it is of, a line break, the index.
void LogLibrary::StartLoading() {
    if (std::exchange(isLoaded_, true)) return;
    auto bytes = os::ReadWholeFile(indexFile_, kMaxIndexBytes).value_or("");
    const auto head = folder_.System() + "\n";
    if (bytes.starts_with(head)) loader_ = std::make_unique<LogIndex::Loader>(std::move(bytes), head.size());
}

void LogLibrary::LoadSome() {
    if (loader_->Next()) return;
    auto index = loader_->Take();
    loader_.reset();
    isOutdated_ = true;
    if (!index || index->IsWorn()) return;
    index_ = std::move(*index);
    for (std::size_t i = 0; i < index_.Files().size(); ++i) {
        const auto& file = index_.Files()[i];
        if (!file.gone)
            known_[file.path] = {file.changed, file.size, static_cast<LogIndex::FileNumber>(i), 0};
    }
}

// What is cut off in the middle has another name. A change of the index begins it anew.
void LogLibrary::SaveSome() {
    const auto fresh = indexFile_ + ".fresh";
    try {
        if (std::exchange(isDirty_, false)) {
            saver_.emplace(index_);
            os::ReplaceFileWith(fresh, folder_.System() + "\n");
        }
        const auto part = saver_->Next();
        if (!part.empty()) return os::AppendToFile(fresh, part);
        os::RenameFile(fresh, indexFile_);
    } catch (const RuntimeError&) {
        Discard(fresh);  // the index is made anew next time; nobody has lost anything
    }
    saver_.reset();
}

LogIndex& LogLibrary::IndexToChange() {
    saver_.reset();
    isDirty_ = isOutdated_ = true;
    return index_;
}
