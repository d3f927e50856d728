#include "platform/appkit/NSAppleScript.h"

#include "platform/appkit/AppleScriptParser.h"
#include "platform/finder/FinderPath.h"

namespace kestrine {

namespace {

using Error = std::optional<AppleScriptError>;

/// Stores the POSIX path of the item in `path`.
Error findItem(const ScriptedPath& item, std::string& path) {
    Result<std::string> found = pathOfFinderPath(item.finderPath);
    if (!found)
        return AppleScriptError{cannotGetObject, NSString(u"Can’t get “") + item.finderPath + u"”.",
                                item.range, true};
    path = *std::move(found);
    return std::nullopt;
}

FinderOutcome perform(const FinderCommand& command, const std::vector<std::string>& items,
                      const std::string& destination) {
    switch (command.verb) {
    case FinderVerb::deleteItems:
        return finderDelete(items);
    case FinderVerb::duplicateItems:
        return finderDuplicate(items, destination, command.replacing);
    case FinderVerb::moveItems:
        break;
    }
    return finderMove(items, destination, command.replacing);
}

Error run(const FinderCommand& command) {
    std::vector<std::string> items(command.items.size());
    for (std::size_t i = 0; i < items.size(); ++i)
        if (Error error = findItem(command.items[i], items[i]))
            return error;
    std::string destination;
    if (command.destination)
        if (Error error = findItem(*command.destination, destination))
            return error;
    if (FinderOutcome failed = perform(command, items, destination))
        return AppleScriptError{failed->number, failed->message + u".", command.range, true};
    return std::nullopt;
}

Error runScript(const NSString& source) {
    const std::variant<FinderCommand, AppleScriptError> script = parseAppleScript(source);
    if (const AppleScriptError* error = std::get_if<AppleScriptError>(&script))
        return *error;
    return run(std::get<FinderCommand>(script));
}

} // namespace

bool NSAppleScript::executeAndReturnError(ScriptErrorInformation& errorInfo) const {
    const Error error = runScript(source_);
    if (error)
        errorInfo = errorInformation(*error);
    return !error;
}

} // namespace kestrine
