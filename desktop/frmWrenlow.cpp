#include "desktop/frmWrenlow.h"

#include <algorithm>
#include <array>
#include <utility>

#include "app/services/modRegistry.h"
#include "base/Text.h"
#include "base/Trap.h"

namespace {

using Kind = os::ControlKind;

constexpr short kMargin = 7;
constexpr short kStripWidth = kPageWidth + 6;  // with its edges
constexpr short kStripHeight = kPageHeight + 16;
constexpr short kWidth = kStripWidth + 2 * kMargin;
constexpr short kHeight = kStripHeight + 35;
constexpr short kLeastWidth = 350;
constexpr short kLeastHeight = 220;

constexpr auto kHive = os::RegistryHive::CurrentUser;
constexpr char kPlaceKey[] = "software\\Wrenlow\\window\\";
constexpr char kPlaceName[] = "place";

// Left, top, width, height, and 1 for a maximized window.
constexpr std::size_t kPlaceNumbers = 5;

os::WindowPlace StoredPlace() {
    const auto text = modRegistry::QueryValue(kHive, kPlaceKey, kPlaceName);
    std::string_view rest = text;
    std::array<int, kPlaceNumbers> numbers{};
    for (int& number : numbers) {
        const auto parsed = ParseNumber<int>(TakeUpTo(rest, ' '));
        if (!parsed) return {};
        number = *parsed;
    }
    return {numbers[0], numbers[1], numbers[2], numbers[3], numbers[4] != 0};
}

}  // namespace

frmWrenlow::Table::Table(std::span<const WrenlowPageRow* const> pages)
    : table{"Wrenlow", kWidth, kHeight, {}, kLeastWidth, kLeastHeight, true} {
    for (const auto* page : pages) captions += (captions.empty() ? "" : "|") + std::string(page->caption);
    controls.push_back({Kind::TabStrip,
                        "SSTab1",
                        captions.c_str(),
                        {kMargin, kMargin, kStripWidth, kStripHeight, os::kFill}});
    int number = 0;
    for (const auto* page : pages) {
        for (auto control : page->controls) {
            control.page = number;
            controls.push_back(control);
        }
        ++number;
    }
    controls.push_back({Kind::CancelButton,
                        "cmdClose",
                        "Close",
                        {kWidth - kMargin - 50, kHeight - kMargin - 14, 50, 14, os::kBottomRight}});
    table.controls = controls;
}

frmWrenlow::frmWrenlow(std::span<const WrenlowPageRow* const> pages)
    : rows_(pages), table_(pages), dialog_(table_.table) {
    for (const auto* page : pages) pages_.push_back(page->make(dialog_));
    dialog_.On("SSTab1", [this] { SSTab1_Click(); });
    dialog_.On("cmdClose", [this] { cmdClose_Click(); });
    timer_.Tick.Bind<&frmWrenlow::timer_Tick>(*this);
}

frmWrenlow::~frmWrenlow() {
    if (open_ != nullptr) cmdClose_Click();
}

void frmWrenlow::Start() {
    const bool wasShown = dialog_.IsShown();
    dialog_.Show({.place = StoredPlace()});
    if (!wasShown) SSTab1_Click();
}

void frmWrenlow::Start(const std::string& caption) {
    for (std::size_t page = 0; page < rows_.size(); ++page) {
        if (caption != rows_[page]->caption) continue;
        dialog_.SetValue("SSTab1", static_cast<int>(page));
        if (dialog_.IsShown()) SSTab1_Click();
    }
    Start();
}

void frmWrenlow::SSTab1_Click() {
    OpenPage(pages_.at(static_cast<std::size_t>(dialog_.Value("SSTab1"))).get());
}

void frmWrenlow::cmdClose_Click() {
    KeepPlace();
    dialog_.Close();
    OpenPage(nullptr);
}

void frmWrenlow::OpenPage(WrenlowPage* page) {
    if (page != open_ && open_ != nullptr) Trap("frmWrenlow:Left", [this] { open_->Left(); });
    timer_.Stop();
    if (page == nullptr) {
        open_ = nullptr;
        return;
    }
    timer_.StartRepeating(WrenlowPage::kRefreshMs);
    if (std::exchange(open_, page) != page) page->Opened();
    timer_Tick();
}

void frmWrenlow::timer_Tick() {
    bool failed = true;
    Trap("frmWrenlow:Refresh", [&] {
        open_->Refresh();
        failed = false;
    });
    if (failed) timer_.Stop();
}

void frmWrenlow::KeepPlace() const {
    const auto place = dialog_.Place();
    std::string text;
    for (const int number : {place.left, place.top, place.width, place.height, place.isMaximized ? 1 : 0})
        text += (text.empty() ? "" : " ") + std::to_string(number);
    modRegistry::SetValue(kHive, kPlaceKey, kPlaceName, text, os::RegistryType::String);
}
