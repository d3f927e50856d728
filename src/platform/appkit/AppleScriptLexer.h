// AppleScriptLexer: divides a script into words, strings and signs.
#pragma once

#include "platform/foundation/text/NSString.h"

namespace kestrine {

struct AppleScriptToken {
    enum class Kind {
        word,         ///< letters A to Z and a to z
        text,         ///< a string between double quotes, of any characters but backslashes
        sign,         ///< "{", "}" or ","
        lineEnd,      ///< a line feed outside quotes
        end,          ///< of the script
        openText,     ///< a string without its closing quote
        escapingText, ///< a string up to its first backslash; escapes are not supported
        unknown,      ///< any other character
    };

    Kind kind;
    NSRange range;    ///< in the script, quotes included
    NSString content; ///< without the quotes; empty for a string that cannot be read
};

class AppleScriptLexer {
public:
    explicit AppleScriptLexer(const NSString& source) : source_(source) {}

    /// The next token; at the end of the script always `end`. Blanks and tabs separate tokens.
    AppleScriptToken next();

private:
    AppleScriptToken quotedText();
    AppleScriptToken taken(AppleScriptToken::Kind kind, std::size_t length);

    const NSString source_;
    std::size_t position_ = 0;
};

} // namespace kestrine
