// The tag stripper on whatever a stranger writes.
#include <cstdint>

#include "features/modLogging.h"
#include "tests/fuzz/Check.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string html(bytes, bytes + size);
    const auto text = modLogging::StripHtml(html);
    Check(text.size() <= html.size(), "stripping adds nothing");
    if (html.find('<') == std::string::npos) Check(text == html, "without tags nothing changes");
    return 0;
}
