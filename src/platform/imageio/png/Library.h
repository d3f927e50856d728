// Calls libpng so that its errors become results: nothing is printed and the process never ends.
// libpng reports errors by a long jump. Functions that it may jump out of must have only trivially
// destructible local variables; other objects belong to the caller.
#pragma once

#include "platform/host/Result.h"

#include <csetjmp>
#include <png.h>

namespace kestrine::png {

/// How many bytes of a PNG file to read at once: several IDAT chunks of the usual size.
inline constexpr std::size_t bufferBytes = std::size_t{64} << 10;

/// Receives libpng's error message. Must outlive the png_struct that reports to it.
struct Message {
    char text[120] = "";
    bool lacksTransparency = false; ///< whether libpng skipped a damaged tRNS chunk
    bool lacksColors = false;       ///< whether a contradiction about colours made libpng forget the profile
};

/// Handlers for png_create_read_struct and png_create_write_struct; their error_ptr is a Message.
[[noreturn]] void jumpOnError(png_structp png, png_const_charp text);
void keepWarning(png_structp png, png_const_charp text);

/// Runs `step` (a lambda that calls libpng and owns nothing) and returns whether it ended without error.
template <class Step>
bool succeedsInLibrary(png_structp png, const Step& step) {
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    step();
    return true;
}

} // namespace kestrine::png
