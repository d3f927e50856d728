// The words, texts and signs of a script, one after the other.
#pragma once

#include "platform/foundation/text/NSString.h"

namespace kestrine {

struct AppleScriptToken {
    enum class Kind {
        word,         ///< letters A to Z and a to z
        text,         ///< what stands between two double quotes, as it is: any character but a backslash
        sign,         ///< "{", "}" or ","
        lineEnd,      ///< a line feed outside quotes
        end,          ///< of the script
        openText,     ///< a text whose closing quote is missing
        escapingText, ///< a text up to its first backslash: what that would mean is not read
        unknown,      ///< any other character
    };

    Kind kind;
    NSRange range;    ///< in the script, quotes included
    NSString content; ///< without the quotes; empty for a text that cannot be read
};

class AppleScriptLexer {
public:
    explicit AppleScriptLexer(const NSString& source) : source_(source) {}

    /// The next token; from the end on always `end`. Blanks and tabs only separate.
    AppleScriptToken next();

private:
    AppleScriptToken quotedText();
    AppleScriptToken taken(AppleScriptToken::Kind kind, std::size_t length);

    const NSString source_;
    std::size_t position_ = 0;
};

} // namespace kestrine
