#include "features/modSNReplace.h"

#include <algorithm>
#include <utility>

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "core/DataFolder.h"
#include "os/CodePage.h"
#include "os/Files.h"

namespace modSNReplace {
namespace {

os::Path ReplacementFile() {
    return DataFolder() / "repl.dat";
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
    return pair.screenName.size() > kMaxName || pair.replacement.size() > kMaxName;
}

class AliasFilter final : public SessionFeature {
 public:
    explicit AliasFilter(std::shared_ptr<const ReplacementList> list) : list_(std::move(list)) {}

    Verdict Frame(FrameView& frame) override {
        ByteString rewritten;
        if (ReplaceScreenNames(*list_, frame.Way(), frame.Channel(), frame.Payload(), rewritten))
            frame.Replace(std::move(rewritten));
        return Verdict::Pass;
    }

 private:
    const std::shared_ptr<const ReplacementList> list_;
};

// The file as far as it is read, and of what follows as much as `most` bytes of the whole leave. That there
// is more is seen in `rest` all the same.
AliasFile Read(std::size_t most) {
    const auto path = ReplacementFile();
    if (!os::FileExists(path)) return {};
    const auto bytes = os::ReadWholeFile(path, most + 2);  // a line end may lie on the limit
    if (!bytes) throw RuntimeError(ErrorNumber::FileAccess, "Path/File access error: " + path.Shown());
    if (most == kMaxEditedBytes && bytes->size() > most)
        throw RuntimeError(ErrorNumber::FileAccess, "Too large to be edited: " + path.Shown());

    auto end = bytes->size();
    // A line that the limit cuts in two would be another name.
    if (end > kMaxFileBytes) {
        end = bytes->find_last_of("\r\n", kMaxFileBytes - 1) + 1;
        if (bytes->substr(end, 1) == "\n") ++end;
    }
    const bool isCut = end < bytes->size();
    const auto text = os::TextFromBytes(bytes->substr(0, end));

    AliasFile file;
    std::string_view unread = text;
    while (!unread.empty() && file.pairs.size() < kMaxPairs) {
        const auto pair = unread;
        auto screenName = TakeLine(unread);
        if (unread.empty() && isCut) {  // its alias lies beyond the limit
            unread = pair;
            break;
        }
        auto replacement = TakeLine(unread);
        if (file.pairs.empty() && screenName.empty()) continue;
        file.pairs.push_back({std::move(screenName), std::move(replacement)});
    }
    file.rest = std::string(unread) + bytes->substr(end);
    return file;
}

}  // namespace

AliasFile ReadAliasFile() {
    return Read(kMaxEditedBytes);
}

void SaveAliasFile(const AliasFile& file) {
    std::string text;
    for (const auto& [screenName, replacement] : file.pairs)
        text += screenName + "\r\n" + replacement + "\r\n";
    os::ReplaceFileWith(ReplacementFile(), text + file.rest);
}

std::shared_ptr<const ReplacementList> LoadReplacements() {
    auto [pairs, rest] = Read(kMaxFileBytes);
    if (!rest.empty())
        Report("modSNReplace:LoadReplacements", "repl.dat: only the first 1,000 pairs and 1 MB are read");
    std::erase_if(pairs, IsEmpty);
    if (std::erase_if(pairs, IsTooLong) > 0) {
        Report("modSNReplace:LoadReplacements",
               "repl.dat: pairs with a name of more than 255 characters are left out");
    }
    if (pairs.empty()) return nullptr;
    return std::make_shared<const ReplacementList>(std::move(pairs));
}

std::shared_ptr<const ReplacementList> SharedList::Load() {
    try {
        list_ = LoadReplacements();
        isRead_ = true;
    } catch (const RuntimeError& error) {
        const std::string what = error.what();
        if (!isRead_) {
            throw RuntimeError(error.Number(), what +
                                                   "; the connection is refused, because what is typed to an "
                                                   "alias would go to whoever has that name");
        }
        Report("modSNReplace:LoadReplacements", what + "; the aliases that were read last stay in force");
    }
    return list_;
}

FeatureEntry Aliases(std::shared_ptr<SharedList> shared) {
    return {{Interest{}},
            [shared = std::move(shared)](Session&) -> std::unique_ptr<SessionFeature> {
                auto list = shared->Load();
                if (!list) return nullptr;
                return std::make_unique<AliasFilter>(std::move(list));
            },
            Made::OrRefused};
}

bool ReplaceScreenNames(const ReplacementList& list, Direction direction, std::uint8_t channel,
                        std::string_view payload, ByteString& rewritten) {
    auto changed = list.Rewrite(direction, payload);
    if (!changed || !wire::CorrectLengths(channel, payload, *changed)) return false;
    rewritten = std::move(changed->bytes);
    return true;
}

}  // namespace modSNReplace
