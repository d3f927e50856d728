// Finder paths: names separated by colons, a volume's name first, a colon last for a folder.
#pragma once

#include "platform/foundation/text/NSString.h"
#include "platform/host/Result.h"

#include <string>

namespace kestrine {

/// The Finder path of an existing item, without the colon that marks a folder. A link is an item itself;
/// links above it are resolved.
Result<NSString> finderPathOf(const std::string& path);

/// The path of the item that a Finder path names; a colon at its end is allowed. notFound when no volume
/// has the first name or nothing is there; malformed for an empty text or an empty name inside it.
Result<std::string> pathOfFinderPath(const NSString& finderPath);

} // namespace kestrine
