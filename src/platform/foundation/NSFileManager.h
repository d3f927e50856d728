// NSFileManager: what the program asks of the file system itself.
#pragma once

#include "platform/foundation/NSDate.h"
#include "platform/foundation/text/NSString.h"

#include <optional>
#include <vector>

namespace kestrine {

// The types that an item can have. They are told apart by identity (isSame).
extern const NSString NSFileTypeDirectory;
extern const NSString NSFileTypeRegular;
extern const NSString NSFileTypeSymbolicLink;
extern const NSString NSFileTypeSocket;
extern const NSString NSFileTypeCharacterSpecial;
extern const NSString NSFileTypeBlockSpecial;
extern const NSString NSFileTypeUnknown; ///< of a pipe, too

/// An item's attributes, under the names of the platform's attribute readers.
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

    /// `fileExistsAtPath:`: whether there is anything, following links.
    bool fileExistsAtPath(const NSString& path) const;
    /// `fileExistsAtPath:isDirectory:`: also tells whether it is a folder, which what does not exist is not.
    bool fileExistsAtPath(const NSString& path, bool& isDirectory) const;

    /// `fileAttributesAtPath:traverseLink:`: nil when there is nothing. Without `traverseLink` a link at the
    /// end of the path is an item itself.
    std::optional<NSFileAttributes> fileAttributesAtPath(const NSString& path, bool traverseLink) const;

    /// `subpathsAtPath:`: everything below a folder, as paths relative to it, a folder before what is in it;
    /// links are not followed. Empty when there is no such folder.
    std::vector<NSString> subpathsAtPath(const NSString& path) const;

    /// `createDirectoryAtPath:attributes:`: makes one folder level and tells whether it did. Of the
    /// attributes it takes the permissions, the modification date and, where the system permits it, the
    /// owner; those of a link are passed over, since a link has no permissions of its own.
    bool createDirectoryAtPath(const NSString& path,
                               const std::optional<NSFileAttributes>& attributes = std::nullopt);

    /// `changeCurrentDirectoryPath:`: changes the folder that relative paths of the whole process start
    /// from, and tells whether it did.
    bool changeCurrentDirectoryPath(const NSString& path);
};

} // namespace kestrine
