// Dialog: a modeless window made from a constant table of controls, each addressed by its name.
//
// The table is the only place where a caption, a position or a first state is written; the Windows side
// builds its template from it in memory. Every Dialog is driven by the one event loop, so traffic goes on
// while it is open. Its window is made hidden by the constructor and lives as long as the object.
//
// A table with a least size is a window that the user can resize: each control keeps its distance to the
// edges that it is anchored to. Whoever opens it hands in the place that it had the last time.
//
// One vocabulary for all kinds: On() tells what the user did to a control; nothing that the program does to a
// control raises anything. A handler may close, show or destroy any dialog, its own included. An exception
// that leaves a handler is reported through Trap under "Dialog:" and the control's name.
//
// Texts, of the table and of every call, are in the program's code page (os/CodePage.h), or in UTF-8 where
// the table says so; lines of a text are separated by CR LF.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "os/desktop/WindowHandle.h"

namespace os {

//                     On() is raised when the user ...    Value() is ...
enum class ControlKind {
    Label,          //
    UnseenLabel,    //                                     (never shown: tells screen readers the name of
                    //                                     the control in the next row)
    IconPicture,    //                                     (caption: "application", "error", "warning",
                    //                                     "information")
    TextBox,        // changes the text
    MultiLineText,  // changes the text
    ReadOnlyText,   //                                     (lines that can be read, selected and copied)
    FixedText,      //                                     (the same with letters of equal width)
    Button,         // presses it
    DefaultButton,  // presses it, or Enter; one at most
    CancelButton,   // presses it, or Esc, or closes the window; one at most. Without one, Esc and closing
                    // press the DefaultButton
    CheckBox,       // clicks it (it has changed already)   1 checked, 0 not
    OptionButton,   // clicks it (it has changed already)   1 chosen, 0 not; rows that follow each other under
                    //                                     one name are a group
    DropDownList,   // chooses an entry                     the entry's position, -1 when none is chosen
    ListView,       // selects another row, or none         the selected row, -1 when there is none
    VirtualList,    // selects another row, or none         the same; the list asks for the texts of what is
                    // seen
    Slider,         // moves it                             its position
    ProgressBar,    //                                     its position
    GroupFrame,     //
    TabStrip,       // turns to another page                the page; the caption holds the pages' captions,
                    //                                     separated by "|"; one at most
};

// The edges of the window that a control's edges keep their distance to when the window is resized.
enum Anchor : unsigned char { kLeft = 1, kTop = 2, kRight = 4, kBottom = 8 };
inline constexpr unsigned char kTopLeft = kTop | kLeft;              // it stays where it is
inline constexpr unsigned char kAcross = kTop | kLeft | kRight;      // it grows in width
inline constexpr unsigned char kFill = kAcross | kBottom;            // both ways
inline constexpr unsigned char kTopRight = kTop | kRight;            // it moves
inline constexpr unsigned char kBottomLeft = kBottom | kLeft;        //
inline constexpr unsigned char kBottomRight = kBottom | kRight;      //
inline constexpr unsigned char kAlongBottom = kBottomLeft | kRight;  // it moves and grows in width

// In dialog units: a quarter of the font's average width, an eighth of its height. So a table holds at every
// resolution.
struct DialogRect {
    short left = 0;
    short top = 0;
    short width = 0;
    short height = 0;
    unsigned char anchors = kTopLeft;
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
    // Of the inside, below which the user cannot make it; 0 for a window of one size.
    short leastWidth = 0;
    short leastHeight = 0;
    bool isUtf8 = false;  // its texts are in UTF-8, so that every letter is shown and can be typed
};

// A control's name, and its index where several carry the name.
struct ControlId {
    std::string_view name;
    int index = 0;

    constexpr ControlId(const char* controlName) : name(controlName) {}
    constexpr ControlId(std::string_view controlName, int controlIndex = 0)
        : name(controlName), index(controlIndex) {}
};

// Where a window that can be resized was, for the next time.
struct WindowPlace {
    int left = 0;  // pixels of the screen
    int top = 0;
    int width = 0;  // dialog units of the inside; 0 for a place that is not known
    int height = 0;
    bool isMaximized = false;

