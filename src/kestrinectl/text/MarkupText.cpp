#include "kestrinectl/text/MarkupText.h"

#include "kestrinectl/text/Replacement.h"

namespace kestrine {

namespace {

/// The number of the apostrophe, because HTML 4 has no name for it.
constexpr Replacement inMarkup[] = {
    {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&#39;"}};

} // namespace

std::string markupText(std::string_view text) { return replaced(text, inMarkup); }

} // namespace kestrine
