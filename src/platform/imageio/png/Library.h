// The functions of libpng, which is opened when the first PNG file is read or written. Its header is used for
// types only; the program does not link to the library. libpng is called so that its errors become results:
// nothing is printed and the process never ends. It reports errors by a long jump. Functions that it may jump
// out of must have only trivially destructible local variables; other objects belong to the caller.
#pragma once

#include "platform/host/Result.h"

#include <csetjmp>
#include <initializer_list>
#include <png.h>

namespace kestrine::png {

/// The functions that are used.
struct Functions {
    decltype(&png_create_info_struct) createInfoStruct;
    decltype(&png_create_read_struct) createReadStruct;
    decltype(&png_create_write_struct) createWriteStruct;
    decltype(&png_destroy_read_struct) destroyReadStruct;
    decltype(&png_destroy_write_struct) destroyWriteStruct;
    decltype(&png_error) fail;
    decltype(&png_get_PLTE) getPLTE;
    decltype(&png_get_bit_depth) getBitDepth;
    decltype(&png_get_cHRM_fixed) getCHRMFixed;
    decltype(&png_get_channels) getChannels;
    decltype(&png_get_color_type) getColorType;
    decltype(&png_get_error_ptr) getErrorPtr;
    decltype(&png_get_gAMA_fixed) getGAMAFixed;
    decltype(&png_get_iCCP) getICCP;
    decltype(&png_get_image_height) getImageHeight;
    decltype(&png_get_image_width) getImageWidth;
    decltype(&png_get_interlace_type) getInterlaceType;
    decltype(&png_get_io_ptr) getIoPtr;
    decltype(&png_get_pHYs) getPHYs;
    decltype(&png_get_rowbytes) getRowbytes;
    decltype(&png_get_tRNS) getTRNS;
    decltype(&png_get_valid) getValid;
    decltype(&png_longjmp) longJump;
    decltype(&png_read_end) readEnd;
    decltype(&png_read_info) readInfo;
    decltype(&png_read_row) readRow;
    decltype(&png_read_update_info) readUpdateInfo;
    decltype(&png_set_IHDR) setIHDR;
    decltype(&png_set_PLTE) setPLTE;
    decltype(&png_set_benign_errors) setBenignErrors;
    decltype(&png_set_chunk_malloc_max) setMaxChunkBytes;
    decltype(&png_set_compression_buffer_size) setCompressionBufferSize;
    decltype(&png_set_expand) setExpand;
    decltype(&png_set_iCCP) setICCP;
    decltype(&png_set_keep_unknown_chunks) setKeepUnknownChunks;
    decltype(&png_set_longjmp_fn) setLongJump;
    decltype(&png_set_pHYs) setPHYs;
    decltype(&png_set_read_fn) setReadFn;
    decltype(&png_set_swap) setSwap;
    decltype(&png_set_tRNS) setTRNS;
    decltype(&png_set_user_limits) setUserLimits;
    decltype(&png_set_write_fn) setWriteFn;
    decltype(&png_write_info) writeInfo;
};

/// The functions of the first of these libraries that exists. Fails with reason "unsupported" and names the
/// package if there is none.
Result<Functions> loadFunctions(std::initializer_list<const char*> names);

/// The functions of the installed library; opened once. Any thread.
const Result<Functions>& installedFunctions();

/// The same; only where something was made by the library before.
inline const Functions& libpng() { return *installedFunctions(); }

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
    if (setjmp(*libpng().setLongJump(png, longjmp, sizeof(jmp_buf))) != 0)
        return false;
    step();
    return true;
}

} // namespace kestrine::png
