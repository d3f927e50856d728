// IndexSetCoding: how an NSIndexSet lies in an archive. Writing knows one layout; reading takes all that are
// plausible, because several generations of the platform wrote them.
#pragma once

#include "platform/foundation/NSIndexSet.h"

namespace kestrine {

class NSArchiver;
class NSUnarchiver;

/// The number of ranges, then each range's location and length, all as "I". Lets `coder` fail with tooLarge
/// when one of them needs more than 32 bits.
void encodeIndexSet(const Object& object, NSArchiver& coder);

/// Reads a count and location, length pairs in any integer codes, or with a block of bytes (or an NSData) in
/// place of the pairs, which then holds them packed seven bits to the byte, lowest first.
Object decodeIndexSet(NSUnarchiver& coder);

} // namespace kestrine
