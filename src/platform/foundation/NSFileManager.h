// NSFileManager: queries and changes of the file system.
#pragma once

#include "platform/foundation/NSDate.h"
#include "platform/foundation/text/NSString.h"

#include <optional>
#include <vector>

namespace kestrine {

// The types of items. Compare them by identity, with isSame(). Functions, so that nothing is allocated before
// main begins.
const NSString& NSFileTypeDirectory();
const NSString& NSFileTypeRegular();
const NSString& NSFileTypeSymbolicLink();
const NSString& NSFileTypeSocket();
const NSString& NSFileTypeCharacterSpecial();
const NSString& NSFileTypeBlockSpecial();
const NSString& NSFileTypeUnknown(); ///< also the type of a pipe

/// The attributes of an item, named after the platform's accessors.
struct NSFileAttributes {
    NSString fileType;          ///< one of the constants above
    std::uint64_t fileSize = 0; ///< bytes
    NSDate fileModificationDate;
    std::uint32_t filePosixPermissions = 0; ///< the bits below 010000
    std::uint32_t fileOwnerAccountID = 0;
    std::uint32_t fileGroupOwnerAccountID = 0;
};

class NSFileManager {
public:
    /// `defaultManager`.
    static NSFileManager& defaultManager();

    /// `fileExistsAtPath:`: whether an item exists. Links are followed.
    bool fileExistsAtPath(const NSString& path) const;
    /// `fileExistsAtPath:isDirectory:`: also sets `isDirectory`, to false if the item does not exist.
    bool fileExistsAtPath(const NSString& path, bool& isDirectory) const;

    /// `fileAttributesAtPath:traverseLink:`: nil if the item does not exist. Without `traverseLink`, a link
    /// at the end of the path is not followed.
    std::optional<NSFileAttributes> fileAttributesAtPath(const NSString& path, bool traverseLink) const;

    /// `subpathsAtPath:`: the paths of all items below a folder, relative to it, with each folder before its
    /// content. Links are not followed. Empty if there is no such folder.
    std::vector<NSString> subpathsAtPath(const NSString& path) const;

    /// `createDirectoryAtPath:attributes:`: creates one folder; its parent must exist. Returns whether it was
    /// created. The folder gets the permissions, the modification date and, if the system permits it, the
    /// owner of `attributes`. Attributes of a link are ignored, because a link has no permissions of its own.
    bool createDirectoryAtPath(const NSString& path,
                               const std::optional<NSFileAttributes>& attributes = std::nullopt);

    /// `changeCurrentDirectoryPath:`: changes the current folder of the whole process. Returns whether it was
    /// changed.
    bool changeCurrentDirectoryPath(const NSString& path);
};

} // namespace kestrine
