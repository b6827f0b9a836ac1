#include "app/windows/modError.h"

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "os/desktop/MessageBox.h"
#include "os/fake/FakeDialog.h"
#include "tests/unit/FreshWorld.h"

namespace {

using os::fake::DialogUser;

constexpr char kCaption[] = "Wrenlow";

struct ErrorWindows : FreshWorld {
    ~ErrorWindows() override {
        modError::DiscardWindows();
        SetErrorReporter(before_);
    }

    static void Fail(const char* description, std::int16_t at = 0) {
        Trap("modSystem:GetSNPath", [&](std::int16_t& line) {
            line = at;
            throw RuntimeError(-5, description);
        });
    }
    static int Shown() { return os::fake::ShownDialogCount(kCaption); }
    // Of the window on top.
    static std::string Text() { return DialogUser(kCaption).Window().Text("lblError"); }

    const ErrorReporter before_ = SetErrorReporter(modError::ReportError);
};

TEST_F(ErrorWindows, TwoReportsReadToTheLetterInWindowsThatCloseByThemselves) {
    Fail("Invalid procedure call or argument");
    Fail("second", -7);
    EXPECT_EQ(Shown(), 2);
    EXPECT_EQ(Text(), "-5: second\r\nat: modSystem:GetSNPath: -7");
    DialogUser(kCaption).Press("cmdOK");
    ASSERT_EQ(Shown(), 1);
    EXPECT_EQ(Text(), "-5: Invalid procedure call or argument\r\nat: modSystem:GetSNPath: 0");
    DialogUser(kCaption).PressEscape();
    EXPECT_EQ(modError::OpenWindowCount(), 0u);
}

TEST_F(ErrorWindows, TakeTheKeyboardOnlyWhenAPersonHasCausedThem) {
    static constexpr os::Control kBox[] = {{os::ControlKind::TextBox, "txt", "", {7, 7, 60, 12}}};
    static constexpr os::DialogTable kTable{"typed into", 80, 40, kBox};
    os::Dialog other(kTable);
    other.Show();
    Fail("caused by a frame");
    EXPECT_EQ(Shown(), 1);
    EXPECT_TRUE(DialogUser(other).IsActive());
    const os::BoxesBefore cause(1);
    Fail("caused by a command");
    EXPECT_FALSE(DialogUser(other).IsActive());
}

TEST_F(ErrorWindows, AFloodOfFailuresOpensTwentyWindowsAndNoMoreUntilOneIsClosed) {
    for (std::size_t i = 0; i < modError::kMaxWindows + 5; ++i) Fail("x");
    EXPECT_EQ(Shown(), 20);
    DialogUser(kCaption).Press("cmdOK");
    Fail("afterwards");
    EXPECT_EQ(Shown(), 20);
    EXPECT_TRUE(Text().starts_with("-5: afterwards"));
}

}  // namespace
