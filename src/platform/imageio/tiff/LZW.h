// LZWDecoder: decompresses the LZW data of one TIFF strip or tile in a fraction of the time of libtiff.
// Accepts only regular data; libtiff decides about all others.
#pragma once

#include "platform/host/Bytes.h"

#include <array>

namespace kestrine::tiff {

/// Holds only its table, so that one object can decode many strips. Only one thread may use it at a time.
class LZWDecoder {
public:
    LZWDecoder();

    /// Fills `into`, at most 4 GiB, from the first of `codes`; codes after that are ignored, as libtiff does.
    /// Returns false, with any content of `into`, when the codes
    /// - do not begin with the code that clears the table (so do those of old files, in another bit order),
    /// - end before `into` is full,
    /// - stand where they are not possible, or continue after the table is full.
    bool decode(ByteView codes, std::span<std::uint8_t> into);

    static constexpr std::size_t tableSize = 4096;

private:
    std::array<std::uint64_t, tableSize> strings_; ///< LZWString, by code
};

} // namespace kestrine::tiff
