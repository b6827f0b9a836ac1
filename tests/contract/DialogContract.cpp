// What every implementation of os/desktop/Dialog.h does, seen by the presenter on one side and a user on the
// other.
#include <gtest/gtest.h>

#include <memory>

#include "base/RuntimeError.h"
#include "os/desktop/Dialog.h"
#include "os/desktop/DialogRows.h"
#include "os/desktop/MessageBox.h"
#include "os/fake/FakeDialog.h"
#include "tests/unit/Reported.h"

namespace {

using Kind = os::ControlKind;
using os::ControlId;
using os::fake::DialogUser;

constexpr const char* kCaption = "Dialog Contract";
constexpr os::Control kControls[] = {
    {Kind::Label, "lblName", "Name & more:", {7, 7, 60, 8}},
    {Kind::TextBox, "txtName", "", {70, 5, 80, 12}},
    {Kind::TextBox, "txtSecond", "", {155, 5, 80, 12}, 0, os::kNoPage, "", "preset"},
    {Kind::DropDownList, "cmbPlace", "", {7, 22, 80, 12}},
    {Kind::MultiLineText, "txtBody", "", {7, 40, 140, 40}},
    {Kind::ListView, "lvRows", "", {155, 40, 80, 40}},
    {Kind::TabStrip, "tabs", "First|Second", {7, 85, 228, 60}},
    {Kind::CheckBox, "chk", "Check me", {7, 7, 60, 10}, 0, 0, "checked", "1"},
    {Kind::OptionButton, "optA", "Alone", {7, 20, 60, 10}, 0, 0, "", "True"},
    {Kind::OptionButton, "optB", "Left", {70, 20, 60, 10}, 0, 0, "", "False"},
    {Kind::OptionButton, "optB", "Right", {135, 20, 60, 10}, 1, 0, "", "True"},
    {Kind::Slider, "sld", "", {7, 7, 100, 14}, 0, 1, "", "30"},
    {Kind::ProgressBar, "prg", "", {7, 25, 100, 10}, 0, 1},
    {Kind::DefaultButton, "cmdOK", "OK", {129, 150, 50, 14}},
    {Kind::CancelButton, "cmdCancel", "Cancel", {185, 150, 50, 14}},
};
constexpr os::DialogTable kTable{kCaption, 242, 171, kControls};

// The controls that have a value.
constexpr ControlId kValued[] = {"cmbPlace",  "lvRows",    "chk",  "optA",
                                 {"optB", 0}, {"optB", 1}, "tabs", "sld"};

// Counts what the dialog tells its presenter.
class DialogContract : public testing::Test {
 protected:
    os::Dialog dialog{kTable};
    DialogUser user{dialog};
    std::string told;

