#include "desktop/WaitingPage.h"

#include "app/services/TimeText.h"
#include "core/wire/Ucs2.h"
#include "features/waiting/KeepMessages.h"
#include "features/waiting/WaitingMessages.h"
#include "os/CodePage.h"
#include "os/desktop/MessageBox.h"

namespace {

using Kind = os::ControlKind;

constexpr short kButtonTop = kPageHeight - kPageMargin - 14;
constexpr short kTextTop = kButtonTop - 54;

constexpr os::Control kControls[] = {
    {Kind::UnseenLabel, "waitListName", "Messages that wait", {}},
    {Kind::VirtualList,
     "waitList",
     "",
     {kPageMargin, kPageMargin, kPageInside, kTextTop - kPageMargin - 6, os::kFill}},
    {Kind::UnseenLabel, "waitTextName", "The whole message", {}},
    {Kind::ReadOnlyText, "waitText", "", {kPageMargin, kTextTop, kPageInside, 48, os::kAlongBottom}},
    {Kind::Label, "waitState", "", {kPageMargin, kButtonTop + 3, 370, 8, os::kAlongBottom}},
    {Kind::Button, "waitSend", "Send now", {kPageWidth - 113, kButtonTop, 50, 14, os::kBottomRight}},
    {Kind::Button, "waitDelete", "Delete", {kPageWidth - 57, kButtonTop, 50, 14, os::kBottomRight}},
};

class WaitingPage final : public WrenlowPage {
 public:
    explicit WaitingPage(os::Dialog& dialog) : dialog_(dialog) {
        dialog_.AddColumn("waitList", "For", 80);
        dialog_.AddColumn("waitList", "From", 80);
        dialog_.AddColumn("waitList", "Since", 80);
        dialog_.AddColumn("waitList", "Tried", 30);
        dialog_.AddColumn("waitList", "Text", 180);
        dialog_.ProvideRows("waitList", [](int row, int column) { return Cell(row, column); });
        dialog_.On("waitList", [this] { waitList_Click(); });
        dialog_.OnDelete("waitList", [this] { waitDelete_Click(); });
        dialog_.On("waitDelete", [this] { waitDelete_Click(); });
        dialog_.On("waitSend", [this] { waitSend_Click(); });
    }

    void Opened() override {
        said_.clear();
        Refresh();
    }

    // Messages come and go by themselves; the one that was selected stays so as long as it waits.
    void Refresh() override {
        const auto& all = TheWaitingMessages().All();
        auto row = static_cast<int>(all.size());
        while (row-- > 0 && all[static_cast<std::size_t>(row)].number != selected_) {
        }
        dialog_.SetRows("waitList", static_cast<int>(all.size()));
        if (dialog_.Value("waitList") != row) dialog_.SetValue("waitList", row);
        ShowSelected();
    }

 private:
    static std::string Cell(int row, int column) {
        const auto& all = TheWaitingMessages().All();
        if (static_cast<std::size_t>(row) >= all.size()) return {};
        const auto& message = all[static_cast<std::size_t>(row)];
        const auto since = os::LocalTimeOf(message.since);
        switch (column) {
            case 0:
                return os::Utf8FromText(message.shownTo);
            case 1:
                return os::Utf8FromText(message.from);
            case 2:
                return DateText(since) + " " + TimeText(since);
            case 3:
                return std::to_string(message.tried);
            default:
                return wire::Utf8OfText(TextOf(message));
        }
    }

    void waitList_Click() {
        const auto& all = TheWaitingMessages().All();
        const auto row = static_cast<std::size_t>(dialog_.Value("waitList"));
        selected_ = row < all.size() ? all[row].number : 0;
        said_.clear();
        ShowSelected();
    }

    void ShowSelected() {
        const auto* const message = TheWaitingMessages().Find(selected_);
        const auto text = message != nullptr ? wire::Utf8OfText(TextOf(*message)) : std::string();
        if (dialog_.Text("waitText") != text) dialog_.SetText("waitText", text);
        dialog_.Enable("waitSend", message != nullptr);
        dialog_.Enable("waitDelete", message != nullptr);
        const auto trouble = os::Utf8FromText(TheWaitingMessages().Trouble());
        const bool isEmpty = TheWaitingMessages().All().empty();
        const auto state = !trouble.empty() ? trouble : isEmpty ? "No message waits." : said_;
        if (dialog_.Text("waitState") != state) dialog_.SetText("waitState", state);
    }

    void waitSend_Click() {
        said_ = SendWaitingNow(selected_) ? "It is being sent; it stays here until the server has taken it."
                                          : "Its sender is not signed on.";
        ShowSelected();
    }

    void waitDelete_Click() {
        const auto number = selected_;
        if (TheWaitingMessages().Find(number) == nullptr) return;
        const auto answer =
            os::ShowMessageBox("Delete this message? Nobody will get it.", os::kApplicationTitle,
                               os::BoxIcon::Question, os::BoxButtons::YesNo);
        if (answer != os::BoxResult::Yes) return;
        TheWaitingMessages().Drop(number);
        Refresh();
    }

    os::Dialog& dialog_;
    std::uint32_t selected_ = 0;  // the number of the message
    std::string said_;            // of the last thing that was asked for
};

}  // namespace

const WrenlowPageRow kWaitingPage{"Waiting", kControls, MakeWrenlowPage<WaitingPage>};
