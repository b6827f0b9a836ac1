// SafeHtml: what a stranger wrote, made fit for a file that a browser opens. AIM clients format messages with
// a handful of HTML tags; those stay as they were written. Everything else stays too, as text that can be
// read: nothing in the result runs, loads or leads anywhere but to a web page that the reader chooses to
// visit.
#pragma once

#include <string>
#include <string_view>

// The tags that stay are html, body, font, b, i, u, s, a, br and hr. Of their attributes stay: colours and
// face and size of a font, the colours of a body, and of a link an address that begins with http:// or
// https://; a tag with others stays without them. Any other "<" becomes "&lt;". Tags that are left open are
// closed at the end and closing tags without a beginning are left out, so that no message shows in the next
// one. Bytes other than "<" are never changed. The result is at most four times as long as the message.
std::string SafeHtml(std::string_view html);

// Plain text as HTML that shows the same; line breaks ("\n") become tags.
std::string HtmlText(std::string_view text);
