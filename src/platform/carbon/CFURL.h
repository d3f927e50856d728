// File URLs: only what converts one form of a path to another.
#pragma once

#include "platform/carbon/Files.h"

namespace kestrine {

/// A file URL. Whether it is a folder is set by its creator, not checked.
class CFURL {
public:
    CFURL(std::string path, bool isDirectory) : path_(std::move(path)), isDirectory_(isDirectory) {}

    /// A byte string; relative to the current folder unless it begins with a slash.
    const std::string& path() const { return path_; }
    bool isDirectory() const { return isDirectory_; }

private:
    const std::string path_;
    const bool isDirectory_;
};

/// Null is nil.
using CFURLRef = std::shared_ptr<const CFURL>;

enum CFURLPathStyle {
    kCFURLPOSIXPathStyle = 0,
    kCFURLHFSPathStyle = 1, ///< names separated by colons, the volume's first
};

/// Null when the path is nil, empty or cannot be encoded, or when nothing is at an HFS path. Nothing needs to
/// exist at a POSIX path.
CFURLRef CFURLCreateWithFileSystemPath(const OptionalString& path, CFURLPathStyle style, bool isDirectory);

/// Null for a null or empty reference, and when the item no longer exists.
CFURLRef CFURLCreateFromFSRef(const FSRef* reference);

/// Sets `reference` to the item; false when there is none.
bool CFURLGetFSRef(const CFURLRef& url, FSRef* reference);

/// False for null.
bool CFURLHasDirectoryPath(const CFURLRef& url);

/// The path without the separator at a folder's end; in HFS style nil when nothing is there.
OptionalString CFURLCopyFileSystemPath(const CFURLRef& url, CFURLPathStyle style);

} // namespace kestrine
