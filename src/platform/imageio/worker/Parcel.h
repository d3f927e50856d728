// Parcel: what one message carries, however long it is.
#pragma once

#include "platform/host/files/MemoryFile.h"
#include "platform/host/process/MessageSocket.h"

namespace kestrine::worker {

struct Parcel {
    Bytes head;
    Bytes content;
};

/// The message for a parcel. Parts that are too long for a message go into `shared`, which both ends have.
Result<Bytes> packed(const Parcel& parcel, const MemoryFile& shared);

/// The parcel of a message from a process that may be hostile. Fails with malformed if there is none, or if
/// its content has more than `maxContent` bytes.
Result<Parcel> unpacked(ByteView message, const MemoryFile& shared, std::uint64_t maxContent);

} // namespace kestrine::worker
