// A property list that holds nothing but one text, in the binary form, as attributes of files keep it.
#pragma once

#include "platform/foundation/text/NSString.h"
#include "platform/host/Bytes.h"
#include "platform/host/Result.h"

namespace kestrine {

/// The text. Fails like PropertyList::fromBytes; malformed also for any other content than one text, and
/// unsupported for XML.
Result<NSString> textOfPropertyList(ByteView content);

/// What has no place in such a text, a zero or half a surrogate pair, becomes U+FFFD.
Bytes propertyListOfText(const NSString& text);

} // namespace kestrine
