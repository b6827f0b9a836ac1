#include "app/services/modError.h"

#include <gtest/gtest.h>

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "os/fake/FakeDialog.h"

namespace {

using os::fake::DialogUser;

constexpr char kCaption[] = "Wrenlow";

class ErrorWindows : public testing::Test {
 protected:
    ErrorWindows() : before_(SetErrorReporter(modError::ReportError)) {}
    ~ErrorWindows() override {
        modError::DiscardWindows();
        SetErrorReporter(before_);
    }

    static void Fail(const char* description = "Invalid procedure call or argument") {
        Trap("modSystem:GetSNPath", [&] { throw RuntimeError(5, description); });
    }
    static int Shown() { return os::fake::ShownDialogCount(kCaption); }

 private:
    ErrorReporter before_;
};

TEST_F(ErrorWindows, AReportReadsToTheLetter) {
    Fail();
    DialogUser user(kCaption);
    EXPECT_EQ(user.Window().Text("Label1"), "Wrenlow generated the folloing error");
    EXPECT_EQ(user.Window().Text("lblError"),
              "5: Invalid procedure call or argument\r\nat: modSystem:GetSNPath: 0");
}

TEST_F(ErrorWindows, TheLineMarkerTellsHowFarItGot) {
    Trap("a:b", [](std::int16_t& line) {
        line = -7;
        throw RuntimeError(-2147483647, "x");
    });
    EXPECT_EQ(DialogUser(kCaption).Window().Text("lblError"), "-2147483647: x\r\nat: a:b: -7");
}

TEST_F(ErrorWindows, TwoFailuresOpenTwoWindowsThatCloseByThemselves) {
    Fail("first");
    Fail("second");
    EXPECT_EQ(Shown(), 2);
    DialogUser(kCaption).Press("cmdOK");
    ASSERT_EQ(Shown(), 1);
    EXPECT_EQ(DialogUser(kCaption).Window().Text("lblError").substr(0, 8), "5: first");
    DialogUser(kCaption).PressEscape();
    EXPECT_EQ(modError::OpenWindowCount(), 0u);
}

TEST_F(ErrorWindows, AFloodOfFailuresOpensTwentyWindowsAndNoMoreUntilOneIsClosed) {
    for (std::size_t i = 0; i < modError::kMostWindows + 5; ++i) Fail();
    EXPECT_EQ(Shown(), 20);
    DialogUser(kCaption).Press("cmdOK");
    Fail("afterwards");
    EXPECT_EQ(Shown(), 20);
    EXPECT_EQ(DialogUser(kCaption).Window().Text("lblError").substr(0, 13), "5: afterwards");
}

}  // namespace
