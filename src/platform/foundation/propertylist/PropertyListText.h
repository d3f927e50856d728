// Property lists that consist of one string, in the binary form. Extended attributes contain them.
#pragma once

#include "platform/foundation/text/NSString.h"
#include "platform/host/Bytes.h"
#include "platform/host/Result.h"

namespace kestrine {

/// The string. Fails with unsupported for XML, with malformed for any other content than one string, and for
/// the reasons of checkPropertyListBounds().
Result<NSString> textOfPropertyList(ByteView content);

/// Zero characters and lone surrogates cannot be stored. They become U+FFFD.
Bytes propertyListOfText(const NSString& text);

} // namespace kestrine
