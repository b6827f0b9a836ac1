#include "os/win32/DialogTemplate.h"

#include <windows.h>
// after windows.h
#include <commctrl.h>

#include <cstring>
#include <string>

#include "os/desktop/DialogRows.h"
#include "os/win32/WideText.h"

namespace os {
namespace {

using Kind = ControlKind;

constexpr int kFirstControlId = 1000;
// A drop-down list's height in a template is that of the opened list.
constexpr short kOpenListHeight = 110;
// From this height on a check box holds several lines, which begin at its top.
constexpr short kSeveralLines = 13;

// DLGTEMPLATEEX and its items: fields without padding, items and their class names aligned as documented.
class Writer {
 public:
    template <typename Number>
    void Put(Number number) {
        static_assert(sizeof(Number) == 2 || sizeof(Number) == 4);
        for (std::size_t i = 0; i < sizeof(Number); i += 2)
            words_.push_back(static_cast<std::uint16_t>(static_cast<std::uint32_t>(number) >> (8 * i)));
    }

    // A zero-terminated UTF-16 string.
    void PutText(const std::wstring& text) {
        for (const wchar_t c : text) Put(static_cast<std::uint16_t>(c));
        Put(std::uint16_t{0});
    }

    void AlignToDWord() {
        if (words_.size() % 2 != 0) Put(std::uint16_t{0});
    }

    std::vector<std::uint32_t> Take() {
        AlignToDWord();
        std::vector<std::uint32_t> bytes(words_.size() / 2);
        std::memcpy(bytes.data(), words_.data(), words_.size() * 2);
        return bytes;
    }