    bool operator==(const WindowPlace&) const = default;
};

// How a window opens.
struct Opening {
    int step = 0;            // so many title bars right of and below the middle
    bool takesFocus = true;  // false: it is seen, but the keyboard stays where it is
    // Instead of the middle, as far as it lies on a screen of today; for a window that can be resized.
    WindowPlace place = {};
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
    // stays where it is. Either way it comes to the front and takes the keyboard, or a box that is open
    // before it does. The first control that takes input gets the focus when the window opens. A window that
    // is higher than its screen scrolls.
    void Show() { Show(Opening()); }
    void Show(Opening opening);
    // Hides the window; the controls keep their state. Idempotent.
    void Close();
    bool IsShown() const;
    // Of a window that can be resized, restored or maximized; also while it is hidden.
    WindowPlace Place() const;

    // What the user does to the control, as listed at its kind; a later handler replaces an earlier one.
    // A CancelButton or DefaultButton that no handler is set for closes the window.
    void On(ControlId control, Handler handler);
    // Enter in a text box of one line, and Enter or a double click in a list. With a handler the key does not
    // press the default button.
    void OnEnter(ControlId control, Handler handler);
    // Del in a list.
    void OnDelete(ControlId control, Handler handler);
    // A text box took less than was typed or pasted, because of LimitText. Raised after the cut.
    void OnFull(ControlId control, Handler handler);

    // The text of a text box, the name of an IconPicture's picture, the caption of anything else; of a
    // drop-down list the chosen entry, empty when there is none. SetText is not bound by LimitText; it is not
    // for drop-down lists.
    std::string Text(ControlId control) const;
    void SetText(ControlId control, const std::string& text);
    // Whether a text box shows letters that the code page lacks, where texts are in that: Text() has "?" or a
    // similar letter in their place.
    bool LosesLetters(ControlId control) const;
    // The most bytes that a user can enter; a character of a double-byte code page counts as what it has.
    // Without a call it is kDefaultTextLimit.
    void LimitText(ControlId control, std::size_t bytes);

    // See the kinds. Setting -1 unchooses the entry or row. Choosing an option button releases the others of
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

    // Columns of a list, and rows of a list view. Cells of a row that are missing are empty; RemoveRow moves
    // the rows below up, and selects the one that takes the place of a selected row, or else the last.
    void AddColumn(ControlId control, const std::string& caption, int width);  // in dialog units
    void ClearRows(ControlId control);
    void AddRow(ControlId control, const std::vector<std::string>& cells);
    void RemoveRow(ControlId control, int row);
    int RowCount(ControlId control) const;
    std::string Cell(ControlId control, int row, int column) const;

    // The rows of a virtual list, which are kept by the presenter alone. `text` is called for the cells that
    // are seen, whenever they are drawn; what it throws shows as an empty cell. 259 characters of a cell
    // are drawn.
    using CellText = std::function<std::string(int row, int column)>;
    void ProvideRows(ControlId control, CellText text);
    // There are `count` rows now, of which those from before may have changed; the first `gone` of before are
    // there no more. The selected row stays selected unless it has gone, and the rows that are seen stay
    // where they are; but when the last row is seen and none is selected, the new last one is brought into
    // view.
    void SetRows(ControlId control, int count, int gone = 0);
    // Scrolls a row of a list into view.
    void ShowRow(ControlId control, int row);

    // Marks so many bytes of a text from `begin` (counted from 0), and scrolls there. The mark is seen
    // without the focus too.
    void MarkText(ControlId control, std::size_t begin, std::size_t length);

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

// The main window. It owns the dialogs made from now on: they stay before it and end with it; and the boxes
// that no dialog has caused. 0 for none.
void SetDialogOwner(WindowHandle owner);

}  // namespace os
