#include "kestrinectl/text/HTMLText.h"

#include "kestrinectl/text/ShownText.h"

namespace kestrine {

std::string htmlText(std::string_view bytes) {
    std::string html;
    for (const char character : shownText(bytes, true))
        switch (character) {
        case '&':
            html += "&amp;";
            break;
        case '<':
            html += "&lt;";
            break;
        case '>':
            html += "&gt;";
            break;
        case '"':
            html += "&quot;";
            break;
        case '\'':
            html += "&#39;";
            break;
        default:
            html += character;
        }
    return html;
}

} // namespace kestrine
