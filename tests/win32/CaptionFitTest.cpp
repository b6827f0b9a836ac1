// Whether every caption fits where its table puts it, at each resolution; the eye does not check that again
// whenever a text changes.
#include <windows.h>

#include <gtest/gtest.h>

#include "desktop/frmWrenlow.h"
#include "os/desktop/DialogRows.h"
#include "tests/unit/AllDialogs.h"

namespace {

using Kind = os::ControlKind;

// The dialogs' font at a resolution, and the pixels that dialog units are then.
class Measure {
 public:
    explicit Measure(int dpi)
        : context_(GetDC(nullptr)),
          font_(CreateFontA(-MulDiv(8, dpi, 72), 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET, 0,
                            0, 0, 0, "MS Shell Dlg 2")),
          oneMark_(MulDiv(16, dpi, 96)) {
        before_ = SelectObject(context_, font_);
        constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
        SIZE size;
        GetTextExtentPoint32A(context_, kLetters, 52, &size);
        baseWidth_ = (size.cx / 26 + 1) / 2;
        baseHeight_ = size.cy;
    }
    ~Measure() {
        SelectObject(context_, before_);
        DeleteObject(font_);
        ReleaseDC(nullptr, context_);
    }
    Measure(const Measure&) = delete;
    Measure& operator=(const Measure&) = delete;

    bool Fits(const os::Control& control, const std::string& text) const {
        const bool marked = control.kind == Kind::CheckBox || control.kind == Kind::OptionButton;
        const int width = MulDiv(control.rect.width, baseWidth_, 4) - (marked ? oneMark_ : 0);
        const int height = MulDiv(control.rect.height, baseHeight_, 8);
        RECT needed{0, 0, width, 0};
        DrawTextA(context_, text.c_str(), -1, &needed, DT_CALCRECT | DT_NOPREFIX | DT_WORDBREAK);
        // The inside of a button keeps some distance from its edge.
        const int edge = control.kind == Kind::Label || marked ? 0 : MulDiv(6, baseWidth_, 4);
        return needed.right + edge <= width && needed.bottom <= height;
    }

    // All tabs beside each other, each with its padding.
    bool TabsFit(const os::Control& tabs) const {
        LONG width = 0;
        os::ForEachPage(tabs, [&](std::string_view caption) {
            SIZE size;
            GetTextExtentPoint32A(context_, caption.data(), static_cast<int>(caption.size()), &size);
            width += size.cx + 2 * oneMark_;
        });
        return width <= MulDiv(tabs.rect.width, baseWidth_, 4);
    }

 private:
    HDC context_;
    HFONT font_;
    HGDIOBJ before_;
    int oneMark_;
    int baseWidth_;
    int baseHeight_;
};

bool HasCaption(Kind kind) {
    return kind == Kind::Label || kind == Kind::Button || kind == Kind::DefaultButton ||
           kind == Kind::CancelButton || kind == Kind::CheckBox || kind == Kind::OptionButton ||
           kind == Kind::GroupFrame;
}

struct CaptionFit : AllDialogs, testing::WithParamInterface<int> {};

}  // namespace

TEST_P(CaptionFit, NoCaptionIsCutOff) {
    const Measure measure(GetParam());
    const auto check = [&](const os::Dialog& dialog) {
        const auto& table = dialog.Table();
        for (const auto& control : table.controls) {
            const bool tabsFit = control.kind != Kind::TabStrip || measure.TabsFit(control);
            EXPECT_TRUE(tabsFit) << table.caption;
            if (!HasCaption(control.kind)) continue;
            const auto text = dialog.Text({std::string_view(control.name), control.index});
            EXPECT_TRUE(measure.Fits(control, text)) << table.caption << ": " << text;
        }
    };
    for (const char* caption : kCaptions) check(os::fake::ShownDialog(caption));
    check(SharedForm<frmWrenlow>().Window());
}

INSTANTIATE_TEST_SUITE_P(Resolutions, CaptionFit, testing::Values(96, 120, 144, 192),
                         [](const auto& dpi) { return std::to_string(dpi.param); });
