// libpng with its errors turned into results: silent, and never ending the process.
// The library reports errors by a long jump. Every function here that may be jumped out of is small and holds
// only trivially destructible locals; what must be destroyed lives in the object that calls it.
#pragma once

#include "platform/host/Result.h"

#include <csetjmp>
#include <png.h>

namespace kestrine::png {

/// How far to read ahead in PNG files: several of the chunks that the pixels are usually cut into.
inline constexpr std::size_t pngBufferBytes = std::size_t{64} << 10;

/// Receives what libpng says when it gives up. Made before the png_struct that reports to it.
struct Message {
    char text[120] = "";
    bool lacksTransparency = false; ///< whether it skipped a damaged tRNS chunk
};

/// Handlers for png_create_read_struct and png_create_write_struct; their error_ptr is a Message.
[[noreturn]] void jumpOnPNGError(png_structp png, png_const_charp text);
void keepWarning(png_structp png, png_const_charp text);

/// Runs `step` (a lambda that calls the library and owns nothing) and tells whether it ended without error.
template <class Step>
bool succeedsInPNGLibrary(png_structp png, const Step& step) {
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    step();
    return true;
}

} // namespace kestrine::png
