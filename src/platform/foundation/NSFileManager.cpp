#include "platform/foundation/NSFileManager.h"

#include "platform/host/FailureCollector.h"
#include "platform/host/files/FileAttributes.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/FolderTree.h"
#include "platform/host/files/Folders.h"

namespace kestrine {

#define FILE_TYPE(name)                                                                                      \
    const NSString& name() {                                                                                 \
        static const NSString type(u"" #name);                                                               \
        return type;                                                                                         \
    }
FILE_TYPE(NSFileTypeDirectory)
FILE_TYPE(NSFileTypeRegular)
FILE_TYPE(NSFileTypeSymbolicLink)
FILE_TYPE(NSFileTypeSocket)
FILE_TYPE(NSFileTypeCharacterSpecial)
FILE_TYPE(NSFileTypeBlockSpecial)
FILE_TYPE(NSFileTypeUnknown)
#undef FILE_TYPE

namespace {

struct TypeOfMode {
    mode_t mode;
    const NSString& (*type)();
};
constexpr TypeOfMode typesOfModes[] = {
    {S_IFDIR, NSFileTypeDirectory}, {S_IFREG, NSFileTypeRegular},          {S_IFLNK, NSFileTypeSymbolicLink},
    {S_IFSOCK, NSFileTypeSocket},   {S_IFCHR, NSFileTypeCharacterSpecial}, {S_IFBLK, NSFileTypeBlockSpecial},
};

const NSString& fileTypeOf(mode_t mode) {
    for (const TypeOfMode& row : typesOfModes)
        if (row.mode == (mode & S_IFMT))
            return row.type();
    return NSFileTypeUnknown();
}

/// The attributes that a new folder gets.
struct stat statusFor(const NSFileAttributes& attributes) {
    struct stat status {};
    status.st_mode = attributes.filePosixPermissions;
    status.st_uid = attributes.fileOwnerAccountID;
    status.st_gid = attributes.fileGroupOwnerAccountID;
    status.st_mtim = {attributes.fileModificationDate.seconds, attributes.fileModificationDate.nanoseconds};
    return status;
}

} // namespace

NSFileManager& NSFileManager::defaultManager() {
    static NSFileManager manager;
    return manager;
}

bool NSFileManager::fileExistsAtPath(const NSString& path) const { return itemExists(path.utf8()); }

bool NSFileManager::fileExistsAtPath(const NSString& path, bool& isDirectory) const {
    const Result<struct stat> status = attributesOf(path.utf8(), FollowLinks::yes);
    isDirectory = status && S_ISDIR(status->st_mode);
    return status.ok();
}

std::optional<NSFileAttributes> NSFileManager::fileAttributesAtPath(const NSString& path,
                                                                    bool traverseLink) const {
    const Result<struct stat> status =
        attributesOf(path.utf8(), traverseLink ? FollowLinks::yes : FollowLinks::no);
    if (!status)
        return std::nullopt;
    return NSFileAttributes{fileTypeOf(status->st_mode),
                            static_cast<std::uint64_t>(status->st_size),
                            {status->st_mtim.tv_sec, static_cast<std::int32_t>(status->st_mtim.tv_nsec)},
                            status->st_mode & 07777,
                            status->st_uid,
                            status->st_gid};
}

std::vector<NSString> NSFileManager::subpathsAtPath(const NSString& path) const {
    const Result<std::vector<std::string>> paths = pathsBelow(path.utf8());
    std::vector<NSString> texts;
    if (paths)
        for (const std::string& subpath : *paths)
            texts.push_back(NSString::fromUTF8(subpath));
    return texts;
}

bool NSFileManager::createDirectoryAtPath(const NSString& path,
                                          const std::optional<NSFileAttributes>& attributes) {
    const bool isPlain = !attributes || attributes->fileType.isSame(NSFileTypeSymbolicLink());
    const Result<void> made =
        isPlain ? makeFolder(path.utf8()) : makeFolderWithAttributes(path.utf8(), statusFor(*attributes));
    if (!made)
        noteFailure(made.failure());
    return made.ok();
}

bool NSFileManager::changeCurrentDirectoryPath(const NSString& path) {
    return changeCurrentFolder(path.utf8()).ok();
}

} // namespace kestrine
