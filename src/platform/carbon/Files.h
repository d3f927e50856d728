// The File Manager: references to files and what the catalog knows of them.
#pragma once

#include "platform/carbon/MacTypes.h"

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

using FSCatalogInfoBitmap = std::uint32_t;
enum : FSCatalogInfoBitmap {
    kFSCatInfoNone = 0,
    kFSCatInfoVolume = 0x00000002,
    kFSCatInfoFinderInfo = 0x00000800,
};

/// The fields that this system asks for.
struct FSCatalogInfo {
    std::int16_t volume = 0; ///< the volume's reference number
    FinderInfo finderInfo;
};

/// An item's older form of reference: its parent and its name.
struct FSSpec;

/// Makes a reference of an existing item. `path` is UTF-8 and follows links; -43 when nothing is there, -50
/// when an argument is missing. `isDirectory` may be null.
OSStatus FSPathMakeRef(const std::uint8_t* path, FSRef* reference, bool* isDirectory);

/// Gives what `which` asks for; each output may be null. Fails above a volume's root.
OSErr FSGetCatalogInfo(const FSRef* reference, FSCatalogInfoBitmap which, FSCatalogInfo* information,
                       HFSUniStr255* outName, FSSpec* specification, FSRef* parent);

/// Sets what `which` names, which may be kFSCatInfoFinderInfo.
OSErr FSSetCatalogInfo(const FSRef* reference, FSCatalogInfoBitmap which, const FSCatalogInfo* information);

} // namespace kestrine
