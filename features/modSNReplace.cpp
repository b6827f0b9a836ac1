#include "features/modSNReplace.h"

#include <algorithm>
#include <utility>

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "core/DataFolder.h"
#include "os/Files.h"

namespace modSNReplace {
namespace {

std::string ReplacementFile() {
    return DataFolder() + "\\repl.dat";
}

// Takes the next line off the front of the text. A line that nothing ends counts too.
std::string TakeLine(std::string_view& text) {
    const auto end = std::min(text.find_first_of("\r\n"), text.size());
    std::string line(text.substr(0, end));
    text.remove_prefix(end);
    text.remove_prefix(text.starts_with("\r\n") ? 2 : std::min<std::size_t>(1, text.size()));
    return line;
}

void Report(const char* where, const std::string& description) {
    Trap(where, [&] { throw RuntimeError(ErrorNumber::InvalidArgument, description); });
}

bool IsEmpty(const Replacement& pair) {
    return pair.screenName.empty() || pair.replacement.empty();
}

bool IsTooLong(const Replacement& pair) {
    return pair.screenName.size() > kLongestName || pair.replacement.size() > kLongestName;
}

}  // namespace

std::vector<Replacement> ReadReplacements() {
    const auto file = ReplacementFile();
    if (!os::FileExists(file)) return {};
    auto bytes = os::ReadWholeFile(file, kLargestFile + 1);
    if (!bytes) throw RuntimeError(ErrorNumber::FileAccess, "Path/File access error: " + file);

    std::string_view text = *bytes;
    bool cut = text.size() > kLargestFile;
    // A line that the limit cuts in two would be another name.
    if (cut) text = text.substr(0, text.find_last_of("\r\n", kLargestFile - 1) + 1);

    std::vector<Replacement> pairs;
    while (!text.empty() && pairs.size() < kMostPairs) {
        auto screenName = TakeLine(text);
        auto replacement = TakeLine(text);
        if (pairs.empty() && screenName.empty()) continue;
        pairs.push_back({std::move(screenName), std::move(replacement)});
    }
    cut = cut || !text.empty();
    if (cut)
        Report("modSNReplace:ReadReplacements", "repl.dat: only the first 1,000 pairs and 1 MB are read");
    return pairs;
}

void SaveReplacements(const std::vector<Replacement>& pairs) {
    std::string text;
    for (const auto& [screenName, replacement] : pairs) text += screenName + "\r\n" + replacement + "\r\n";
    os::ReplaceFileWith(ReplacementFile(), text);
}

std::shared_ptr<const ReplacementList> LoadReplacements() {
    auto pairs = ReadReplacements();
    std::erase_if(pairs, IsEmpty);
    if (std::erase_if(pairs, IsTooLong) > 0) {
        Report("modSNReplace:LoadReplacements",
               "repl.dat: pairs with a name of more than 255 characters are left out");
    }
    if (pairs.empty()) return nullptr;
    return std::make_shared<const ReplacementList>(std::move(pairs));
}

bool ReplaceScreenNames(const ReplacementList& list, Direction direction, std::string_view payload,
                        ByteString& rewritten) {
    return list.Rewrite(direction, payload, rewritten);
}

}  // namespace modSNReplace
