#include "features/SafeHtml.h"

#include <gtest/gtest.h>

TEST(SafeHtml, KeepsWhatFormatsAndShowsTheRestAsText) {
    const std::string formatted =
        "<HTML><BODY BGCOLOR=\"#ffffff\"><FONT FACE='Arial' SIZE=2 "
        "COLOR=red>hi<BR>there</FONT></BODY></HTML>";
    const struct {
        std::string_view html, safe;
    } cases[] = {
        {"", ""},
        {formatted, formatted},
        {"1 < 2 & 3 > 2 &lt;b&gt; &#128512;", "1 &lt; 2 & 3 > 2 &lt;b&gt; &#128512;"},
        {"<script>alert(1)</script>", "&lt;script>alert(1)&lt;/script>"},
        {"<ScRiPt src=//x>", "&lt;ScRiPt src=//x>"},
        {"<img src=x onerror=alert(1)>", "&lt;img src=x onerror=alert(1)>"},
        {"<b onclick=\"x()\">a</b>", "<b>a</b>"},
        {"<font color=\"expression(x)\" SIZE=2>a</font>", "<font size=\"2\">a</font>"},
        {"<font face=\"a;background:url(x)\">a</font>", "<font>a</font>"},
        {"<a href=\"javascript:alert(1)\">a</a>", "<a>a</a>"},
        {"<a href=\" http://x\">a</a>", "<a>a</a>"},
        {"<a href=\"HTTPS://x/?a=1&b=2\">a</a>", "<a href=\"HTTPS://x/?a=1&b=2\">a</a>"},
        {"<a href='http://x/' target=y>a</a>", "<a href=\"http://x/\">a</a>"},
        {"<a href='http://x\"onclick=y'>a</a>", "<a>a</a>"},
        {"<a\thref = http://x>a</a >", "<a\thref = http://x>a</a >"},
        {"<br/><br /><hr>", "<br/><br /><hr>"},
        {"<b/onclick=x>a</b>", "&lt;b/onclick=x>a"},  // its end has lost its beginning
        {"<b", "&lt;b"},
        {"<b <i>a</i>", "&lt;b <i>a</i>"},
        {"<font color=\"a>b\">", "&lt;font color=\"a>b\">"},
        {"<!--<b>-->", "&lt;!--<b>--></b>"},
        {"<a href=http://x><b>open", "<a href=http://x><b>open</b></a>"},
        {"</b>stray</br>", "stray"},
        {"<plaintext>", "&lt;plaintext>"},
        {"<base href=http://x>", "&lt;base href=http://x>"},
        {"<font\x0bstyle=x>a", "&lt;font\x0bstyle=x>a"},
    };
    for (const auto& [html, safe] : cases) EXPECT_EQ(SafeHtml(html), safe) << html;
}
