#include "desktop/TrafficPage.h"

#include <algorithm>
#include <optional>
#include <string>

#include "core/wire/Snacs.h"
#include "features/Overview.h"
#include "features/traffic/PcapngWriter.h"
#include "features/traffic/TrafficView.h"
#include "os/Clock.h"
#include "os/Files.h"
#include "os/desktop/FileDialogs.h"
#include "os/desktop/MessageBox.h"

namespace {

using Kind = os::ControlKind;

constexpr short kRight = kPageWidth - kPageMargin;
constexpr short kDetailHeight = 88;
constexpr short kDetailTop = kPageHeight - kPageMargin - kDetailHeight;
constexpr short kButtonsTop = kDetailTop - 19;
constexpr short kListTop = kPageMargin + 18;

constexpr os::Control kControls[] = {
    {Kind::Label, "trNameLabel", "Name", {kPageMargin, 9, 24, 8}},
    {Kind::TextBox, "trName", "", {33, 7, 78, 12}},
    {Kind::Label, "trDirectionLabel", "Direction", {119, 9, 31, 8}},
    {Kind::DropDownList, "trDirection", "", {151, 7, 66, 12}},
    {Kind::Label, "trFamilyLabel", "Family", {225, 9, 23, 8}},
    {Kind::DropDownList, "trFamily", "", {249, 7, 96, 12}},
    {Kind::Label, "trTextLabel", "Text", {353, 9, 17, 8}},
    {Kind::TextBox, "trText", "", {371, 7, kRight - 371, 12, os::kAcross}},
    {Kind::UnseenLabel, "trFramesName", "Frames", {}},
    {Kind::VirtualList,
     "trFrames",
     "",
     {kPageMargin, kListTop, kPageInside, kButtonsTop - 5 - kListTop, os::kFill}},
    {Kind::CheckBox, "trPause", "Pause", {kPageMargin, kButtonsTop + 2, 44, 10, os::kBottomLeft}},
    {Kind::Label, "trCount", "", {60, kButtonsTop + 3, 260, 8, os::kAlongBottom}},
    {Kind::Button, "trClear", "Clear", {kRight - 140, kButtonsTop, 50, 14, os::kBottomRight}},
    {Kind::Button, "trSave", "Save as pcapng...", {kRight - 86, kButtonsTop, 86, 14, os::kBottomRight}},
    {Kind::UnseenLabel, "trDetailName", "The selected frame", {}},
    {Kind::FixedText,
     "trDetail",
     "",
     {kPageMargin, kDetailTop, kPageInside, kDetailHeight, os::kAlongBottom}},
};

// The summary begins with what the column Kind says.
struct Column {
    TrafficColumn column;
    int width;
};
constexpr Column kColumns[] = {
    {TrafficColumn::Time, 52},      {TrafficColumn::Name, 52},     {TrafficColumn::Leg, 22},
    {TrafficColumn::Direction, 40}, {TrafficColumn::Channel, 40},  {TrafficColumn::Number, 42},
    {TrafficColumn::Mark, 40},      {TrafficColumn::Summary, 180},
};

// Entries of the list of directions.
enum DirectionEntry { kBoth, kToServer, kToClient };

constexpr std::uint16_t kLastFamily = 0x18;

std::string HexWord(std::uint16_t number) {
    std::string text;
    for (int shift = 12; shift >= 0; shift -= 4) text += "0123456789ABCDEF"[(number >> shift) & 0xF];
    return text;
}

// The lines of a frame that is taken apart, the bytes in a column of their own.
std::string DetailText(const TrafficFrame& frame) {
    constexpr std::size_t kHexColumn = 48;
    constexpr std::size_t kHexOfLine = 16 * 3;
    std::string text;
    for (const auto& detail : TakeApart(frame)) {
        std::string line(detail.depth * 2, ' ');
        line += detail.name;
        if (!detail.value.empty()) line += (detail.name.empty() ? "" : ": ") + detail.value;
        for (std::size_t at = 0; at < detail.hex.size(); at += kHexOfLine) {
            if (line.size() + 2 > kHexColumn) {
                text += line + "\r\n";
                line.clear();
            }
            line.resize(kHexColumn, ' ');
            text += line + detail.hex.substr(at, kHexOfLine) + "\r\n";
            line.clear();
        }
        if (!line.empty()) text += line + "\r\n";
    }
    return text;
}

class TrafficPage final : public WrenlowPage {
 public:
    explicit TrafficPage(os::Dialog& dialog) : dialog_(dialog) {
        for (const auto& [column, width] : kColumns)
            dialog_.AddColumn("trFrames", ColumnTitle(column), width);
        dialog_.ProvideRows("trFrames", [this](int row, int column) { return CellText(row, column); });
        for (const char* entry : {"(both)", "from AIM", "from the server"})
            dialog_.AddEntry("trDirection", entry);
        dialog_.AddEntry("trFamily", "(all)");
        for (std::uint16_t family = 1; family <= kLastFamily; ++family)
            dialog_.AddEntry("trFamily", HexWord(family) + " " + wire::FamilyName(family));
        for (const char* list : {"trDirection", "trFamily"}) dialog_.SetValue(list, 0);
        for (const char* part : {"trName", "trDirection", "trFamily", "trText"})
            dialog_.On(part, [this] { Filter_Change(); });
        dialog_.On("trFrames", [this] { trFrames_Click(); });
        dialog_.On("trPause", [this] { trPause_Click(); });
        dialog_.On("trClear", [this] { trClear_Click(); });
        dialog_.On("trSave", [this] { trSave_Click(); });
    }

