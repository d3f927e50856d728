// LZWCodes: packs codes as the LZW data of TIFF.
#pragma once

#include "platform/host/Bytes.h"

namespace kestrine::testing {

class LZWCodes {
public:
    static constexpr unsigned clear = 256, end = 257;

    /// Adds a code with the width that a decoder expects after the codes before it.
    void add(unsigned code);
    void add(std::initializer_list<unsigned> codes);
    /// Adds the codes of `bytes`, beginning with `clear`; another `clear` follows as soon as the table has
    /// `mostStrings` strings, `clear` and `end` included.
    void addEncoded(ByteView bytes, std::size_t mostStrings = 4095);

    /// All codes, filled up to whole bytes with zeros.
    Bytes bytes() const { return bytes_; }

private:
    Bytes bytes_;
    std::size_t bits_ = 0;
    std::size_t free_ = 258;
    bool isFirst_ = true; ///< whether the next code adds no string
};

} // namespace kestrine::testing
