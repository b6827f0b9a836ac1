// What SafeHtml lets through, judged by a parser of HTML that browsers agree with: only harmless elements and
// attributes, and nothing of a message reaches into the next one.
#include <gumbo.h>
#include <strings.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "features/SafeHtml.h"
#include "tests/fuzz/Check.h"

namespace {

bool IsHarmless(const GumboAttribute& attribute) {
    constexpr const char* kNames[] = {"bgcolor", "text", "link",   "vlink", "alink",
                                      "color",   "back", "ptsize", "size",  "face"};
    for (const char* name : kNames) {
        if (std::strcmp(attribute.name, name) == 0) return true;
    }
    const bool isWeb =
        strncasecmp(attribute.value, "http://", 7) == 0 || strncasecmp(attribute.value, "https://", 8) == 0;
    return std::strcmp(attribute.name, "href") == 0 && isWeb;
}

void CheckNode(const GumboNode& node) {
    Check(node.type != GUMBO_NODE_COMMENT && node.type != GUMBO_NODE_TEMPLATE, "no comment, no template");
    if (node.type != GUMBO_NODE_ELEMENT) return;
    const auto& element = node.v.element;
    constexpr GumboTag kTags[] = {GUMBO_TAG_HTML, GUMBO_TAG_HEAD, GUMBO_TAG_BODY, GUMBO_TAG_FONT,
                                  GUMBO_TAG_B,    GUMBO_TAG_I,    GUMBO_TAG_U,    GUMBO_TAG_S,
                                  GUMBO_TAG_A,    GUMBO_TAG_BR,   GUMBO_TAG_HR};
    Check(std::ranges::find(kTags, element.tag) != std::end(kTags), "only the tags of the list");
    for (unsigned i = 0; i < element.attributes.length; ++i) {
        Check(IsHarmless(*static_cast<const GumboAttribute*>(element.attributes.data[i])),
              "only harmless attributes");
    }
    for (unsigned i = 0; i < element.children.length; ++i) {
        CheckNode(*static_cast<const GumboNode*>(element.children.data[i]));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string html(bytes, bytes + size);
    const auto safe = SafeHtml(html);
    Check(safe.size() <= html.size() * 4, "the length promised");
    Check(SafeHtml(safe) == safe, "what is safe stays as it is");
    const auto page = safe + "<br>";
    auto* const tree = gumbo_parse_with_options(&kGumboDefaultOptions, page.data(), page.size());
    CheckNode(*tree->root);
    gumbo_destroy_output(&kGumboDefaultOptions, tree);
    return 0;
}
