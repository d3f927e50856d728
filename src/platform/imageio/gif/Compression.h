// Compression: writes the pixels of a GIF as LZW codes of increasing width, in sub-blocks.
#pragma once

#include "platform/host/Bytes.h"

#include <array>

namespace kestrine::gif {

class Compression {
public:
    /// Appends to `into`, which must outlive this. Indices must be below 2^indexBits; indexBits is 2 to 8.
    Compression(unsigned indexBits, Bytes& into);

    void add(ByteView indices);

    /// Writes the remaining codes and the end mark. Must be called once, after at least one index.
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
    std::vector<std::uint32_t>
        strings_;          ///< a hash table; each slot holds a string in 20 bits and its code in 12
    std::uint32_t prefix_; ///< the code of the indices that are not written yet
    unsigned nextCode_ = 0, codeBits_ = 0;
    std::uint32_t pending_ = 0; ///< bits that do not fill a byte yet
    unsigned pendingBits_ = 0;
    std::array<std::uint8_t, 256> block_; ///< its length, then that many bytes
};

} // namespace kestrine::gif
