#include "desktop/BuddyListsPage.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "app/windows/AimClient.h"
#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "base/Unicode.h"
#include "features/SignedOnNames.h"
#include "features/buddies/BuddyFiles.h"
#include "features/buddies/PutBack.h"
#include "net/EventLoop.h"
#include "os/CodePage.h"
#include "os/Files.h"
#include "os/desktop/FileDialogs.h"
#include "os/desktop/MessageBox.h"

namespace {

using Kind = os::ControlKind;

constexpr short kButtonTop = kPageHeight - kPageMargin - 14;
constexpr short kListHeight = kButtonTop - 24 - kPageMargin;
constexpr short kTextLeft = kPageMargin + 246;

// Grows in height alone.
constexpr unsigned char kDown = os::kTop | os::kLeft | os::kBottom;

constexpr os::Control kControls[] = {
    {Kind::UnseenLabel, "budListName", "Buddy lists that are kept", {}},
    {Kind::VirtualList, "budList", "", {kPageMargin, kPageMargin, 240, kListHeight, kDown}},
    {Kind::UnseenLabel, "budTextName", "What differs, or would be added", {}},
    {Kind::ReadOnlyText,
     "budText",
     "",
     {kTextLeft, kPageMargin, kPageWidth - kPageMargin - kTextLeft, kListHeight, os::kFill}},
    {Kind::Label, "budState", "", {kPageMargin, kButtonTop - 16, kPageInside, 8, os::kAlongBottom}},
    {Kind::Label, "budToName", "To", {kPageMargin, kButtonTop + 3, 12, 8, os::kBottomLeft}},
    {Kind::DropDownList, "budTo", "", {21, kButtonTop + 1, 90, 12, os::kBottomLeft}},
    {Kind::Button, "budPutBack", "Put back...", {116, kButtonTop, 50, 14, os::kBottomLeft}},
    {Kind::Button, "budAdd", "Add these", {170, kButtonTop, 50, 14, os::kBottomLeft}},
    {Kind::Button, "budCancel", "Cancel", {224, kButtonTop, 50, 14, os::kBottomLeft}},
    {Kind::UnseenLabel, "budFormName", "Form of the export", {}},
    {Kind::DropDownList, "budForm", "", {kPageWidth - 171, kButtonTop + 1, 52, 12, os::kBottomRight}},
    {Kind::Button, "budExport", "Export...", {kPageWidth - 115, kButtonTop, 52, 14, os::kBottomRight}},
    {Kind::Button, "budImport", "Import...", {kPageWidth - 59, kButtonTop, 52, 14, os::kBottomRight}},
};

struct Form {
    const char* caption;
    const char* end;
};
constexpr Form kForms[] = {{"Text", ".txt"}, {"CSV", ".csv"}, {"HTML", ".htm"}};

// A new list is kept at a sign-on, so there is no hurry to look for one.
constexpr int kRefreshesBetweenLooks = 10;

std::string Exported(const BuddyList& list, const KeptList& kept, int form) {
    if (form == 1) return CsvOf(list);
    return form == 2 ? HtmlOf(list, kept.name) : TextOf(list, "Buddy list of " + kept.name);
}

// "2026-05-06-211459" as people write it.
std::string Shown(const std::string& date) {
    return date.substr(0, 10) + " " + date.substr(11, 2) + ":" + date.substr(13, 2) + ":" + date.substr(15);
}

// Names come in UTF-8 from today's servers, and in the code page from others.
std::string Utf8Of(const std::string& text) {
    return IsUtf8(text) ? text : os::Utf8FromText(text);
}

void Tell(const std::string& text, os::BoxIcon icon) {
    os::ShowMessageBox(text, os::kApplicationTitle, icon);
}

class BuddyListsPage final : public WrenlowPage {
 public:
    explicit BuddyListsPage(os::Dialog& dialog) : dialog_(dialog) {
        offer_.Tick.Bind<&BuddyListsPage::OfferSignOn>(*this);
        dialog_.AddColumn("budList", "Screen name", 90);
        dialog_.AddColumn("budList", "Kept on", 80);
        dialog_.AddColumn("budList", "Differs in", 50);
        dialog_.ProvideRows("budList", [this](int row, int column) { return Cell(row, column); });
        for (const auto& form : kForms) dialog_.AddEntry("budForm", form.caption);
        dialog_.SetValue("budForm", 0);
        dialog_.On("budList", [this] { ShowSelected(); });
        dialog_.On("budPutBack", [this] { budPutBack_Click(); });
        dialog_.On("budAdd", [] { ThePutBack().Go(); });
        dialog_.On("budCancel", [] { ThePutBack().Cancel(); });
        dialog_.On("budExport", [this] { budExport_Click(); });
        dialog_.On("budImport", [this] { budImport_Click(); });
        ThePutBack().Changed.Bind<&BuddyListsPage::putBack_Changed>(*this);
    }
    ~BuddyListsPage() override { ThePutBack().Changed.Reset(); }
    BuddyListsPage(const BuddyListsPage&) = delete;
    BuddyListsPage& operator=(const BuddyListsPage&) = delete;

