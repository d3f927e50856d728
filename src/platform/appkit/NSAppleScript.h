// NSAppleScript: a script, of the one kind that AppleScriptParser.h shows, and its run.
#pragma once

#include "platform/appkit/AppleScriptError.h"

namespace kestrine {

class NSAppleScript {
public:
    /// `initWithSource:`. Any text is taken; what is wrong with it shows when it is run.
    static NSAppleScript initWithSource(const NSString& source) { return NSAppleScript(source); }

    /// `executeAndReturnError:`: blocks until the Finder has done what the script says and tells whether it
    /// did. `errorInfo` is set only when it did not. A script with any error in it does nothing; what the
    /// Finder did before it failed stays done.
    bool executeAndReturnError(ScriptErrorInformation& errorInfo) const;

private:
    explicit NSAppleScript(const NSString& source) : source_(source) {}

    NSString source_;
};

} // namespace kestrine
