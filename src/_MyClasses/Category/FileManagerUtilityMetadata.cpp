#include "_MyClasses/Category/FileManagerUtilityMetadata.h"

#include "platform/carbon/CFURL.h"
#include "platform/carbon/FinderEvents.h"
#include "platform/carbon/Gestalt.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/text/NSStringConversion.h"

namespace kestrine {
namespace {

/// The first version in which finderLabelForPath() works differently.
constexpr std::int32_t version10_6 = 0x1060;

OSErr readFileInfo(const FSRef& reference, FSCatalogInfoBitmap which, FileInfo& into) {
    FSCatalogInfo information;
    const OSErr status = FSGetCatalogInfo(&reference, which, &information, nullptr, nullptr, nullptr);
    if (status == noErr)
        into = information.finderInfo;
    return status;
}

/// The Finder information of the item; all zero when it cannot be read.
FileInfo fileInfoAt(const OptionalString& path) {
    FSRef reference;
    FileInfo information;
    (void)getFSRefFromPath(path, &reference);
    (void)readFileInfo(reference, kFSCatInfoFinderInfo, information);
    return information;
}

int loggedLabel(const FSRef& reference, FSCatalogInfoBitmap which) {
    FileInfo information;
    if (readFileInfo(reference, which, information) != noErr)
        return 0;
    const int label = labelOf(information);
    NSLog(NSString::fromUTF8("Label:" + std::to_string(label)));
    return label;
}

} // namespace

OSStatus getFSRefFromPath(const OptionalString& path, FSRef* reference) {
    try {
        const std::string bytes = path ? fileSystemRepresentation(*path) : std::string();
        (void)FSPathMakeRef(reinterpret_cast<const std::uint8_t*>(bytes.c_str()), reference, nullptr);
    } catch (const NSException& exception) {
        if (exception.name() != NSCharacterConversionException)
            throw;
        NSLog(NSString(u"Can not encode path for ") + *path);
        (void)FSPathMakeRef(nullptr, reference, nullptr);
        return -1;
    }
    return noErr;
}

int finderLabelColorOfPath(const OptionalString& path) {
    const CFURLRef url = CFURLCreateWithFileSystemPath(path, kCFURLPOSIXPathStyle, false);
    FSRef reference;
    return CFURLGetFSRef(url, &reference) ? loggedLabel(reference, kFSCatInfoFinderInfo) : 0;
}

int labelForPath(const OptionalString& path) { return finderLabelColorOfPath(path); }

int finderLabelForPath(const OptionalString& path) {
    std::int32_t version = 0;
    (void)Gestalt(gestaltSystemVersion, &version);
    if (version < version10_6)
        return finderLabelColorOfPath(path);
    if (!path)
        return 0;
    // Deliberate: the label is only read when no reference could be made.
    FSRef reference;
    if (getFSRefFromPath(path, &reference) == noErr)
        return 0;
    return loggedLabel(reference, kFSCatInfoFinderInfo | kFSCatInfoVolume);
}

OSType getFileTypeForPath(const OptionalString& path) { return fileInfoAt(path).fileType; }

bool isAliasPath(const OptionalString& path) { return (fileInfoAt(path).finderFlags & kIsAlias) != 0; }

OSErr myFSRefGetFInfo(const FSRef* reference, FileInfo*) {
    FSCatalogInfo information;
    return FSGetCatalogInfo(reference, kFSCatInfoFinderInfo, &information, nullptr, nullptr, nullptr);
}

OSErr myFSRefSetFInfo(const FSRef* reference, const FileInfo* information) {
    if (information == nullptr)
        return paramErr;
    FSCatalogInfo wanted;
    wanted.finderInfo = *information;
    return FSSetCatalogInfo(reference, kFSCatInfoFinderInfo, &wanted);
}

OSStatus copyFinderInfo(const OptionalString& source, const OptionalString& destination) {
    NSLog(u"copyFinderInfo");
    FSRef reference;
    FSCatalogInfo information;
    FSSpec item;
    (void)getFSRefFromPath(source, &reference);
    (void)FSGetCatalogInfo(&reference, kFSCatInfoFinderInfo, &information, nullptr, &item, nullptr);
    (void)getFSRefFromPath(destination, &reference);
    (void)FSSetCatalogInfo(&reference, kFSCatInfoFinderInfo, &information);
    copyComment(source, destination);
    (void)FSGetCatalogInfo(&reference, kFSCatInfoFinderInfo, &information, nullptr, &item, nullptr);
    return updateFinderIcon(&item);
}

void copyLabelIfNeeded(const OptionalString& source, const OptionalString& destination) {
    const int wanted = finderLabelColorOfPath(source);
    if (finderLabelColorOfPath(destination) != wanted)
        (void)copyFinderInfo(source, destination);
}

OSStatus updateFinderIcon(const FSSpec*) {
    AEAddressDesc address;
    AppleEvent event;
    OSStatus status = AECreateDesc(typeApplSignature, &finderSignature, sizeof finderSignature, &address);
    if (status == noErr)
        status = AECreateAppleEvent(kAEFinderEvents, kAESync, &address, kAutoGenerateReturnID,
                                    kAnyTransactionID, &event);
    return status;
}

void myUtility::copyFolderFrom(NSFileManager& manager, const NSString& source, const NSString& destination) {
    (void)manager.createDirectoryAtPath(destination, manager.fileAttributesAtPath(source, false));
    (void)copyFinderInfo(source, destination);
}

} // namespace kestrine
