// File URLs, as far as they turn one form of a path into another.
#pragma once

#include "platform/carbon/Files.h"

namespace kestrine {

/// A file URL; whether it names a folder is what its maker said.
class CFURL {
public:
    CFURL(std::string path, bool isDirectory) : path_(std::move(path)), isDirectory_(isDirectory) {}

    /// Bytes; relative to the current folder unless it begins with a slash.
    const std::string& path() const { return path_; }
    bool isDirectory() const { return isDirectory_; }

private:
    const std::string path_;
    const bool isDirectory_;
};

/// Null is no URL. Released with its last user.
using CFURLRef = std::shared_ptr<const CFURL>;

enum CFURLPathStyle {
    kCFURLPOSIXPathStyle = 0,
    kCFURLHFSPathStyle = 1, ///< names separated by colons, the volume's first
};

/// Null when the path is nil, empty or cannot be encoded. Nothing need exist there, except that an HFS path
/// must lead to an item.
CFURLRef CFURLCreateWithFileSystemPath(const OptionalString& path, CFURLPathStyle style, bool isDirectory);

/// Null for a null or empty reference, and when its item is gone.
CFURLRef CFURLCreateFromFSRef(const FSRef* reference);

/// Whether there is an item that `reference` now refers to.
bool CFURLGetFSRef(const CFURLRef& url, FSRef* reference);

/// False for null.
bool CFURLHasDirectoryPath(const CFURLRef& url);

/// Without the separator that marks a folder; in HFS style nil when nothing is there.
OptionalString CFURLCopyFileSystemPath(const CFURLRef& url, CFURLPathStyle style);

} // namespace kestrine
