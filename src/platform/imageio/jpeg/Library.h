// Calls libjpeg-turbo so that its errors become results: nothing is printed and the process never ends.
// Includes its headers in the required order. The library reports errors by a long jump. Functions that it
// may jump out of must have only trivially destructible local variables; other objects belong to the caller.
#pragma once

#include "platform/host/Result.h"

#include <cstddef>
#include <cstdio>

#include <csetjmp>
#include <jpeglib.h>

#include <jerror.h> // depends on macros of jpeglib.h

namespace kestrine::jpeg {

/// Stores the library's error. Warnings are not errors: damaged pictures are decoded as far as possible.
struct Errors {
    /// The first member, so that the library's pointer to it is one to the Errors.
    jpeg_error_mgr manager;
    std::jmp_buf onError;
    char text[JMSG_LENGTH_MAX];
    char damage[JMSG_LENGTH_MAX]; ///< the first warning about invented pixels; empty if there is none

    /// Initialises `manager` and returns it for the library's `err` field.
    jpeg_error_mgr* prepare();
    Failure failure() const;
};

/// For callbacks of the library: ends the call of the library with this error.
[[noreturn]] void failInLibrary(j_common_ptr info, const char* text);

/// Runs `step` (a lambda that calls the library and owns nothing) and returns whether it ended without error.
template <class Step>
bool succeedsInLibrary(Errors& errors, const Step& step) {
    if (setjmp(errors.onError) != 0)
        return false;
    step();
    return true;
}

} // namespace kestrine::jpeg
