// What os/desktop/Dialog.h promises of windows with long lists and texts, in every implementation.
#include <gtest/gtest.h>

#include "base/RuntimeError.h"
#include "os/desktop/Dialog.h"
#include "os/desktop/DialogRows.h"
#include "os/fake/FakeDialog.h"

namespace {

using Kind = os::ControlKind;
using os::fake::DialogUser;

constexpr os::Control kLargeControls[] = {
    {Kind::TabStrip, "tabs", "Log|Other", {7, 7, 226, 130, os::kFill}},
    {Kind::VirtualList, "vlLog", "", {7, 7, 200, 60, os::kFill}, 0, 0},
    {Kind::FixedText, "txtLine", "", {7, 72, 200, 30, os::kAlongBottom}, 0, 0},
    {Kind::DropDownList, "cmbKind", "", {7, 7, 80, 12, os::kTopRight}, 0, 1},
    {Kind::DefaultButton, "cmdClose", "Close", {183, 142, 50, 14, os::kBottomRight}},
};
constexpr os::DialogTable kLargeTable{"Large Dialog Contract", 240, 163, kLargeControls, 200, 150};

// A list of numbered rows, which are all made when they are asked for.
struct VirtualListContract : testing::Test {
    VirtualListContract() {
        dialog.AddColumn("vlLog", "Number", 60);
        dialog.AddColumn("vlLog", "Square", 60);
        dialog.ProvideRows("vlLog", [this](int row, int column) {
            const int number = row + gone;
            return std::to_string(column == 0 ? number : number * number);
        });
        dialog.Show();
    }
    void Grow(int rows, int fewer = 0) {
        gone += fewer;
        dialog.SetRows("vlLog", rows, fewer);
    }
    std::string Selected() {
        const int row = dialog.Value("vlLog");
        return row < 0 ? "none" : dialog.Cell("vlLog", row, 0);
    }

