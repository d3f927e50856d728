// NSFileManager: what the program asks of the file system itself.
#pragma once

#include "platform/foundation/NSString.h"

namespace kestrine {

class NSFileManager {
public:
    /// `defaultManager`.
    static NSFileManager& defaultManager();

    /// `fileExistsAtPath:`: whether there is anything, following links.
    bool fileExistsAtPath(const NSString& path) const;
    /// `createDirectoryAtPath:attributes:` without attributes: makes one folder level and tells whether it
    /// did.
    bool createDirectoryAtPath(const NSString& path) const;
};

} // namespace kestrine
