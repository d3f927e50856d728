#include "platform/appkit/AppleScriptParser.h"

#include "platform/appkit/AppleScriptLexer.h"

#include <algorithm>

namespace kestrine {

namespace {

using Token = AppleScriptToken;

struct VerbRow {
    const char16_t* word;
    FinderVerb verb;
    bool takesFile; ///< `file "..."` may replace the list
    bool hasDestination;
};
constexpr VerbRow verbRows[] = {
    {u"delete", FinderVerb::deleteItems, true, false},
    {u"duplicate", FinderVerb::duplicateItems, false, true},
    {u"move", FinderVerb::moveItems, true, true},
};

NSString quoted(const NSString& text) {
    constexpr std::size_t longestShown = 40;
    const bool isLong = text.length() > longestShown;
    return NSString(u"“") + (isLong ? text.substring({0, longestShown}) + u"…" : text) + u"”";
}

NSString description(const Token& token) {
    switch (token.kind) {
    case Token::Kind::word:
    case Token::Kind::sign:
        return quoted(token.content);
    case Token::Kind::text:
        return u"a string";
    case Token::Kind::lineEnd:
        return u"the end of the line";
    case Token::Kind::end:
        return u"the end of the script";
    case Token::Kind::openText:
        return u"a string without its closing quote";
    case Token::Kind::escapingText:
        return u"a string with a backslash in it";
    case Token::Kind::unknown:
        break;
    }
    return u"an unknown character";
}

/// Every take...() reads the construct in its name. For an invalid token it returns false and sets error_;
/// then nothing more is read.
class Parser {
public:
    explicit Parser(const NSString& source) : lexer_(source), token_(lexer_.next()) {}

    bool takeScript() {
        return takeWord(u"tell") && takeWord(u"application") && takeFinder() && takeKind(Token::Kind::lineEnd)
               && takeCommand() && takeKind(Token::Kind::lineEnd) && takeWord(u"end") && takeWord(u"tell")
               && takeKind(Token::Kind::end);
    }
    const FinderCommand& command() const { return command_; }
    const AppleScriptError& error() const { return error_; }

private:
    bool takeCommand();
    bool takeItems(const VerbRow& row);
    bool takeDestination();
    bool takeReplacing();
    bool takeListedPath();
    bool takePath(ScriptedPath& path);
    bool takeFinder();
    bool takeWord(const char16_t* word);
    bool takeSign(const char16_t* sign);
    bool takeKind(Token::Kind kind);

    bool is(Token::Kind kind, const char16_t* content) const {
        return token_.kind == kind && token_.content == content;
    }
    void step() {
        end_ = token_.range.end();
        token_ = lexer_.next();
    }
    bool expected(const NSString& what);

    AppleScriptLexer lexer_;
    Token token_;
    std::size_t end_ = 0; ///< of the previous token
    FinderCommand command_;
    AppleScriptError error_{};
};

bool Parser::takeCommand() {
    const std::size_t start = token_.range.location;
    const auto* row = std::ranges::find_if(
        verbRows, [&](const VerbRow& candidate) { return is(Token::Kind::word, candidate.word); });
    if (row == std::end(verbRows))
        return expected(u"“delete”, “duplicate” or “move”");
    step();
    command_.verb = row->verb;
    if (!takeItems(*row) || (row->hasDestination && !takeDestination()))
        return false;
    command_.range = {start, end_ - start};
    return true;
}

bool Parser::takeItems(const VerbRow& row) {
    if (row.takesFile && is(Token::Kind::word, u"file")) {
        step();
        return takePath(command_.items.emplace_back());
    }
    if (!takeSign(u"{") || !takeListedPath())
        return false;
    while (is(Token::Kind::sign, u",")) {
        step();
        if (!takeListedPath())
            return false;
    }
    return takeSign(u"}");
}

bool Parser::takeListedPath() {
    if (command_.items.size() == maxScriptItems) {
        error_ = {scriptTooLarge, u"The script names too many items.", token_.range};
        return false;
    }
    return takePath(command_.items.emplace_back());
}

bool Parser::takeDestination() {
    return takeWord(u"to") && takePath(command_.destination.emplace()) && takeReplacing();
}

bool Parser::takeReplacing() {
    const bool isWith = is(Token::Kind::word, u"with");
    if (!isWith && !is(Token::Kind::word, u"without"))
        return expected(u"“with” or “without”");
    step();
    command_.replacing = isWith ? Replacing::yes : Replacing::no;
    return takeWord(u"replacing");
}

bool Parser::takePath(ScriptedPath& path) {
    if (token_.kind != Token::Kind::text)
        return expected(u"a string in double quotes");
    path = {token_.content, token_.range};
    step();
    return true;
}

bool Parser::takeFinder() {
    if (!is(Token::Kind::text, u"Finder"))
        return expected(u"\"Finder\"");
    step();
    return true;
}

bool Parser::takeWord(const char16_t* word) {
    if (!is(Token::Kind::word, word))
        return expected(quoted(word));
    step();
    return true;
}

bool Parser::takeSign(const char16_t* sign) {
    if (!is(Token::Kind::sign, sign))
        return expected(quoted(sign));
    step();
    return true;
}

bool Parser::takeKind(Token::Kind kind) {
    if (token_.kind != kind)
        return expected(description({kind, {}, {}}));
    step();
    return true;
}

bool Parser::expected(const NSString& what) {
    error_ = {scriptSyntaxError, NSString(u"Expected ") + what + u" but found " + description(token_) + u".",
              token_.range};
    return false;
}

} // namespace

std::variant<FinderCommand, AppleScriptError> parseAppleScript(const NSString& source) {
    if (source.length() > longestScript)
        return AppleScriptError{scriptTooLarge, u"The script is too long.", {0, source.length()}};
    Parser parser(source);
    if (!parser.takeScript())
        return parser.error();
    return parser.command();
}

} // namespace kestrine