    std::string Values() {
        std::string values;
        for (const auto& control : kValued)
            values += std::string(control.name) + " " + std::to_string(dialog.Value(control)) + ", ";
        return values;
    }
    void Listen(ControlId control, const std::string& word) {
        dialog.On(control, [this, word] { told += word + " "; });
    }
};

TEST_F(DialogContract, ControlsBeginAsTheTableSays) {
    EXPECT_FALSE(dialog.IsShown());
    EXPECT_EQ(dialog.Text("lblName"), "Name & more:");
    EXPECT_EQ(dialog.Text("txtName"), "");
    EXPECT_EQ(dialog.Text("txtSecond"), "preset");
    EXPECT_EQ(Values(), "cmbPlace -1, lvRows -1, chk 1, optA 1, optB 0, optB 1, tabs 0, sld 30, ");
}

TEST_F(DialogContract, OpensWithTheFocusOnTheFirstInputAndKeepsItsStateWhenClosed) {
    dialog.Show();
    EXPECT_TRUE(dialog.IsShown());
    EXPECT_TRUE(user.HasFocus("txtName"));
    user.Type("txtName", "kept");
    dialog.Focus("txtBody");
    EXPECT_TRUE(user.HasFocus("txtBody"));
    dialog.Close();
    dialog.Close();
    EXPECT_FALSE(dialog.IsShown());
    dialog.Show();
    EXPECT_EQ(dialog.Text("txtName"), "kept");
}

TEST_F(DialogContract, TellsWhatTheUserDoes) {
    dialog.AddColumn("lvRows", "Name", 40);
    for (const char* row : {"one", "two", "three"}) dialog.AddRow("lvRows", {row});
    for (const char* entry : {"here", "there"}) dialog.AddEntry("cmbPlace", entry);
    for (const char* name : {"txtName", "txtBody", "cmbPlace", "lvRows", "tabs", "chk", "sld", "cmdOK"})
        Listen(name, name);
    Listen({"optB", 0}, "left");
    dialog.Show();

    user.Type("txtName", "a");
    user.Type("txtBody", "b\r\nc");
    user.Choose("cmbPlace", 1);
    user.Choose("lvRows", 2);
    user.Press("chk");
    user.Press({"optB", 0});
    user.Choose("tabs", 1);
    user.Choose("sld", 45);
    user.Press("cmdOK");
    EXPECT_EQ(told, "txtName txtBody cmbPlace lvRows chk left tabs sld cmdOK ");

    EXPECT_EQ(dialog.Text("txtName"), "a");
    EXPECT_EQ(dialog.Text("txtBody"), "b\r\nc");
    EXPECT_EQ(dialog.Text("cmbPlace"), "there");
    // A row of another name is another group.
    EXPECT_EQ(Values(), "cmbPlace 1, lvRows 2, chk 0, optA 1, optB 1, optB 0, tabs 1, sld 45, ");
}

TEST_F(DialogContract, TellsNothingOfWhatTheProgramDoes) {
    for (const char* name : {"txtName", "txtBody", "cmbPlace", "lvRows", "tabs", "chk", "optA", "sld"})
        Listen(name, name);
    dialog.Show();
    dialog.SetText("txtName", "a");
    dialog.SetText("txtBody", "b");
    dialog.AddEntry("cmbPlace", "here");
    dialog.SetValue("cmbPlace", 0);
    dialog.AddColumn("lvRows", "Name", 40);
    dialog.AddRow("lvRows", {"one"});
    dialog.SetValue("lvRows", 0);
    dialog.RemoveRow("lvRows", 0);
    dialog.SetValue("tabs", 1);
    dialog.SetValue("chk", 0);
    dialog.SetValue("optA", 1);
    dialog.SetRange("sld", 0, 255);
    dialog.SetValue("sld", 200);
    EXPECT_EQ(dialog.Value("sld"), 200);
    EXPECT_EQ(told, "");
}

TEST_F(DialogContract, AControlOfAnotherPageOrHiddenIsNotSeen) {
    dialog.Show();
    EXPECT_TRUE(user.Sees("chk"));
    EXPECT_FALSE(user.Sees("sld"));
    dialog.SetValue("tabs", 1);
    EXPECT_FALSE(user.Sees("chk"));
    EXPECT_TRUE(user.Sees("sld"));
    dialog.ShowControl("sld", false);
    EXPECT_FALSE(user.Sees("sld"));
    user.Choose("tabs", 0);
    user.Choose("tabs", 1);
    EXPECT_FALSE(user.Sees("sld")) << "turning the page shows what was hidden";
}

TEST_F(DialogContract, ListsKeepTheirOrder) {
    dialog.AddColumn("lvRows", "Name", 40);
    dialog.AddColumn("lvRows", "Alias", 40);
    dialog.AddRow("lvRows", {"b", "2"});
    dialog.AddRow("lvRows", {"a"});
    dialog.AddRow("lvRows", {"c", "3"});
    EXPECT_EQ(dialog.RowCount("lvRows"), 3);
    EXPECT_EQ(dialog.Cell("lvRows", 0, 0), "b");
    EXPECT_EQ(dialog.Cell("lvRows", 1, 1), "");
    dialog.Show();
    user.Choose("lvRows", 0);
    user.Choose("lvRows", 2);
    EXPECT_EQ(dialog.Value("lvRows"), 2) << "one row at most is selected";
    dialog.RemoveRow("lvRows", 0);
    EXPECT_EQ(dialog.Cell("lvRows", 1, 1), "3");
    EXPECT_EQ(dialog.Value("lvRows"), 1);
    dialog.OnDelete("lvRows", [this] { dialog.RemoveRow("lvRows", dialog.Value("lvRows")); });
    user.PressDelete("lvRows");
    EXPECT_EQ(dialog.RowCount("lvRows"), 1);
    EXPECT_EQ(dialog.Value("lvRows"), 0) << "the next Del takes the next row";
    dialog.ClearRows("lvRows");
    EXPECT_EQ(dialog.RowCount("lvRows"), 0);

    dialog.AddEntry("cmbPlace", "z");
    dialog.AddEntry("cmbPlace", "a");
    EXPECT_EQ(dialog.EntryCount("cmbPlace"), 2);
    EXPECT_EQ(dialog.Entry("cmbPlace", 0), "z");
    EXPECT_EQ(dialog.Text("cmbPlace"), "");
    dialog.SetValue("cmbPlace", 1);
    EXPECT_EQ(dialog.Text("cmbPlace"), "a");
    dialog.ClearEntries("cmbPlace");
    EXPECT_EQ(dialog.Value("cmbPlace"), -1);
}

TEST_F(DialogContract, EnterPressesTheDefaultButtonUnlessTheTextBoxWantsIt) {
    Listen("cmdOK", "OK");
    dialog.OnEnter("txtName", [this] { told += "Enter "; });
    dialog.Show();
    user.PressEnter("txtName");
    user.PressEnter("txtSecond");
    user.PressEnter("txtBody");
    EXPECT_EQ(told, "Enter OK ");
    EXPECT_EQ(dialog.Text("txtBody"), "\r\n");
}

TEST_F(DialogContract, EscapePressesCancel) {
    Listen("cmdCancel", "Cancel");
    dialog.Show();
    user.PressEscape();
    EXPECT_EQ(told, "Cancel ");
    EXPECT_TRUE(dialog.IsShown());
    dialog.On("cmdCancel", nullptr);
    user.PressEscape();
    EXPECT_FALSE(dialog.IsShown());
}

TEST_F(DialogContract, ATextBoxSaysWhenItCuts) {
    const auto text = [](std::size_t bytes) {
        std::string lines;
        while (lines.size() < bytes) lines += "a line of the text that is too long for the box\r\n";
        return lines.substr(0, bytes);
    };
    dialog.LimitText("txtBody", 6'500);
    dialog.OnFull("txtBody", [this] { told += "full "; });
    dialog.Show();
    user.Type("txtBody", text(6'500));
    EXPECT_EQ(told, "");
    EXPECT_EQ(dialog.Text("txtBody").size(), 6'500u);
    user.Type("txtBody", text(6'501));
    EXPECT_EQ(told, "full ");
    EXPECT_LE(dialog.Text("txtBody").size(), 6'500u);
    dialog.SetText("txtBody", text(70'000));
    EXPECT_EQ(dialog.Text("txtBody").size(), 70'000u) << "what the program sets is not cut";
}

TEST_F(DialogContract, AHandlerMayDestroyItsDialog) {
    auto mortal = std::make_unique<os::Dialog>(kTable);
    mortal->On("cmdOK", [&] { mortal.reset(); });
    mortal->Show();
    DialogUser(*mortal).Press("cmdOK");
    EXPECT_EQ(mortal, nullptr);
}

TEST_F(DialogContract, AFailingHandlerIsReportedUnderTheControlsName) {
    const Reported reported;
    dialog.On("cmdOK", [] { throw RuntimeError(5, "no"); });
    dialog.Show();
    user.Press("cmdOK");
    ASSERT_EQ(Reported::reports.size(), 1u);
    EXPECT_EQ(Reported::reports[0].where, "Dialog:cmdOK");
    EXPECT_TRUE(dialog.IsShown());
}

TEST_F(DialogContract, RefusesWhatTheTableDoesNotHave) {
    EXPECT_THROW(dialog.Text("nobody"), RuntimeError);
    EXPECT_THROW(dialog.Text({"optB", 2}), RuntimeError);
    EXPECT_THROW(dialog.AddEntry("txtName", "x"), RuntimeError);
    EXPECT_THROW(dialog.SetValue("cmbPlace", 0), RuntimeError);
    EXPECT_THROW(dialog.Entry("cmbPlace", 0), RuntimeError);
    EXPECT_THROW(dialog.RemoveRow("lvRows", 0), RuntimeError);
    EXPECT_THROW(dialog.SetValue("tabs", 2), RuntimeError);
}

TEST_F(DialogContract, OpensWithoutTheKeyboardWhenNobodyAskedForIt) {
    dialog.Show();
    os::Dialog second(kTable);
    second.Show({.step = 1, .takesFocus = false});
    EXPECT_TRUE(second.IsShown());
    EXPECT_TRUE(user.IsActive());
    second.Show();
    EXPECT_TRUE(DialogUser(second).IsActive());
}

TEST_F(DialogContract, ABoxOfAHandlerBelongsToItsDialog) {
    os::WindowHandle owner = 0;
    dialog.On("cmdOK", [&] { owner = os::BoxesBefore::Current(); });
    dialog.Show();
    user.Press("cmdOK");
    EXPECT_EQ(owner, dialog.Handle());
    EXPECT_EQ(os::BoxesBefore::Current(), 0u) << "what comes later is not the dialog's doing";
}

TEST_F(DialogContract, ADisabledControlStaysSoAcrossClosing) {
    dialog.Enable("cmdOK", false);
    Listen("cmdOK", "OK");
    dialog.Show();
    EXPECT_FALSE(dialog.IsEnabled("cmdOK"));
    user.PressEnter("txtName");
    EXPECT_EQ(told, "") << "Enter pressed a disabled button";
}

}  // namespace
