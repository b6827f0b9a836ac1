#include "features/logs/LogIndex.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

// The file begins with this; the digit is its version. At its end stands a checksum of all before it, eight
// bytes.
constexpr std::string_view kHead = "Wrenlow log index 1\n";
constexpr std::size_t kChecksumBytes = 8;
// Made or read at a time: some milliseconds.
constexpr std::size_t kPartBytes = std::size_t{512} * 1024;

// Seven bits a byte, the lowest first; the high bit says that more follow.
void AppendNumber(std::string& bytes, std::uint64_t number) {
    for (; number >= 0x80; number >>= 7) bytes += static_cast<char>(number | 0x80);
    bytes += static_cast<char>(number);
}

void AppendText(std::string& bytes, std::string_view text) {
    AppendNumber(bytes, text.size());
    bytes += text;
}

// FNV-1a on eight bytes at a time: finds a file that was cut or damaged, which is all that is asked of it.
// What comes in parts must be cut between such eights.
constexpr std::uint64_t kEmptySum = 0xCBF29CE484222325;
std::uint64_t Checksum(std::string_view bytes, std::uint64_t sum) {
    for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), sizeof sum))) {
        std::uint64_t part = bytes.size();  // so that zeros at the end count, too
        std::memcpy(&part, bytes.data(), std::min(bytes.size(), sizeof part));
        sum = (sum ^ part) * 0x100000001B3;
        sum ^= sum >> 32;
    }
    return sum;
}

std::string ChecksumBytes(std::uint64_t sum) {
    std::string text;
    for (std::size_t i = 0; i < kChecksumBytes; ++i, sum >>= 8) text += static_cast<char>(sum & 0xFF);
    return text;
}

// Takes numbers and texts off the front; after the first that is cut short all are empty, and Failed.
class Reader {
 public:
    explicit Reader(std::string_view bytes) : rest_(bytes) {}

    bool Failed() const { return failed_; }
    bool AtEnd() const { return rest_.empty(); }
    std::string_view Rest() const { return rest_; }

    std::uint64_t Number() {
        std::uint64_t number = 0;
        for (unsigned shift = 0; shift < 64 && !rest_.empty(); shift += 7) {
            const auto byte = static_cast<std::uint8_t>(rest_.front());
            rest_.remove_prefix(1);
            number |= std::uint64_t{byte & 0x7Fu} << shift;
            if (byte < 0x80) return number;
        }
        return Fail();
    }

    std::string_view Text() {
        const auto size = Number();
        if (size > rest_.size()) Fail();
        const auto text = rest_.substr(0, failed_ ? 0 : static_cast<std::size_t>(size));
        rest_.remove_prefix(text.size());
        return text;
    }

 private:
    std::uint64_t Fail() {
        failed_ = true;
        rest_ = {};
        return 0;
    }

    std::string_view rest_;
    bool failed_ = false;
};

}  // namespace

LogIndex::FileNumber LogIndex::Add(File file) {
    files_.push_back(std::move(file));
    return static_cast<FileNumber>(files_.size() - 1);
}

void LogIndex::AddWord(const std::string& word) {
    const auto number = static_cast<FileNumber>(files_.size());
    auto& postings = words_[word];
    if (postings.last == number) return;
    AppendNumber(postings.distances, number - postings.last);
    postings.last = number;
}

void LogIndex::Remove(FileNumber number) {
    if (std::exchange(files_[number].gone, true)) return;
    ++gone_;
}

void LogIndex::Mark(const Postings& postings, std::vector<bool>& marked) const {
    Reader distances(postings.distances);
    for (std::uint64_t number = 0; !distances.AtEnd();) {
        number += distances.Number();
        // What was read from a file is checked where it is used: a number beyond the files is nobody's.
        if (number == 0 || number > marked.size()) return;
        marked[static_cast<std::size_t>(number - 1)] = true;
    }
}

