// The texts of the scripts that the Finder is asked with. They only form texts and run nothing.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <optional>
#include <vector>

namespace kestrine {

/// A script and the Finder paths that were put into it, in order.
struct FinderScript {
    NSString source;
    std::vector<NSString> finderPaths;
};

/// The paths in double quotes with commas between them.
NSString quotedList(const std::vector<NSString>& finderPaths);

FinderScript deletingScript(const std::vector<NSString>& items);
FinderScript fileDeletingScript(const NSString& item);
FinderScript duplicatingScript(const std::vector<NSString>& items, const NSString& folder, bool replaces);
FinderScript movingScript(const std::vector<NSString>& items, const NSString& folder, bool replaces);
FinderScript fileMovingScript(const NSString& item, const NSString& folder, bool replaces);

/// Where in the source the first path stands that has a double quote or a backslash in it. Such a script
/// may say something else than it was formed for and must not be run.
std::optional<NSRange> rangeOfMisleadingPath(const FinderScript& script);

} // namespace kestrine
