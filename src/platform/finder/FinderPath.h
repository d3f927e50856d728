// Finder paths: names separated by colons. The first is the volume's name; a folder's path ends with a colon.
#pragma once

#include "platform/foundation/text/NSString.h"
#include "platform/host/Result.h"

#include <string>

namespace kestrine {

/// The Finder path of an existing item, without the colon at a folder's end. A link at the end of `path` is
/// not followed; links before it are resolved.
Result<NSString> finderPathOf(const std::string& path);

/// The path of an item by its Finder path, which may end with a colon. notFound when there is no such volume
/// or item; malformed when the string or a name in it is empty.
Result<std::string> pathOfFinderPath(const NSString& finderPath);

} // namespace kestrine