    void Opened() override {
        Look();
        ShowSelected();
    }
    void Refresh() override {
        if (++refreshes_ % kRefreshesBetweenLooks == 0) Look();
        ShowStage();
    }

 private:
    // A list with how it differs from the one before, which is read when it is to be seen.
    struct Row {
        KeptList kept;
        std::optional<std::vector<std::string>> differences;
        bool isFirst = false;
    };

    void Look() {
        const auto names = SignedOnNames();
        if (names != users_) {
            users_ = names;
            const auto before = dialog_.Value("budTo");
            dialog_.ClearEntries("budTo");
            for (const auto& name : names) dialog_.AddEntry("budTo", Utf8Of(name));
            dialog_.SetValue("budTo",
                             names.empty() ? -1 : std::clamp(before, 0, dialog_.EntryCount("budTo") - 1));
        }
        const auto lists = KeptLists();
        const auto isKnown = [](const Row& row, const KeptList& kept) { return row.kept == kept; };
        if (std::equal(rows_.begin(), rows_.end(), lists.begin(), lists.end(), isKnown)) return;
        const auto selected = Selected() != nullptr ? Selected()->kept : KeptList();
        rows_.clear();
        for (const auto& kept : lists) rows_.push_back({kept, {}, false});
        dialog_.SetRows("budList", static_cast<int>(rows_.size()));
        const auto found = std::find(lists.begin(), lists.end(), selected);
        dialog_.SetValue("budList", found != lists.end() ? static_cast<int>(found - lists.begin()) : -1);
        ShowSelected();
    }

    const std::vector<std::string>& DifferencesOf(std::size_t index) {
        auto& row = rows_[index];
        if (row.differences) return *row.differences;
        try {
            const auto list = ReadKeptList(row.kept);
            row.isFirst = index + 1 == rows_.size() || rows_[index + 1].kept.name != row.kept.name;
            row.differences =
                Differences(row.isFirst ? BuddyList() : ReadKeptList(rows_[index + 1].kept), list);
        } catch (const RuntimeError& error) {
            row.differences = {error.what()};
        }
        return *row.differences;
    }

    std::string Cell(int position, int column) {
        const auto index = static_cast<std::size_t>(position);
        if (index >= rows_.size()) return {};
        if (column == 0) return Utf8Of(rows_[index].kept.name);
        if (column == 1) return Shown(rows_[index].kept.date);
        const auto& lines = DifferencesOf(index);
        if (rows_[index].isFirst) return "the first";
        const auto count = [&](char sign) {
            return std::count_if(lines.begin(), lines.end(),
                                 [&](const auto& line) { return line[0] == sign; });
        };
        std::string text;
        for (const char sign : {'+', '-', '~'}) {
            if (count(sign) > 0)
                text += (text.empty() ? "" : ", ") + std::string(1, sign) + std::to_string(count(sign));
        }
        return text;
    }

    const Row* Selected() const {
        const auto row = static_cast<std::size_t>(dialog_.Value("budList"));
        return row < rows_.size() ? &rows_[row] : nullptr;
    }

    void ShowLines(const std::string& heading, const std::vector<std::string>& lines) {
        std::string text = heading;
        for (const auto& line : lines) text += "\r\n" + Utf8Of(line);
        dialog_.SetText("budText", text);
    }

    void ShowSelected() {
        if (const auto* const row = Selected()) {
            const auto& lines = DifferencesOf(static_cast<std::size_t>(row - rows_.data()));
            ShowLines(row->isFirst ? "The first list that is kept:" : "Against the list before:", lines);
        } else {
            dialog_.SetText("budText", "");
        }
        ShowStage();
    }