 private:
    std::vector<std::uint16_t> words_;
};

struct WindowClass {
    const char* name;
    DWORD style;
    DWORD extendedStyle;
};

WindowClass ClassOf(Kind kind) {
    switch (kind) {
        case Kind::Label:
            return {"STATIC", SS_LEFT | SS_NOPREFIX, 0};
        case Kind::UnseenLabel:
            return {"STATIC", SS_LEFT | SS_NOPREFIX, 0};
        case Kind::IconPicture:
            return {"STATIC", SS_ICON, 0};
        case Kind::TextBox:
            return {"EDIT", WS_TABSTOP | ES_AUTOHSCROLL, WS_EX_CLIENTEDGE};
        case Kind::MultiLineText:
            return {"EDIT", WS_TABSTOP | WS_VSCROLL | ES_MULTILINE | ES_AUTOVSCROLL | ES_WANTRETURN,
                    WS_EX_CLIENTEDGE};
        case Kind::ReadOnlyText:
        case Kind::FixedText:
            return {"EDIT",
                    WS_TABSTOP | WS_VSCROLL | ES_MULTILINE | ES_AUTOVSCROLL | ES_READONLY | ES_NOHIDESEL,
                    WS_EX_CLIENTEDGE};
        case Kind::Button:
        case Kind::CancelButton:
            return {"BUTTON", WS_TABSTOP | BS_PUSHBUTTON, 0};
        case Kind::DefaultButton:
            return {"BUTTON", WS_TABSTOP | BS_DEFPUSHBUTTON, 0};
        case Kind::CheckBox:
            return {"BUTTON", WS_TABSTOP | BS_AUTOCHECKBOX, 0};
        case Kind::OptionButton:
            return {"BUTTON", BS_AUTORADIOBUTTON, 0};
        case Kind::DropDownList:
            return {"COMBOBOX", WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST, 0};
        case Kind::ListView:
            return {WC_LISTVIEWA,
                    WS_TABSTOP | LVS_REPORT | LVS_SINGLESEL | LVS_SHOWSELALWAYS | LVS_NOSORTHEADER,
                    WS_EX_CLIENTEDGE};
        case Kind::VirtualList:
            return {WC_LISTVIEWA,
                    WS_TABSTOP | LVS_REPORT | LVS_SINGLESEL | LVS_SHOWSELALWAYS | LVS_NOSORTHEADER |
                        LVS_OWNERDATA,
                    WS_EX_CLIENTEDGE};
        case Kind::Slider:
            return {TRACKBAR_CLASSA, WS_TABSTOP | TBS_HORZ | TBS_NOTICKS, 0};
        case Kind::ProgressBar:
            return {PROGRESS_CLASSA, 0, 0};
        case Kind::GroupFrame:
            return {"BUTTON", BS_GROUPBOX, 0};
        case Kind::TabStrip:
            // The page windows lie over it.
            return {WC_TABCONTROLA, WS_TABSTOP | WS_CLIPSIBLINGS, 0};
    }
    ThrowInvalidArgument();
}

// The arrow keys move within a group: option buttons of one name, or buttons in a row. Everything else is a
// group by itself.
bool BeginsGroup(const DialogTable& table, std::size_t row) {
    const Kind kind = table.controls[row].kind;
    if (kind == Kind::OptionButton) return GroupOf(table, row).first == row;
    return row == 0 || !IsButton(kind) || !IsButton(table.controls[row - 1].kind);
}

DWORD StyleOf(const DialogTable& table, std::size_t row) {
    const Control& control = table.controls[row];
    DWORD style = WS_CHILD | ClassOf(control.kind).style;
    if (control.kind != Kind::UnseenLabel) style |= WS_VISIBLE;
    if (BeginsGroup(table, row)) style |= WS_GROUP;
    if (control.kind == Kind::OptionButton && GroupOf(table, row).first == row) style |= WS_TABSTOP;
    if (IsMarked(control.kind) && control.rect.height >= kSeveralLines) style |= BS_MULTILINE | BS_TOP;
    return style;
}

std::string TitleOf(const Control& control) {
    if (control.kind == Kind::Label || control.kind == Kind::UnseenLabel) return control.caption;
    if (!IsButton(control.kind) && !IsMarked(control.kind) && control.kind != Kind::GroupFrame) return {};
    return WithAccessKeyMarks(control.caption);
}

void PutItem(Writer& writer, const DialogTable& table, std::size_t row) {
    const Control& control = table.controls[row];
    const auto windowClass = ClassOf(control.kind);
    writer.AlignToDWord();
    writer.Put(DWORD{0});  // helpID
    writer.Put(windowClass.extendedStyle);
    writer.Put(StyleOf(table, row));
    writer.Put(control.rect.left);
    writer.Put(control.rect.top);
    writer.Put(control.rect.width);
    writer.Put(TemplateHeight(control));
    writer.Put(ControlWindowId(table, row));
    writer.PutText(WideOf(CP_ACP, windowClass.name));
    writer.PutText(WideOf(CodePageOf(table), TitleOf(control)));
    writer.Put(WORD{0});  // no creation data
}

DWORD WindowStyle(const DialogTable& table, bool isPage) {
    if (isPage) return DS_SHELLFONT | DS_CONTROL | WS_CHILD;
    const DWORD style = DS_SHELLFONT | WS_POPUP | WS_CAPTION | WS_SYSMENU;
    if (!CanBeResized(table)) return style;
    return style | WS_THICKFRAME | WS_MINIMIZEBOX | WS_MAXIMIZEBOX | WS_CLIPCHILDREN;
}

}  // namespace

unsigned CodePageOf(const DialogTable& table) {
    return table.isUtf8 ? CP_UTF8 : CP_ACP;
}

short TemplateHeight(const Control& control) {
    return control.kind == Kind::DropDownList ? kOpenListHeight : control.rect.height;
}

int ControlWindowId(const DialogTable& table, std::size_t row) {
    const Kind kind = table.controls[row].kind;
    if (kind == Kind::DefaultButton) return IDOK;
    if (kind == Kind::CancelButton) return IDCANCEL;
    return kFirstControlId + static_cast<int>(row);
}

std::string WithAccessKeyMarks(std::string_view caption) {
    std::string title;
    for (const char c : caption) title.append(c == '&' ? 2u : 1u, c);
    return title;
}

std::string WithoutAccessKeyMarks(std::string_view title) {
    std::string caption;
    for (std::size_t i = 0; i < title.size(); ++i) {
        caption += title[i];
        if (title[i] == '&' && title.substr(i + 1, 1) == "&") ++i;
    }
    return caption;
}

std::vector<std::uint32_t> DialogTemplate(const DialogTable& table, int page) {
    const auto& controls = table.controls;
    const bool isPage = page != kNoPage;
    const auto items = std::count_if(controls.begin(), controls.end(),
                                     [=](const Control& control) { return control.page == page; });
    Writer writer;
    writer.Put(WORD{1});       // dlgVer
    writer.Put(WORD{0xFFFF});  // signature
    writer.Put(DWORD{0});      // helpID
    writer.Put(static_cast<DWORD>(isPage ? WS_EX_CONTROLPARENT : WS_EX_APPWINDOW));
    writer.Put(WindowStyle(table, isPage));
    writer.Put(static_cast<WORD>(items));
    for (const short size : {short{0}, short{0}, table.width, table.height}) writer.Put(size);
    writer.Put(WORD{0});  // no menu
    writer.Put(WORD{0});  // the system's class of dialogs
    writer.PutText(isPage ? std::wstring() : WideOf(CodePageOf(table), table.caption));
    // The font that every dialog of the system uses, so that dialog units mean the same everywhere.
    writer.Put(WORD{8});                     // points
    writer.Put(WORD{FW_NORMAL});             // weight
    writer.Put(WORD{DEFAULT_CHARSET << 8});  // not italic (low byte); character set
    writer.PutText(L"MS Shell Dlg 2");
    for (std::size_t row = 0; row < controls.size(); ++row)
        if (controls[row].page == page) PutItem(writer, table, row);
    return writer.Take();
}

}  // namespace os
