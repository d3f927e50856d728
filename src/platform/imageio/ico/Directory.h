// Directory: the list of pictures in an ICO or CUR file.
#pragma once

#include "platform/host/files/ByteReader.h"

namespace kestrine::ico {

/// One picture. It is a PNG file, or a BMP without its file header.
struct Entry {
    std::uint64_t offset = 0, length = 0; ///< in the file, as the directory says
    bool isPNG = false;
    std::uint64_t pixels = 0; ///< as the picture itself says, else as the directory says
    unsigned bits = 0;        ///< per pixel
};

/// Whether a file that begins with `head` has the signature and a plausible first entry.
bool isIcon(ByteView head);

/// The entry with most pixels; among equals the one with most bits, then the first.
Result<Entry> largestEntry(const ByteReader& reader);

} // namespace kestrine::ico
