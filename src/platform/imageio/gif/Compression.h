// Compression: a GIF's pixels as LZW codes of growing width, packed into sub-blocks.
#pragma once

#include "platform/host/Bytes.h"

#include <array>

namespace kestrine::gif {

class Compression {
public:
    /// Appends to `into`, which must outlive this. Indices are below 2^indexBits; indexBits is 2 to 8.
    Compression(unsigned indexBits, Bytes& into);

    void add(ByteView indices);

    /// Writes what is left and the end mark. Called once, after at least one index.
    void finish();

private:
    std::uint32_t& slotOf(std::uint32_t string);
    void startTable();
    void takeCode();
    void writeCode(unsigned code);
    void writeByte(unsigned byte);
    void writeBlock();

    Bytes& into_;
    const unsigned clearCode_;
    std::vector<std::uint32_t> strings_; ///< a hash table: a string, 20 bits, above its code, 12 bits
    std::uint32_t prefix_;               ///< the code of what was read last
    unsigned nextCode_ = 0, codeBits_ = 0;
    std::uint32_t pending_ = 0; ///< bits that do not make a byte yet, and how many
    unsigned pendingBits_ = 0;
    std::array<std::uint8_t, 256> block_; ///< its length, then that many bytes
};

} // namespace kestrine::gif
