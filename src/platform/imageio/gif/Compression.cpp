#include "platform/imageio/gif/Compression.h"

#include <algorithm>

namespace kestrine::gif {

namespace {

constexpr unsigned maximumCodeBits = 12;
constexpr unsigned maximumCodes = 1u << maximumCodeBits;
/// Twice as many slots as strings keep the searches short; the table still fits the first-level cache.
constexpr unsigned slotBits = maximumCodeBits + 1;
/// Differs from every string with its code, because the table is cleared as soon as the last code is used.
constexpr std::uint32_t freeSlot = 0xFFFF'FFFF;
/// Differs from every code.
constexpr std::uint32_t noPrefix = maximumCodes;

} // namespace

Compression::Compression(unsigned indexBits, Bytes& into)
    : into_(into), clearCode_(1u << indexBits), strings_(std::size_t{1} << slotBits), prefix_(noPrefix) {
    into_.push_back(static_cast<std::uint8_t>(indexBits));
    block_[0] = 0;
    codeBits_ = indexBits + 1;
    writeCode(clearCode_);
    startTable();
}

void Compression::add(ByteView indices) {
    for (const std::uint8_t index : indices) {
        if (prefix_ == noPrefix) {
            prefix_ = index;
            continue;
        }
        const std::uint32_t string = prefix_ << 8 | index;
        std::uint32_t& slot = slotOf(string);
        if (slot != freeSlot) {
            prefix_ = slot % maximumCodes;
            continue;
        }
        writeCode(prefix_);
        prefix_ = index;
        slot = string << maximumCodeBits | nextCode_;
        takeCode();
        if (nextCode_ == maximumCodes) {
            writeCode(clearCode_);
            startTable();
        }
    }
}

void Compression::finish() {
    writeCode(prefix_);
    takeCode();
    writeCode(clearCode_ + 1);
    if (pendingBits_ != 0)
        writeByte(pending_);
    if (block_[0] != 0)
        writeBlock();
    into_.push_back(0);
}

/// The slot that holds `string`, or the free slot for it.
std::uint32_t& Compression::slotOf(std::uint32_t string) {
    // The multiplier, 2^32 divided by the golden ratio, spreads similar strings over the table.
    std::uint32_t slot = string * 0x9E37'79B1u >> (32 - slotBits);
    while (strings_[slot] != freeSlot && strings_[slot] >> maximumCodeBits != string)
        slot = (slot + 1) % (1u << slotBits);
    return strings_[slot];
}

void Compression::startTable() {
    std::ranges::fill(strings_, freeSlot);
    nextCode_ = clearCode_ + 2;
    codeBits_ = 1;
    while (1u << codeBits_ <= clearCode_)
        ++codeBits_;
}

/// Uses the next code. A reader learns of it one code later and widens its codes then.
void Compression::takeCode() {
    if (nextCode_ == 1u << codeBits_ && codeBits_ < maximumCodeBits)
        ++codeBits_;
    ++nextCode_;
}

void Compression::writeCode(unsigned code) {
    pending_ |= code << pendingBits_;
    pendingBits_ += codeBits_;
    for (; pendingBits_ >= 8; pendingBits_ -= 8) {
        writeByte(pending_ & 0xFF);
        pending_ >>= 8;
    }
}

void Compression::writeByte(unsigned byte) {
    block_[++block_[0]] = static_cast<std::uint8_t>(byte);
    if (block_[0] == 255)
        writeBlock();
}

void Compression::writeBlock() {
    into_.insert(into_.end(), block_.begin(), block_.begin() + block_[0] + 1);
    block_[0] = 0;
}

} // namespace kestrine::gif
