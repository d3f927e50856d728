#include "kestrinectl/text/MarkupText.h"

#include "kestrinectl/text/Replacement.h"

namespace kestrine {

namespace {

/// HTML and XML have no common name for the apostrophe.
constexpr Replacement inMarkup[] = {
    {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&#39;"}};

} // namespace

std::string markupText(std::string_view text) { return replaced(text, inMarkup); }

} // namespace kestrine
