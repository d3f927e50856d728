#include "kestrinectl/text/HTMLText.h"

#include "kestrinectl/text/MarkupText.h"
#include "kestrinectl/text/ShownText.h"

namespace kestrine {

std::string htmlText(std::string_view bytes) { return markupText(shownText(bytes, true)); }

} // namespace kestrine
