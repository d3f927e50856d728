#include "platform/carbon/MacMemory.h"

#include "platform/carbon/MemoryRefusal.h"

#include <cstddef>
#include <cstdlib>

namespace kestrine {
namespace {

thread_local OSErr lastError = noErr;
thread_local std::optional<OSErr> refusal;

constexpr std::int8_t lockedState = static_cast<std::int8_t>(0x80);

/// Precedes the bytes of a block.
struct alignas(std::max_align_t) BlockHeader {
    Size size;
};

BlockHeader* headerOf(Ptr block) { return reinterpret_cast<BlockHeader*>(block) - 1; }

/// The handle is the address of the first member.
struct HandleRecord {
    Ptr block;
    std::int8_t state;
};

HandleRecord* recordOf(Handle handle) { return reinterpret_cast<HandleRecord*>(handle); }

/// Whether the handle is not null; sets MemError().
bool isHandle(Handle handle) {
    lastError = handle == nullptr ? nilHandleErr : noErr;
    return handle != nullptr;
}

} // namespace

Ptr NewPtr(Size size) {
    constexpr Size largest = PTRDIFF_MAX - Size{sizeof(BlockHeader)};
    lastError = refusal.value_or(memFullErr);
    if (refusal || size < 0 || size > largest)
        return nullptr;
    auto* header =
        static_cast<BlockHeader*>(std::calloc(1, sizeof(BlockHeader) + static_cast<std::size_t>(size)));
    if (header == nullptr)
        return nullptr;
    header->size = size;
    lastError = noErr;
    return reinterpret_cast<Ptr>(header + 1);
}

void DisposePtr(Ptr block) {
    lastError = noErr;
    if (block != nullptr)
        std::free(headerOf(block));
}

Size GetPtrSize(Ptr block) {
    lastError = noErr;
    return block == nullptr ? 0 : headerOf(block)->size;
}

Handle NewHandle(Size size) {
    const Ptr block = NewPtr(size);
    if (block == nullptr)
        return nullptr;
    return &(new HandleRecord{block, 0})->block;
}

void DisposeHandle(Handle handle) {
    if (!isHandle(handle))
        return;
    DisposePtr(recordOf(handle)->block);
    delete recordOf(handle);
}

Size GetHandleSize(Handle handle) { return isHandle(handle) ? GetPtrSize(*handle) : 0; }

std::int8_t HGetState(Handle handle) { return isHandle(handle) ? recordOf(handle)->state : std::int8_t{0}; }

void HSetState(Handle handle, std::int8_t state) {
    if (isHandle(handle))
        recordOf(handle)->state = state;
}

void HLock(Handle handle) {
    if (isHandle(handle))
        recordOf(handle)->state |= lockedState;
}

OSErr MemError() { return lastError; }

void refuseMemory(std::optional<OSErr> error) { refusal = error; }

} // namespace kestrine
