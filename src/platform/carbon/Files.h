// The File Manager: file references and catalog information.
#pragma once

#include "platform/carbon/MacTypes.h"
#include "platform/foundation/text/NSString.h"

#include <array>
#include <memory>

namespace kestrine {

class CatalogNode;

/// A file-system reference: opaque, 80 bytes. An empty one refers to nothing.
struct FSRef {
    std::shared_ptr<const CatalogNode> node;
    std::array<std::uint8_t, 64> hidden{};
};
static_assert(sizeof(FSRef) == 80);

/// A file name in UTF-16.
struct HFSUniStr255 {
    std::uint16_t length = 0;
    UniChar unicode[255];
};

/// The first half of a file's Finder information.
struct FileInfo {
    OSType fileType = 0;
    OSType fileCreator = 0;
    std::uint16_t finderFlags = 0;
    FinderLocation location;
    std::uint16_t reservedField = 0;

    bool operator==(const FileInfo&) const = default;
};

/// The colour label in a file's Finder flags, 0 (none) to 7.
inline int labelOf(const FileInfo& information) { return (information.finderFlags & 0x000E) >> 1; }
/// The Finder flag of an alias file.
inline constexpr std::uint16_t kIsAlias = 0x8000;

using FSCatalogInfoBitmap = std::uint32_t;
enum : FSCatalogInfoBitmap {
    kFSCatInfoNone = 0,
    kFSCatInfoVolume = 0x00000002,
    kFSCatInfoFinderInfo = 0x00000800,
};

/// Only the fields that this system uses.
struct FSCatalogInfo {
    std::int16_t volume =
        0; ///< the volume's reference number: -100 for the start-up volume, then -101, -102, ...
    FileInfo finderInfo;
};

/// The older form of a file reference.
struct FSSpec {
    std::int16_t vRefNum = 0; ///< the volume's reference number
    std::uint64_t parID = 0;  ///< the inode of the item's folder; 1 for a volume's root
    NSString name;
};

/// Makes a reference to an existing item. `path` ends with a zero byte; links are followed, also at its end.
/// -43 when nothing is there, -50 when `path` or `reference` is null; the reference is then empty.
/// `isDirectory` may be null.
OSStatus FSPathMakeRef(const std::uint8_t* path, FSRef* reference, bool* isDirectory);

/// Gets the information that `which` names. Each output may be null; a failure leaves them unchanged. The
/// parent of a volume's root is the top level, whose parent is an empty reference; every call fails for that
/// (-1401). -1426 when Finder information is requested and the file system has none.
OSErr FSGetCatalogInfo(const FSRef* reference, FSCatalogInfoBitmap which, FSCatalogInfo* information,
                       HFSUniStr255* outName, FSSpec* specification, FSRef* parent);

/// Sets the Finder information; `which` must be kFSCatInfoFinderInfo (else -50). The second half of the
/// Finder information, which FileInfo does not contain, stays.
OSErr FSSetCatalogInfo(const FSRef* reference, FSCatalogInfoBitmap which, const FSCatalogInfo* information);

} // namespace kestrine
