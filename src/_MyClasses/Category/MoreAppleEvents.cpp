#include "_MyClasses/Category/MoreAppleEvents.h"

#include "platform/carbon/AEObjects.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace kestrine {
namespace {

/// Aborts the process with a message when the assertion does not hold.
void require(bool holds, const char* assertion, unsigned line = __builtin_LINE()) {
    if (holds)
        return;
    (void)std::fprintf(stderr, "%s:%u: failed assertion `%s'\n", __FILE_NAME__, line, assertion);
    std::abort();
}

struct PtrDeleter {
    void operator()(char* block) const { DisposePtr(block); }
};
using OwnedPtr = std::unique_ptr<char, PtrDeleter>;

struct AliasDeleter {
    void operator()(Ptr* alias) const { DisposeHandle(alias); }
};
using OwnedAlias = std::unique_ptr<Ptr, AliasDeleter>;

/// Clears a result, so that a failure does not leave the caller's old value in it.
void clear(AEDesc* desc) {
    if (desc != nullptr)
        MoreAENullDesc(desc);
}

} // namespace

AEDesc* MoreAENullDesc(AEDesc* desc) {
    require(desc != nullptr, "desc != NULL");
    *desc = {};
    return desc;
}

void MoreAEDisposeDesc(AEDesc* desc) {
    require(desc != nullptr, "desc != NULL");
    const OSStatus junk = AEDisposeDesc(desc);
    require(junk == noErr, "junk == noErr");
    MoreAENullDesc(desc);
}

OSStatus MoreAECreateAEDescFromCFString(const OptionalString& string, AEDesc* desc) {
    clear(desc);
    if (!string || desc == nullptr)
        return paramErr;
    const std::u16string& units = string->utf16();
    const OwnedPtr block(NewPtr(static_cast<Size>(units.size() * sizeof(UniChar))));
    if (block == nullptr)
        return MemError() != noErr ? MemError() : OSErr{memFullErr};
    std::copy_n(reinterpret_cast<const char*>(units.data()), GetPtrSize(block.get()), block.get());
    return AECreateDesc(typeUnicodeText, block.get(), GetPtrSize(block.get()), desc);
}

OSStatus MoreAEGetCFStringFromDescriptor(const AEDesc* desc, OptionalString* string) {
    if (string == nullptr)
        return paramErr;
    string->reset();
    AEDesc text;
    OSStatus status = AECoerceDesc(desc, typeUnicodeText, &text);
    if (status == noErr && text.descriptorType == typeUnicodeText) {
        std::u16string units(static_cast<std::size_t>(AEGetDescDataSize(&text)) / sizeof(UniChar), u'\0');
        status = AEGetDescData(&text, units.data(), static_cast<Size>(units.size() * sizeof(UniChar)));
        if (status == noErr)
            string->emplace(std::move(units));
    }
    MoreAEDisposeDesc(&text);
    return status;
}

OSStatus MoreAEOCreateAliasDesc(AliasHandle alias, AEDesc* desc) {
    clear(desc);
    if (alias == nullptr || desc == nullptr)
        return paramErr;
    const std::int8_t state = HGetState(alias);
    HLock(alias);
    const OSStatus status = AECreateDesc(typeAlias, *alias, GetHandleSize(alias), desc);
    HSetState(alias, state);
    return status;
}

OSStatus MoreAEOCreateAliasDescFromFSRef(const FSRef* reference, AEDesc* desc) {
    AliasHandle made = nullptr;
    (void)FSNewAlias(nullptr, reference, &made); // a null handle is reported below
    const OwnedAlias alias(made);
    return MoreAEOCreateAliasDesc(alias.get(), desc);
}

OSStatus MoreAEOCreateAliasObjectFromFSRef(const FSRef* reference, AEDesc* container, AEDesc* object) {
    AEDesc alias;
    const OSStatus status = MoreAEOCreateAliasDescFromFSRef(reference, &alias);
    if (status != noErr) {
        clear(object);
        return status;
    }
    return CreateObjSpecifier(typeAlias, container, formAbsolutePosition, &alias, false, object);
}

OSStatus MoreAEOCreateObjSpecifierFromCFURLRef(const CFURLRef& url, AEDesc* object) {
    clear(object);
    if (url == nullptr)
        return paramErr;
    const OptionalString path = CFURLCopyFileSystemPath(url, kCFURLHFSPathStyle);
    if (!path)
        return coreFoundationUnknownErr;
    const bool isFolder = CFURLHasDirectoryPath(url);
    AEDesc application;
    AEDesc name;
    const OSStatus status = MoreAECreateAEDescFromCFString(isFolder ? *path + u":" : *path, &name);
    if (status != noErr)
        return status;
    return CreateObjSpecifier(isFolder ? cObject : cFile, &application, formName, &name, false, object);
}

OSStatus MoreAEOCreateObjSpecifierFromFSRef(const FSRef* reference, AEDesc* object) {
    clear(object);
    if (reference == nullptr)
        return paramErr;
    const CFURLRef url = CFURLCreateFromFSRef(reference);
    return url == nullptr ? OSStatus{coreFoundationUnknownErr}
                          : MoreAEOCreateObjSpecifierFromCFURLRef(url, object);
}

OSStatus MoreAEOCreateObjSpecifierFromCFString(const OptionalString& path, AEDesc* object) {
    FSRef reference;
    (void)CFURLGetFSRef(CFURLCreateWithFileSystemPath(path, kCFURLPOSIXPathStyle, false), &reference);
    return MoreAEOCreateObjSpecifierFromFSRef(&reference, object);
}

OSStatus MoreAEGetHandlerError(const AppleEvent* reply) {
    if (reply == nullptr || reply->descriptorType == typeNull)
        return noErr;
    OSErr number = noErr;
    const OSStatus status =
        AEGetParamPtr(reply, keyErrorNumber, typeShortInteger, nullptr, &number, sizeof number, nullptr);
    if (status == errAEDescNotFound)
        return noErr;
    return status == noErr ? OSStatus{number} : status;
}

OSStatus MoreAESendEventReturnAEDesc(const AEIdleUPP& idle, const AppleEvent* event, DescType type,
                                     AEDesc* result) {
    clear(result);
    if (!idle)
        return paramErr;
    AppleEvent reply;
    OSStatus status = AESend(event, &reply, kAEWaitReply, kAENormalPriority, kNoTimeOut, idle);
    if (status == noErr)
        status = MoreAEGetHandlerError(&reply);
    if (status == noErr && reply.descriptorType != typeNull)
        status = AEGetParamDesc(&reply, keyDirectObject, type, result);
    MoreAEDisposeDesc(&reply);
    return status;
}

OSStatus MoreAESendEventNoReturnValue(const AEIdleUPP& idle, const AppleEvent* event) {
    AppleEvent reply;
    const AESendMode mode = idle ? kAEWaitReply : kAENoReply;
    OSStatus status = AESend(event, &reply, mode, kAENormalPriority, kNoTimeOut, idle);
    if (status == noErr)
        status = MoreAEGetHandlerError(&reply);
    MoreAEDisposeDesc(&reply);
    return status;
}

} // namespace kestrine
