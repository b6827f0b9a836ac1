#include "app/windows/frmError.h"

namespace {

using Kind = os::ControlKind;

constexpr os::Control kControls[] = {
    {Kind::IconPicture, "Image1", "error", {7, 7, 21, 20}},
    // Spelled so since the first version; error reports are known by this line.
    {Kind::Label, "Label1", "Wrenlow generated the folloing error", {37, 7, 196, 8}},
    {Kind::ReadOnlyText, "lblError", "", {37, 20, 196, 48}},
    {Kind::DefaultButton, "cmdOK", "OK", {183, 75, 50, 14}},
};
constexpr os::DialogTable kTable{"Wrenlow", 240, 96, kControls};

}  // namespace

frmError::frmError() : dialog_(kTable) {
    dialog_.On("cmdOK", [this] { cmdOK_Click(); });
}

void frmError::Start(const std::string& strDesc, const std::string& strNumber, const std::string& strWhere,
                     std::int16_t linenum, os::Opening opening) {
    dialog_.SetText("lblError",
                    strNumber + ": " + strDesc + "\r\n" + "at: " + strWhere + ": " + std::to_string(linenum));
    dialog_.Show(opening);
}

void frmError::cmdOK_Click() {
    dialog_.Close();
    Closed(*this);
}
