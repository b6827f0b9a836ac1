#include "desktop/frmBug.h"

#include "desktop/Report.h"

namespace {

using Kind = os::ControlKind;

// "Reprot" and "occured": as these texts have always been written.
constexpr os::Control kControls[] = {
    {Kind::Label,
     "lblIntro",
     "Found a problem with Wrenlow that you think I should know about? Fill out this form and send it to me. "
     "Everything will be kept confidential. This is only to help me fix bugs, etc. All fields are optional.",
     {7, 7, 266, 24}},
    {Kind::Label, "lblDesc", "Problem description", {7, 37, 266, 8}},
    {Kind::MultiLineText, "txtDesc", "", {7, 47, 266, 52}},
    {Kind::Label,
     "lblHelp",
     "In the problem description, please include what happened or what needs to be fixed. Also say what you "
     "were doing when the problem occured (sending an IM, signing on, etc) and any other information that "
     "you feel may be helpful.",
     {7, 103, 266, 32}},
    {Kind::Label, "lblSpecs", "System specs (OS, ram, etc)", {7, 142, 266, 8}},
    {Kind::TextBox, "txtSpecs", "", {7, 152, 266, 14}},
    {Kind::Label, "lblContact", "Contact email or screenname", {7, 173, 266, 8}},
    {Kind::TextBox, "txtContact", "", {7, 183, 266, 14}},
    {Kind::Label, "lblComments", "Additional information or comments", {7, 204, 266, 8}},
    {Kind::MultiLineText, "txtComments", "", {7, 214, 266, 40}},
    {Kind::DefaultButton, "cmdSubmit", "Submit", {169, 261, 50, 14}},
    {Kind::CancelButton, "cmdCancel", "Cancel", {223, 261, 50, 14}},
};
constexpr os::DialogTable kTable{"Reprot A Bug", 280, 282, kControls};

}  // namespace

frmBug::frmBug() : dialog_(kTable) {
    dialog_.On("cmdSubmit", [this] { CloseEmpty(); });
    dialog_.On("cmdCancel", [this] { CloseEmpty(); });
}

void frmBug::Start() {
    if (!dialog_.IsShown()) dialog_.SetText("txtComments", ReportText());
    dialog_.Show();
}

void frmBug::CloseEmpty() {
    dialog_.Close();
    for (const char* box : {"txtDesc", "txtSpecs", "txtContact", "txtComments"}) dialog_.SetText(box, "");
}
