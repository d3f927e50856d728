#include "platform/appkit/AppleScriptError.h"

#include "platform/foundation/NSNumber.h"
#include "platform/foundation/NSValue.h"

namespace kestrine {

ScriptErrorInformation errorInformation(const AppleScriptError& error) {
    const NSString message =
        error.isFinders ? NSString(u"Finder got an error: ") + error.message : error.message;
    std::map<NSString, Object> entries{
        {NSAppleScriptErrorNumber, std::make_shared<NSNumber>(error.number)},
        {NSAppleScriptErrorMessage, message.object()},
        {NSAppleScriptErrorBriefMessage, error.message.object()},
        {NSAppleScriptErrorRange, std::make_shared<NSValue>(error.range)},
    };
    if (error.isFinders)
        entries.emplace(NSAppleScriptErrorAppName, NSString(u"Finder").object());
    return std::make_shared<const NSDictionary>(std::move(entries));
}

} // namespace kestrine
