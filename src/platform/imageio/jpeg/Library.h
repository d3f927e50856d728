// What decoder and encoder share of the JPEG library: its headers in the order they need, and its errors.
// The library reports errors by a long jump. Every function here that may be jumped out of is small and holds
// only trivially destructible locals; what must be destroyed lives in the object that calls it.
#pragma once

#include "platform/host/Result.h"

#include <cstddef>
#include <cstdio>

#include <csetjmp>
#include <jpeglib.h>

#include <jerror.h> // some of its codes depend on what jpeglib.h says

namespace kestrine::jpeg {

/// Collects the library's error instead of printing it and ending the process. Warnings end nothing: damaged
/// pictures are decoded as far as they go.
struct Errors {
    jpeg_error_mgr manager; ///< first, so that the library's pointer is one to this
    std::jmp_buf onError;
    char text[JMSG_LENGTH_MAX];
    char damage[JMSG_LENGTH_MAX]; ///< the first warning that tells of made-up pixels; empty without one

    /// Makes `manager` ready and returns it for the library's `err` field.
    jpeg_error_mgr* prepare();
    Failure failure() const;
};

/// Runs `step` (a lambda that calls the library and owns nothing) and tells whether it ended without error.
template <class Step>
bool succeedsInLibrary(Errors& errors, const Step& step) {
    if (setjmp(errors.onError) != 0)
        return false;
    step();
    return true;
}

} // namespace kestrine::jpeg