    void Opened() override {
        auto* const overview = Overview::Current();
        if (overview == nullptr) return;
        if (traffic_ != &overview->traffic) {
            traffic_ = &overview->traffic;
            view_.emplace(*traffic_);
            Filter_Change();
        }
        traffic_->SwitchOn(!IsPaused());
    }

    void Left() override {
        if (Overview::Current() != nullptr) Overview::Current()->traffic.SwitchOn(false);
    }

    void Refresh() override {
        if (!view_ || Overview::Current() == nullptr) return;
        if (os::MonotonicMilliseconds() < restsUntil_) return;
        Update();
    }

 private:
    // The list is filled and drawn in one part of so many of the time: the relay wants the others.
    static constexpr int kShareOfTime = 50;

    bool IsPaused() const { return dialog_.Value("trPause") != 0; }

    void Update() {
        // No longer than a part of the time until the next turn: a window that falls behind catches up.
        const auto begin = os::MonotonicMilliseconds();
        const auto end = begin + kRefreshMs / 10;
        std::size_t dropped = 0, added = 0;
        bool isNew = false, isBehind = true;
        while (isBehind && os::MonotonicMilliseconds() <= end) {
            const auto change = view_->Update();
            isNew = isNew || change.isNew;
            isBehind = change.isBehind;
            dropped += change.dropped;
            added += change.added;
        }
        if (isNew) dialog_.SetRows("trFrames", 0);
        // Rows that came and went within this turn have never been on the list.
        const auto listed = static_cast<std::size_t>(dialog_.RowCount("trFrames"));
        if (isNew || dropped + added > 0)
            dialog_.SetRows("trFrames", static_cast<int>(view_->Count()),
                            static_cast<int>(std::min(dropped, listed)));
        if (isNew) trFrames_Click();
        ShowCount();
        const auto now = os::MonotonicMilliseconds();
        restsUntil_ = isBehind ? 0 : now + (now - begin) * kShareOfTime;
    }

    // Frames come and go between two turns.
    std::optional<TrafficFrame> FrameOf(int row) const {
        if (!view_ || row < 0 || static_cast<std::size_t>(row) >= view_->Count()) return std::nullopt;
        const auto number = view_->NumberAt(static_cast<std::size_t>(row));
        if (number < traffic_->First() || number - traffic_->First() >= traffic_->Count())
            return std::nullopt;
        return traffic_->At(number);
    }

    std::string CellText(int row, int column) const {
        const auto frame = FrameOf(row);
        return frame ? ColumnText(*frame, kColumns[column].column) : std::string();
    }

    void ShowCount() {
        const auto text =
            std::to_string(traffic_->Count()) + " frames kept, " + std::to_string(view_->Count()) + " shown";
        if (text != dialog_.Text("trCount")) dialog_.SetText("trCount", text);
    }

    void Filter_Change() {
        if (!view_) return;
        TrafficFilter filter;
        filter.name = dialog_.Text("trName");
        filter.text = dialog_.Text("trText");
        const int direction = dialog_.Value("trDirection");
        if (direction != kBoth)
            filter.direction = direction == kToServer ? Direction::ToServer : Direction::ToClient;
        if (const int family = dialog_.Value("trFamily"); family > 0)
            filter.family = static_cast<std::uint16_t>(family);
        view_->SetFilter(filter);
        Update();
    }

    void trFrames_Click() {
        const auto frame = FrameOf(dialog_.Value("trFrames"));
        dialog_.SetText("trDetail", frame ? DetailText(*frame) : std::string());
    }

    void trPause_Click() {
        if (traffic_ != nullptr) traffic_->SwitchOn(!IsPaused());
    }

    void trClear_Click() {
        if (traffic_ == nullptr) return;
        traffic_->Clear();
        Update();
    }

    void trSave_Click() {
        if (traffic_ == nullptr) return;
        const auto answer = os::ShowMessageBox(
            "Shall passwords, hashes and cookies be blotted out in the file? Whoever gets them can use "
            "them.\r\n\r\nThe messages that were sent and received are in it in any case.",
            "Save as pcapng", os::BoxIcon::Question, os::BoxButtons::YesNoCancel);
        if (answer == os::BoxResult::Cancel) return;
        const auto file = os::AskSaveFileName(dialog_.Handle(), "Save as pcapng",
                                              os::Path::FromText("wrenlow.pcapng"), "Captures");
        if (file) os::ReplaceFileWith(*file, PcapngOf(*traffic_, answer == os::BoxResult::No));
    }

    os::Dialog& dialog_;
    Traffic* traffic_ = nullptr;
    std::optional<TrafficView> view_;
    std::int64_t restsUntil_ = 0;
};

}  // namespace

const WrenlowPageRow kTrafficPage{"Traffic", kControls, MakeWrenlowPage<TrafficPage>};
