#include "desktop/MessagesPage.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/services/Settings.h"
#include "base/RuntimeError.h"
#include "base/Text.h"
#include "core/DataFolder.h"
#include "features/logs/Conversation.h"
#include "os/Clock.h"
#include "os/Files.h"
#include "os/desktop/FileDialogs.h"
#include "os/desktop/Shell.h"

namespace {

using Kind = os::ControlKind;

constexpr unsigned char kLeftColumn = os::kTopLeft | os::kBottom;
constexpr short kSearchLeft = kPageMargin + 30;
constexpr short kListTop = 25;
constexpr short kButtonTop = kPageHeight - kPageMargin - 14;
constexpr short kListHeight = kButtonTop - 6 - kListTop;
constexpr short kNamesWidth = 100;
constexpr short kDaysLeft = kPageMargin + kNamesWidth + 4;
constexpr short kDaysWidth = 60;
constexpr short kTextLeft = kDaysLeft + kDaysWidth + 4;
constexpr short kHitsWidth = kTextLeft - 4 - kPageMargin;
constexpr short kButtonWidth = 56;

constexpr os::DialogRect Button(short fromTheRight) {
    return {static_cast<short>(kPageWidth - kPageMargin - kButtonWidth - fromTheRight * (kButtonWidth + 4)),
            kButtonTop, kButtonWidth, 14, os::kBottomRight};
}

constexpr os::Control kControls[] = {
    {Kind::Label, "logSearchName", "Search:", {kPageMargin, kPageMargin + 2, 30, 8}},
    {Kind::TextBox,
     "logSearch",
     "",
     {kSearchLeft, kPageMargin, kPageWidth - kPageMargin - kSearchLeft, 12, os::kAcross}},
    {Kind::UnseenLabel, "logNamesName", "Names", {}},
    {Kind::VirtualList, "logNames", "", {kPageMargin, kListTop, kNamesWidth, kListHeight, kLeftColumn}},
    {Kind::UnseenLabel, "logDaysName", "Days", {}},
    {Kind::VirtualList, "logDays", "", {kDaysLeft, kListTop, kDaysWidth, kListHeight, kLeftColumn}},
    {Kind::UnseenLabel, "logHitsName", "Messages found", {}},
    {Kind::VirtualList, "logHits", "", {kPageMargin, kListTop, kHitsWidth, kListHeight, kLeftColumn}},
    {Kind::UnseenLabel, "logTextName", "Conversation", {}},
    {Kind::ReadOnlyText,
     "logText",
     "",
     {kTextLeft, kListTop, kPageWidth - kPageMargin - kTextLeft, kListHeight, os::kFill}},
    {Kind::Label, "logStatus", "", {kPageMargin, kButtonTop + 3, 180, 8, os::kAlongBottom}},
    {Kind::Button, "logOpen", "Open file", Button(4)},
    {Kind::Button, "logFolder", "Open folder", Button(3)},
    {Kind::Button, "logCopy", "Copy", Button(2)},
    {Kind::Button, "logPrint", "Print", Button(1)},
    {Kind::Button, "logExport", "Export...", Button(0)},
};

class MessagesPage final : public WrenlowPage {
 public:
    explicit MessagesPage(os::Dialog& dialog) : dialog_(dialog) {
        dialog_.AddColumn("logNames", "Name", 66);
        dialog_.AddColumn("logNames", "Days", 20);
        dialog_.AddColumn("logDays", "Day", 44);
        dialog_.AddColumn("logHits", "Name", 46);
        dialog_.AddColumn("logHits", "Day", 42);
        dialog_.AddColumn("logHits", "Message", 60);
        dialog_.ProvideRows("logNames", [this](int row, int column) {
            const auto& name = names_.at(static_cast<std::size_t>(row));
            return column == 0 ? name : std::to_string(library_->Names().at(name).size());
        });
        dialog_.ProvideRows("logDays",
                            [this](int row, int) { return days_.at(static_cast<std::size_t>(row)).date; });
        dialog_.ProvideRows("logHits", [this](int row, int column) {
            const auto& hit = library_->Hits().at(static_cast<std::size_t>(row));
            if (column == 0) return hit.day.name;
            return column == 1 ? hit.day.date : TextOf(hit);
        });
        dialog_.On("logSearch", [this] { logSearch_Change(); });
        dialog_.OnEnter("logSearch", [this] { GoToHit(0); });
        dialog_.On("logNames", [this] { logNames_Click(); });
        dialog_.On("logDays", [this] { ShowDay(Chosen("logDays", days_)); });
        dialog_.On("logHits", [this] { logHits_Click(); });
        dialog_.OnEnter("logHits", [this] { GoToHit(dialog_.Value("logHits")); });
        dialog_.On("logOpen", [this] { os::OpenDocument(dialog_.Handle(), library_->PathOf(*shown_)); });
        dialog_.On("logFolder", [this] { os::OpenDocument(dialog_.Handle(), folder_); });
        dialog_.On("logCopy", [this] { os::CopyText(dialog_.Handle(), dialog_.Text("logText")); });
        dialog_.On("logPrint", [this] { os::PrintDocument(dialog_.Handle(), library_->PathOf(*shown_)); });
        dialog_.On("logExport", [this] { logExport_Click(); });
        ShowDay(nullptr);
        ShowLists();
    }