std::vector<LogIndex::FileNumber> LogIndex::Find(const Question& question) const {
    std::vector<FileNumber> found;
    if (question.Empty()) return found;
    std::vector<bool> all(files_.size(), true);
    for (const auto& beginning : question.Words()) {
        std::vector<bool> marked(files_.size());
        for (const auto& [word, postings] : words_)
            if (word.starts_with(beginning)) Mark(postings, marked);
        for (std::size_t i = 0; i < all.size(); ++i) all[i] = all[i] && marked[i];
    }
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (all[i] && !files_[i].gone) found.push_back(static_cast<FileNumber>(i));
    }
    return found;
}

LogIndex::Writer::Writer(const LogIndex& index)
    : index_(index), word_(index.words_.begin()), pending_(kHead), sum_(kEmptySum) {
    AppendNumber(pending_, index.files_.size());
}

std::string LogIndex::Writer::Next() {
    if (isEnded_) return {};
    const auto& files = index_.files_;
    for (; pending_.size() < kPartBytes && file_ < files.size(); ++file_) {
        const auto& file = files[file_];
        AppendText(pending_, file.gone ? std::string_view() : file.path);  // no file has an empty path
        AppendNumber(pending_, static_cast<std::uint64_t>(file.changed));
        AppendNumber(pending_, file.size);
    }
    for (; pending_.size() < kPartBytes && word_ != index_.words_.end(); ++word_) {
        AppendText(pending_, word_->first);
        AppendNumber(pending_, word_->second.last);
        AppendText(pending_, word_->second.distances);
    }
    isEnded_ = word_ == index_.words_.end() && file_ == files.size();
    const auto rest = isEnded_ ? 0 : pending_.size() % sizeof sum_;
    auto part = pending_.substr(0, pending_.size() - rest);
    pending_.erase(0, part.size());
    sum_ = Checksum(part, sum_);
    if (isEnded_) part += ChecksumBytes(sum_);
    return part;
}

LogIndex::Loader::Loader(std::string bytes, std::size_t begin) : bytes_(std::move(bytes)), sum_(kEmptySum) {
    auto body = std::string_view(bytes_).substr(std::min(begin, bytes_.size()));
    failed_ = body.size() < kHead.size() + kChecksumBytes || !body.starts_with(kHead);
    if (failed_) return;
    body.remove_suffix(kChecksumBytes);
    toSum_ = body;
    toRead_ = body.substr(kHead.size());
}

bool LogIndex::Loader::Next() {
    if (failed_) return false;
    if (!toSum_.empty()) {
        const auto part = toSum_.substr(0, kPartBytes);
        sum_ = Checksum(part, sum_);
        toSum_.remove_prefix(part.size());
        failed_ = toSum_.empty() && !bytes_.ends_with(ChecksumBytes(sum_));
        return !failed_;
    }
    Reader reader(toRead_);
    const auto isMore = [&] { return !reader.AtEnd() && toRead_.size() - reader.Rest().size() < kPartBytes; };
    if (!filesLeft_) filesLeft_ = reader.Number();
    for (; *filesLeft_ > 0 && isMore(); --*filesLeft_) {
        File file;
        file.path = reader.Text();
        file.changed = static_cast<std::int64_t>(reader.Number());
        file.size = reader.Number();
        file.gone = file.path.empty();
        index_.gone_ += file.gone;
        index_.files_.push_back(std::move(file));
    }
    while (isMore()) {
        std::string word(reader.Text());
        const auto last = static_cast<FileNumber>(reader.Number());
        index_.words_.emplace(std::move(word), Postings{std::string(reader.Text()), last});
    }
    failed_ = reader.Failed() || (reader.AtEnd() && *filesLeft_ > 0);
    toRead_ = reader.Rest();
    return !failed_ && !toRead_.empty();
}

std::optional<LogIndex> LogIndex::Loader::Take() {
    if (failed_ || !toSum_.empty() || !toRead_.empty()) return {};
    return std::move(index_);
}
