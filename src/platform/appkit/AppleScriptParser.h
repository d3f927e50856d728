// AppleScriptParser: reads the one supported kind of script, which tells the Finder to delete, duplicate or
// move items.
//
//     tell application "Finder"
//      delete {"Disk:a", "Disk:folder:"}                                also: delete file "Disk:a"
//      duplicate {"Disk:a"} to "Disk:folder:" with replacing            or: without replacing
//      move {"Disk:a"} to "Disk:folder:" without replacing              also: move file "Disk:a" to ...
//     end tell
//
// A script has one of the inner lines. The parser is deliberately strict: anything not exactly of this form
// is an error, and the script does nothing.
#pragma once

#include "platform/appkit/AppleScriptError.h"
#include "platform/finder/Finder.h"

#include <variant>

namespace kestrine {

inline constexpr std::size_t longestScript = 1u << 24; ///< UTF-16 code units
inline constexpr std::size_t maxScriptItems = 100'000;

enum class FinderVerb { deleteItems, duplicateItems, moveItems };

/// A Finder path and its range in the script, quotes included.
struct ScriptedPath {
    NSString finderPath;
    NSRange range;
};

/// The operation in a script.
struct FinderCommand {
    FinderVerb verb = FinderVerb::deleteItems;
    std::vector<ScriptedPath> items;
    std::optional<ScriptedPath> destination; ///< absent exactly for deleteItems
    Replacing replacing = Replacing::no;
    NSRange range; ///< of the whole command
};

/// The command in a script. Errors are scriptSyntaxError, at the first invalid token, and
/// scriptTooLarge beyond the limits above.
std::variant<FinderCommand, AppleScriptError> parseAppleScript(const NSString& source);

} // namespace kestrine
