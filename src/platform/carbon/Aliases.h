// Aliases: bytes that identify an item, even after it was renamed within its folder.
#pragma once

#include "platform/carbon/Files.h"
#include "platform/carbon/MacMemory.h"
#include "platform/host/Bytes.h"
#include "platform/host/Result.h"

namespace kestrine {

/// Owned by the caller; dispose with DisposeHandle().
using AliasHandle = Handle;

/// Makes an alias of the item `target`. `from`, the start of a relative alias, is ignored and may be null:
/// every alias is absolute. -50 when `target` or `alias` is null. After a failure `alias` is null.
OSErr FSNewAlias(const FSRef* from, const FSRef* target, AliasHandle* alias);

/// The path of the alias's item: the item at its old path, else the same item under a new name in its old
/// folder. malformed when the bytes are not an alias of this platform; notFound when the item is not there.
Result<std::string> pathOfAlias(ByteView bytes);

} // namespace kestrine