    void Opened() override {
        const auto folder = os::Path::FromText(TrimEnd(settings::Text("logwhere"), "\\"));
        if (library_ == nullptr || !(folder == folder_)) {
            folder_ = folder;
            library_ = std::make_unique<LogLibrary>(folder, DataFolder() / "logs.idx");
            library_->Changed.Bind<&MessagesPage::library_Changed>(*this);
            ShowDay(nullptr);
            changed_ = true;
        }
        LookAtFolder();
    }

    void Refresh() override {
        if (!std::exchange(changed_, false)) return;
        FillNames();
        dialog_.SetRows("logHits", static_cast<int>(library_->Hits().size()));
        dialog_.SetText("logStatus", Status());
    }

 private:
    static constexpr std::int64_t kLookAgainMs = 5000;

    void library_Changed() { changed_ = true; }

    void LookAtFolder() {
        lookedAt_ = os::MonotonicMilliseconds();
        library_->Refresh();
    }

    bool IsSearching() const { return !dialog_.Text("logSearch").empty(); }

    // The row that is chosen in a list; nullptr for none.
    template <typename Row>
    const Row* Chosen(os::ControlId list, const std::vector<Row>& rows) const {
        const auto row = dialog_.Value(list);
        return row >= 0 && static_cast<std::size_t>(row) < rows.size() ? &rows[static_cast<std::size_t>(row)]
                                                                       : nullptr;
    }

    // The list of what was found stands in the place of the other two.
    void ShowLists() {
        const bool searching = IsSearching();
        dialog_.ShowControl("logNames", !searching);
        dialog_.ShowControl("logDays", !searching);
        dialog_.ShowControl("logHits", searching);
    }

    void FillNames() {
        names_.clear();
        for (const auto& [name, days] : library_->Names()) names_.push_back(name);
        dialog_.SetRows("logNames", static_cast<int>(names_.size()));
        const auto found = std::find(names_.begin(), names_.end(), name_);
        dialog_.SetValue("logNames", found != names_.end() ? static_cast<int>(found - names_.begin()) : -1);
        FillDays();
    }

    // The newest day stands first.
    void FillDays() {
        const auto* const chosen = Chosen("logDays", days_);
        const auto date = chosen != nullptr ? chosen->path : "";
        const auto found = library_->Names().find(name_);
        days_.clear();
        if (found != library_->Names().end()) days_.assign(found->second.rbegin(), found->second.rend());
        dialog_.SetRows("logDays", static_cast<int>(days_.size()));
        const auto same =
            std::find_if(days_.begin(), days_.end(), [&](auto& day) { return day.path == date; });
        dialog_.SetValue("logDays", same != days_.end() ? static_cast<int>(same - days_.begin()) : -1);
    }

