// The Apple Event toolkit: descriptors from texts and files, object specifiers, sending with a handler's
// errors. Every function whose result is a status gives 0 for success and never raises. A descriptor to be
// filled is null after a failure.
#pragma once

#include "platform/carbon/AESending.h"
#include "platform/carbon/Aliases.h"
#include "platform/carbon/CFURL.h"

namespace kestrine {

/// Makes the descriptor a null one without disposing it, and gives it back. A missing one ends the process:
/// the failed assertion "desc != NULL" is printed to standard error with the source file's name and the line.
AEDesc* MoreAENullDesc(AEDesc* desc);

/// Disposes the descriptor and makes it a null one. Asserts likewise, and also that the disposal succeeds
/// ("junk == noErr"), which it does for every descriptor that the platform made.
void MoreAEDisposeDesc(AEDesc* desc);

/// A 'utxt' descriptor; -50 when one of the two is missing, the memory error or -108 when memory is.
OSStatus MoreAECreateAEDescFromCFString(const OptionalString& string, AEDesc* desc);

/// The text of a descriptor, coerced to 'utxt'; a null descriptor has none, which is no failure. -50 when one
/// of the two is missing.
OSStatus MoreAEGetCFStringFromDescriptor(const AEDesc* desc, OptionalString* string);

/// An 'alis' descriptor of the alias's bytes; the handle's state is as before. -50 when one of the two is
/// missing.
OSStatus MoreAEOCreateAliasDesc(AliasHandle alias, AEDesc* desc);

/// Of a new alias; -50 when none can be made.
OSStatus MoreAEOCreateAliasDescFromFSRef(const FSRef* reference, AEDesc* desc);

/// An object specifier of class 'alis' inside `container`.
OSStatus MoreAEOCreateAliasObjectFromFSRef(const FSRef* reference, AEDesc* container, AEDesc* object);

/// An object specifier of class 'cobj' for a folder's URL, else 'file', by the Finder path of the item. -50
/// for a missing URL, -4960 when it has no such path.
OSStatus MoreAEOCreateObjSpecifierFromCFURLRef(const CFURLRef& url, AEDesc* object);

/// By way of a URL. -50 for a missing reference, -4960 when it refers to nothing.
OSStatus MoreAEOCreateObjSpecifierFromFSRef(const FSRef* reference, AEDesc* object);

/// By way of a reference, which refers to nothing when `path` is nil, cannot be encoded or leads nowhere.
OSStatus MoreAEOCreateObjSpecifierFromCFString(const OptionalString& path, AEDesc* object);

/// The error number in a reply; 0 when there is none, or no reply.
OSStatus MoreAEGetHandlerError(const AppleEvent* reply);

/// Sends the event and waits. Gives the failure to send, the handler's error, or the outcome of getting the
/// direct object as `type`. -50 without an idle procedure.
OSStatus MoreAESendEventReturnAEDesc(const AEIdleUPP& idle, const AppleEvent* event, DescType type,
                                     AEDesc* result);

/// Sends the event; waits only with an idle procedure, and then gives the handler's error too.
OSStatus MoreAESendEventNoReturnValue(const AEIdleUPP& idle, const AppleEvent* event);

} // namespace kestrine
