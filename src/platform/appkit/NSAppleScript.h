// NSAppleScript: runs a script of the kind that AppleScriptParser.h shows.
#pragma once

#include "platform/appkit/AppleScriptError.h"

namespace kestrine {

class NSAppleScript {
public:
    /// `initWithSource:`. Accepts any string; errors in it are reported when it is run.
    static NSAppleScript initWithSource(const NSString& source) { return NSAppleScript(source); }

    /// `executeAndReturnError:`: blocks until the Finder has run the script and returns whether it succeeded.
    /// `errorInfo` is set only on failure. A script with a syntax error does nothing; what the Finder did
    /// before a failure is not undone.
    bool executeAndReturnError(ScriptErrorInformation& errorInfo) const;

private:
    explicit NSAppleScript(const NSString& source) : source_(source) {}

    NSString source_;
};

} // namespace kestrine
