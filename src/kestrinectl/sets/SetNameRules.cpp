#include "kestrinectl/sets/SetNameRules.h"

#include "kestrinectl/text/Messages.h"
#include "platform/foundation/text/Decomposition.h"
#include "platform/foundation/text/FormatText.h"

#include <algorithm>
#include <charconv>

namespace kestrine {

namespace {

/// NAME_MAX of Linux.
constexpr std::size_t longestFolderName = 255;

bool looksLikePosition(const std::string& name) {
    return name.size() > 1 && name.front() == '@'
           && std::all_of(name.begin() + 1, name.end(), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

std::optional<std::size_t> positionIn(const std::string& word) {
    if (!looksLikePosition(word))
        return std::nullopt;
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(word.data() + 1, word.data() + word.size(), number);
    return error == std::errc() && number >= 1 ? std::optional(number) : std::nullopt;
}

std::optional<std::string> objectionTo(const std::string& name) {
    if (name.empty())
        return "an empty name stands for the folder of the original";
    if (name.find_first_not_of(' ') == std::string::npos)
        return "a name of spaces alone cannot be seen";
    if (name == ".")
        return "the name \".\" stands for the folder of the original";
    if (name == "..")
        return "the name \"..\" stands for the folder above that of the original";
    if (name.find('/') != std::string::npos)
        return "the name " + quoted(name) + " contains \"/\", which separates folders";
    if (name.find('\0') != std::string::npos)
        return "the name contains a zero byte, which no folder name can hold";
    if (name.size() > longestFolderName)
        return "the name is longer than " + std::to_string(longestFolderName)
               + " bytes, the limit for folder names";
    if (looksLikePosition(name))
        return "the name " + quoted(name) + " looks like the position of a set";
    return std::nullopt;
}

std::vector<std::string> nameFindings(const ResizeSets& sets, std::size_t position) {
    const NSString own = sets[position]->name().value_or(u"");
    std::vector<std::string> clauses = oddities(own.utf8());
    if (const auto objection = objectionTo(own.utf8()))
        clauses.insert(clauses.begin(), *objection);
    const auto firstWhere = [&](const auto& suits) {
        const auto found =
            std::ranges::find_if(sets, [&](const auto& other) { return suits(other->name().value_or(u"")); });
        return static_cast<std::size_t>(found - sets.begin());
    };
    const auto isEqual = [&](const NSString& other) { return other == own; };
    const auto looksEqual = [&](const NSString& other) {
        return other != own && areCanonicallyEquivalent(other.utf16(), own.utf16());
    };
    if (const std::size_t first = firstWhere(isEqual); first != position)
        clauses.push_back("@" + std::to_string(first + 1)
                          + " has the same name, and 'kestrine -set' applies that one; rename this one with "
                            "'kestrinectl sets edit --name'");
    if (const std::size_t twin = firstWhere(looksEqual); twin < sets.size())
        clauses.push_back("the name of @" + std::to_string(twin + 1)
                          + " looks the same, but its letters are composed differently");
    return clauses;
}

std::vector<std::string> oddities(const std::string& name) {
    std::vector<std::string> clauses;
    if (const std::string listed = expandedFormatText(name); listed != name)
        clauses.push_back("'kestrine -l' lists " + quoted(name) + " as " + quoted(listed)
                          + ", since it expands format codes; 'kestrine -set' takes the real name");
    if (name.find('\n') != std::string::npos)
        clauses.emplace_back("'kestrine -l' lists the name on several lines");
    if (name == "-l")
        clauses.emplace_back("'kestrine -set -l' lists all sets, since -l is an option of kestrine");
    if (name.starts_with('.') && !objectionTo(name))
        clauses.push_back("results go into a hidden folder, since " + quoted(name) + " begins with a dot");
    return clauses;
}

} // namespace kestrine
