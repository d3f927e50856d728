// Aliases: bytes that find an item again, also after it was renamed where it lies.
#pragma once

#include "platform/carbon/Files.h"
#include "platform/carbon/MacMemory.h"
#include "platform/host/Bytes.h"
#include "platform/host/Result.h"

namespace kestrine {

/// The caller disposes it with DisposeHandle().
using AliasHandle = Handle;

/// Makes an alias of the item `target`. `from`, which would make it relative, may be null and is not needed:
/// every alias is absolute. -50 when `target` or `alias` is missing; `alias` is null after a failure.
OSErr FSNewAlias(const FSRef* from, const FSRef* target, AliasHandle* alias);

/// The path of the item that an alias leads to: what lies at its old path, else what the folder that held it
/// now holds under another name. malformed when the bytes are no alias of ours.
Result<std::string> pathOfAlias(ByteView alias);

} // namespace kestrine
