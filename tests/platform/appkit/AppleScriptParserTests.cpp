#include "platform/appkit/AppleScriptParser.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

/// A script with this command.
NSString telling(const std::u16string& command) {
    return u"tell application \"Finder\"\n " + command + u"\n end tell";
}

FinderCommand commandIn(const NSString& script) {
    const auto parsed = parseAppleScript(script);
    if (const auto* error = std::get_if<AppleScriptError>(&parsed)) {
        ADD_FAILURE() << error->message.utf8();
        return {};
    }
    return std::get<FinderCommand>(parsed);
}

AppleScriptError errorIn(const NSString& script) {
    const auto parsed = parseAppleScript(script);
    const auto* error = std::get_if<AppleScriptError>(&parsed);
    EXPECT_NE(error, nullptr) << script.utf8();
    return error ? *error : AppleScriptError{};
}

std::vector<NSString> pathsOf(const FinderCommand& command) {
    std::vector<NSString> paths;
    for (const ScriptedPath& item : command.items)
        paths.push_back(item.finderPath);
    return paths;
}

using Paths = std::vector<NSString>;

TEST(AppleScriptParser, deletingTakesAList) {
    const FinderCommand command = commandIn(telling(u"delete {\"D:a\",\"D:folder:\"}"));
    EXPECT_EQ(command.verb, FinderVerb::deleteItems);
    EXPECT_EQ(pathsOf(command), (Paths{u"D:a", u"D:folder:"}));
    EXPECT_FALSE(command.destination);
}

TEST(AppleScriptParser, deletingTakesAFile) {
    const FinderCommand command = commandIn(telling(u"delete file \"D:a\""));
    EXPECT_EQ(command.verb, FinderVerb::deleteItems);
    EXPECT_EQ(pathsOf(command), Paths{u"D:a"});
}

TEST(AppleScriptParser, duplicatingNamesItsFolderAndWhetherToReplace) {
    const FinderCommand command = commandIn(telling(u"duplicate {\"D:a\"} to \"D:f:\" with replacing"));
    EXPECT_EQ(command.verb, FinderVerb::duplicateItems);
    EXPECT_EQ(pathsOf(command), Paths{u"D:a"});
    EXPECT_EQ(command.destination->finderPath, NSString(u"D:f:"));
    EXPECT_EQ(command.replacing, Replacing::yes);
}

TEST(AppleScriptParser, movingTakesAListOrAFile) {
    for (const char16_t* items : {u"{\"D:a\"}", u"file \"D:a\""}) {
        const FinderCommand command =
            commandIn(telling(std::u16string(u"move ") + items + u" to \"D:f:\" without replacing"));
        EXPECT_EQ(command.verb, FinderVerb::moveItems);
        EXPECT_EQ(pathsOf(command), Paths{u"D:a"});
        EXPECT_EQ(command.destination->finderPath, NSString(u"D:f:"));
        EXPECT_EQ(command.replacing, Replacing::no);
    }
}

TEST(AppleScriptParser, rangesAreThoseOfTheParts) {
    const NSString script = telling(u"move {\"D:a\",\"D:b\"} to \"D:f:\" with replacing");
    const FinderCommand command = commandIn(script);
    EXPECT_EQ(script.substring(command.range),
              NSString(u"move {\"D:a\",\"D:b\"} to \"D:f:\" with replacing"));
    EXPECT_EQ(script.substring(command.items[1].range), NSString(u"\"D:b\""));
    EXPECT_EQ(script.substring(command.destination->range), NSString(u"\"D:f:\""));
}

TEST(AppleScriptParser, quotesMayContainAnyCharacterExceptQuotesAndBackslashes) {
    const char16_t* names[] = {u"",
                               u"D:two words",
                               u"D:line\nend tell\ndelete file",
                               u"D:tab\t\r",
                               u"D:{a}, to 'b' -- (* & ; $(c) `d`",
                               u"D:\xdce9\xdcff", // bytes that are not UTF-8
                               u"D:\x65e5\x672c \xd83d\xde00"};
    for (const char16_t* name : names)
        EXPECT_EQ(pathsOf(commandIn(telling(std::u16string(u"delete {\"") + name + u"\"}"))), Paths{name})
            << NSString(name).utf8();
}

/// An invalid command, and the part of it that the error reports.
struct Misfit {
    const char16_t* command;
    const char16_t* reported;
};

