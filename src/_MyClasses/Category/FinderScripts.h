// Forms the source of the scripts for the Finder; does not run them.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <optional>
#include <vector>

namespace kestrine {

/// A script and the Finder paths in it, in order.
struct FinderScript {
    NSString source;
    std::vector<NSString> finderPaths;
};

/// The paths in double quotes, separated by commas.
NSString quotedList(const std::vector<NSString>& finderPaths);

FinderScript deletingScript(const std::vector<NSString>& items);
FinderScript fileDeletingScript(const NSString& item);
FinderScript duplicatingScript(const std::vector<NSString>& items, const NSString& folder, bool replaces);
FinderScript movingScript(const std::vector<NSString>& items, const NSString& folder, bool replaces);
FinderScript fileMovingScript(const NSString& item, const NSString& folder, bool replaces);

/// The range of the first path with a double quote or a backslash. Such a script must not be run: the
/// character could change its meaning.
std::optional<NSRange> rangeOfMisleadingPath(const FinderScript& script);

} // namespace kestrine
