// IndexSetCoding: the layouts of an archived NSIndexSet. Writing uses one layout. Reading accepts all
// plausible ones, because versions of the platform used different layouts.
#pragma once

#include "platform/foundation/NSIndexSet.h"

namespace kestrine {

class NSArchiver;
class NSUnarchiver;

/// Writes the number of ranges, then the location and length of each range, all as "I". `coder` fails with
/// tooLarge if a number needs more than 32 bits.
void encodeIndexSet(const Object& object, NSArchiver& coder);

/// Reads a count and pairs of location and length, with any integer codes. A block of bytes or an NSData may
/// replace the pairs. It packs them with seven bits per byte, lowest bits first.
Object decodeIndexSet(NSUnarchiver& coder);

} // namespace kestrine