TEST(AppleScriptParser, theErrorReportsTheFirstInvalidToken) {
    const Misfit misfits[] = {
        {u"", u"\n"},
        {u"erase {\"a\"}", u"erase"},
        {u"Delete {\"a\"}", u"Delete"},
        {u"delete \"a\"", u"\"a\""},
        {u"delete {}", u"}"},
        {u"delete {\"a\",}", u"}"},
        {u"delete {\"a\" \"b\"}", u"\"b\""},
        {u"delete {\"a\"", u"\n"},
        {u"delete {a}", u"a"},
        {u"delete {\"a\"} to \"f\" with replacing", u"to"},
        {u"delete file {\"a\"}", u"{"},
        {u"delete folder \"a\"", u"folder"},
        {u"delete {file \"a\"}", u"file"},
        {u"duplicate file \"a\" to \"f\" with replacing", u"file"},
        {u"duplicate {\"a\"}", u"\n"},
        {u"duplicate {\"a\"} to \"f\"", u"\n"},
        {u"duplicate {\"a\"} to \"f\" replacing", u"replacing"},
        {u"move {\"a\"} to \"f\" with", u"\n"},
        {u"move {\"a\"} to \"f\" with replacing now", u"now"},
        {u"move {\"a\"} into \"f\" with replacing", u"into"},
        {u"move {\"a\"} to {\"f\"} with replacing", u"{"},
        {u"delete {\"a\"}; delete {\"b\"}", u";"},
        {u"delete {\"a\"}\n delete {\"b\"}", u"delete"},
        {u"delete {\"a\"} -- why", u"-"},
        {u"do shell script \"x\"", u"do"},
    };
    for (const Misfit& row : misfits) {
        const NSString script = telling(row.command);
        const AppleScriptError error = errorIn(script);
        EXPECT_EQ(error.number, scriptSyntaxError);
        EXPECT_EQ(script.substring(error.range), NSString(row.reported)) << script.utf8();
    }
}

TEST(AppleScriptParser, aScriptHasExactlyThreeLines) {
    const char16_t* scripts[] = {
        u"",
        u"tell",
        u"tell application \"Finder\"",
        u"tell application \"Finder\" to delete {\"a\"}",
        u"tell application \"Mail\"\n delete {\"a\"}\n end tell",
        u"tell application Finder\n delete {\"a\"}\n end tell",
        u"\ntell application \"Finder\"\n delete {\"a\"}\n end tell",
        u"tell application \"Finder\"\n delete {\"a\"}",
        u"tell application \"Finder\"\n delete {\"a\"}\n end",
        u"tell application \"Finder\"\n delete {\"a\"}\n end tell\n",
        u"tell application \"Finder\"\n delete {\"a\"}\n end tell x",
        u"tell application \"Finder\"\r delete {\"a\"}\r end tell",
    };
    for (const char16_t* script : scripts)
        EXPECT_EQ(errorIn(script).number, scriptSyntaxError) << NSString(script).utf8();
}

TEST(AppleScriptParser, aBackslashInAStringIsRefused) {
    for (const char16_t* text : {u"a\\\"b", u"a\\\\", u"\\n", u"a\\"}) {
        const NSString script = telling(std::u16string(u"delete {\"") + text + u"\"}");
        const AppleScriptError error = errorIn(script);
        EXPECT_EQ(error.number, scriptSyntaxError);
        EXPECT_EQ(script[error.range.end() - 1], u'\\');
    }
}

TEST(AppleScriptParser, aStringWithoutClosingQuoteExtendsToTheEnd) {
    const NSString script = u"tell application \"Finder\"\n delete {\"a}\n end tell";
    const AppleScriptError error = errorIn(script);
    EXPECT_EQ(error.range.end(), script.length());
    EXPECT_EQ(error.message.utf8(),
              "Expected a string in double quotes but found a string without its closing quote.");
}

TEST(AppleScriptParser, anErrorNamesTheExpectedAndTheFoundToken) {
    EXPECT_EQ(errorIn(telling(u"delete {\"a\"")).message.utf8(),
              "Expected “}” but found the end of the line.");
    EXPECT_EQ(errorIn(telling(u"move {\"a\"} into")).message.utf8(), "Expected “to” but found “into”.");
    EXPECT_EQ(errorIn(u"tell").message.utf8(), "Expected “application” but found the end of the script.");
    const std::u16string word(1000, u'x');
    EXPECT_LT(errorIn(word).message.length(), 100u) << "a long word is shortened";
}

std::u16string listOf(std::size_t count) {
    std::u16string list = u"\"a\"";
    for (std::size_t i = 1; i < count; ++i)
        list += u",\"a\"";
    return u"{" + list + u"}";
}

TEST(AppleScriptParser, theNumberOfItemsIsLimited) {
    EXPECT_EQ(commandIn(telling(u"delete " + listOf(maxScriptItems))).items.size(), maxScriptItems);
    EXPECT_EQ(errorIn(telling(u"delete " + listOf(maxScriptItems + 1))).number, scriptTooLarge);
}

TEST(AppleScriptParser, theLengthOfAScriptIsLimited) {
    const NSString empty = telling(u"delete {\"\"}");
    const std::u16string name(longestScript - empty.length(), u'n');
    EXPECT_EQ(pathsOf(commandIn(telling(u"delete {\"" + name + u"\"}"))), Paths{name});
    EXPECT_EQ(errorIn(telling(u"delete {\"" + name + u"n\"}")).number, scriptTooLarge);
}

} // namespace
} // namespace kestrine
