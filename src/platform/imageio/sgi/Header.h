// Header: the fields before the samples of an SGI file.
#pragma once

#include "platform/coregraphics/RowFormat.h"
#include "platform/host/files/ByteReader.h"

namespace kestrine::sgi {

inline constexpr std::size_t headerLength = 512;

struct Header {
    RowFormat
        format{}; ///< its channels are stored one after the other, each from the lowest row to the highest
    bool isRunLength = false;
};

/// Whether a file that begins with `head` has the signature and known values after it.
bool isSGI(ByteView head);

/// The sides are not checked.
Result<Header> readHeader(const ByteReader& reader);

} // namespace kestrine::sgi
