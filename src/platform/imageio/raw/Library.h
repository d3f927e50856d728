// The functions of LibRaw, which is opened when the first camera raw file is read. Its headers are used for
// types only; the program does not link to the library.
#pragma once

#include "platform/host/Result.h"

#include <initializer_list>
#include <libraw/libraw.h>

namespace kestrine::raw {

/// The functions that are used.
struct Functions {
    decltype(&libraw_init) create;
    decltype(&libraw_close) destroy;
    decltype(&libraw_set_dataerror_handler) setDataErrorHandler;
    decltype(&libraw_adjust_sizes_info_only) adjustSizes;
    decltype(&libraw_unpack) unpack;
    decltype(&libraw_unpack_thumb) unpackPreview;
    decltype(&libraw_dcraw_process) develop;
    decltype(&libraw_dcraw_make_mem_image) makePixels;
    decltype(&libraw_dcraw_clear_mem) freePixels;
    /// LibRaw::open_datastream, which has no form in C. It keeps the stream until the end.
    int (*openStream)(void* libraw, LibRaw_abstract_datastream* stream);
    /// LibRaw_abstract_datastream::jpeg_src, which streams of our own inherit.
    int (*attachJPEGSource)(LibRaw_abstract_datastream* stream, void* jpeg);
    void (*setThreads)(int count); ///< omp_set_num_threads() of the calling thread; null without OpenMP
};

/// The functions of the first of these libraries that exists. Fails with reason "unsupported" and names the
/// package if there is none.
Result<Functions> loadFunctions(std::initializer_list<const char*> names);

/// The functions of the installed library; opened once. Any thread.
const Result<Functions>& installedFunctions();

} // namespace kestrine::raw
