#include "platform/carbon/Files.h"

#include "platform/carbon/CatalogNode.h"
#include "platform/carbon/ItemIdentity.h"
#include "platform/carbon/StatusCodes.h"
#include "platform/finder/FinderMetadata.h"
#include "platform/finder/Volumes.h"
#include "platform/host/files/FileDescriptor.h"

#include <algorithm>
#include <filesystem>

namespace kestrine {
namespace {

constexpr std::int16_t startupVolumeNumber = -100;
constexpr std::uint64_t volumesParentNumber = 1;

FSRef referenceTo(std::string path) { return {std::make_shared<const CatalogNode>(std::move(path)), {}}; }

/// The parent of the top level is an empty reference.
struct Located {
    CatalogEntry entry;
    FSRef parent;
};

Result<Located> locate(const CatalogNode& node) {
    if (node.isTopLevel())
        return Located{{topLevelName(), ""}, {}};
    CatalogEntry entry = TRY(catalogEntry(node.path()));
    FSRef parent = referenceTo(entry.parent);
    return Located{std::move(entry), std::move(parent)};
}

Result<std::string> mountPointAbove(std::string path) {
    while (true) {
        CatalogEntry entry = TRY(catalogEntry(path));
        if (entry.parent.empty())
            return path;
        path = std::move(entry.parent);
    }
}

Result<std::int16_t> volumeNumberOf(const std::string& path) {
    const std::string mountPoint = TRY(mountPointAbove(path));
    const std::vector<Volume> volumes = TRY(mountedVolumes());
    const auto volume = std::ranges::find(volumes, mountPoint, &Volume::mountPoint);
    if (volume == volumes.end())
        return Failure{Reason::notFound, "the volume is no longer mounted"};
    return static_cast<std::int16_t>(startupVolumeNumber - (volume - volumes.begin()));
}

FileInfo fileInfoOf(const FinderInfo& kept) {
    return {kept.type, kept.creator, kept.flags, kept.location, kept.reserved};
}

Result<FSCatalogInfo> informationOf(const CatalogNode& node, FSCatalogInfoBitmap which) {
    FSCatalogInfo information;
    if (which != kFSCatInfoNone && node.isTopLevel())
        return Failure{Reason::unsupported, "the top level is not an item"};
    if (which & kFSCatInfoVolume) {
        const Result<std::int16_t> volume = volumeNumberOf(node.path());
        if (!volume)
            return volume.failure();
        information.volume = *volume;
    }
    if (which & kFSCatInfoFinderInfo) {
        const FinderInfo kept = TRY(finderInformation(node.path()));
        information.finderInfo = fileInfoOf(kept);
    }
    return information;
}

Result<FSSpec> specificationOf(const CatalogNode& node, const CatalogEntry& entry) {
    if (node.isTopLevel())
        return Failure{Reason::unsupported, "the top level is not an item"};
    const std::int16_t volume = TRY(volumeNumberOf(node.path()));
    if (entry.parent.empty())
        return FSSpec{volume, volumesParentNumber, entry.name};
    const ItemIdentity parent = TRY(identityOf(entry.parent));
    return FSSpec{volume, parent.number, entry.name};
}

void storeName(const NSString& name, HFSUniStr255& into) {
    into.length = static_cast<std::uint16_t>(std::min(name.length(), std::size(into.unicode)));
    std::copy_n(name.utf16().begin(), into.length, into.unicode);
}

} // namespace

OSStatus FSPathMakeRef(const std::uint8_t* path, FSRef* reference, bool* isDirectory) {
    if (reference != nullptr)
        *reference = {};
    if (path == nullptr || reference == nullptr)
        return paramErr;
    if (*path == 0)
        return fnfErr;
    std::error_code error;
    const auto found = std::filesystem::canonical(reinterpret_cast<const char*>(path), error);
    if (error)
        return statusCodeFor(systemFailure("cannot find the item", error.value()));
    if (isDirectory != nullptr)
        *isDirectory = std::filesystem::is_directory(found, error);
    *reference = referenceTo(found.string());
    return noErr;
}

OSErr FSGetCatalogInfo(const FSRef* reference, FSCatalogInfoBitmap which, FSCatalogInfo* information,
                       HFSUniStr255* outName, FSSpec* specification, FSRef* parent) {
    if (reference == nullptr)
        return paramErr;
    const std::shared_ptr<const CatalogNode> node = reference->node;
    if (node == nullptr)
        return errFSBadFSRef;
    const Result<Located> located = locate(*node);
    if (!located)
        return statusCodeFor(located.failure());
    const Result<FSCatalogInfo> found = informationOf(*node, information == nullptr ? kFSCatInfoNone : which);
    if (!found)
        return statusCodeFor(found.failure());
    if (specification != nullptr) {
        Result<FSSpec> made = specificationOf(*node, located->entry);
        if (!made)
            return statusCodeFor(made.failure());
        *specification = *std::move(made);
    }
    if (information != nullptr)
        *information = *found;
    if (outName != nullptr)
        storeName(located->entry.name, *outName);
    if (parent != nullptr)
        *parent = located->parent;
    return noErr;
}

OSErr FSSetCatalogInfo(const FSRef* reference, FSCatalogInfoBitmap which, const FSCatalogInfo* information) {
    if (reference == nullptr || information == nullptr || which != kFSCatInfoFinderInfo)
        return paramErr;
    if (reference->node == nullptr)
        return errFSBadFSRef;
    if (reference->node->isTopLevel())
        return errFSOperationNotSupported;
    const std::string& path = reference->node->path();
    Result<FinderInfo> kept = finderInformation(path);
    if (!kept)
        return statusCodeFor(kept.failure());
    const FileInfo& wanted = information->finderInfo;
    const Result<void> set =
        setFinderInformation(path, {wanted.fileType, wanted.fileCreator, wanted.finderFlags, wanted.location,
                                    wanted.reservedField, kept->extended});
    return set ? static_cast<OSErr>(noErr) : statusCodeFor(set.failure());
}

} // namespace kestrine
