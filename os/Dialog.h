// Dialog: a modeless window made from a constant table of controls, each addressed by its name.
//
// The table is the only place where a caption, a position or a first state is written; the Windows side
// builds its template from it in memory. Every Dialog is driven by the one event loop, so traffic goes on
// while it is open. Its window is made hidden by the constructor and lives as long as the object.
//
// One vocabulary for all kinds: On() tells what the user did to a control; nothing that the program does to a
// control raises anything. A handler may close, show or destroy any dialog, its own included. An exception
// that leaves a handler is reported through Trap under "Dialog:" and the control's name.
//
// Texts are in the program's ANSI code page; lines of a text are separated by CR LF.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "os/WindowHandle.h"

namespace os {

//                     On() is raised when the user ...    Value() is ...
enum class ControlKind {
    Label,          //
    IconPicture,    //                                     (caption: "application", "error", "warning",
                    //                                     "information")
    TextBox,        // changes the text
    MultiLineText,  // changes the text
    Button,         // presses it
    DefaultButton,  // presses it, or Enter; one at most
    CancelButton,   // presses it, or Esc, or closes the window; one at most. Without one, Esc and closing
                    // press the DefaultButton
    CheckBox,       // clicks it (it has changed already)   1 checked, 0 not
    OptionButton,   // clicks it (it has changed already)   1 chosen, 0 not; rows that follow each other under
                    //                                     one name are a group
    DropDownList,   // chooses an entry                     the entry's position, -1 when none is chosen
    ListView,       // selects other rows, or none          the first selected row, -1 when there is none
    Slider,         // moves it                             its position
    ProgressBar,    //                                     its position
    GroupFrame,     //
    TabStrip,       // turns to another page                the page; the caption holds the pages' captions,
                    //                                     separated by "|"; one at most
};

// In dialog units: a quarter of the font's average width, an eighth of its height. So a table holds at every
// resolution.
struct DialogRect {
    short left = 0;
    short top = 0;
    short width = 0;
    short height = 0;
};

inline constexpr int kNoPage = -1;

// One row of the table. Rows stand in tab order; a label stands right before the control that it names, so
// that screen readers read it there.
struct Control {
    ControlKind kind;
    const char* name;
    const char* caption = "";
    DialogRect rect = {};      // from the dialog's top left corner, or from that of its page
    int index = 0;             // the element, when several rows carry one name
    int page = kNoPage;        // the page of the tab strip that it lies on
    const char* tag = "";      // for the presenter's own use
    const char* initial = "";  // first state: a text box's text; "1" or "True", "0" or "False"; a number
};

struct DialogTable {
    const char* caption;
    short width;   // of the inside, in dialog units
    short height;  //
    std::span<const Control> controls;
};

// A control's name, and its index where several carry the name.
struct ControlId {
    std::string_view name;
    int index = 0;

    constexpr ControlId(const char* controlName) : name(controlName) {}
    constexpr ControlId(std::string_view controlName, int controlIndex = 0)
        : name(controlName), index(controlIndex) {}
};

class Dialog {
 public:
    using Handler = std::function<void()>;

    // The table and what it points to must outlive the dialog. Throws RuntimeError with the system's number
    // when the window cannot be made.
    explicit Dialog(const DialogTable& table);
    ~Dialog();
    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;

    const DialogTable& Table() const;

    // For handing on, for instance as the owner of a box of the system.
    WindowHandle Handle() const;

    // A control that the table does not have, or one of no fitting kind, or a position that does not exist,
    // is a fault of the program: every call below throws RuntimeError (InvalidArgument) then.

    // Opens the window in the middle of the screen that the pointer is on; a window that is open already
    // stays where it is. Either way it comes to the front and takes the keyboard. The first control that
    // takes input gets the focus when the window opens.
    void Show();
    // Hides the window; the controls keep their state. Idempotent.
    void Close();
    bool IsShown() const;

    // What the user does to the control, as listed at its kind; a later handler replaces an earlier one.
    // A CancelButton or DefaultButton that no handler is set for closes the window.
    void On(ControlId control, Handler handler);
    // Enter in a text box of one line. With a handler the key does not press the default button.
    void OnEnter(ControlId control, Handler handler);
    // A text box took less than was typed or pasted, because of LimitText. Raised after the cut.
    void OnFull(ControlId control, Handler handler);

    // The text of a text box, the caption of anything else; of a drop-down list the chosen entry, empty when
    // there is none. SetText is not bound by LimitText; it is not for drop-down lists.
    std::string Text(ControlId control) const;
    void SetText(ControlId control, const std::string& text);
    // The most bytes that a user can enter. Without a call it is kDefaultTextLimit.
    void LimitText(ControlId control, std::size_t bytes);

    // See the kinds. Setting -1 unchooses the entry or rows. Choosing an option button releases the others of
    // its group.
    int Value(ControlId control) const;
    void SetValue(ControlId control, int value);
    // Of a slider or progress bar, whose range is 0 to 100 without a call.
    void SetRange(ControlId control, int lowest, int highest);

    // The entries of a drop-down list.
    void ClearEntries(ControlId control);
    void AddEntry(ControlId control, const std::string& text);
    int EntryCount(ControlId control) const;
    std::string Entry(ControlId control, int position) const;

    // Columns and rows of a list view. Cells of a row that are missing are empty; RemoveRow moves the rows
    // below up.
    void AddColumn(ControlId control, const std::string& caption, int width);  // in dialog units
    void ClearRows(ControlId control);
    void AddRow(ControlId control, const std::vector<std::string>& cells);
    void RemoveRow(ControlId control, int row);
    int RowCount(ControlId control) const;
    std::string Cell(ControlId control, int row, int column) const;
    bool IsRowSelected(ControlId control, int row) const;

    // A disabled control takes no input. A hidden one is not seen on any page.
    void Enable(ControlId control, bool enabled);
    bool IsEnabled(ControlId control) const;
    void ShowControl(ControlId control, bool shown);
    // Puts the keyboard focus on the control; a text box selects its text.
    void Focus(ControlId control);

 private:
    friend struct DialogAccess;  // the implementation's own
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

inline constexpr std::size_t kDefaultTextLimit = 30'000;

// The window that owns the dialogs made from now on: they stay before it and end with it. 0 for none.
void SetDialogOwner(WindowHandle owner);

}  // namespace os