    void ShowStage() {
        const auto stage = ThePutBack().At();
        const bool isBusy = stage == PutBack::Stage::Asking || stage == PutBack::Stage::Preview ||
                            stage == PutBack::Stage::Adding;
        const bool isSelected = Selected() != nullptr;
        dialog_.Enable("budPutBack", isSelected && !isBusy && !users_.empty());
        dialog_.Enable("budExport", isSelected);
        dialog_.Enable("budAdd", stage == PutBack::Stage::Preview);
        dialog_.Enable("budCancel", stage == PutBack::Stage::Asking || stage == PutBack::Stage::Preview);
        auto state = ThePutBack().Sentence();
        if (state.empty() && rows_.empty()) state = "No list is kept yet. Lists come at the next sign-on.";
        if (state.empty() && users_.empty()) state = "Sign on to put a list back.";
        state = Utf8Of(state);
        if (dialog_.Text("budState") != state) dialog_.SetText("budState", state);
    }

    // Reading a damaged file, or writing to a full disk, is told in a box.
    template <typename Body>
    void Attempt(Body body) {
        try {
            body();
        } catch (const RuntimeError& error) {
            Tell(error.what(), os::BoxIcon::Error);
        }
    }

    void budPutBack_Click() {
        const auto* const row = Selected();
        const auto user = static_cast<std::size_t>(dialog_.Value("budTo"));
        if (row == nullptr || user >= users_.size()) return;
        Attempt([&] {
            if (!ThePutBack().Begin(users_[user], ReadKeptList(row->kept)))
                Tell(users_[user] + " is not signed on to a server that keeps lists.", os::BoxIcon::Warning);
        });
        ShowStage();
    }

    void putBack_Changed() {
        ShowStage();
        if (ThePutBack().At() == PutBack::Stage::Preview)
            ShowLines(ThePutBack().Sentence(), ThePutBack().Additions());
        if (ThePutBack().At() == PutBack::Stage::Done && !ThePutBack().Additions().empty())
            offer_.StartOnce(0);
    }

    // The client reads its list at the sign-on alone.
    void OfferSignOn() {
        const auto text = ThePutBack().Sentence() + "\r\n\r\nShall AIM be restarted now, to sign on again?";
        const auto answer =
            os::ShowMessageBox(text, os::kApplicationTitle, os::BoxIcon::Question, os::BoxButtons::YesNo);
        if (answer == os::BoxResult::Yes) modSystem::RestartAIM(false, true);
    }

    void budExport_Click() {
        const auto* const row = Selected();
        if (row == nullptr) return;
        const auto kept = row->kept;
        const auto form = dialog_.Value("budForm");
        Attempt([&] {
            const auto bytes = Exported(ReadKeptList(kept), kept, form);
            const auto& chosen = kForms[form];
            const auto file = os::AskSaveFileName(
                dialog_.Handle(), "Export Buddy List",
                os::Path::FromText(kept.name + " " + kept.date.substr(0, 10) + chosen.end), "Buddy lists");
            if (file) os::ReplaceFileWith(*file, bytes);
        });
    }

    // The list stands among the others then, under the name that its file began with.
    void budImport_Click() {
        Attempt([&] {
            const auto file =
                os::AskOpenFileName(dialog_.Handle(), "Import Buddy List", "Buddy lists", ".txt");
            if (!file) return;
            const auto text = os::ReadWholeFile(*file, kMaxBuddyListBytes + 1);
            if (!text || text->size() > kMaxBuddyListBytes)
                throw RuntimeError(ErrorNumber::FileAccess, "Cannot be read: " + file->Shown());
            auto name = file->Shown();
            name.erase(0, name.find_last_of("\\/") + 1);
            name.erase(std::min(name.find_first_of(" ."), name.size()));
            KeepBuddyList(name.empty() ? "imported" : name, ListFromText(*text));
        });
        Look();
    }

    os::Dialog& dialog_;
    std::vector<Row> rows_;
    std::vector<std::string> users_;  // who is signed on
    int refreshes_ = 0;
    net::Timer offer_;  // a box is not opened from inside an event of the connection
};

}  // namespace

const WrenlowPageRow kBuddyListsPage{"Buddy lists", kControls, MakeWrenlowPage<BuddyListsPage>};
