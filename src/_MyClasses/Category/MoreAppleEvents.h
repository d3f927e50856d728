// The Apple Event toolkit: descriptors for strings and files, object specifiers, sending with the handler's
// errors. A status of 0 is success. No function raises. After a failure the resulting descriptor is a null
// descriptor.
#pragma once

#include "platform/carbon/AESending.h"
#include "platform/carbon/Aliases.h"
#include "platform/carbon/CFURL.h"

namespace kestrine {

/// Makes the descriptor a null descriptor without disposing it, and returns it. A null pointer aborts the
/// process with the failed assertion "desc != NULL" on standard error, with source file and line.
AEDesc* MoreAENullDesc(AEDesc* desc);

/// Disposes the descriptor and makes it a null descriptor. Asserts like MoreAENullDesc(), and also that the
/// disposal succeeds ("junk == noErr"), which is true for every descriptor that the platform made.
void MoreAEDisposeDesc(AEDesc* desc);

/// A 'utxt' descriptor. -50 when `string` is nil or `desc` is null; the memory error, or -108, when there is
/// no memory.
OSStatus MoreAECreateAEDescFromCFString(const OptionalString& string, AEDesc* desc);

/// The string of a descriptor, coerced to 'utxt'; nil for a null descriptor, which is not a failure. -50 for
/// a null pointer.
OSStatus MoreAEGetCFStringFromDescriptor(const AEDesc* desc, OptionalString* string);

/// An 'alis' descriptor with the alias's bytes. The handle's state does not change. -50 for a null pointer.
OSStatus MoreAEOCreateAliasDesc(AliasHandle alias, AEDesc* desc);

/// An 'alis' descriptor for the item; -50 when no alias can be made.
OSStatus MoreAEOCreateAliasDescFromFSRef(const FSRef* reference, AEDesc* desc);

/// An object specifier of class 'alis' inside `container`.
OSStatus MoreAEOCreateAliasObjectFromFSRef(const FSRef* reference, AEDesc* container, AEDesc* object);

/// An object specifier by the item's Finder path, of class 'cobj' for a folder's URL, else 'file'. -50 for a
/// null URL, -4960 when there is no Finder path.
OSStatus MoreAEOCreateObjSpecifierFromCFURLRef(const CFURLRef& url, AEDesc* object);

/// The same for a reference. -50 for a null pointer, -4960 when it refers to nothing.
OSStatus MoreAEOCreateObjSpecifierFromFSRef(const FSRef* reference, AEDesc* object);

/// The same for a path. -4960 when `path` is nil or cannot be encoded, or nothing is there.
OSStatus MoreAEOCreateObjSpecifierFromCFString(const OptionalString& path, AEDesc* object);

/// The error number in a reply; 0 when there is no error or no reply.
OSStatus MoreAEGetHandlerError(const AppleEvent* reply);

/// Sends the event and waits. Returns the failure to send, the handler's error, or the status of getting the
/// direct object as `type`. -50 without an idle procedure.
OSStatus MoreAESendEventReturnAEDesc(const AEIdleUPP& idle, const AppleEvent* event, DescType type,
                                     AEDesc* result);

/// Sends the event. Waits only with an idle procedure, and then also returns the handler's error.
OSStatus MoreAESendEventNoReturnValue(const AEIdleUPP& idle, const AppleEvent* event);

} // namespace kestrine