    os::Dialog dialog{kLargeTable};
    DialogUser user{dialog};
    int gone = 0;
};

TEST_F(VirtualListContract, AsksForItsTextsAndTellsWhatIsSelected) {
    std::string told;
    dialog.On("vlLog", [&] { told += Selected() + " "; });
    dialog.OnEnter("vlLog", [&] { told += "Enter "; });
    dialog.OnDelete("vlLog", [&] { told += "Del "; });
    Grow(50'000);
    EXPECT_EQ(dialog.RowCount("vlLog"), 50'000);
    EXPECT_EQ(dialog.Cell("vlLog", 9, 1), "81");
    EXPECT_THROW(dialog.Cell("vlLog", 50'000, 0), RuntimeError);
    user.Choose("vlLog", 40'000);
    user.PressEnter("vlLog");
    user.PressDelete("vlLog");
    dialog.SetValue("vlLog", 3);
    EXPECT_EQ(told, "40000 Enter Del ");
    EXPECT_EQ(Selected(), "3");
    Grow(2);
    EXPECT_EQ(Selected(), "none");
}

TEST_F(VirtualListContract, GrowsAndLosesItsFirstRowsWithoutMovingWhatIsLookedAt) {
    Grow(1'000);
    EXPECT_EQ(user.LastSeen("vlLog"), 999) << "a new list shows its end";
    Grow(2'000);
    EXPECT_EQ(user.LastSeen("vlLog"), 1'999) << "the end is followed";
    user.ScrollTo("vlLog", 400);
    ASSERT_EQ(user.FirstSeen("vlLog"), 400);
    Grow(3'000);
    EXPECT_EQ(user.FirstSeen("vlLog"), 400);
    user.Choose("vlLog", 401);
    Grow(3'000, 100);
    EXPECT_EQ(user.FirstSeen("vlLog"), 300);
    EXPECT_EQ(Selected(), "401");
    Grow(3'000, 302);
    EXPECT_EQ(user.FirstSeen("vlLog"), 0);
    EXPECT_EQ(Selected(), "none");
    Grow(0);
    Grow(10);
    dialog.ShowRow("vlLog", 5);
    EXPECT_LE(user.FirstSeen("vlLog"), 5);
    EXPECT_GE(user.LastSeen("vlLog"), 5);
}

TEST_F(VirtualListContract, ALongTextIsMarkedWhereThePresenterSays) {
    dialog.SetText("txtLine", "one\r\ntwo\r\nthree");
    dialog.MarkText("txtLine", 5, 3);
    EXPECT_EQ(user.Marked("txtLine"), "two");
}

// Cyrillic, Japanese and an emoji: no code page has all of them.
TEST(Utf8Contract, EveryLetterIsShownTypedAndMarked) {
    static constexpr char kText[] = "\xD0\x96 \xE5\xA4\xA9 \xF0\x9F\x98\x80";
    static constexpr os::Control kBoxes[] = {
        {Kind::TextBox, "txt", "", {7, 7, 60, 12}, 0, os::kNoPage, "", kText},
        {Kind::ReadOnlyText, "lines", "", {7, 22, 60, 30}},
        {Kind::DropDownList, "cmb", "", {7, 55, 60, 12}},
        {Kind::ListView, "rows", "", {7, 70, 60, 30}},
        {Kind::Button, "cmd", kText, {7, 105, 60, 12}},
    };
    static constexpr os::DialogTable kUtf8Table{"Utf8", 80, 120, kBoxes, 0, 0, true};
    const std::string text = kText;
    os::Dialog dialog(kUtf8Table);
    DialogUser user(dialog);
    dialog.Show();
    EXPECT_EQ(dialog.Text("txt") + dialog.Text("cmd"), text + text);
    user.Type("txt", text + text);
    EXPECT_EQ(dialog.Text("txt"), text + text);
    EXPECT_FALSE(dialog.LosesLetters("txt"));
    dialog.AddEntry("cmb", text);
    EXPECT_EQ(dialog.Entry("cmb", 0), text);
    dialog.AddColumn("rows", text, 40);
    dialog.AddColumn("rows", text, 40);
    dialog.AddRow("rows", {text, text});
    EXPECT_EQ(dialog.Cell("rows", 0, 0) + dialog.Cell("rows", 0, 1), text + text);
    dialog.SetText("lines", text + "\r\n" + text);
    dialog.MarkText("lines", text.size() + 5, 3);
    EXPECT_EQ(user.Marked("lines"), "\xE5\xA4\xA9");
}

TEST(ResizingContract, ControlsKeepTheirDistanceToTheEdgesTheyAreAnchoredTo) {
    os::Dialog dialog(kLargeTable);
    DialogUser user(dialog);
    dialog.Show();
    const auto moved = [&](const char* name, int left, int top, int wider, int higher) {
        const auto& rect = kLargeControls[os::RowOf(kLargeTable, name)].rect;
        const auto now = user.PlaceOf(name);
        EXPECT_NEAR(now.left, rect.left + left, 1) << name;
        EXPECT_NEAR(now.top, rect.top + top, 1) << name;
        EXPECT_NEAR(now.width, rect.width + wider, 1) << name;
        // The height of a closed drop-down list is the system's.
        if (std::string(name) == "cmbKind") return;
        EXPECT_NEAR(now.height, rect.height + higher, 1) << name;
    };
    user.Resize(340, 233);
    moved("tabs", 0, 0, 100, 70);
    moved("vlLog", 0, 0, 100, 70);
    moved("txtLine", 0, 70, 100, 0);
    moved("cmbKind", 100, 0, 0, 0);
    moved("cmdClose", 100, 70, 0, 0);
    const auto place = dialog.Place();
    user.Resize(10, 10);
    EXPECT_NEAR(dialog.Place().width, 200, 1);
    EXPECT_NEAR(dialog.Place().height, 150, 1);

    os::Dialog again(kLargeTable);
    again.Show({.place = place});
    EXPECT_EQ(again.Place(), place);
    static constexpr os::DialogTable kOfOneSize{"One size", 240, 163, kLargeControls};
    EXPECT_EQ(os::Dialog(kOfOneSize).Place(), os::WindowPlace());
}

}  // namespace
