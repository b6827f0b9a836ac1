#include "desktop/ConnectionsPage.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "app/windows/AimClient.h"
#include "desktop/Report.h"
#include "features/Overview.h"
#include "os/Clock.h"
#include "os/CodePage.h"
#include "os/Files.h"
#include "os/desktop/MessageBox.h"
#include "os/desktop/Shell.h"

namespace {

using Kind = os::ControlKind;

constexpr short kButtonWidth = 70;
constexpr short kButtonLeft = kPageWidth - kPageMargin - kButtonWidth;
constexpr short kTextLeft = kPageMargin + 28;
constexpr short kListTop = 47;

constexpr os::Control kControls[] = {
    {Kind::IconPicture, "conIcon", "information", {kPageMargin, kPageMargin + 2, 21, 20}},
    {Kind::Label,
     "conVerdict",
     "",
     {kTextLeft, kPageMargin + 1, kButtonLeft - kTextLeft - 8, 34, os::kAcross}},
    {Kind::Button, "conWhatToDo", "What to do", {kButtonLeft, kPageMargin, kButtonWidth, 14, os::kTopRight}},
    {Kind::Button,
     "conCopy",
     "Copy report",
     {kButtonLeft, kPageMargin + 18, kButtonWidth, 14, os::kTopRight}},
    {Kind::UnseenLabel, "conLegsName", "Connections", {}},
    {Kind::VirtualList,
     "conLegs",
     "",
     {kPageMargin, kListTop, kPageInside, kPageHeight - kPageMargin - kListTop, os::kFill}},
};

struct Column {
    const char* title;
    int width;
    std::string (*text)(const Leg&);
};

std::string SizeText(std::uint64_t bytes) {
    char text[32];
    const auto thousands = static_cast<double>(bytes) / 1024;
    if (bytes < 1024)
        std::snprintf(text, sizeof text, "%d B", static_cast<int>(bytes));
    else if (thousands < 1024)
        std::snprintf(text, sizeof text, "%.1f KB", thousands);
    else
        std::snprintf(text, sizeof text, "%.1f MB", thousands / 1024);
    return text;
}

std::string CountText(const TrafficCount& count) {
    return std::to_string(count.frames) + " / " + SizeText(count.bytes);
}

constexpr Column kColumns[] = {
    {"When", 74, [](const Leg& leg) { return WhenText(leg.began); }},
    {"Screen name", 60, [](const Leg& leg) { return leg.name; }},
    {"What for", 50, [](const Leg& leg) { return PurposeText(leg); }},
    {"Asked for", 73, [](const Leg& leg) { return TextOf(leg.asked); }},
    {"Reached", 73, ReachedText},
    {"Sent", 44, [](const Leg& leg) { return CountText(leg.fromClient); }},
    {"Received", 44, [](const Leg& leg) { return CountText(leg.fromServer); }},
    {"State", 66,
     [](const Leg& leg) { return leg.state == Leg::State::Ended ? EndText(leg) : StateText(leg); }},
};

// A section of the manual's page "why", which lies beside the program.
void OpenManual(os::WindowHandle owner, const std::string& anchor) {
    const auto manual = os::ProgramFolder() / "manual";
    // Each section has a page of its own that leads there: the system drops what stands behind "#".
    for (const auto& page : {manual / ("why-" + anchor + ".html"), manual / "why.html"})
        if (os::FileExists(page) && os::OpenDocument(owner, page)) return;
    os::ShowMessageBox(
        "The manual is not beside the program. Its page is called \"why\", the section \"" + anchor + "\".",
        os::kApplicationTitle, os::BoxIcon::Information);
}

class ConnectionsPage final : public WrenlowPage {
 public:
    explicit ConnectionsPage(os::Dialog& dialog) : dialog_(dialog) {
        for (const auto& column : kColumns) dialog_.AddColumn("conLegs", column.title, column.width);
        dialog_.ProvideRows("conLegs", [](int row, int column) {
            const auto* const overview = Overview::Current();
            const auto position = static_cast<std::size_t>(row);
            if (overview == nullptr || position >= overview->connections.Legs().size()) return std::string();
            return os::Utf8FromText(kColumns[column].text(overview->connections.Legs()[position]));
        });
        dialog_.On("conWhatToDo", [this] { conWhatToDo_Click(); });
        dialog_.On("conCopy", [this] { conCopy_Click(); });
    }

    void Opened() override { clientSeen_ = os::MonotonicMilliseconds() - kClientEveryMs; }

    void Refresh() override {
        auto* const overview = Overview::Current();
        if (overview == nullptr) return;
        if (const auto now = os::MonotonicMilliseconds(); now - clientSeen_ >= kClientEveryMs) {
            modSystem::LookAtClient(overview->client);
            clientSeen_ = now;
        }
        overview->connections.Refresh();
        ShowVerdict(overview->Verdict());
        ShowLegs(overview->connections.Legs());
    }

 private:
    static constexpr std::int64_t kClientEveryMs = 2'000;

    void ShowVerdict(const SignOnVerdict& verdict) {
        const auto text = os::Utf8FromText(verdict.text);
        if (text == dialog_.Text("conVerdict")) return;
        dialog_.SetText("conVerdict", text);
        dialog_.SetText("conIcon", verdict.isTrouble ? "warning" : "information");
    }

    void ShowLegs(const std::deque<Leg>& legs) {
        const auto isGone = [&](std::size_t slot) { return legs.empty() || slot < legs.front().slot; };
        const auto gone = std::count_if(slots_.begin(), slots_.end(), isGone);
        slots_.clear();
        for (const auto& leg : legs) slots_.push_back(leg.slot);
        dialog_.SetRows("conLegs", static_cast<int>(legs.size()), static_cast<int>(gone));
    }

    void conWhatToDo_Click() {
        if (const auto* const overview = Overview::Current())
            OpenManual(dialog_.Handle(), overview->Verdict().anchor);
    }

    void conCopy_Click() {
        if (!os::CopyText(dialog_.Handle(), os::Utf8FromText(ReportText())))
            os::ShowMessageBox("Another program holds the clipboard. Try again.", os::kApplicationTitle,
                               os::BoxIcon::Error);
    }

    os::Dialog& dialog_;
    std::int64_t clientSeen_ = 0;     // when it was looked at last
    std::vector<std::size_t> slots_;  // of the rows
};

}  // namespace

const WrenlowPageRow kConnectionsPage{"Connections", kControls, MakeWrenlowPage<ConnectionsPage>};