    std::string Status() const {
        if (library_->IsRefreshing()) return "Looking at the folder...";
        if (const auto left = library_->FilesToIndex(); left > 0)
            return std::to_string(left) + " files are still to be looked at.";
        const auto count = library_->Hits().size();
        if (!IsSearching()) return names_.empty() ? "There are no logs in " + folder_.System() : "";
        if (library_->IsSearching()) return "Searching...";
        if (count == LogLibrary::kMaxHits) return "There are more; type more words.";
        return count == 1 ? "1 message" : std::to_string(count) + " messages";
    }

    void logSearch_Change() {
        ShowLists();
        dialog_.SetValue("logHits", -1);
        library_->Search(dialog_.Text("logSearch"));
        if (os::MonotonicMilliseconds() - lookedAt_ > kLookAgainMs) LookAtFolder();
        changed_ = true;
    }

    void logNames_Click() {
        const auto* const name = Chosen("logNames", names_);
        name_ = name != nullptr ? *name : "";
        FillDays();
        if (!days_.empty()) dialog_.SetValue("logDays", 0);
        ShowDay(Chosen("logDays", days_));
    }

    void logHits_Click() {
        const auto* const hit = Chosen("logHits", library_->Hits());
        ShowDay(hit != nullptr ? &hit->day : nullptr, hit);
    }

    // To the place in the conversation; the search ends.
    void GoToHit(int row) {
        const auto& hits = library_->Hits();
        if (row < 0 || static_cast<std::size_t>(row) >= hits.size()) return;
        const auto hit = hits[static_cast<std::size_t>(row)];
        dialog_.SetText("logSearch", "");
        logSearch_Change();
        name_ = hit.day.name;
        FillNames();
        const auto same =
            std::find_if(days_.begin(), days_.end(), [&](auto& day) { return day.path == hit.day.path; });
        if (same != days_.end()) dialog_.SetValue("logDays", static_cast<int>(same - days_.begin()));
        dialog_.Focus("logText");  // which selects all of it, so the word is marked afterwards
        ShowDay(&hit.day, &hit);
    }

    void ShowDay(const LogDay* day, const LogHit* hit = nullptr) {
        shown_ = day != nullptr ? std::optional(*day) : std::nullopt;
        const auto shown = day != nullptr ? TextOf(library_->Read(*day), hit) : ConversationText();
        dialog_.SetText("logText", shown.text);
        if (shown.markLength > 0) dialog_.MarkText("logText", shown.markBegin, shown.markLength);
        for (const char* button : {"logOpen", "logCopy", "logPrint", "logExport"})
            dialog_.Enable(button, shown_.has_value());
    }

    void logExport_Click() {
        const auto name = shown_->name;
        // The name of a file that is there.
        const auto proposed = os::Path::FromSystem(name + ".html");
        const auto file = os::AskSaveFileName(dialog_.Handle(), "Export a history", proposed, "Web pages");
        if (!file) return;
        const bool asText = LowerCase(file->Shown()).ends_with(".txt");
        os::ReplaceFileWith(*file, asText ? HistoryAsText(*library_, name) : HistoryAsPage(*library_, name));
    }

    os::Dialog& dialog_;
    os::Path folder_;
    std::unique_ptr<LogLibrary> library_;
    std::int64_t lookedAt_ = 0;
    bool changed_ = false;
    std::vector<std::string> names_;
    std::string name_;  // that is chosen
    std::vector<LogDay> days_;
    std::optional<LogDay> shown_;
};

}  // namespace

const WrenlowPageRow kMessagesPage{"Messages", kControls, MakeWrenlowPage<MessagesPage>};
