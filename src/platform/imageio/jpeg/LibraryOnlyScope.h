// Reads JPEG: baseline and progressive, grey, colour and CMYK, at full size or reduced in the transform. What
// cameras write goes through our own decoder (jpeg/), twice as fast; all else, and whatever that meets odd,
// through the general library. The pictures are the same either way.
#pragma once

namespace kestrine::jpeg {

/// While it lives, files opened on this thread are read through the general library alone: for comparing our
/// own decoder with it, in tests and in measurements. A build without our own decoder
/// (KESTRINE_OWN_JPEG_DECODER=OFF) always reads so.
class LibraryOnlyScope {
public:
    LibraryOnlyScope();
    ~LibraryOnlyScope();
    LibraryOnlyScope(const LibraryOnlyScope&) = delete;
    LibraryOnlyScope& operator=(const LibraryOnlyScope&) = delete;
};

} // namespace kestrine::jpeg
