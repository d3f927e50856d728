// The File Manager: references to files and what the catalog knows of them.
#pragma once

#include "platform/carbon/MacTypes.h"
#include "platform/foundation/text/NSString.h"

#include <array>
#include <memory>

namespace kestrine {

class CatalogNode;

/// A file-system reference: opaque, 80 bytes, copied whole. An empty one refers to nothing.
struct FSRef {
    std::shared_ptr<const CatalogNode> node;
    std::array<std::uint8_t, 64> hidden{};
};
static_assert(sizeof(FSRef) == 80);

/// A name in UTF-16, as the catalog gives it.
struct HFSUniStr255 {
    std::uint16_t length = 0;
    UniChar unicode[255];
};

/// What the Finder keeps of a file.
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

/// The fields that this system asks for.
struct FSCatalogInfo {
    std::int16_t volume = 0; ///< the volume's reference number: -100 is the start-up volume, -101 the next
    FileInfo finderInfo;
};

/// An item's older form of reference.
struct FSSpec {
    std::int16_t vRefNum = 0; ///< the volume's reference number
    std::uint64_t parID = 0;  ///< the number of the folder that holds the item; 1 of what holds a volume
    NSString name;
};

/// Makes a reference of an existing item. `path` ends with a zero byte and follows links, the last one too,
/// so the reference is to what a link leads to. -43 when nothing is there, -50 when an argument is missing;
/// the reference is then empty. `isDirectory` may be null.
OSStatus FSPathMakeRef(const std::uint8_t* path, FSRef* reference, bool* isDirectory);

/// Gives what `which` asks for; each output may be null, and none is touched on failure. The parent of a
/// volume's root is the level above the volumes, which has a name and no parent: asked for it, the call gives
/// an empty reference, for which every call fails (-1401). -1426 where the file system keeps no Finder
/// information and it was asked for.
OSErr FSGetCatalogInfo(const FSRef* reference, FSCatalogInfoBitmap which, FSCatalogInfo* information,
                       HFSUniStr255* outName, FSSpec* specification, FSRef* parent);

/// Sets what `which` names, which may be kFSCatInfoFinderInfo (-50 for anything else). What the Finder keeps
/// beyond FileInfo stays.
OSErr FSSetCatalogInfo(const FSRef* reference, FSCatalogInfoBitmap which, const FSCatalogInfo* information);

} // namespace kestrine
